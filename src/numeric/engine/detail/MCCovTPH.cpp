#include "numeric/engine/detail/MCCovTPH.h"

#include <cstdlib>

namespace MCEngine_850 {

std::string MCCovTPH::GetCorrelationLabel(int m) const { return "TPH(" + std::to_string(m + 1) + ")"; }

void MCCovTPH::Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const {
  rc.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) rc(i, j) = i == j ? 1.0 : rho[std::abs(i - j) - 1];
  }
}

void MCCovTPH::CorrelationDerivative(const Eigen::VectorXd&, int m, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) d(i, j) = std::abs(i - j) == m + 1 ? 1.0 : 0.0;
  }
}

}  // namespace MCEngine_850
