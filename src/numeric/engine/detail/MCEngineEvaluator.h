#pragma once

#include <Eigen/Dense>

#include "numeric/engine/detail/MCEngineEvaluation.h"

namespace MCEngine_850 {

// Evaluates the likelihood and its derivatives for given covariance parameters.
class MCEngineEvaluator {
 public:
  enum Level { kValue = 0, kGradient = 1, kHessian = 2 };

  virtual ~MCEngineEvaluator() = default;
  // False when V is not positive definite at theta.
  virtual bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) = 0;
};

}  // namespace MCEngine_850
