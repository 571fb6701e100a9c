#include "numeric/engine/detail/MCCovID.h"

namespace MCEngine_850 {

std::string MCCovID::GetParamLabel(int, bool residualSide) const {
  return residualSide ? "Residual" : "Variance";
}

void MCCovID::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.setZero(fDimension, fDimension);
  sigma.diagonal().setConstant(theta[0]);
}

void MCCovID::Derivative(const Eigen::VectorXd&, int, Eigen::MatrixXd& d) const {
  d.setIdentity(fDimension, fDimension);
}

void MCCovID::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setConstant(1, residualSide ? 1.0 : 0.0);
}

}  // namespace MCEngine_850
