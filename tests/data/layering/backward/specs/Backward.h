#pragma once

// The specification reaching up to the run controller: the check must refuse it.
#include "run/Forward.h"
