#include "numeric/engine/detail/MCCovCS.h"

#include <algorithm>
#include <cmath>

namespace MCEngine_850 {

MCEngineCovParam::Kind MCCovCS::GetParamKind(int k) const {
  return k == 0 ? MCEngineCovParam::kCovariance : MCEngineCovParam::kVariance;
}

std::string MCCovCS::GetParamLabel(int k, bool residualSide) const {
  if (k == 0) return "CS";
  return residualSide ? "Residual" : "Variance";
}

void MCCovCS::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.setConstant(fDimension, fDimension, theta[0]);
  sigma.diagonal().array() += theta[1];
}

void MCCovCS::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  if (k == 0) {
    d.setOnes(fDimension, fDimension);
  } else {
    d.setIdentity(fDimension, fDimension);
  }
}

void MCCovCS::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.resize(2);
  theta << 0.0, residualSide ? 1.0 : 0.0;
}

void MCCovCS::Repair(Eigen::VectorXd& theta, double smallVariance) const {
  if (!(theta[1] >= smallVariance)) theta[1] = smallVariance;
  if (!std::isfinite(theta[0])) theta[0] = 0.0;
  // The smallest eigenvalue is sigma^2 + t sigma_1; keep it clearly positive.
  const double lowest = -0.9 * theta[1] / std::max(1, fDimension);
  if (theta[0] < lowest) theta[0] = lowest;
}

}  // namespace MCEngine_850
