#include "numeric/engine/detail/MCCovSpLinl.h"

#include <cmath>
#include <limits>

namespace MCEngine_850 {

double MCCovSpLinl::Function(double d, double rho) const {
  const double x = rho * std::log(d);
  return x < 1.0 ? 1.0 - x : 0.0;
}

double MCCovSpLinl::FunctionDerivative(double d, double rho) const {
  return rho * std::log(d) < 1.0 ? -std::log(d) : 0.0;
}

double MCCovSpLinl::FunctionSecondDerivative(double, double) const { return 0.0; }

// Without distances above 1 no rho gives independence; any positive value
// serves then.
double MCCovSpLinl::NullFunctionParam(double dMin) const { return dMin > 1.0 ? 1.0 / std::log(dMin) : 1.0; }

double MCCovSpLinl::ParamForRange(double r) const {
  return r > 1.0 ? 1.0 / std::log(r) : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace MCEngine_850
