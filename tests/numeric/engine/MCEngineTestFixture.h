#pragma once

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <string>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"

// Test-only comparison of a fit with a reference file written by
// tests/numeric/reference/make_reference.R.
class MCEngineTestFixture {
 public:
  // An example data file with the design built over it; the design keeps a
  // reference to the CSV, so both live together.
  struct Model {
    MCEngineTestCsv fCsv;
    std::unique_ptr<MCEngineTestDesign> fpDesign;
    MCEngine_850::MCEngineInput fInput;
  };

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

  // Settings that iterate to a tight optimum (parameters to 1e-12), for
  // fits compared with each other to 1e-8.
  static MCEngine_850::MCEngineSettings Tight(
      bool reml, MCEngine_850::MCEngineSettings::SolverPath path = MCEngine_850::MCEngineSettings::kAutomatic);

  // Path of an example data file and of a reference file.
  static std::string DataPath(const std::string& file);
  static std::string FixturePath(const std::string& name);

  // An example data file read into a new model with an empty design.
  static std::unique_ptr<Model> Load(const std::string& file, const std::set<std::string>& factors);
  // The reference models' designs; none is built yet, so a test may add
  // blocks before building.
  static std::unique_ptr<Model> Sleepstudy(MCEngine_850::MCEngineCovType type);  // Reaction ~ Days, (Intercept Days | Subject)
  static std::unique_ptr<Model> Orthodont();  // distance ~ age*Sex, no random block
  static std::unique_ptr<Model> Oats();       // yield ~ Variety*nitro, Block and Block*Variety
  static std::unique_ptr<Model> Machines();   // score ~ Machine, Worker and Worker*Machine
  static std::unique_ptr<Model> Penicillin(); // diameter ~ 1, crossed plate and sample
};
