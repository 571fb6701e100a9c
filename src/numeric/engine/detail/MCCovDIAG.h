#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// A diagonal matrix with its own variance at every position.
class MCCovDIAG : public MCCovStructure {
 public:
  explicit MCCovDIAG(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::DIAG; }
  int GetNParams() const override { return fDimension; }
  MCEngineCovParam::Kind GetParamKind(int) const override { return MCEngineCovParam::kVariance; }
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsDiagonal() const override { return true; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
};

}  // namespace MCEngine_850
