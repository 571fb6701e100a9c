#pragma once

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

// Covariance structure of a random block or of the residual block: the
// component's own type codes.
using MCEngineCovType = GLMMConst_850::CovarType;

}  // namespace MCEngine_850
