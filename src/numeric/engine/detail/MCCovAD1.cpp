#include "numeric/engine/detail/MCCovAD1.h"

#include <algorithm>

namespace MCEngine_850 {

namespace {

// The product of rho_k for k in [i, j) except k = skip1 and k = skip2.
double Product(const Eigen::VectorXd& rho, int i, int j, int skip1, int skip2) {
  double p = 1.0;
  for (int k = i; k < j; ++k) {
    if (k != skip1 && k != skip2) p *= rho[k];
  }
  return p;
}

}  // namespace

std::string MCCovAD1::GetCorrelationLabel(int m) const { return "Rho(" + std::to_string(m + 1) + ")"; }

void MCCovAD1::Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const {
  rc.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    rc(i, i) = 1.0;
    for (int j = i + 1; j < fDimension; ++j) rc(i, j) = rc(j, i) = Product(rho, i, j, -1, -1);
  }
}

void MCCovAD1::CorrelationDerivative(const Eigen::VectorXd& rho, int m, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  for (int i = 0; i <= m; ++i) {
    for (int j = m + 1; j < fDimension; ++j) d(i, j) = d(j, i) = Product(rho, i, j, m, -1);
  }
}

void MCCovAD1::CorrelationSecondDerivative(const Eigen::VectorXd& rho, int m, int n, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  if (m == n) return;
  const int lo = std::min(m, n), hi = std::max(m, n);
  for (int i = 0; i <= lo; ++i) {
    for (int j = hi + 1; j < fDimension; ++j) d(i, j) = d(j, i) = Product(rho, i, j, m, n);
  }
}

}  // namespace MCEngine_850
