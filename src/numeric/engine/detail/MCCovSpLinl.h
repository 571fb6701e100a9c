#pragma once

#include "numeric/engine/detail/MCCovSpatial.h"

namespace MCEngine_850 {

// Spatial linear in the log distance: sigma^2 (1 - rho log d) where
// rho log d < 1, else 0, and sigma^2 on the diagonal; rho > 0. Distances of 1
// or less give correlations of 1 or more, so the points must lie further
// apart than 1.
class MCCovSpLinl : public MCCovSpatial {
 public:
  MCCovSpLinl(int dimension, const std::vector<double>& points) : MCCovSpatial(dimension, points) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::SP_LINL; }

 protected:
  std::string GetFunctionLabel() const override { return "SP(LINL)"; }
  double Function(double d, double phi) const override;
  double FunctionDerivative(double d, double phi) const override;
  double FunctionSecondDerivative(double d, double phi) const override;
  double NullFunctionParam(double dMin) const override;
  double ParamForRange(double r) const override;
};

}  // namespace MCEngine_850
