#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial linear: sigma^2 (1 - rho d) where rho d < 1, else 0; rho > 0.
// Not positive definite for every configuration of points.
class MCCovSpLin : public MCCovSpatial {
 public:
  MCCovSpLin(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_LIN; }

 protected:
  std::string GetFunctionLabel() const override { return "SP(LIN)"; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
