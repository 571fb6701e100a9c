#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial spherical: sigma^2 (1 - 3d / (2 theta) + d^3 / (2 theta^3)) where
// d < theta, else 0; the range theta > 0.
class MCCovSpSph : public MCCovSpatial {
 public:
  MCCovSpSph(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_SPH; }

 protected:
  std::string GetFunctionLabel() const override { return "SP(SPH)"; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
