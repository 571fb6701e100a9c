#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Unstructured: every variance and covariance free. Parameters run through
// the lower triangle row by row: (1,1), (2,1), (2,2), (3,1), ...
class MCCovUN : public MCCovStructure {
 public:
  explicit MCCovUN(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::UN; }
  int GetNParams() const override { return fDimension * (fDimension + 1) / 2; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;

  // Row and column (0-based, row >= column) of parameter k.
  static void Position(int k, int& row, int& col);
  static int Index(int row, int col);
};

}  // namespace MCEngine_850
