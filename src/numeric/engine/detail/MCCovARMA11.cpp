#include "numeric/engine/detail/MCCovARMA11.h"

#include <cstdlib>
#include <utility>

namespace MCEngine_850 {

namespace {

// rho^e for an integer e >= 0, with 0^0 = 1.
double IntPow(double rho, int e) {
  double r = 1.0;
  for (int i = 0; i < e; ++i) r *= rho;
  return r;
}

// The off-diagonal pattern gamma rho^(lag-1) differentiated a times in rho
// and b times in gamma (b at most 1); 0 on the diagonal.
double Pattern(double rho, double gamma, int lag, int a, int b) {
  if (lag == 0 || b > 1) return 0.0;
  const int e = lag - 1;
  if (a > e) return 0.0;
  double c = b == 1 ? 1.0 : gamma;
  for (int i = 0; i < a; ++i) c *= e - i;
  return c * IntPow(rho, e - a);
}

}  // namespace

MCEngineCovParam::Kind MCCovARMA11::GetParamKind(int k) const {
  return k == 2 ? MCEngineCovParam::kVariance : MCEngineCovParam::kCorrelation;
}

std::string MCCovARMA11::GetParamLabel(int k, bool residualSide) const {
  if (k == 0) return "ARMA11 rho";
  if (k == 1) return "ARMA11 gamma";
  return residualSide ? "Residual" : "Variance";
}

void MCCovARMA11::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      sigma(i, j) = theta[2] * (lag == 0 ? 1.0 : Pattern(theta[0], theta[1], lag, 0, 0));
    }
  }
}

void MCCovARMA11::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      if (k == 2) {
        d(i, j) = lag == 0 ? 1.0 : Pattern(theta[0], theta[1], lag, 0, 0);
      } else {
        d(i, j) = theta[2] * Pattern(theta[0], theta[1], lag, k == 0 ? 1 : 0, k == 1 ? 1 : 0);
      }
    }
  }
}

void MCCovARMA11::SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const {
  if (k > l) std::swap(k, l);
  const int a = (k == 0) + (l == 0);  // derivatives in rho
  const int b = (k == 1) + (l == 1);  // derivatives in gamma
  const bool variance = l == 2;
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      if (k == 2) {
        d(i, j) = 0.0;
      } else {
        d(i, j) = (variance ? 1.0 : theta[2]) * Pattern(theta[0], theta[1], lag, a, b);
      }
    }
  }
}

void MCCovARMA11::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.resize(3);
  theta << 0.0, 0.0, residualSide ? 1.0 : 0.0;
}

void MCCovARMA11::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  for (int attempt = 0; attempt < 60 && !IsClearlyPositiveDefinite(theta); ++attempt) theta[1] *= 0.8;
}

}  // namespace MCEngine_850
