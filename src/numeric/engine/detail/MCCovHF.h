#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Huynh-Feldt: v_i on the diagonal, (v_i + v_j) / 2 - lambda off it.
// Parameters: Var(1) ... Var(t), then lambda.
class MCCovHF : public MCCovStructure {
 public:
  explicit MCCovHF(int dimension) : MCCovStructure(dimension) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::HF; }
  int GetNParams() const override { return fDimension + 1; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
};

}  // namespace MCEngine_850
