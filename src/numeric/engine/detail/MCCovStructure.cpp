#include "numeric/engine/detail/MCCovStructure.h"

#include <cmath>
#include <limits>

namespace MCEngine_850 {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
// Correlations are kept this far inside their interval.
constexpr double kCorrelationMargin = 1e-10;

}  // namespace

int MCCovStructure::GetParamEffect(int) const { return -1; }

bool MCCovStructure::IsLinearParam(int k) const {
  const MCEngineCovParam::Kind kind = GetParamKind(k);
  return kind == MCEngineCovParam::kVariance || kind == MCEngineCovParam::kCovariance;
}

void MCCovStructure::SecondDerivative(const Eigen::VectorXd&, int, int, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
}

void MCCovStructure::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  for (int k = 0; k < GetNParams(); ++k) {
    switch (GetParamKind(k)) {
      case MCEngineCovParam::kVariance:
        if (!(theta[k] >= smallVariance)) theta[k] = smallVariance;
        break;
      case MCEngineCovParam::kCorrelation: {
        double lower = -1.0, upper = 1.0;
        GetBounds(k, lower, upper);
        const double margin = 0.05 * (upper - lower) / 2.0;
        if (!std::isfinite(theta[k])) theta[k] = 0.5 * (lower + upper);
        if (theta[k] > upper - margin) theta[k] = upper - margin;
        if (theta[k] < lower + margin) theta[k] = lower + margin;
        break;
      }
      case MCEngineCovParam::kCovariance:
      case MCEngineCovParam::kLoading:
        if (!std::isfinite(theta[k])) theta[k] = 0.0;
        break;
      case MCEngineCovParam::kRange:
        if (!(theta[k] > 0.0) || !std::isfinite(theta[k])) theta[k] = 1.0;
        break;
    }
  }
}

std::vector<double> MCCovStructure::GetStartCandidates(int k) const {
  if (GetParamKind(k) != MCEngineCovParam::kCorrelation) return {};
  static const double kGrid[] = {-0.5, -0.2, 0.2, 0.5, 0.8, 0.95};
  double lower = -1.0, upper = 1.0;
  GetBounds(k, lower, upper);
  std::vector<double> out;
  for (double r : kGrid) {
    if (r > lower && r < upper) out.push_back(r);
  }
  return out;
}

void MCCovStructure::Canonicalize(Eigen::VectorXd&) const {}

void MCCovStructure::GetBounds(int k, double& lower, double& upper) const {
  switch (GetParamKind(k)) {
    case MCEngineCovParam::kVariance:
      lower = 0.0;
      upper = kInf;
      return;
    case MCEngineCovParam::kCorrelation:
      lower = -1.0;
      upper = 1.0;
      return;
    case MCEngineCovParam::kRange:
      lower = 0.0;
      upper = kInf;
      return;
    case MCEngineCovParam::kCovariance:
    case MCEngineCovParam::kLoading:
      break;
  }
  lower = -kInf;
  upper = kInf;
}

bool MCCovStructure::InBounds(const Eigen::VectorXd& theta) const {
  for (int k = 0; k < GetNParams(); ++k) {
    const double v = theta[k];
    if (!std::isfinite(v)) return false;
    double lower = -kInf, upper = kInf;
    GetBounds(k, lower, upper);
    const MCEngineCovParam::Kind kind = GetParamKind(k);
    if (kind == MCEngineCovParam::kVariance) {
      if (v < lower) return false;
    } else if (kind == MCEngineCovParam::kCorrelation) {
      if (!(v > lower + kCorrelationMargin && v < upper - kCorrelationMargin)) return false;
    } else if (!(v > lower && v < upper)) {
      return false;
    }
  }
  return true;
}

double MCCovStructure::ScalePower(MCEngineCovParam::Kind kind) {
  switch (kind) {
    case MCEngineCovParam::kVariance:
    case MCEngineCovParam::kCovariance:
      return 1.0;
    case MCEngineCovParam::kLoading:
      return 0.5;
    case MCEngineCovParam::kCorrelation:
    case MCEngineCovParam::kRange:
      break;
  }
  return 0.0;
}

bool MCCovStructure::IsClearlyPositiveDefinite(const Eigen::VectorXd& theta) const {
  Eigen::MatrixXd sigma;
  Build(theta, sigma);
  if (!sigma.allFinite()) return false;
  Eigen::LLT<Eigen::MatrixXd> llt(sigma);
  if (llt.info() != Eigen::Success) return false;
  const double largest = std::sqrt(sigma.diagonal().cwiseAbs().maxCoeff());
  return llt.matrixLLT().diagonal().minCoeff() > 1e-6 * largest;
}

}  // namespace MCEngine_850
