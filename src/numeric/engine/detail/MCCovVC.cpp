#include "numeric/engine/detail/MCCovVC.h"

#include <algorithm>

namespace MCEngine_850 {

MCCovVC::MCCovVC(int dimension, const std::vector<int>& columnEffects)
    : MCCovStructure(dimension), fvColumnEffects(columnEffects) {
  if (static_cast<int>(fvColumnEffects.size()) != dimension) {
    fvColumnEffects.resize(static_cast<std::size_t>(dimension));
    for (int j = 0; j < dimension; ++j) fvColumnEffects[static_cast<std::size_t>(j)] = j;
  }
  fNEffects = 1;
  for (int e : fvColumnEffects) fNEffects = std::max(fNEffects, e + 1);
}

std::string MCCovVC::GetParamLabel(int, bool residualSide) const {
  return residualSide ? "Residual" : "Variance";
}

void MCCovVC::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.setZero(fDimension, fDimension);
  for (int j = 0; j < fDimension; ++j) sigma(j, j) = theta[fvColumnEffects[static_cast<std::size_t>(j)]];
}

void MCCovVC::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  for (int j = 0; j < fDimension; ++j) {
    if (fvColumnEffects[static_cast<std::size_t>(j)] == k) d(j, j) = 1.0;
  }
}

void MCCovVC::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setConstant(fNEffects, residualSide ? 1.0 : 0.0);
}

}  // namespace MCEngine_850
