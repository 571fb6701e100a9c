#include "host/viz/JNIException.h"
