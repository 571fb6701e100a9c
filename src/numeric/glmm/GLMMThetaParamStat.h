#pragma once

#include <iosfwd>
#include <string>

namespace MCGLMM_850 {

// The statistics of one covariance parameter: where it belongs (a random
// block, or the residual block; for variance components the effect within
// the block), its label within its structure ("Variance", "Residual",
// "UN(2,1)", "Var(3)", "CS", "AR1 rho", ...), its estimate, and the Wald
// statistics from the asymptotic covariance of the covariance parameters.
// A parameter on a bound of its range (a variance estimated as 0, a
// correlation at the end of its interval) is redundant: it has no standard
// error, test or interval. Every double except the estimate starts as the
// system-missing value, which also marks a value that could not be computed.
//
// The significance is one-sided, P(Z > z), for a variance and two-sided for
// any other parameter. A variance has the interval whose ends are
// nu est / chi2(1 - a/2, nu) and nu est / chi2(a/2, nu) with nu = 2 z^2;
// any other parameter the Wald interval est -/+ z(1 - a/2) SE.
class GLMMThetaParamStat {
 public:
  // The kind of value the parameter is; a loading is a factor-analytic
  // coefficient, a range a spatial range or decay rate.
  enum ParamKind { VARIANCE = 0, COVARIANCE = 1, CORRELATION = 2, LOADING = 3, RANGE = 4 };
  // The block index of the residual block.
  static constexpr int kResidualBlock = -1;

  GLMMThetaParamStat();

  // The random block (its position among the settings' random blocks), or
  // kResidualBlock.
  int GetBlockIndex() const { return fBlockIndex; }
  void SetBlockIndex(int index) { fBlockIndex = index; }
  // For a parameter of one effect of its block (a variance component), the
  // effect's position in the block; -1 otherwise.
  int GetEffectIndex() const { return fEffectIndex; }
  void SetEffectIndex(int index) { fEffectIndex = index; }
  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(const std::string& label) { fLabel = label; }
  ParamKind GetKind() const { return fKind; }
  void SetKind(ParamKind kind) { fKind = kind; }

  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double value) { fEstimate = value; }
  bool GetRedundant() const { return fbRedundant; }
  void SetRedundant(bool redundant) { fbRedundant = redundant; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double value) { fStdError = value; }
  double GetWaldZ() const { return fWaldZ; }
  void SetWaldZ(double value) { fWaldZ = value; }
  double GetSig() const { return fSig; }
  void SetSig(double value) { fSig = value; }
  double GetLowerBound() const { return fLowerBound; }
  void SetLowerBound(double value) { fLowerBound = value; }
  double GetUpperBound() const { return fUpperBound; }
  void SetUpperBound(double value) { fUpperBound = value; }

  static const char* GetName(ParamKind kind);

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  int fBlockIndex;
  int fEffectIndex;
  std::string fLabel;
  ParamKind fKind;
  double fEstimate;
  bool fbRedundant;
  double fStdError;
  double fWaldZ;
  double fSig;
  double fLowerBound;
  double fUpperBound;
};

}  // namespace MCGLMM_850
