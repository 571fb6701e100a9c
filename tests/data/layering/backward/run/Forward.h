#pragma once

// The run side building on the specification: allowed.
#include "base/MIXAssert.h"
#include "specs/MIXValidSpecs.h"
