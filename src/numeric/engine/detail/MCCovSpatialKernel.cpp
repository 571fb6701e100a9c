#include "numeric/engine/detail/MCCovSpatialKernel.h"

#include <cmath>
#include <limits>

namespace MCEngine_850 {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// SP(POW): rho^d, with the correlation rho in (0, 1). Rho = 0 lies outside
// the interval and serves only as the null point, whose derivatives in rho
// are not used; they are taken as 0 there.
namespace Power {
double Value(double d, double rho) { return std::pow(rho, d); }
double Derivative(double d, double rho) { return rho > 0.0 ? d * std::pow(rho, d - 1.0) : 0.0; }
double SecondDerivative(double d, double rho) { return rho > 0.0 ? d * (d - 1.0) * std::pow(rho, d - 2.0) : 0.0; }
// rho^dMin is then about 1e-304, or rho is 0 when that underflows.
double NullParam(double dMin) { return std::exp(-700.0 / dMin); }
double ParamForRange(double r) { return std::exp(-1.0 / r); }
}  // namespace Power

// SP(EXP): exp(-d / theta), with the range theta > 0.
namespace Exponential {
double Value(double d, double theta) { return std::exp(-d / theta); }
double Derivative(double d, double theta) { return d / (theta * theta) * std::exp(-d / theta); }
double SecondDerivative(double d, double theta) {
  const double t2 = theta * theta;
  return std::exp(-d / theta) * (d * d / (t2 * t2) - 2.0 * d / (t2 * theta));
}
// exp(-700) is about 1e-304.
double NullParam(double dMin) { return dMin / 700.0; }
double ParamForRange(double r) { return r; }
}  // namespace Exponential

// SP(GAU): exp(-d^2 / theta^2), with the range theta > 0.
namespace Gaussian {
double Value(double d, double theta) { return std::exp(-(d * d) / (theta * theta)); }
double Derivative(double d, double theta) {
  const double d2 = d * d, t2 = theta * theta;
  return 2.0 * d2 / (t2 * theta) * std::exp(-d2 / t2);
}
double SecondDerivative(double d, double theta) {
  const double d2 = d * d, t2 = theta * theta;
  return std::exp(-d2 / t2) * (4.0 * d2 * d2 / (t2 * t2 * t2) - 6.0 * d2 / (t2 * t2));
}
// exp(-26.5^2) is about 1e-305.
double NullParam(double dMin) { return dMin / 26.5; }
double ParamForRange(double r) { return r; }
}  // namespace Gaussian

// SP(LIN): 1 - rho d where rho d < 1, else 0, with the rate rho > 0. Not
// positive definite for every configuration of points.
namespace Linear {
double Value(double d, double rho) { return rho * d < 1.0 ? 1.0 - rho * d : 0.0; }
double Derivative(double d, double rho) { return rho * d < 1.0 ? -d : 0.0; }
double SecondDerivative(double, double) { return 0.0; }
double NullParam(double dMin) { return 1.0 / dMin; }
double ParamForRange(double r) { return 1.0 / r; }
}  // namespace Linear

// SP(LINL): 1 - rho log(d) where rho log(d) < 1, else 0, with the rate
// rho > 0. Distances of 1 or less give correlations of 1 or more, so the
// points must lie further apart than 1.
namespace LinearLog {
double Value(double d, double rho) {
  const double x = rho * std::log(d);
  return x < 1.0 ? 1.0 - x : 0.0;
}
double Derivative(double d, double rho) { return rho * std::log(d) < 1.0 ? -std::log(d) : 0.0; }
double SecondDerivative(double, double) { return 0.0; }
// Without distances above 1 no rho gives independence; any positive value
// serves then.
double NullParam(double dMin) { return dMin > 1.0 ? 1.0 / std::log(dMin) : 1.0; }
double ParamForRange(double r) { return r > 1.0 ? 1.0 / std::log(r) : std::numeric_limits<double>::quiet_NaN(); }
}  // namespace LinearLog

// SP(SPH): 1 - 3d / (2 theta) + d^3 / (2 theta^3) where d < theta, else 0;
// the range theta > 0.
namespace Spherical {
double Value(double d, double theta) {
  if (!(d < theta)) return 0.0;
  const double x = d / theta;
  return 1.0 - 1.5 * x + 0.5 * x * x * x;
}
double Derivative(double d, double theta) {
  if (!(d < theta)) return 0.0;
  const double t2 = theta * theta;
  return 1.5 * d / t2 - 1.5 * d * d * d / (t2 * t2);
}
double SecondDerivative(double d, double theta) {
  if (!(d < theta)) return 0.0;
  const double t3 = theta * theta * theta;
  return -3.0 * d / t3 + 6.0 * d * d * d / (t3 * theta * theta);
}
double NullParam(double dMin) { return 0.5 * dMin; }
double ParamForRange(double r) { return r; }
}  // namespace Spherical

const MCCovSpatialKernel kKernels[] = {
    {MCEngineCovType::SP_POW, "SP(POW)", MCEngineCovParam::kCorrelation, 0.0, 1.0, Power::Value, Power::Derivative,
     Power::SecondDerivative, Power::NullParam, Power::ParamForRange},
    {MCEngineCovType::SP_EXP, "SP(EXP)", MCEngineCovParam::kRange, 0.0, kInf, Exponential::Value,
     Exponential::Derivative, Exponential::SecondDerivative, Exponential::NullParam, Exponential::ParamForRange},
    {MCEngineCovType::SP_GAU, "SP(GAU)", MCEngineCovParam::kRange, 0.0, kInf, Gaussian::Value, Gaussian::Derivative,
     Gaussian::SecondDerivative, Gaussian::NullParam, Gaussian::ParamForRange},
    {MCEngineCovType::SP_LIN, "SP(LIN)", MCEngineCovParam::kRange, 0.0, kInf, Linear::Value, Linear::Derivative,
     Linear::SecondDerivative, Linear::NullParam, Linear::ParamForRange},
    {MCEngineCovType::SP_LINL, "SP(LINL)", MCEngineCovParam::kRange, 0.0, kInf, LinearLog::Value,
     LinearLog::Derivative, LinearLog::SecondDerivative, LinearLog::NullParam, LinearLog::ParamForRange},
    {MCEngineCovType::SP_SPH, "SP(SPH)", MCEngineCovParam::kRange, 0.0, kInf, Spherical::Value,
     Spherical::Derivative, Spherical::SecondDerivative, Spherical::NullParam, Spherical::ParamForRange},
};

}  // namespace

const MCCovSpatialKernel* MCCovSpatialKernel::Find(MCEngineCovType type) {
  for (const MCCovSpatialKernel& kernel : kKernels) {
    if (kernel.fType == type) return &kernel;
  }
  return nullptr;
}

}  // namespace MCEngine_850
