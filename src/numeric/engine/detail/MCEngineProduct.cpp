#include "numeric/engine/detail/MCEngineProduct.h"

#include "numeric/engine/detail/MCEngineGemm.h"

namespace MCEngine_850 {

Eigen::MatrixXd MCEngineProduct::Of(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool transA, bool transB) {
  const Eigen::Index m = transA ? a.cols() : a.rows();
  const Eigen::Index k = transA ? a.rows() : a.cols();
  const Eigen::Index n = transB ? b.rows() : b.cols();
  Eigen::MatrixXd c = Eigen::MatrixXd::Zero(m, n);
  if (MCEngineGemm::AddProduct(transA, transB, static_cast<int>(m), static_cast<int>(n), static_cast<int>(k), 1.0,
                               a.data(), static_cast<int>(a.rows()), b.data(), static_cast<int>(b.rows()), c.data(),
                               static_cast<int>(m))) {
    return c;
  }
  if (transA && transB) {
    c.noalias() = a.transpose() * b.transpose();
  } else if (transA) {
    c.noalias() = a.transpose() * b;
  } else if (transB) {
    c.noalias() = a * b.transpose();
  } else {
    c.noalias() = a * b;
  }
  return c;
}

}  // namespace MCEngine_850
