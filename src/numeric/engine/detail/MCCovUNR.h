#pragma once

#include "numeric/engine/detail/MCCovHeterogeneous.h"

namespace MCEngine_850 {

// Unstructured correlations: sqrt(v_i v_j) rho_ij. Parameters: Var(1) ...
// Var(t), then the correlations through the lower triangle row by row:
// (2,1), (3,1), (3,2), ...
class MCCovUNR : public MCCovHeterogeneous {
 public:
  explicit MCCovUNR(int dimension) : MCCovHeterogeneous(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::UNR; }

 protected:
  int GetNCorrelations() const override { return fDimension * (fDimension - 1) / 2; }
  std::string GetCorrelationLabel(int m) const override;
  void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const override;
  void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const override;
};

}  // namespace MCEngine_850
