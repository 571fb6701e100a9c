#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// First-order autoregressive moving average: sigma^2 on the diagonal and
// sigma^2 gamma rho^(|i-j|-1) off it. Parameters: rho, gamma, then sigma^2.
class MCCovARMA11 : public MCCovStructure {
 public:
  explicit MCCovARMA11(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::ARMA11; }
  int GetNParams() const override { return 3; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsLinear() const override { return false; }
  int GetScaleParam() const override { return 2; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
};

}  // namespace MCEngine_850
