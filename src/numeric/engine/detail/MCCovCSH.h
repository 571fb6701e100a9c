#pragma once

#include "numeric/engine/detail/MCCovHeterogeneous.h"

namespace MCEngine_850 {

// Heterogeneous compound symmetry: v_i on the diagonal, sqrt(v_i v_j) rho
// off it. Parameters: Var(1) ... Var(t), then rho.
class MCCovCSH : public MCCovHeterogeneous {
 public:
  explicit MCCovCSH(int dimension) : MCCovHeterogeneous(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::CSH; }

 protected:
  int GetNCorrelations() const override { return 1; }
  std::string GetCorrelationLabel(int m) const override;
  void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const override;
  void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const override;
};

}  // namespace MCEngine_850
