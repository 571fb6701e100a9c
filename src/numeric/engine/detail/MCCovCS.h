#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Compound symmetry: a common covariance sigma_1 everywhere plus sigma^2 on
// the diagonal. Parameters: the covariance, then the variance.
class MCCovCS : public MCCovStructure {
 public:
  explicit MCCovCS(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::CS; }
  int GetNParams() const override { return 2; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  int GetScaleParam() const override { return 1; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
};

}  // namespace MCEngine_850
