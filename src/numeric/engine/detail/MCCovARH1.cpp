#include "numeric/engine/detail/MCCovARH1.h"

#include <cstdlib>

namespace MCEngine_850 {

namespace {

// rho^e for an integer e >= 0, with 0^0 = 1.
double IntPow(double rho, int e) {
  double r = 1.0;
  for (int i = 0; i < e; ++i) r *= rho;
  return r;
}

}  // namespace

std::string MCCovARH1::GetCorrelationLabel(int) const { return "ARH1 rho"; }

void MCCovARH1::Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const {
  rc.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) rc(i, j) = IntPow(rho[0], std::abs(i - j));
  }
}

void MCCovARH1::CorrelationDerivative(const Eigen::VectorXd& rho, int, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      d(i, j) = lag == 0 ? 0.0 : lag * IntPow(rho[0], lag - 1);
    }
  }
}

void MCCovARH1::CorrelationSecondDerivative(const Eigen::VectorXd& rho, int, int, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      d(i, j) = lag < 2 ? 0.0 : lag * (lag - 1) * IntPow(rho[0], lag - 2);
    }
  }
}

}  // namespace MCEngine_850
