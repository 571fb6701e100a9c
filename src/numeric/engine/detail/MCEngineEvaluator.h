#pragma once

#include <Eigen/Dense>

#include "numeric/common/MCQueryCancel.h"
#include "numeric/engine/detail/MCEngineEvaluation.h"

namespace MCEngine_850 {

// Evaluates the likelihood and its derivatives for given covariance parameters.
class MCEngineEvaluator {
 public:
  enum Level { kValue = 0, kGradient = 1, kHessian = 2 };

  virtual ~MCEngineEvaluator() = default;
  // False when V is not positive definite at theta.
  virtual bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) = 0;
  // True when the observed Hessian is dear, so that the iterations take the
  // expected one throughout.
  virtual bool IteratesWithExpected() const { return false; }
  // The information of the moment equations for starting values at theta,
  // the point without random effects, when the evaluator has one of its
  // own; false to take the expected Hessian of an evaluation there.
  virtual bool StartInformation(const Eigen::VectorXd& /*theta*/, Eigen::MatrixXd& /*info*/) { return false; }

  // The stop query, asked inside the loops of an evaluation that can run
  // long (over the parameters of a large structure, over the subjects), so
  // that a stop does not wait for the next iteration. An evaluation it stops
  // returns false. Not owned; may be null.
  void SetCancel(const MCCommon_850::MCQueryCancel* pCancel) { fpCancel = pCancel; }

  // An evaluation for the optimiser's steps, which read the derivatives and
  // Hessians but not C or the A_k: an evaluator may reach them by a cheaper
  // way and leave C and the A_k empty.
  bool EvaluateForSteps(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) {
    fbForSteps = true;
    const bool evaluated = Evaluate(theta, level, reml, out);
    fbForSteps = false;
    return evaluated;
  }

 protected:
  bool Cancelled() const { return fpCancel != nullptr && fpCancel->IsCancelled(); }
  bool ForSteps() const { return fbForSteps; }

 private:
  const MCCommon_850::MCQueryCancel* fpCancel = nullptr;
  bool fbForSteps = false;
};

}  // namespace MCEngine_850
