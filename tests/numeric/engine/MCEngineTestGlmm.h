#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"

namespace MCEngine_850 {

// A generalized model's data for the engine's tests: the CSV it comes from,
// its design and the engine's input.
struct MCEngineTestGlmm {
  MCEngineTestCsv csv;
  std::unique_ptr<MCEngineTestDesign> design;
  MCEngineInput input;
};

::testing::AssertionResult Near(double a, double b, double rel);
std::string GlmmDataPath(const std::string& file);
// Settings of a generalized target with its default link, fitted by
// pseudo-likelihood.
MCEngineSettings GeneralizedSettings(GLMMConst_850::TargetDistType dist, bool reml);
// A column of the CSV as numbers.
std::vector<double> Column(const MCEngineTestCsv& csv, const std::string& name);
// cbpp: incidence out of size ~ period, a random intercept per herd.
void ReadCbpp(MCEngineTestGlmm& c);
// A data file of tests/data/numeric/glmm with its fixed terms and a random
// intercept per subject.
void ReadGlmm(MCEngineTestGlmm& c, const std::string& file, const std::set<std::string>& factors,
              const std::string& response, const std::vector<std::string>& terms, const std::string& subject);
void ReadEpil(MCEngineTestGlmm& c, const std::vector<std::string>& terms);
// One fit of a reference file of tests/data/numeric/reference.
nlohmann::json ReadGlmmReference(const std::string& fixture, const std::string& fit);
bool HasWarning(const MCEngineResult& result, long code);

// Likelihood fits agree with their R references to this relative tolerance
// in estimates and standard errors; the difference derivatives limit it.
constexpr double kLikelihoodTolerance = 1e-4;
// Settings of a generalized target with its default link, fitted by its
// likelihood.
MCEngineSettings LikelihoodSettings(GLMMConst_850::TargetDistType dist, GLMMConst_850::GeneralizedFitMethod method,
                                    int points = 1);
// The fixed estimates and standard errors by column name.
void CompareFixedEstimates(const nlohmann::json& ref, const MCEngineTestDesign& design, const MCEngineResult& result,
                           double tolerance);
// -2 log likelihood (less `constant`), the fixed estimates and standard
// errors by column name, and each record's linear predictor.
void CompareFixedWithReference(const nlohmann::json& ref, const MCEngineTestDesign& design,
                               const MCEngineResult& result, double constant = 0.0);

}  // namespace MCEngine_850
