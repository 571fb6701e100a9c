#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// v I with v given and nothing to estimate: the independent residuals of a
// working model whose distribution fixes the scale. The scale weights still
// divide each record's variance.
class MCCovFixedVariance : public MCCovStructure {
 public:
  MCCovFixedVariance(int dimension, double variance) : MCCovStructure(dimension), fVariance(variance) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::ID; }
  int GetNParams() const override { return 0; }
  MCEngineCovParam::Kind GetParamKind(int) const override { return MCEngineCovParam::kVariance; }
  std::string GetParamLabel(int, bool) const override { return "Residual"; }
  bool IsDiagonal() const override { return true; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;

 private:
  double fVariance;
};

}  // namespace MCEngine_850
