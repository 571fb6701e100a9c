#include "numeric/engine/detail/MCCovSpGau.h"

#include <cmath>

namespace MCEngine_850 {

double MCCovSpGau::Function(double d, double theta) const { return std::exp(-(d * d) / (theta * theta)); }

double MCCovSpGau::FunctionDerivative(double d, double theta) const {
  const double d2 = d * d, t2 = theta * theta;
  return 2.0 * d2 / (t2 * theta) * std::exp(-d2 / t2);
}

double MCCovSpGau::FunctionSecondDerivative(double d, double theta) const {
  const double d2 = d * d, t2 = theta * theta;
  return std::exp(-d2 / t2) * (4.0 * d2 * d2 / (t2 * t2 * t2) - 6.0 * d2 / (t2 * t2));
}

// exp(-26.5^2) is about 1e-305.
double MCCovSpGau::NullFunctionParam(double dMin) const { return dMin / 26.5; }

double MCCovSpGau::ParamForRange(double r) const { return r; }

}  // namespace MCEngine_850
