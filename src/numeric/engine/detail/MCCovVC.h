#pragma once

#include <vector>

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Variance components: a diagonal matrix with one variance per random
// effect, each effect owning one or more of the columns.
class MCCovVC : public MCCovStructure {
 public:
  // columnEffects[j] is the effect (0, 1, ...) of column j; empty gives one effect per column.
  MCCovVC(int dimension, const std::vector<int>& columnEffects);

  MCEngineCovType GetType() const override { return MCEngineCovType::VC; }
  int GetNParams() const override { return fNEffects; }
  MCEngineCovParam::Kind GetParamKind(int) const override { return MCEngineCovParam::kVariance; }
  std::string GetParamLabel(int k, bool residualSide) const override;
  int GetParamEffect(int k) const override { return k; }
  bool IsDiagonal() const override { return true; }
  int GetScaleParam() const override { return fNEffects == 1 ? 0 : -1; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;

 private:
  std::vector<int> fvColumnEffects;
  int fNEffects = 1;
};

}  // namespace MCEngine_850
