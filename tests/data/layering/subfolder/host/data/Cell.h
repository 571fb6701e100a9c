#pragma once

// The host building on the engine and the documents: allowed.
#include "host/documents/Document.h"
#include "numeric/Engine.h"
