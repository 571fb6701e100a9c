#pragma once

#include <string>

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// One covariance parameter on its natural scale (variances and covariances,
// not ratios; correlations as correlations).
class MCEngineCovParam {
 public:
  // A loading is a factor-analytic coefficient (a covariance is a product of
  // two); a range is a positive spatial range or decay rate, in the units of
  // the coordinates.
  enum Kind { kVariance = 0, kCovariance = 1, kCorrelation = 2, kLoading = 3, kRange = 4 };

  MCEngineCovParam() = default;

  // Index of the random block, or -1 for the residual block.
  int GetBlock() const { return fBlock; }
  void SetBlock(int block) { fBlock = block; }
  // For a VC block, the effect the variance belongs to; else -1.
  int GetEffect() const { return fEffect; }
  void SetEffect(int effect) { fEffect = effect; }
  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(const std::string& label) { fLabel = label; }
  Kind GetKind() const { return fKind; }
  void SetKind(Kind kind) { fKind = kind; }

  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  // Estimated on a bound (a variance at 0, a correlation at the end of its
  // interval); it has no standard error.
  bool IsOnBoundary() const { return fbOnBoundary; }
  void SetOnBoundary(bool b) { fbOnBoundary = b; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetWaldZ() const { return fWaldZ; }
  void SetWaldZ(double v) { fWaldZ = v; }
  double GetSig() const { return fSig; }
  void SetSig(double v) { fSig = v; }
  double GetLower() const { return fLower; }
  void SetLower(double v) { fLower = v; }
  double GetUpper() const { return fUpper; }
  void SetUpper(double v) { fUpper = v; }

 private:
  int fBlock = -1;
  int fEffect = -1;
  std::string fLabel;
  Kind fKind = kVariance;
  double fEstimate = 0.0;
  bool fbOnBoundary = false;
  double fStdError = MCEngineMissing::Value();
  double fWaldZ = MCEngineMissing::Value();
  double fSig = MCEngineMissing::Value();
  double fLower = MCEngineMissing::Value();
  double fUpper = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
