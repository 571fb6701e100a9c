#include "numeric/engine/detail/MCCovSpatial.h"

#include <algorithm>
#include <cmath>

namespace MCEngine_850 {

MCCovSpatial::MCCovSpatial(int dimension, const std::vector<double>& points, const MCCovSpatialKernel& kernel)
    : MCCovStructure(dimension), fKernel(kernel), fDistances(Eigen::MatrixXd::Zero(dimension, dimension)) {
  const int nc = dimension > 0 ? static_cast<int>(points.size()) / dimension : 0;
  for (int i = 0; i < dimension; ++i) {
    for (int j = 0; j < i; ++j) {
      double s = 0.0;
      for (int c = 0; c < nc; ++c) {
        const double diff = points[static_cast<std::size_t>(i * nc + c)] - points[static_cast<std::size_t>(j * nc + c)];
        s += diff * diff;
      }
      const double d = std::sqrt(s);
      fDistances(i, j) = fDistances(j, i) = d;
      if (d > 0.0 && (fMinDistance == 0.0 || d < fMinDistance)) fMinDistance = d;
      fMaxDistance = std::max(fMaxDistance, d);
    }
  }
}

MCEngineCovParam::Kind MCCovSpatial::GetParamKind(int k) const {
  return k == 0 ? fKernel.fKind : MCEngineCovParam::kVariance;
}

std::string MCCovSpatial::GetParamLabel(int k, bool residualSide) const {
  if (k == 0) return fKernel.fLabel;
  return residualSide ? "Residual" : "Variance";
}

void MCCovSpatial::Kernel(double phi, int order, Eigen::MatrixXd& out) const {
  out.resize(fDimension, fDimension);
  for (int i = 0; i < fDimension; ++i) {
    out(i, i) = order == 0 ? 1.0 : 0.0;
    for (int j = 0; j < i; ++j) {
      const double d = fDistances(i, j);
      double v = 0.0;
      if (d > 0.0) {
        v = order == 0 ? fKernel.fValue(d, phi) : order == 1 ? fKernel.fDerivative(d, phi) : fKernel.fSecondDerivative(d, phi);
      } else {
        v = order == 0 ? 1.0 : 0.0;
      }
      out(i, j) = out(j, i) = v;
    }
  }
}

void MCCovSpatial::GetBounds(int k, double& lower, double& upper) const {
  if (k == 0) {
    lower = fKernel.fLower;
    upper = fKernel.fUpper;
  } else {
    MCCovStructure::GetBounds(k, lower, upper);
  }
}

void MCCovSpatial::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  Kernel(theta[0], 0, sigma);
  sigma *= theta[1];
}

void MCCovSpatial::Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const {
  if (k == 0) {
    Kernel(theta[0], 1, d);
    d *= theta[1];
  } else {
    Kernel(theta[0], 0, d);
  }
}

void MCCovSpatial::SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const {
  if (k == 0 && l == 0) {
    Kernel(theta[0], 2, d);
    d *= theta[1];
  } else if (k != l) {
    Kernel(theta[0], 1, d);
  } else {
    d.setZero(fDimension, fDimension);
  }
}

void MCCovSpatial::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  // Without two distinct points phi plays no part; any admissible value serves.
  double phi = fMinDistance > 0.0 ? fKernel.fNullParam(fMinDistance) : 0.5;
  if (!(std::isfinite(phi) && phi >= 0.0)) phi = 0.5;
  theta.resize(2);
  theta << phi, residualSide ? 1.0 : 0.0;
}

void MCCovSpatial::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  const std::vector<double> candidates = GetStartCandidates(0);
  Eigen::VectorXd probe = theta;
  MCCovStructure::Repair(probe, smallVariance);
  theta[1] = probe[1];
  // A phi outside its interval starts in the middle of the candidates.
  if (!InBounds(theta) && !candidates.empty()) theta[0] = candidates[candidates.size() / 2];
  if (!InBounds(theta)) theta[0] = probe[0];
}

// Functions that fall off at distances from half the smallest to twice the
// largest distance between the points, in steps of about a third: the
// likelihood in phi often has several minima (for the linear and spherical
// functions a kink wherever phi cuts off a distance), and the search starts
// from the best of these.
std::vector<double> MCCovSpatial::GetStartCandidates(int k) const {
  if (k != 0 || !(fMinDistance > 0.0)) return {};
  const int n = 25;
  const double lo = 0.5 * fMinDistance, hi = 2.0 * fMaxDistance;
  std::vector<double> out;
  for (int i = 0; i < n; ++i) {
    const double r = lo * std::pow(hi / lo, static_cast<double>(i) / (n - 1));
    const double phi = fKernel.fParamForRange(r);
    Eigen::VectorXd theta(2);
    theta << phi, 1.0;
    if (std::isfinite(phi) && InBounds(theta)) out.push_back(phi);
  }
  return out;
}

}  // namespace MCEngine_850
