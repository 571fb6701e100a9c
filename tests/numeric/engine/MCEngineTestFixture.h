#pragma once

#include <string>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestDesign.h"

// Test-only comparison of a fit with a reference file written by
// tests/numeric/reference/make_reference.R.
class MCEngineTestFixture {
 public:
  // Tolerances: relative for the likelihood, estimates, standard errors,
  // covariance parameters and F; relative for df and p.
  static void Compare(const std::string& fixture, const MCEngine_850::MCEngineFitter& fitter,
                      const MCEngineTestDesign& design, double tolEstimates = 1e-5, double tolDF = 1e-3);

  // Path of an example data file and of a reference file.
  static std::string DataPath(const std::string& file);
  static std::string FixturePath(const std::string& name);
};
