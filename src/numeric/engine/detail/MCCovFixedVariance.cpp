#include "numeric/engine/detail/MCCovFixedVariance.h"

namespace MCEngine_850 {

void MCCovFixedVariance::Build(const Eigen::VectorXd&, Eigen::MatrixXd& sigma) const {
  sigma.setZero(fDimension, fDimension);
  sigma.diagonal().setConstant(fVariance);
}

// There is no parameter to differentiate by; asked anyway, the derivative is 0.
void MCCovFixedVariance::Derivative(const Eigen::VectorXd&, int, Eigen::MatrixXd& d) const {
  d.setZero(fDimension, fDimension);
}

void MCCovFixedVariance::NullParams(bool, Eigen::VectorXd& theta) const { theta.resize(0); }

}  // namespace MCEngine_850
