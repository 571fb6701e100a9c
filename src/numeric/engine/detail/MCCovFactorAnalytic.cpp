#include "numeric/engine/detail/MCCovFactorAnalytic.h"

#include <cmath>

namespace MCEngine_850 {

MCEngineCovParam::Kind MCCovFactorAnalytic::GetParamKind(int k) const {
  return k < fDimension ? MCEngineCovParam::kLoading : MCEngineCovParam::kVariance;
}

std::string MCCovFactorAnalytic::GetParamLabel(int k, bool) const {
  if (k < fDimension) return "FA(" + std::to_string(k + 1) + ",1)";
  if (!fbHeterogeneous) return "FA diagonal";
  return "FA diagonal(" + std::to_string(k - fDimension + 1) + ")";
}

void MCCovFactorAnalytic::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  const Eigen::VectorXd lambda = theta.head(fDimension);
  sigma = lambda * lambda.transpose();
  for (int i = 0; i < fDimension; ++i) sigma(i, i) += theta[fDimension + (fbHeterogeneous ? i : 0)];
}

void MCCovFactorAnalytic::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  if (k < fDimension) {
    d.row(k) += theta.head(fDimension).transpose();
    d.col(k) += theta.head(fDimension);
  } else if (fbHeterogeneous) {
    d(k - fDimension, k - fDimension) = 1.0;
  } else {
    d.diagonal().setOnes();
  }
}

void MCCovFactorAnalytic::SecondDerivative(const Eigen::VectorXd&, int k, int l, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  if (k < fDimension && l < fDimension) {
    d(k, l) += 1.0;
    d(l, k) += 1.0;
  }
}

void MCCovFactorAnalytic::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setZero(GetNParams());
  theta.tail(GetNParams() - fDimension).setConstant(residualSide ? 1.0 : 0.0);
}

// Loadings of 0 are a stationary point of the likelihood, from which no
// Newton step moves; they start where half of each variance is common.
void MCCovFactorAnalytic::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  if (theta.head(fDimension).cwiseAbs().maxCoeff() > 0.0) return;
  for (int i = 0; i < fDimension; ++i) {
    double& d = theta[fDimension + (fbHeterogeneous ? i : 0)];
    theta[i] = std::sqrt(0.5 * d);
  }
  theta.tail(GetNParams() - fDimension) *= 0.5;
}

void MCCovFactorAnalytic::Canonicalize(Eigen::VectorXd& theta) const {
  for (int i = 0; i < fDimension; ++i) {
    if (theta[i] == 0.0) continue;
    if (theta[i] < 0.0) theta.head(fDimension) *= -1.0;
    return;
  }
}

}  // namespace MCEngine_850
