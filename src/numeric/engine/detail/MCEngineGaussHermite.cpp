#include "numeric/engine/detail/MCEngineGaussHermite.h"

#include <Eigen/Dense>
#include <algorithm>
#include <cmath>

namespace MCEngine_850 {

MCEngineGaussHermite::MCEngineGaussHermite(int n) {
  n = std::max(n, 1);
  // The nodes are the eigenvalues of the symmetric tridiagonal matrix of the
  // Hermite recurrence, the weights sqrt(pi) times the squared first
  // components of its normalised eigenvectors.
  Eigen::MatrixXd J = Eigen::MatrixXd::Zero(n, n);
  for (int k = 1; k < n; ++k) {
    J(k, k - 1) = std::sqrt(0.5 * k);
    J(k - 1, k) = J(k, k - 1);
  }
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> solver(J);
  const double sqrtPi = std::sqrt(std::acos(-1.0));
  fvNodes.resize(static_cast<std::size_t>(n));
  fvWeights.resize(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) {
    const double v = solver.eigenvectors()(0, k);
    fvNodes[static_cast<std::size_t>(k)] = solver.eigenvalues()[k];
    fvWeights[static_cast<std::size_t>(k)] = sqrtPi * v * v;
  }
  // An odd rule's middle node is 0 exactly, so one point is the Laplace
  // approximation without rounding.
  if (n % 2 == 1) fvNodes[static_cast<std::size_t>(n / 2)] = 0.0;
}

}  // namespace MCEngine_850
