#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Toeplitz: sigma_|i-j|, a covariance per lag. Parameters: sigma_1 ...
// sigma_(t-1), then the variance sigma_0.
class MCCovTP : public MCCovStructure {
 public:
  explicit MCCovTP(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::TP; }
  int GetNParams() const override { return fDimension; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  int GetScaleParam() const override { return fDimension - 1; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
};

}  // namespace MCEngine_850
