// The engine reading its model file through the documents: allowed.
#include "host/documents/Document.h"
// The engine reaching into the rest of the host: the check must refuse it.
#include "host/data/Cell.h"
