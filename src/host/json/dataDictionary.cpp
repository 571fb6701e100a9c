#include "host/json/dataDictionary.h"
