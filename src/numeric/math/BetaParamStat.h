#pragma once

#include <cstdint>
#include <iosfwd>

namespace MCMath_850 {

// The statistics of one fixed parameter. The record has a fixed layout of
// 152 bytes, which readers of the engine's output may rely on:
//   0 index of the parameter (64-bit integer), 8 estimate, 16 redundant
//   (one byte), 24 standard error, 32 lower and 40 upper confidence bound,
//   48 Wald chi-square, 56 degrees of freedom, 64 significance,
//   72 exponentiated estimate, 80 its lower bound, 88 t statistic,
//   96 upper bound of the exponentiated estimate, 104 to 151 reserved.
// Every double starts as the system-missing value, which also marks a value
// that could not be computed.
class BetaParamStat {
 public:
  BetaParamStat();

  std::int64_t GetIndex() const { return fIndex; }
  void SetIndex(std::int64_t index) { fIndex = index; }
  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double value) { fEstimate = value; }
  bool GetRedundant() const { return fbRedundant; }
  void SetRedundant(bool redundant) { fbRedundant = redundant; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double value) { fStdError = value; }
  double GetLowerBound() const { return fLowerBound; }
  void SetLowerBound(double value) { fLowerBound = value; }
  double GetUpperBound() const { return fUpperBound; }
  void SetUpperBound(double value) { fUpperBound = value; }
  double GetWald() const { return fWald; }
  void SetWald(double value) { fWald = value; }
  double GetDF() const { return fDF; }
  void SetDF(double value) { fDF = value; }
  double GetSig() const { return fSig; }
  void SetSig(double value) { fSig = value; }
  double GetExpEstimate() const { return fExpEstimate; }
  void SetExpEstimate(double value) { fExpEstimate = value; }
  double GetExpLowerBound() const { return fExpLowerBound; }
  void SetExpLowerBound(double value) { fExpLowerBound = value; }
  double GetTStat() const { return fTStat; }
  void SetTStat(double value) { fTStat = value; }
  double GetExpUpperBound() const { return fExpUpperBound; }
  void SetExpUpperBound(double value) { fExpUpperBound = value; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::int64_t fIndex;
  double fEstimate;
  bool fbRedundant;
  double fStdError;
  double fLowerBound;
  double fUpperBound;
  double fWald;
  double fDF;
  double fSig;
  double fExpEstimate;
  double fExpLowerBound;
  double fTStat;
  double fExpUpperBound;
  [[maybe_unused]] double fReserved[6];
};

}  // namespace MCMath_850
