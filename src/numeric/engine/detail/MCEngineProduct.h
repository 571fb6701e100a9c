#pragma once

#include <Eigen/Dense>

namespace MCEngine_850 {

// Dense products of the sizes a fit's statistics reach over a fixed factor
// of many levels (a thousand rows and columns and more), through the
// program's blocked kernel where the processor has it and the product is
// large enough to repay its packing, through Eigen's product elsewhere.
class MCEngineProduct {
 public:
  // op(A) op(B), each operand transposed when its flag is set.
  static Eigen::MatrixXd Of(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, bool transA = false,
                            bool transB = false);
};

}  // namespace MCEngine_850
