#pragma once

// The documents reaching up to the engine that reads them: the check must
// refuse it, though the host around them may include the engine.
#include "numeric/Engine.h"
