#include "numeric/engine/detail/MCCovTP.h"

#include <algorithm>
#include <cstdlib>

namespace MCEngine_850 {

MCEngineCovParam::Kind MCCovTP::GetParamKind(int k) const {
  return k == fDimension - 1 ? MCEngineCovParam::kVariance : MCEngineCovParam::kCovariance;
}

std::string MCCovTP::GetParamLabel(int k, bool residualSide) const {
  if (k < fDimension - 1) return "TP(" + std::to_string(k + 1) + ")";
  return residualSide ? "Residual" : "Variance";
}

void MCCovTP::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      sigma(i, j) = lag == 0 ? theta[fDimension - 1] : theta[lag - 1];
    }
  }
}

void MCCovTP::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  const int lag = k == fDimension - 1 ? 0 : k + 1;
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) d(i, j) = std::abs(i - j) == lag ? 1.0 : 0.0;
  }
}

void MCCovTP::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setZero(fDimension);
  theta[fDimension - 1] = residualSide ? 1.0 : 0.0;
}

void MCCovTP::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  const double bound = 0.95 * theta[fDimension - 1];
  for (int k = 0; k + 1 < fDimension; ++k) theta[k] = std::max(-bound, std::min(bound, theta[k]));
  for (int attempt = 0; attempt < 60 && !IsClearlyPositiveDefinite(theta); ++attempt) {
    theta.head(fDimension - 1) *= 0.8;
  }
}

}  // namespace MCEngine_850
