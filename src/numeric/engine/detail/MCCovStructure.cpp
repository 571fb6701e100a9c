#include "numeric/engine/detail/MCCovStructure.h"

#include <cmath>

namespace MCEngine_850 {

int MCCovStructure::GetParamEffect(int) const { return -1; }

bool MCCovStructure::IsLinearParam(int k) const {
  return GetParamKind(k) != MCEngineCovParam::kCorrelation;
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
      case MCEngineCovParam::kCorrelation:
        if (!(std::fabs(theta[k]) <= 0.95)) theta[k] = theta[k] < 0.0 ? -0.95 : 0.95;
        break;
      case MCEngineCovParam::kCovariance:
        if (!std::isfinite(theta[k])) theta[k] = 0.0;
        break;
    }
  }
}

bool MCCovStructure::InBounds(const Eigen::VectorXd& theta) const {
  for (int k = 0; k < GetNParams(); ++k) {
    if (!std::isfinite(theta[k])) return false;
    switch (GetParamKind(k)) {
      case MCEngineCovParam::kVariance:
        if (theta[k] < 0.0) return false;
        break;
      case MCEngineCovParam::kCorrelation:
        if (!(std::fabs(theta[k]) < 1.0 - 1e-10)) return false;
        break;
      case MCEngineCovParam::kCovariance:
        break;
    }
  }
  return true;
}

}  // namespace MCEngine_850
