#pragma once

#include "numeric/engine/MCEngineTarget.h"

namespace MCCommon_850 {
class MCProgressObserver;
class MCQueryCancel;
}

namespace MCEngine_850 {

// How the engine estimates and when it stops. A convergence criterion with a
// tolerance of 0 is not used; the iterations stop when any used criterion is
// met. Relative criteria divide by the objective (log likelihood, Hessian) or
// by the previous parameter value (parameters).
class MCEngineSettings {
 public:
  // Which evaluation of the likelihood to use: chosen from the design, by
  // independent groups of records, by the mixed-model equations held densely
  // (small problems), or by the same equations held sparse.
  enum SolverPath { kAutomatic = 0, kBySubject = 1, kMixedModelEquations = 2, kSparseEquations = 3 };
  // Denominator degrees of freedom of the tests and intervals of the fixed
  // effects: Satterthwaite's approximation, or n - rank(X) throughout.
  enum DFMethod { kSatterthwaite = 0, kResidual = 1 };

  MCEngineSettings() = default;

  bool GetREML() const { return fbREML; }
  void SetREML(bool reml) { fbREML = reml; }

  int GetMaxIterations() const { return fMaxIterations; }
  void SetMaxIterations(int n) { fMaxIterations = n; }
  int GetMaxStepHalvings() const { return fMaxStepHalvings; }
  void SetMaxStepHalvings(int n) { fMaxStepHalvings = n; }
  // Iterations that use the expected instead of the observed Hessian.
  int GetFisherSteps() const { return fFisherSteps; }
  void SetFisherSteps(int n) { fFisherSteps = n; }

  double GetHessianTolerance() const { return fHessianTolerance; }
  void SetHessianTolerance(double tol) { fHessianTolerance = tol; }
  bool GetHessianRelative() const { return fbHessianRelative; }
  void SetHessianRelative(bool relative) { fbHessianRelative = relative; }
  double GetLogLikTolerance() const { return fLogLikTolerance; }
  void SetLogLikTolerance(double tol) { fLogLikTolerance = tol; }
  bool GetLogLikRelative() const { return fbLogLikRelative; }
  void SetLogLikRelative(bool relative) { fbLogLikRelative = relative; }
  double GetParamTolerance() const { return fParamTolerance; }
  void SetParamTolerance(double tol) { fParamTolerance = tol; }
  bool GetParamRelative() const { return fbParamRelative; }
  void SetParamRelative(bool relative) { fbParamRelative = relative; }

  // Relative to the diagonal of X'X: a column whose remaining pivot falls to
  // this fraction of its diagonal is aliased.
  double GetSingularTolerance() const { return fSingularTolerance; }
  void SetSingularTolerance(double tol) { fSingularTolerance = tol; }

  // Confidence level in percent for the intervals of the estimates.
  double GetConfidenceLevel() const { return fConfidenceLevel; }
  void SetConfidenceLevel(double pct) { fConfidenceLevel = pct; }

  SolverPath GetSolverPath() const { return fSolverPath; }
  void SetSolverPath(SolverPath path) { fSolverPath = path; }
  // Under a residual of one variance, the records are reduced to their
  // cross products once per fit (each group's, subject by subject; all of
  // them, on the sparse equations) and every evaluation works from them;
  // false keeps the evaluations that visit the records (which the tests
  // compare with).
  bool GetCrossProducts() const { return fbCrossProducts; }
  void SetCrossProducts(bool use) { fbCrossProducts = use; }

  // Whether the fit tests the terms' Type I hypotheses as well as their
  // Type III ones (true by default); without them the result's Type I
  // tests are empty.
  bool GetTypeITests() const { return fbTypeITests; }
  void SetTypeITests(bool test) { fbTypeITests = test; }

  DFMethod GetDFMethod() const { return fDFMethod; }
  void SetDFMethod(DFMethod method) { fDFMethod = method; }
  // The covariance of the fixed estimates: model-based, or the empirical
  // (sandwich) estimator over the independent groups of records.
  bool GetRobustCovariance() const { return fbRobustCovariance; }
  void SetRobustCovariance(bool robust) { fbRobustCovariance = robust; }

  // The target's distribution and link; the default is the linear model.
  const MCEngineTarget& GetTarget() const { return fTarget; }
  void SetTarget(const MCEngineTarget& target) { fTarget = target; }
  // A residual variance held at this value instead of estimated, for
  // independent residuals only; 0 estimates it. Generalized fits set it for
  // the distributions that fix their scale.
  double GetFixedResidualVariance() const { return fFixedResidualVariance; }
  void SetFixedResidualVariance(double v) { fFixedResidualVariance = v; }

  // Asked once per iteration; a fit that is cancelled ends with the error
  // kCancelled. Not owned; may be null.
  const MCCommon_850::MCQueryCancel* GetCancel() const { return fpCancel; }
  void SetCancel(const MCCommon_850::MCQueryCancel* pCancel) { fpCancel = pCancel; }
  // Told each iteration and its -2 log likelihood, just before the cancel
  // question. Not owned; may be null.
  const MCCommon_850::MCProgressObserver* GetProgress() const { return fpProgress; }
  void SetProgress(const MCCommon_850::MCProgressObserver* pProgress) { fpProgress = pProgress; }

 private:
  bool fbREML = true;
  int fMaxIterations = 50;
  int fMaxStepHalvings = 20;
  int fFisherSteps = 0;
  double fHessianTolerance = 1e-8;
  bool fbHessianRelative = true;
  double fLogLikTolerance = 0.0;
  bool fbLogLikRelative = true;
  double fParamTolerance = 0.0;
  bool fbParamRelative = true;
  double fSingularTolerance = 1e-12;
  double fConfidenceLevel = 95.0;
  SolverPath fSolverPath = kAutomatic;
  bool fbCrossProducts = true;
  bool fbTypeITests = true;
  DFMethod fDFMethod = kSatterthwaite;
  bool fbRobustCovariance = false;
  MCEngineTarget fTarget;
  double fFixedResidualVariance = 0.0;
  const MCCommon_850::MCQueryCancel* fpCancel = nullptr;
  const MCCommon_850::MCProgressObserver* fpProgress = nullptr;
};

}  // namespace MCEngine_850
