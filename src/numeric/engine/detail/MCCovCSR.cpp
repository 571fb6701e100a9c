#include "numeric/engine/detail/MCCovCSR.h"

#include <algorithm>

namespace MCEngine_850 {

MCEngineCovParam::Kind MCCovCSR::GetParamKind(int k) const {
  return k == 0 ? MCEngineCovParam::kCorrelation : MCEngineCovParam::kVariance;
}

std::string MCCovCSR::GetParamLabel(int k, bool residualSide) const {
  if (k == 0) return "CSR rho";
  return residualSide ? "Residual" : "Variance";
}

void MCCovCSR::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.setConstant(fDimension, fDimension, theta[1] * theta[0]);
  sigma.diagonal().setConstant(theta[1]);
}

void MCCovCSR::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  if (k == 0) {
    d.setConstant(fDimension, fDimension, theta[1]);
    d.diagonal().setZero();
  } else {
    d.setConstant(fDimension, fDimension, theta[0]);
    d.diagonal().setOnes();
  }
}

void MCCovCSR::SecondDerivative(const Eigen::VectorXd&, int k, int l, Eigen::MatrixXd& d) const {
  if (k == l) {
    d.setZero(fDimension, fDimension);
  } else {
    d.setOnes(fDimension, fDimension);
    d.diagonal().setZero();
  }
}

void MCCovCSR::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.resize(2);
  theta << 0.0, residualSide ? 1.0 : 0.0;
}

void MCCovCSR::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  // The smallest eigenvalue is sigma^2 (1 + (t - 1) rho).
  if (fDimension > 1) theta[0] = std::max(theta[0], -0.9 / (fDimension - 1));
}

}  // namespace MCEngine_850
