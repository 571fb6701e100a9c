#pragma once

#include "numeric/engine/detail/MCCovHeterogeneous.h"

namespace MCEngine_850 {

// First-order ante-dependence: v_i on the diagonal and, for i < j,
// sqrt(v_i v_j) rho_i rho_(i+1) ... rho_(j-1). Parameters: Var(1) ... Var(t),
// then rho_1 ... rho_(t-1).
class MCCovAD1 : public MCCovHeterogeneous {
 public:
  explicit MCCovAD1(int dimension) : MCCovHeterogeneous(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::AD1; }

 protected:
  int GetNCorrelations() const override { return fDimension - 1; }
  std::string GetCorrelationLabel(int m) const override;
  void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const override;
  void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const override;
  void CorrelationSecondDerivative(const Eigen::VectorXd& rho, int m, int n, Eigen::MatrixXd& d) const override;
};

}  // namespace MCEngine_850
