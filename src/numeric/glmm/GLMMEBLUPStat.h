#pragma once

#include <iosfwd>
#include <vector>

namespace MCGLMM_850 {

// The prediction of one random effect (EBLUP): column fColumn of random
// block fBlock for the subject whose subject variables hold fvSubjectValues
// (in the record's coding: category codes for categorical variables; empty
// for a block without subjects). The standard error is that of the
// prediction error, which includes the uncertainty of the fixed estimates;
// the degrees of freedom are Satterthwaite's. Statistics that cannot be
// computed hold the system-missing value.
class GLMMEBLUPStat {
 public:
  GLMMEBLUPStat();

  // Position of the block in the settings' random blocks.
  int GetBlock() const { return fBlock; }
  void SetBlock(int block) { fBlock = block; }
  const std::vector<double>& GetSubjectValues() const { return fvSubjectValues; }
  void SetSubjectValues(const std::vector<double>& values) { fvSubjectValues = values; }
  // Column of the block: the index into the block's random parameters.
  int GetColumn() const { return fColumn; }
  void SetColumn(int column) { fColumn = column; }

  double GetPrediction() const { return fPrediction; }
  void SetPrediction(double value) { fPrediction = value; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double value) { fStdError = value; }
  double GetDF() const { return fDF; }
  void SetDF(double value) { fDF = value; }
  double GetTStat() const { return fTStat; }
  void SetTStat(double value) { fTStat = value; }
  // Two-sided significance of the t statistic.
  double GetSig() const { return fSig; }
  void SetSig(double value) { fSig = value; }
  // Confidence bounds at the settings' confidence level.
  double GetLowerBound() const { return fLowerBound; }
  void SetLowerBound(double value) { fLowerBound = value; }
  double GetUpperBound() const { return fUpperBound; }
  void SetUpperBound(double value) { fUpperBound = value; }

  void Display(std::ostream& os) const;

 private:
  int fBlock;
  std::vector<double> fvSubjectValues;
  int fColumn;
  double fPrediction;
  double fStdError;
  double fDF;
  double fTStat;
  double fSig;
  double fLowerBound;
  double fUpperBound;
};

}  // namespace MCGLMM_850
