#pragma once

#include "numeric/common/MCStatusCode.h"

namespace MCEngine_850 {

// Outcome of a fit, or one warning raised during it: a numeric code and a
// kind. The codes are the component's, which the procedure turns into user
// messages.
class MCEngineStatus {
 public:
  enum Kind { kOK = 0, kWarning = 1, kError = 2 };

  // Settings or input that cannot describe a model.
  static constexpr long kInvalidSettings = MCCommon_850::MC_SETTINGS_INVALID;
  // A model that cannot be built, e.g. a structure that is not available.
  static constexpr long kBuildModel = MCCommon_850::MC_BUILD_MODEL;
  // The line search could not decrease the objective.
  static constexpr long kStepHalvingExhausted = MCCommon_850::MC_MAX_STEP_HALVING;
  // No admissible starting point was found.
  static constexpr long kInitialValueFailed = MCCommon_850::MC_INITIAL_VALUE_FAILED;
  // The caller asked the fit to stop.
  static constexpr long kCancelled = MCCommon_850::MC_CANCELLED;
  // The Hessian could not be made positive definite during the iterations.
  static constexpr long kHessianSingularity = MCCommon_850::MC_HESSIAN_SINGULAR;
  // Converged, but the final Hessian has a negative eigenvalue.
  static constexpr long kFinalHessianNotPD = MCCommon_850::MC_HESSIAN_NOT_PD;
  // The residual scale is estimated as zero.
  static constexpr long kScaleZero = MCCommon_850::MC_SCALE_ZERO;
  // Frequency weights differ within one independent group of records under
  // a residual structure that couples records.
  static constexpr long kDifferentWeightsInSubject = MCCommon_850::MC_WEIGHTS_DIFFER_IN_SUBJECT;
  // The evaluation at the final estimates, from which every statistic is
  // computed, failed.
  static constexpr long kPostEstimationFailed = MCCommon_850::MC_POST_ESTIMATION_FAILED;
  // Nothing left to fit after removing unusable records.
  static constexpr long kNoValidCases = MCCommon_850::MC_NO_VALID_CASES;
  // Two records of one residual subject share a repeated-measures position.
  static constexpr long kDuplicateRepeated = MCCommon_850::MC_DUPLICATE_REPEATED;
  // The iteration limit was reached before convergence.
  static constexpr long kIterationLimit = MCCommon_850::MC_ITERATION_LIMIT;
  // Converged, but the final Hessian is singular.
  static constexpr long kConvergedSingularHessian = MCCommon_850::MC_CONVERGED_SINGULAR_HESSIAN;
  // The fixed effects reproduce the response exactly.
  static constexpr long kPerfectFit = MCCommon_850::MC_PERFECT_FIT;
  // The estimated covariance matrix of a random block (GetBlock) or of the
  // residual block is not positive definite.
  static constexpr long kGMatrixNotPD = MCCommon_850::MC_G_NOT_PD;
  static constexpr long kRMatrixNotPD = MCCommon_850::MC_R_NOT_PD;
  // The target's distribution, link or fitting method cannot be fitted.
  static constexpr long kGeneralizedUnavailable = MCCommon_850::MC_GENERALIZED_UNAVAILABLE;
  // The pseudo-likelihood iterations reached their limit before the fixed
  // and covariance parameters settled.
  static constexpr long kPseudoLikelihoodNotConverged = MCCommon_850::MC_PL_NOT_CONVERGED;
  // GetCount records of the target (GetVariable) lie outside the support of
  // its distribution.
  static constexpr long kTargetOutOfSupport = MCCommon_850::MC_TARGET_OUT_OF_SUPPORT;
  // A quasi-complete separation may exist: a binary target's fitted means
  // reach 0 or 1.
  static constexpr long kQuasiSeparation = MCCommon_850::MC_QUASI_SEPARATION;
  // GetCount subjects of random block GetBlock have only zero counts.
  static constexpr long kZeroCountSubjects = MCCommon_850::MC_ZERO_COUNT_SUBJECTS;
  // A group of records that the random effects join would cost each
  // evaluation GetCount million multiplications, past what a fit takes.
  static constexpr long kRandomEffectsTooLarge = MCCommon_850::MC_RANDOM_EFFECTS_TOO_LARGE;

  MCEngineStatus() = default;
  MCEngineStatus(long code, Kind kind) : fCode(code), fKind(kind) {}

  long GetCode() const { return fCode; }
  void SetCode(long code) { fCode = code; }
  Kind GetKind() const { return fKind; }
  void SetKind(Kind kind) { fKind = kind; }

  bool IsOK() const { return fKind == kOK; }
  bool IsWarning() const { return fKind == kWarning; }
  bool IsError() const { return fKind == kError; }
  // The random block the status is about, from 0; -1 for none.
  int GetBlock() const { return fBlock; }
  void SetBlock(int block) { fBlock = block; }
  // The caller's variable the status is about, -1 for none, and a count of
  // records or subjects it names, -1 for none.
  int GetVariable() const { return fVariable; }
  void SetVariable(int variable) { fVariable = variable; }
  long GetCount() const { return fCount; }
  void SetCount(long count) { fCount = count; }

 private:
  long fCode = 0;
  int fBlock = -1;
  int fVariable = -1;
  long fCount = -1;
  Kind fKind = kOK;
};

}  // namespace MCEngine_850
