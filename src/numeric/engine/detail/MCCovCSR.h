#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Compound symmetry by its correlation: sigma^2 on the diagonal, sigma^2 rho
// off it. Parameters: rho, then sigma^2.
class MCCovCSR : public MCCovStructure {
 public:
  explicit MCCovCSR(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::CSR; }
  int GetNParams() const override { return 2; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsLinear() const override { return false; }
  int GetScaleParam() const override { return 1; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
};

}  // namespace MCEngine_850
