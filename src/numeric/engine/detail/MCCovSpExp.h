#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial exponential: sigma^2 exp(-d / theta), with the range theta > 0.
class MCCovSpExp : public MCCovSpatial {
 public:
  MCCovSpExp(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_EXP; }

 protected:
  std::string GetFunctionLabel() const override { return "SP(EXP)"; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
