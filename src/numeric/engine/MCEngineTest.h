#pragma once

#include <vector>

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// A test of H0: L beta = 0 with the fit's denominator degrees of freedom
// (Satterthwaite's unless the fit fixes one value for all tests).
// L has one row per hypothesis row over the overparameterized columns. For a
// single-row L the estimate, its standard error and t are filled as well.
class MCEngineTest {
 public:
  MCEngineTest() = default;

  // Index of the fixed-effect term tested, or -1 for a free contrast.
  int GetTerm() const { return fTerm; }
  void SetTerm(int term) { fTerm = term; }
  const std::vector<std::vector<double>>& GetL() const { return fvL; }
  void SetL(const std::vector<std::vector<double>>& L) { fvL = L; }
  // False when L is not estimable or has rank 0; the statistics are then missing.
  bool IsValid() const { return fbValid; }
  void SetValid(bool valid) { fbValid = valid; }

  double GetF() const { return fF; }
  void SetF(double v) { fF = v; }
  double GetNumDF() const { return fNumDF; }
  void SetNumDF(double v) { fNumDF = v; }
  double GetDenDF() const { return fDenDF; }
  void SetDenDF(double v) { fDenDF = v; }
  double GetSig() const { return fSig; }
  void SetSig(double v) { fSig = v; }

  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetT() const { return fT; }
  void SetT(double v) { fT = v; }

 private:
  int fTerm = -1;
  std::vector<std::vector<double>> fvL;
  bool fbValid = false;
  double fF = MCEngineMissing::Value();
  double fNumDF = MCEngineMissing::Value();
  double fDenDF = MCEngineMissing::Value();
  double fSig = MCEngineMissing::Value();
  double fEstimate = MCEngineMissing::Value();
  double fStdError = MCEngineMissing::Value();
  double fT = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
