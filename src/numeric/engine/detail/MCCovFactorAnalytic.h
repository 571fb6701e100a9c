#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// First-order factor analytic: lambda lambda' + diag(d), with one loading per
// position and either one common diagonal variance or one per position.
// Parameters: the loadings lambda_1 ... lambda_t, then the diagonal
// variance(s). The loadings are reported with lambda_1 >= 0.
class MCCovFactorAnalytic : public MCCovStructure {
 public:
  MCCovFactorAnalytic(int dimension, bool heterogeneous)
      : MCCovStructure(dimension), fbHeterogeneous(heterogeneous) {}

  int GetNParams() const override { return fDimension + (fbHeterogeneous ? fDimension : 1); }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsLinear() const override { return false; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
  void Canonicalize(Eigen::VectorXd& theta) const override;

 private:
  bool fbHeterogeneous;
};

}  // namespace MCEngine_850
