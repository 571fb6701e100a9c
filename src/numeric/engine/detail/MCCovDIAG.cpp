#include "numeric/engine/detail/MCCovDIAG.h"

namespace MCEngine_850 {

std::string MCCovDIAG::GetParamLabel(int k, bool) const { return "Var(" + std::to_string(k + 1) + ")"; }

void MCCovDIAG::Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const {
  sigma.setZero(fDimension, fDimension);
  sigma.diagonal() = theta.head(fDimension);
}

void MCCovDIAG::Derivative(const Eigen::VectorXd&, int k, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
  d(k, k) = 1.0;
}

void MCCovDIAG::NullParams(bool residualSide, Eigen::VectorXd& theta) const {
  theta.setConstant(fDimension, residualSide ? 1.0 : 0.0);
}

}  // namespace MCEngine_850
