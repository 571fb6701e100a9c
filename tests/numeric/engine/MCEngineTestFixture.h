#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestDesign.h"

// Test-only comparison of a fit with a reference file written by
// tests/numeric/reference/make_reference.R.
class MCEngineTestFixture {
 public:
  // Tolerances: relative for the likelihood, estimates, standard errors,
  // covariance parameters and F; relative for df and p; relative for the
  // covariance parameters' statistics, whose reference comes from a
  // numerical Hessian.
  static void Compare(const std::string& fixture, const MCEngine_850::MCEngineFitter& fitter,
                      const MCEngineTestDesign& design, double tolEstimates = 1e-5, double tolDF = 1e-3,
                      double tolCovStats = 1e-4);
  // The covariance parameters' standard errors, Wald Z, significance and
  // intervals, and their asymptotic covariance matrix.
  static void CompareCovParamStats(const nlohmann::json& ref, const MCEngine_850::MCEngineResult& result,
                                   double tol);
  // The fixture's "robust" or "residual_df" section: the fixed estimates'
  // standard errors, df and p by column name, the Type III tests by term, and
  // for "robust" the covariance of the estimates.
  static void CompareSection(const std::string& fixture, const std::string& section,
                             const MCEngine_850::MCEngineFitter& fitter, const MCEngineTestDesign& design,
                             double tol = 1e-5);

  // Path of an example data file and of a reference file.
  static std::string DataPath(const std::string& file);
  static std::string FixturePath(const std::string& name);
};
