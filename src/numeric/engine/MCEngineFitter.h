#pragma once

#include <memory>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/MCEngineTest.h"

namespace MCEngine_850 {

class MCEngineFitterImpl;
class MCEngineOrdinal;
class MCEnginePseudoLikelihood;

// Fits a linear mixed model by REML or ML and keeps what later tests need.
// A target of another distribution or link (the settings' target) is fitted
// as a generalized model through working linear models; the fitter then
// answers for the last of them, whose response is the working response.
class MCEngineFitter {
 public:
  MCEngineFitter();
  ~MCEngineFitter();
  MCEngineFitter(const MCEngineFitter&) = delete;
  MCEngineFitter& operator=(const MCEngineFitter&) = delete;

  // Fits the model; the returned status is also the result's status.
  MCEngineStatus Fit(const MCEngineInput& input, const MCEngineSettings& settings);

  const MCEngineResult& GetResult() const;
  // The input of the last working linear model of a generalized fit; null
  // after a linear one. Predictions and tests refer to it.
  const MCEngineInput* GetWorkingInput() const;

  // Tests L beta = 0 after a successful fit; L has one row per hypothesis row
  // over all overparameterized columns.
  MCEngineTest TestContrast(const std::vector<std::vector<double>>& L) const;
  // Tests L beta = K, one K value per row, in the response's units.
  MCEngineTest TestContrast(const std::vector<std::vector<double>>& L, const std::vector<double>& K) const;
  // Tests l beta = 0 for each row l on its own, the same as TestContrast({l})
  // row by row, with the products over all rows formed together. These are
  // the rows of marginal means: for an ordinal fit a row that weighs the
  // intercept is estimated on the latent scale, the intercept standing for
  // minus the thresholds' mean.
  std::vector<MCEngineTest> TestContrastRows(const std::vector<std::vector<double>>& rows) const;
  // How many times the tests after the fit formed their products with the
  // estimates' covariance (a work count for the tests; 0 before a fit).
  long GetCovarianceProducts() const;
  // Multiplications the fixed estimates' df and the tests spent on the
  // derivatives of the estimates' covariance since the fit (a work count; 0
  // before a fit).
  double GetDerivativeWork() const;
  // The records the last evaluation of the likelihood read, when the fit
  // goes group by group (a work count; -1 otherwise).
  double GetRecordsPerEvaluation() const;
  // The evaluations for the optimiser's steps that kept the groups'
  // products as low-rank factors, when the fit goes group by group (a work
  // count; 0 otherwise).
  int GetStepsByFactors() const;
  // Whether l beta is estimable (l lies in the row space of the design).
  bool IsEstimable(const std::vector<double>& l) const;

  // On the data of the last fit, at natural covariance parameters theta (in
  // the order of the result's covariance parameters): -2 log likelihood with
  // its constants, its analytic gradient, and the observed and expected
  // Hessians (row-major). False when V is not positive definite at theta or
  // there is no fitted data. forSteps evaluates as the optimiser's steps do,
  // which may take a cheaper way to the same numbers.
  bool EvaluateAt(const std::vector<double>& theta, double& minus2LogLik, std::vector<double>& gradient,
                  std::vector<double>& observedHessian, std::vector<double>& expectedHessian,
                  bool forSteps = false) const;

 private:
  // An ordinal target's cumulative link model, fitted by its own likelihood.
  MCEngineStatus FitOrdinal(const MCEngineInput& input, const MCEngineSettings& settings);

  // Takes the fitted model's data and structures when it is set up.
  friend class MCEnginePredictor;

  std::unique_ptr<MCEngineFitterImpl> fpImpl;
  std::unique_ptr<MCEnginePseudoLikelihood> fpGeneralized;
  std::unique_ptr<MCEngineOrdinal> fpOrdinal;
};

}  // namespace MCEngine_850
