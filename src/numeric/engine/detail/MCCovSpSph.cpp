#include "numeric/engine/detail/MCCovSpSph.h"

namespace MCEngine_850 {

double MCCovSpSph::Function(double d, double theta) const {
  if (!(d < theta)) return 0.0;
  const double x = d / theta;
  return 1.0 - 1.5 * x + 0.5 * x * x * x;
}

double MCCovSpSph::FunctionDerivative(double d, double theta) const {
  if (!(d < theta)) return 0.0;
  const double t2 = theta * theta;
  return 1.5 * d / t2 - 1.5 * d * d * d / (t2 * t2);
}

double MCCovSpSph::FunctionSecondDerivative(double d, double theta) const {
  if (!(d < theta)) return 0.0;
  const double t3 = theta * theta * theta;
  return -3.0 * d / t3 + 6.0 * d * d * d / (t3 * theta * theta);
}

double MCCovSpSph::NullFunctionParam(double dMin) const { return 0.5 * dMin; }

double MCCovSpSph::ParamForRange(double r) const { return r; }

}  // namespace MCEngine_850
