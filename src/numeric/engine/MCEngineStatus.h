#pragma once

namespace MCEngine_850 {

// Outcome of a fit, or one warning raised during it: a numeric code and a
// kind. The codes are the ones the procedure turns into user messages.
class MCEngineStatus {
 public:
  enum Kind { kOK = 0, kWarning = 1, kError = 2 };

  // Settings or input that cannot describe a model.
  static constexpr long kInvalidSettings = 130009;
  // A model that cannot be built, e.g. a structure that is not available.
  static constexpr long kBuildModel = 130018;
  // The line search could not decrease the objective.
  static constexpr long kStepHalvingExhausted = 130024;
  // No admissible starting point was found.
  static constexpr long kInitialValueFailed = 130025;
  // The caller asked the fit to stop.
  static constexpr long kCancelled = 130032;
  // The Hessian could not be made positive definite during the iterations.
  static constexpr long kHessianSingularity = 130069;
  // Converged, but the final Hessian has a negative eigenvalue.
  static constexpr long kFinalHessianNotPD = 130070;
  // The residual scale is estimated as zero.
  static constexpr long kScaleZero = 130074;
  // Frequency weights differ within one independent group of records under
  // a residual structure that couples records.
  static constexpr long kDifferentWeightsInSubject = 130077;
  // The evaluation at the final estimates, from which every statistic is
  // computed, failed.
  static constexpr long kPostEstimationFailed = 130090;
  // Nothing left to fit after removing unusable records.
  static constexpr long kNoValidCases = 230024;
  // Two records of one residual subject share a repeated-measures position.
  static constexpr long kDuplicateRepeated = 230025;
  // The iteration limit was reached before convergence.
  static constexpr long kIterationLimit = 230036;
  // Converged, but the final Hessian is singular.
  static constexpr long kConvergedSingularHessian = 230037;
  // The fixed effects reproduce the response exactly.
  static constexpr long kPerfectFit = 230092;

  MCEngineStatus() = default;
  MCEngineStatus(long code, Kind kind) : fCode(code), fKind(kind) {}

  long GetCode() const { return fCode; }
  void SetCode(long code) { fCode = code; }
  Kind GetKind() const { return fKind; }
  void SetKind(Kind kind) { fKind = kind; }

  bool IsOK() const { return fKind == kOK; }
  bool IsWarning() const { return fKind == kWarning; }
  bool IsError() const { return fKind == kError; }

 private:
  long fCode = 0;
  Kind fKind = kOK;
};

}  // namespace MCEngine_850
