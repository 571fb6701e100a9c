#pragma once

#include <iosfwd>
#include <vector>

namespace MCGLMM_850 {

// One contrast among the means of the compare factor's categories, within
// one combination of the other factors of the table: their category codes,
// in the table's order without the compare factor. Category and reference
// are the two categories of the compare factor that the contrast compares;
// the reference is -1 when the category is compared with a mean of
// categories, and both are -1 for a polynomial. The coefficients, one per
// category of the compare factor, define the contrast in every case.
// Significance is two-sided; the adjusted one and the confidence bounds
// follow the request's adjustment within the family of contrasts of the
// same combination of the other factors. Doubles start as the
// system-missing value.
class GLMMEmmeansContrast {
 public:
  GLMMEmmeansContrast();

  const std::vector<int>& GetCategories() const { return fvCategories; }
  void SetCategories(const std::vector<int>& categories) { fvCategories = categories; }
  int GetCategory() const { return fCategory; }
  void SetCategory(int category) { fCategory = category; }
  int GetReference() const { return fReference; }
  void SetReference(int category) { fReference = category; }
  const std::vector<double>& GetCoefficients() const { return fvCoefficients; }
  void SetCoefficients(const std::vector<double>& coefficients) { fvCoefficients = coefficients; }

  bool GetEstimable() const { return fbEstimable; }
  void SetEstimable(bool estimable) { fbEstimable = estimable; }
  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double value) { fEstimate = value; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double value) { fStdError = value; }
  double GetTStat() const { return fTStat; }
  void SetTStat(double value) { fTStat = value; }
  double GetDF() const { return fDF; }
  void SetDF(double value) { fDF = value; }
  double GetSig() const { return fSig; }
  void SetSig(double value) { fSig = value; }
  double GetAdjustedSig() const { return fAdjustedSig; }
  void SetAdjustedSig(double value) { fAdjustedSig = value; }
  double GetLowerBound() const { return fLowerBound; }
  void SetLowerBound(double value) { fLowerBound = value; }
  double GetUpperBound() const { return fUpperBound; }
  void SetUpperBound(double value) { fUpperBound = value; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<int> fvCategories;
  int fCategory;
  int fReference;
  std::vector<double> fvCoefficients;
  bool fbEstimable;
  double fEstimate;
  double fStdError;
  double fTStat;
  double fDF;
  double fSig;
  double fAdjustedSig;
  double fLowerBound;
  double fUpperBound;
};

}  // namespace MCGLMM_850
