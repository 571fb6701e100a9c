#include "numeric/engine/detail/MCCovAR1.h"

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

MCEngineCovParam::Kind MCCovAR1::GetParamKind(int k) const {
  return k == 0 ? MCEngineCovParam::kCorrelation : MCEngineCovParam::kVariance;
}

std::string MCCovAR1::GetParamLabel(int k, bool residualSide) const {
  if (k == 0) return "AR1 rho";
  return residualSide ? "Residual" : "Variance";
}

void MCCovAR1::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) sigma(i, j) = theta[1] * IntPow(theta[0], std::abs(i - j));
  }
}

void MCCovAR1::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      if (k == 0) {
        d(i, j) = lag == 0 ? 0.0 : theta[1] * lag * IntPow(theta[0], lag - 1);
      } else {
        d(i, j) = IntPow(theta[0], lag);
      }
    }
  }
}

void MCCovAR1::SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const {
  d.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    for (int j = 0; j < fDimension; ++j) {
      const int lag = std::abs(i - j);
      if (k == 0 && l == 0) {
        d(i, j) = lag < 2 ? 0.0 : theta[1] * lag * (lag - 1) * IntPow(theta[0], lag - 2);
      } else if (k != l) {
        d(i, j) = lag == 0 ? 0.0 : lag * IntPow(theta[0], lag - 1);
      } else {
        d(i, j) = 0.0;
      }
    }
  }
}

void MCCovAR1::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.resize(2);
  theta << 0.0, residualSide ? 1.0 : 0.0;
}

}  // namespace MCEngine_850
