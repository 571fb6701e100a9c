#include "numeric/engine/detail/MCCovHF.h"

#include <cmath>

namespace MCEngine_850 {

MCEngineCovParam::Kind MCCovHF::GetParamKind(int k) const {
  return k < fDimension ? MCEngineCovParam::kVariance : MCEngineCovParam::kCovariance;
}

std::string MCCovHF::GetParamLabel(int k, bool) const {
  if (k < fDimension) return "Var(" + std::to_string(k + 1) + ")";
  return "HF";
}

void MCCovHF::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.resize(fDimension, fDimension);
  const double lambda = theta[fDimension];
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) sigma(i, j) = i == j ? theta[i] : 0.5 * (theta[i] + theta[j]) - lambda;
  }
}

void MCCovHF::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  if (k == fDimension) {
    d.setConstant(fDimension, fDimension, -1.0);
    d.diagonal().setZero();
    return;
  }
  d.setZero(fDimension, fDimension);
  d.row(k).setConstant(0.5);
  d.col(k).setConstant(0.5);
  d(k, k) = 1.0;
}

// With every variance 1 and lambda 1 the off-diagonal vanishes.
void MCCovHF::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setConstant(fDimension + 1, residualSide ? 1.0 : 0.0);
}

void MCCovHF::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  // Lambda equal to the mean variance makes Sigma close to diagonal; move
  // towards it until Sigma is clearly positive definite.
  const double mean = theta.head(fDimension).mean();
  for (int attempt = 0; attempt < 60 && !IsClearlyPositiveDefinite(theta); ++attempt) {
    theta[fDimension] += 0.2 * (mean - theta[fDimension]);
  }
}

}  // namespace MCEngine_850
