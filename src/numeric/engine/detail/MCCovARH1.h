#pragma once

#include "numeric/engine/detail/MCCovHeterogeneous.h"

namespace MCEngine_850 {

// Heterogeneous first-order autoregressive: sqrt(v_i v_j) rho^|i-j|.
// Parameters: Var(1) ... Var(t), then rho.
class MCCovARH1 : public MCCovHeterogeneous {
 public:
  explicit MCCovARH1(int dimension) : MCCovHeterogeneous(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::ARH1; }

 protected:
  int GetNCorrelations() const override { return 1; }
  std::string GetCorrelationLabel(int m) const override;
  void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const override;
  void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const override;
  void CorrelationSecondDerivative(const Eigen::VectorXd& rho, int m, int n, Eigen::MatrixXd& d) const override;
};

}  // namespace MCEngine_850
