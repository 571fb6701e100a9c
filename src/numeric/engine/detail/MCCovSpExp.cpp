#include "numeric/engine/detail/MCCovSpExp.h"

#include <cmath>

namespace MCEngine_850 {

double MCCovSpExp::Function(double d, double theta) const { return std::exp(-d / theta); }

double MCCovSpExp::FunctionDerivative(double d, double theta) const {
  return d / (theta * theta) * std::exp(-d / theta);
}

double MCCovSpExp::FunctionSecondDerivative(double d, double theta) const {
  const double t2 = theta * theta;
  return std::exp(-d / theta) * (d * d / (t2 * t2) - 2.0 * d / (t2 * theta));
}

// exp(-700) is about 1e-304.
double MCCovSpExp::NullFunctionParam(double dMin) const { return dMin / 700.0; }

double MCCovSpExp::ParamForRange(double r) const { return r; }

}  // namespace MCEngine_850
