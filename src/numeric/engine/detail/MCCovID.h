#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// sigma^2 I.
class MCCovID : public MCCovStructure {
 public:
  explicit MCCovID(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::ID; }
  int GetNParams() const override { return 1; }
  MCEngineCovParam::Kind GetParamKind(int) const override { return MCEngineCovParam::kVariance; }
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsDiagonal() const override { return true; }
  int GetScaleParam() const override { return 0; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
};

}  // namespace MCEngine_850
