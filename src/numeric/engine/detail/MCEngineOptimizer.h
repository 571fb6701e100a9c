#pragma once

#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"

namespace MCEngine_850 {

// Newton-Raphson on the (profiled) -2 log likelihood in the working
// parameters: Fisher scoring for the first steps, a modified Hessian where it
// is not positive definite, step halving, variances kept non-negative and
// correlations inside (-1, 1) by projection and an active set, and the three
// convergence criteria.
class MCEngineOptimizer {
 public:
  MCEngineOptimizer(MCEngineEvaluator& evaluator, const MCEngineModel& model, const MCEngineData& data,
                    const MCEngineSettings& settings);

  // The objective at psi; +infinity when psi is not admissible. `scale`
  // receives the profiled residual variance (1 when not profiled).
  double Objective(const Eigen::VectorXd& psi, double* scale);
  // The objective from an evaluation at the natural parameters ToNatural(psi, 1).
  double ObjectiveOf(const MCEngineEvaluation& ev, double* scale) const;
  // The objective as -2 log likelihood of the response in its own units:
  // the fit works on a rescaled response.
  double Minus2LogLik(double objective) const;

  // Iterates from psi (which must be admissible) until convergence or a
  // stop; returns OK, the warning that ended the iterations, or the error
  // kCancelled when the settings' cancel query says so at the start of an
  // iteration.
  MCEngineStatus Run(Eigen::VectorXd& psi);

  int GetIterations() const { return fIterations; }
  bool IsConverged() const { return fbConverged; }
  double GetObjective() const { return fObjective; }
  double GetScale() const { return fScale; }

 private:
  bool Derivatives(const Eigen::VectorXd& psi, double scale, bool observed, Eigen::VectorXd& g, Eigen::MatrixXd& H);
  // The gradient and the observed or expected Hessian over a set of working
  // parameters; false unless the Hessian is positive definite.
  bool DerivativesOnSet(const Eigen::VectorXd& psi, double scale, bool observed, const std::vector<int>& set,
                        Eigen::VectorXd& gS, Eigen::MatrixXd& HS);
  // The Newton step over the set, kept when it raises the objective by no
  // more than slack; the largest change of a working parameter, 0 when the
  // step is not kept.
  double FinalNewtonStep(const std::vector<int>& set, const Eigen::VectorXd& gS, const Eigen::MatrixXd& HS,
                         double slack, Eigen::VectorXd& psi, double& f, double& s);
  Eigen::VectorXd Project(const Eigen::VectorXd& psi) const;
  bool IsVarianceWorking(int w) const;

  MCEngineEvaluator& fEvaluator;
  const MCEngineModel& fModel;
  const MCEngineData& fData;
  const MCEngineSettings& fSettings;
  int fIterations = 0;
  bool fbConverged = false;
  double fObjective = 0.0;
  double fScale = 1.0;
};

}  // namespace MCEngine_850
