#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial power: sigma^2 rho^d, with 0 < rho < 1.
class MCCovSpPow : public MCCovSpatial {
 public:
  MCCovSpPow(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_POW; }
  void GetBounds(int k, double& lower, double& upper) const override;

 protected:
  std::string GetFunctionLabel() const override { return "SP(POW)"; }
  MCEngineCovParam::Kind GetFunctionKind() const override { return MCEngineCovParam::kCorrelation; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
