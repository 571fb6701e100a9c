#pragma once

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// A predicted value x'beta + z'u with the standard error of its prediction
// error (which includes the uncertainty of the fixed estimates) and the
// Satterthwaite degrees of freedom. Values that cannot be computed hold
// MCEngineMissing::Value().
class MCEnginePrediction {
 public:
  MCEnginePrediction() = default;

  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetDF() const { return fDF; }
  void SetDF(double v) { fDF = v; }

 private:
  double fEstimate = MCEngineMissing::Value();
  double fStdError = MCEngineMissing::Value();
  double fDF = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
