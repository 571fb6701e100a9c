#include "numeric/engine/detail/MCCovSpPow.h"

#include <cmath>

namespace MCEngine_850 {

void MCCovSpPow::GetBounds(int k, double& lower, double& upper) const {
  if (k == 0) {
    lower = 0.0;
    upper = 1.0;
  } else {
    MCCovSpatial::GetBounds(k, lower, upper);
  }
}

double MCCovSpPow::Function(double d, double rho) const { return std::pow(rho, d); }

// Rho = 0 lies outside the interval and serves only as the null point, whose
// derivatives in rho are not used; they are taken as 0 there.
double MCCovSpPow::FunctionDerivative(double d, double rho) const {
  return rho > 0.0 ? d * std::pow(rho, d - 1.0) : 0.0;
}

double MCCovSpPow::FunctionSecondDerivative(double d, double rho) const {
  return rho > 0.0 ? d * (d - 1.0) * std::pow(rho, d - 2.0) : 0.0;
}

// rho^dMin is then about 1e-304, or rho is 0 when that underflows.
double MCCovSpPow::NullFunctionParam(double dMin) const { return std::exp(-700.0 / dMin); }

double MCCovSpPow::ParamForRange(double r) const { return std::exp(-1.0 / r); }

}  // namespace MCEngine_850
