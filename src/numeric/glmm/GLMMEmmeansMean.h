#pragma once

#include <iosfwd>
#include <vector>

namespace MCGLMM_850 {

// One estimated marginal mean: the category code of each factor of its
// table (in the table's order), the mean, its standard error, degrees of
// freedom and confidence bounds. Doubles start as the system-missing value,
// which they keep when the mean is not estimable. Of a generalized model
// they are on the linear predictor's scale, and the data scale holds the
// inverse link of the mean, its delta-method standard error and the inverse
// link of the bounds.
class GLMMEmmeansMean {
 public:
  GLMMEmmeansMean();

  const std::vector<int>& GetCategories() const { return fvCategories; }
  void SetCategories(const std::vector<int>& categories) { fvCategories = categories; }
  bool GetEstimable() const { return fbEstimable; }
  void SetEstimable(bool estimable) { fbEstimable = estimable; }
  double GetMean() const { return fMean; }
  void SetMean(double value) { fMean = value; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double value) { fStdError = value; }
  double GetDF() const { return fDF; }
  void SetDF(double value) { fDF = value; }
  double GetLowerBound() const { return fLowerBound; }
  void SetLowerBound(double value) { fLowerBound = value; }
  double GetUpperBound() const { return fUpperBound; }
  void SetUpperBound(double value) { fUpperBound = value; }
  bool HasDataScale() const { return fbDataScale; }
  void SetDataScale(bool b) { fbDataScale = b; }
  double GetDataMean() const { return fDataMean; }
  void SetDataMean(double value) { fDataMean = value; }
  double GetDataStdError() const { return fDataStdError; }
  void SetDataStdError(double value) { fDataStdError = value; }
  double GetDataLowerBound() const { return fDataLowerBound; }
  void SetDataLowerBound(double value) { fDataLowerBound = value; }
  double GetDataUpperBound() const { return fDataUpperBound; }
  void SetDataUpperBound(double value) { fDataUpperBound = value; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<int> fvCategories;
  bool fbEstimable;
  double fMean;
  double fStdError;
  double fDF;
  double fLowerBound;
  double fUpperBound;
  bool fbDataScale;
  double fDataMean;
  double fDataStdError;
  double fDataLowerBound;
  double fDataUpperBound;
};

}  // namespace MCGLMM_850
