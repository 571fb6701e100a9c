#pragma once

#include <vector>

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// One contrast among the means of the compare factor's levels within one
// combination of the other factors of the table (their levels, in the
// table's order without the compare factor). Level and reference name the
// two levels compared; the reference is -1 when the level is compared with
// a mean of levels, and both are -1 for a polynomial. The coefficients,
// one per level of the compare factor, define the contrast in all cases.
class MCEngineMeansContrast {
 public:
  MCEngineMeansContrast() = default;

  const std::vector<int>& GetByLevels() const { return fvByLevels; }
  void SetByLevels(const std::vector<int>& levels) { fvByLevels = levels; }
  int GetLevel() const { return fLevel; }
  void SetLevel(int level) { fLevel = level; }
  int GetReference() const { return fReference; }
  void SetReference(int level) { fReference = level; }
  const std::vector<double>& GetCoefficients() const { return fvCoefficients; }
  void SetCoefficients(const std::vector<double>& c) { fvCoefficients = c; }

  bool IsEstimable() const { return fbEstimable; }
  void SetEstimable(bool estimable) { fbEstimable = estimable; }
  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetT() const { return fT; }
  void SetT(double v) { fT = v; }
  double GetDF() const { return fDF; }
  void SetDF(double v) { fDF = v; }
  // Two-sided p value before and after the adjustment for the family.
  double GetSig() const { return fSig; }
  void SetSig(double v) { fSig = v; }
  double GetAdjustedSig() const { return fAdjustedSig; }
  void SetAdjustedSig(double v) { fAdjustedSig = v; }
  // Confidence bounds at the level of the family's adjustment.
  double GetLower() const { return fLower; }
  void SetLower(double v) { fLower = v; }
  double GetUpper() const { return fUpper; }
  void SetUpper(double v) { fUpper = v; }

 private:
  std::vector<int> fvByLevels;
  int fLevel = -1;
  int fReference = -1;
  std::vector<double> fvCoefficients;
  bool fbEstimable = false;
  double fEstimate = MCEngineMissing::Value();
  double fStdError = MCEngineMissing::Value();
  double fT = MCEngineMissing::Value();
  double fDF = MCEngineMissing::Value();
  double fSig = MCEngineMissing::Value();
  double fAdjustedSig = MCEngineMissing::Value();
  double fLower = MCEngineMissing::Value();
  double fUpper = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
