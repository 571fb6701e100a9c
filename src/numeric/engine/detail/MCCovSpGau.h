#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial Gaussian: sigma^2 exp(-d^2 / theta^2), with the range theta > 0.
class MCCovSpGau : public MCCovSpatial {
 public:
  MCCovSpGau(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_GAU; }

 protected:
  std::string GetFunctionLabel() const override { return "SP(GAU)"; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
