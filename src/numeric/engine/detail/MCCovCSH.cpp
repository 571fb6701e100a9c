#include "numeric/engine/detail/MCCovCSH.h"

namespace MCEngine_850 {

std::string MCCovCSH::GetCorrelationLabel(int) const { return "CSH rho"; }

void MCCovCSH::Correlation(const Eigen::VectorXd& rho, Eigen::MatrixXd& rc) const {
  rc.setConstant(fDimension, fDimension, rho[0]);
  rc.diagonal().setOnes();
}

void MCCovCSH::CorrelationDerivative(const Eigen::VectorXd&, int, Eigen::MatrixXd& d) const {
  d.setOnes(fDimension, fDimension);
  d.diagonal().setZero();
}

}  // namespace MCEngine_850
