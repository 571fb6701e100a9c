#pragma once

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// One fixed-effect parameter (one column of the overparameterized design).
// A redundant (aliased) parameter has estimate 0 and missing statistics.
class MCEngineBetaStat {
 public:
  MCEngineBetaStat() = default;

  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  bool IsRedundant() const { return fbRedundant; }
  void SetRedundant(bool redundant) { fbRedundant = redundant; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetDF() const { return fDF; }
  void SetDF(double v) { fDF = v; }
  double GetT() const { return fT; }
  void SetT(double v) { fT = v; }
  double GetSig() const { return fSig; }
  void SetSig(double v) { fSig = v; }
  double GetLower() const { return fLower; }
  void SetLower(double v) { fLower = v; }
  double GetUpper() const { return fUpper; }
  void SetUpper(double v) { fUpper = v; }

 private:
  double fEstimate = 0.0;
  bool fbRedundant = false;
  double fStdError = MCEngineMissing::Value();
  double fDF = MCEngineMissing::Value();
  double fT = MCEngineMissing::Value();
  double fSig = MCEngineMissing::Value();
  double fLower = MCEngineMissing::Value();
  double fUpper = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
