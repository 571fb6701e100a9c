#pragma once

#include <memory>
#include <vector>

#include "numeric/engine/MCEnginePrediction.h"
#include "numeric/engine/MCEngineRandomEntry.h"

namespace MCEngine_850 {

class MCEngineFitter;
class MCEngineInput;
class MCEnginePredictorImpl;

// Predictions from a fitted model: of the random effects (EBLUPs), of the
// fixed part x'beta, and of x'beta + z'u, each with the standard error of
// its prediction error, taken from the inverse of the mixed-model equations
// and so including the uncertainty of the fixed estimates, and with
// Satterthwaite's degrees of freedom. Once set up, the predictor holds all
// it needs and no longer refers to the fitter or the input.
class MCEnginePredictor {
 public:
  MCEnginePredictor();
  ~MCEnginePredictor();
  MCEnginePredictor(const MCEnginePredictor&) = delete;
  MCEnginePredictor& operator=(const MCEnginePredictor&) = delete;

  // Takes what the predictions need from a fit of that input; false when the
  // fit produced no estimates.
  bool Setup(const MCEngineFitter& fitter, const MCEngineInput& input);
  bool IsReady() const;

  // Degrees of freedom n - rank(X) for every prediction instead of
  // Satterthwaite's (n the records' total frequency weight). Set before
  // Setup, it spares the set-up from the sparse factor the points that
  // Satterthwaite's df are differenced at.
  void SetResidualDF(bool residual);
  bool GetResidualDF() const;
  // Largest independent group of records the set-up by groups takes (its
  // work grows with the cube of a group's records); Setup fails on a fit
  // with a larger one. The set-up from the sparse factor has no such limit.
  // No limit by default.
  void SetMaxGroupRecords(int records);
  // How the predictions are set up: from the sparse factor of the
  // mixed-model equations when the fit went through them; otherwise group
  // by group, over a group's records or over its random columns, whichever
  // are fewer. The tests may name one to compare them. The work counts the
  // multiplications of the set-up's steps, and the largest matrix the
  // entries of the largest dense matrix it forms.
  enum SetupSpace { kAutomaticSpace, kRecordSpace, kColumnSpace, kSparseFactor };
  void SetSetupSpace(SetupSpace space);
  double GetSetupWork() const;
  double GetLargestSetupMatrix() const;

  // Whether any record of the fit belongs to that subject of the input's
  // random block.
  bool HasSubject(int block, int subject) const;

  // x'beta + z'u for x over all columns of the fixed design and the random
  // part given by its nonzero coefficients. Missing throughout when x'beta
  // is not estimable or an entry lies outside the input's blocks or columns.
  MCEnginePrediction Predict(const std::vector<double>& x, const std::vector<MCEngineRandomEntry>& z) const;

 private:
  std::unique_ptr<MCEnginePredictorImpl> fpImpl;
};

}  // namespace MCEngine_850
