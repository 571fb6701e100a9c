#include "numeric/engine/detail/MCCovHeterogeneous.h"

#include <cmath>

namespace MCEngine_850 {

namespace {

Eigen::VectorXd StandardDeviations(const Eigen::VectorXd& theta, int t) {
  Eigen::VectorXd sd(t);
  for (int i = 0; i < t; ++i) sd[i] = theta[i] > 0.0 ? std::sqrt(theta[i]) : 0.0;
  return sd;
}

}  // namespace

MCEngineCovParam::Kind MCCovHeterogeneous::GetParamKind(int k) const {
  return k < fDimension ? MCEngineCovParam::kVariance : MCEngineCovParam::kCorrelation;
}

std::string MCCovHeterogeneous::GetParamLabel(int k, bool) const {
  if (k < fDimension) return "Var(" + std::to_string(k + 1) + ")";
  return GetCorrelationLabel(k - fDimension);
}

void MCCovHeterogeneous::CorrelationSecondDerivative(const Eigen::VectorXd&, int, int, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
}

void MCCovHeterogeneous::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  const Eigen::VectorXd sd = StandardDeviations(theta, fDimension);
  Correlation(theta.tail(GetNCorrelations()), sigma);
  sigma = sd.asDiagonal() * sigma * sd.asDiagonal();
}

// d sqrt(v_i v_j) / d v_k: 1 at (k, k); sd_j / (2 sd_k) along row and column
// k. At v_k = 0 the derivative is infinite when sd_j > 0; it is taken as 0
// there, the value it has along the direction where all variances are 0.
void MCCovHeterogeneous::ScaleDerivative(const Eigen::VectorXd& sd, int k, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  d(k, k) = 1.0;
  if (!(sd[k] > 0.0)) return;
  for (int j = 0; j < fDimension; ++j) {
    if (j == k) continue;
    d(k, j) = d(j, k) = sd[j] / (2.0 * sd[k]);
  }
}

void MCCovHeterogeneous::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  const Eigen::VectorXd sd = StandardDeviations(theta, fDimension);
  const Eigen::VectorXd rho = theta.tail(GetNCorrelations());
  if (k < fDimension) {
    Eigen::MatrixXd rc;
    Correlation(rho, rc);
    ScaleDerivative(sd, k, d);
    d = d.cwiseProduct(rc);
  } else {
    CorrelationDerivative(rho, k - fDimension, d);
    d = sd.asDiagonal() * d * sd.asDiagonal();
  }
}

void MCCovHeterogeneous::SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const {
  if (k > l) std::swap(k, l);
  const Eigen::VectorXd sd = StandardDeviations(theta, fDimension);
  const Eigen::VectorXd rho = theta.tail(GetNCorrelations());
  const int t = fDimension;
  if (l < t) {
    // Both variances.
    Eigen::MatrixXd rc;
    Correlation(rho, rc);
    d.setZero(t, t);
    if (k == l) {
      // d^2 sqrt(v_k) sd_j / d v_k^2 = -sd_j / (4 sd_k^3).
      if (sd[k] > 0.0) {
        for (int j = 0; j < t; ++j) {
          if (j != k) d(k, j) = d(j, k) = -sd[j] * rc(k, j) / (4.0 * sd[k] * sd[k] * sd[k]);
        }
      }
    } else if (sd[k] > 0.0 && sd[l] > 0.0) {
      d(k, l) = d(l, k) = rc(k, l) / (4.0 * sd[k] * sd[l]);
    }
  } else if (k < t) {
    // A variance and a correlation.
    Eigen::MatrixXd s;
    ScaleDerivative(sd, k, s);
    CorrelationDerivative(rho, l - t, d);
    d = d.cwiseProduct(s);
  } else {
    CorrelationSecondDerivative(rho, k - t, l - t, d);
    d = sd.asDiagonal() * d * sd.asDiagonal();
  }
}

void MCCovHeterogeneous::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setZero(GetNParams());
  theta.head(fDimension).setConstant(residualSide ? 1.0 : 0.0);
}

void MCCovHeterogeneous::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  MCCovStructure::Repair(theta, smallVariance);
  for (int attempt = 0; attempt < 60 && !IsClearlyPositiveDefinite(theta); ++attempt) {
    theta.tail(GetNCorrelations()) *= 0.8;
  }
}

}  // namespace MCEngine_850
