#pragma once

#include "numeric/engine/detail/MCCovHeterogeneous.h"

namespace MCEngine_850 {

// Heterogeneous Toeplitz: sqrt(v_i v_j) rho_|i-j|, with a correlation per
// lag. Parameters: Var(1) ... Var(t), then rho_1 ... rho_(t-1).
class MCCovTPH : public MCCovHeterogeneous {
 public:
  explicit MCCovTPH(int dimension) : MCCovHeterogeneous(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::TPH; }

 protected:
  int GetNCorrelations() const override { return fDimension - 1; }
  std::string GetCorrelationLabel(int m) const override;
  void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const override;
  void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const override;
};

}  // namespace MCEngine_850
