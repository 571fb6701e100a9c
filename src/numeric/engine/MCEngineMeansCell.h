#pragma once

#include <vector>

#include "numeric/engine/MCEngineMissing.h"

namespace MCEngine_850 {

// One estimated marginal mean: its levels (one per factor of the table), the
// estimate, its standard error, Satterthwaite degrees of freedom and
// confidence bounds. A mean that is not estimable has missing statistics.
// Of a generalized model these are on the linear predictor's scale, and the
// mean on the data's scale (the inverse link of the estimate) comes with
// its delta-method standard error and the inverse link of the bounds.
class MCEngineMeansCell {
 public:
  MCEngineMeansCell() = default;

  const std::vector<int>& GetLevels() const { return fvLevels; }
  void SetLevels(const std::vector<int>& levels) { fvLevels = levels; }
  bool IsEstimable() const { return fbEstimable; }
  void SetEstimable(bool estimable) { fbEstimable = estimable; }
  double GetEstimate() const { return fEstimate; }
  void SetEstimate(double v) { fEstimate = v; }
  double GetStdError() const { return fStdError; }
  void SetStdError(double v) { fStdError = v; }
  double GetDF() const { return fDF; }
  void SetDF(double v) { fDF = v; }
  double GetLower() const { return fLower; }
  void SetLower(double v) { fLower = v; }
  double GetUpper() const { return fUpper; }
  void SetUpper(double v) { fUpper = v; }
  bool HasDataScale() const { return fbDataScale; }
  void SetDataScale(bool b) { fbDataScale = b; }
  double GetDataEstimate() const { return fDataEstimate; }
  void SetDataEstimate(double v) { fDataEstimate = v; }
  double GetDataStdError() const { return fDataStdError; }
  void SetDataStdError(double v) { fDataStdError = v; }
  double GetDataLower() const { return fDataLower; }
  void SetDataLower(double v) { fDataLower = v; }
  double GetDataUpper() const { return fDataUpper; }
  void SetDataUpper(double v) { fDataUpper = v; }

 private:
  std::vector<int> fvLevels;
  bool fbEstimable = false;
  double fEstimate = MCEngineMissing::Value();
  double fStdError = MCEngineMissing::Value();
  double fDF = MCEngineMissing::Value();
  double fLower = MCEngineMissing::Value();
  double fUpper = MCEngineMissing::Value();
  bool fbDataScale = false;
  double fDataEstimate = MCEngineMissing::Value();
  double fDataStdError = MCEngineMissing::Value();
  double fDataLower = MCEngineMissing::Value();
  double fDataUpper = MCEngineMissing::Value();
};

}  // namespace MCEngine_850
