#include "numeric/engine/detail/MCCovSpLin.h"

namespace MCEngine_850 {

double MCCovSpLin::Function(double d, double rho) const { return rho * d < 1.0 ? 1.0 - rho * d : 0.0; }

double MCCovSpLin::FunctionDerivative(double d, double rho) const { return rho * d < 1.0 ? -d : 0.0; }

double MCCovSpLin::FunctionSecondDerivative(double, double) const { return 0.0; }

double MCCovSpLin::NullFunctionParam(double dMin) const { return 1.0 / dMin; }

double MCCovSpLin::ParamForRange(double r) const { return 1.0 / r; }

}  // namespace MCEngine_850
