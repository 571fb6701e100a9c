#pragma once

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// A variance per position and a correlation matrix: Sigma = D Rc D with
// D = diag(sqrt(v)). Parameters: Var(1) ... Var(t), then the correlation
// parameters of the derived structure.
class MCCovHeterogeneous : public MCCovStructure {
 public:
  explicit MCCovHeterogeneous(int dimension) : MCCovStructure(dimension) {}

  int GetNParams() const override { return fDimension + GetNCorrelations(); }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsLinear() const override { return false; }
  // At null correlations Sigma is diag(v), linear in the variances.
  bool IsLinearParam(int k) const override { return k < fDimension; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;

 protected:
  virtual int GetNCorrelations() const = 0;
  // Label of correlation parameter m.
  virtual std::string GetCorrelationLabel(int m) const = 0;
  // Rc and its derivatives in the correlation parameters rho.
  virtual void Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const = 0;
  virtual void CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const = 0;
  // Zero unless overridden: Rc linear in rho.
  virtual void CorrelationSecondDerivative(const Eigen::VectorXd& rho, int m, int n, Eigen::MatrixXd& d) const;

 private:
  // The derivative of sqrt(v_i v_j) in v_k, as a matrix over (i, j).
  void ScaleDerivative(const Eigen::VectorXd& sd, int k, Eigen::MatrixXd& d) const;
};

}  // namespace MCEngine_850
