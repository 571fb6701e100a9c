#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestGlmm.h"

using namespace MCEngine_850;
using namespace GLMMConst_850;

namespace {

nlohmann::json ReadReference(const std::string& fit) { return ReadGlmmReference("pseudo_likelihood", fit); }

// Estimates and standard errors by column name, the random intercept's
// variance, and the deviance and Pearson statistic at the conditional means.
void CompareWithReference(const nlohmann::json& ref, const MCEngineTestDesign& design, const MCEngineResult& result,
                          double tolerance) {
  CompareFixedEstimates(ref, design, result, tolerance);
  ASSERT_EQ(result.GetCovParams().size(), 1u);  // the fixed scale is no parameter
  EXPECT_TRUE(Near(result.GetCovParams()[0].GetEstimate(),
                                        ref["random_variance"].get<double>(), tolerance));
  EXPECT_TRUE(Near(result.GetDeviance(), ref["deviance"].get<double>(), tolerance));
  EXPECT_TRUE(Near(result.GetPearsonChiSquare(), ref["pearson"].get<double>(), tolerance));
}

}  // namespace

TEST(MCEnginePseudoLikelihoodTest, CbppEventsOutOfTrialsAgreeWithTheResidualReference) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, true));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_TRUE(result.IsGeneralized());
  EXPECT_TRUE(result.IsPseudoConverged());
  EXPECT_TRUE(result.IsScaleFixed());
  EXPECT_EQ(result.GetScale(), 1.0);
  CompareWithReference(ReadReference("cbpp_reml"), *c.design, result, 1e-6);
  EXPECT_FALSE(result.GetTypeIIITests().empty());
}

TEST(MCEnginePseudoLikelihoodTest, CbppMaximumPseudoLikelihoodAgreesWithTheReference) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, false)).IsError());
  CompareWithReference(ReadReference("cbpp_ml"), *c.design, fitter.GetResult(), 1e-6);
}

TEST(MCEnginePseudoLikelihoodTest, PoissonCountsAgreeWithTheReference) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_POISSON, true)).IsError());
  CompareWithReference(ReadReference("epil_reml"), *c.design, fitter.GetResult(), 1e-6);
}

TEST(MCEnginePseudoLikelihoodTest, BinaryTargetAgreesWithTheReference) {
  MCEngineTestGlmm c;
  ReadGlmm(c, "bacteria.csv", {"ID", "trt"}, "y", {"Intercept", "trt", "wk2"}, "ID");
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, true)).IsError());
  CompareWithReference(ReadReference("bacteria_reml"), *c.design, fitter.GetResult(), 1e-6);
}

TEST(MCEnginePseudoLikelihoodTest, TargetsItCannotFitAreRefusedNotFittedAsNormal) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  std::vector<MCEngineSettings> refused;
  refused.push_back(GeneralizedSettings(DIST_MULTINOMIAL, true));  // the thresholds are not estimated yet
  MCEngineSettings poissonLogit = GeneralizedSettings(DIST_POISSON, true);
  MCEngineTarget target = poissonLogit.GetTarget();
  target.SetLink(LINK_LOGIT);
  poissonLogit.SetTarget(target);
  refused.push_back(poissonLogit);
  for (const MCEngineSettings& settings : refused) {
    MCEngineFitter fitter;
    const MCEngineStatus status = fitter.Fit(c.input, settings);
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(status.GetCode(), MCEngineStatus::kGeneralizedUnavailable);
    EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
    EXPECT_EQ(fitter.GetWorkingInput(), nullptr);
  }
  // A fixed scale with a residual structure over repeated positions.
  MCEngineResidualBlock residual;
  residual.SetCovType(MCEngineCovType::AR1);
  std::vector<int> herd(static_cast<std::size_t>(c.input.GetNRecords()));
  for (std::size_t r = 0; r < herd.size(); ++r) herd[r] = static_cast<int>(r / 4);
  residual.SetSubjects(herd);
  c.input.SetResidualBlock(residual);
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, true)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
}

TEST(MCEnginePseudoLikelihoodTest, EventsAboveTheirTrialsAreNamedWithTheirCount) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  std::vector<double> y = c.input.GetY();
  y[0] = c.input.GetTrials()[0] + 1.0;
  y[5] = -1.0;
  c.input.SetY(y);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, true));
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetCode(), MCEngineStatus::kTargetOutOfSupport);
  EXPECT_EQ(status.GetVariable(), 3);
  EXPECT_EQ(status.GetCount(), 2);
}

TEST(MCEnginePseudoLikelihoodTest, AnIterationLimitBeforeTheEstimatesSettleIsAWarning) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineSettings settings = GeneralizedSettings(DIST_BINOMIAL, true);
  MCEngineTarget target = settings.GetTarget();
  target.SetMaxPseudoIterations(2);
  settings.SetTarget(target);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, settings);
  EXPECT_TRUE(status.IsWarning());
  EXPECT_EQ(status.GetCode(), MCEngineStatus::kPseudoLikelihoodNotConverged);
  EXPECT_FALSE(fitter.GetResult().IsPseudoConverged());
  EXPECT_EQ(fitter.GetResult().GetPseudoIterations(), 2);
  EXPECT_FALSE(fitter.GetResult().GetBeta().empty());
}

TEST(MCEnginePseudoLikelihoodTest, SubjectsWithOnlyZeroCountsAreCounted) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "lbase"});
  // Subject 58 of the data had no seizure at any visit; here subjects 1
  // and 2 (the first eight records) lose theirs too.
  std::vector<double> y = c.input.GetY();
  for (int r = 0; r < 8; ++r) y[static_cast<std::size_t>(r)] = 0.0;
  c.input.SetY(y);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_POISSON, true)).IsError());
  ASSERT_TRUE(HasWarning(fitter.GetResult(), MCEngineStatus::kZeroCountSubjects));
  for (const MCEngineStatus& w : fitter.GetResult().GetWarnings()) {
    if (w.GetCode() != MCEngineStatus::kZeroCountSubjects) continue;
    EXPECT_EQ(w.GetBlock(), 0);
    EXPECT_EQ(w.GetCount(), 3);
  }
}

TEST(MCEnginePseudoLikelihoodTest, ABinaryTargetTheFixedEffectsSeparateIsWarnedOf) {
  // Twelve subjects of four records; y is 1 exactly where x is.
  MCEngineInput input;
  const int n = 48;
  std::vector<double> y(n), X(2 * n);
  std::vector<int> subject(n);
  for (int r = 0; r < n; ++r) {
    const double x = (r % 4) >= 2 ? 1.0 : 0.0;
    y[static_cast<std::size_t>(r)] = x;
    X[static_cast<std::size_t>(2 * r)] = 1.0;
    X[static_cast<std::size_t>(2 * r + 1)] = x;
    subject[static_cast<std::size_t>(r)] = r / 4;
  }
  input.SetY(y);
  input.SetX(2, X);
  MCEngineRandomBlock block;
  block.SetDenseColumns(1, std::vector<double>(n, 1.0));
  block.SetSubjects(subject);
  input.AddRandomBlock(block);
  MCEngineSettings settings = GeneralizedSettings(DIST_BINOMIAL, true);
  MCEngineTarget target = settings.GetTarget();
  target.SetMaxPseudoIterations(30);
  settings.SetTarget(target);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(input, settings);
  // The working response of the first iteration is a function of x: the
  // working model fits it exactly.
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetCode(), MCEngineStatus::kPerfectFit);
  EXPECT_TRUE(HasWarning(fitter.GetResult(), MCEngineStatus::kQuasiSeparation));
}

namespace {

// Reaction ~ Days without random effects: the iterations are those of a
// generalized linear model, whose estimated scale is the Pearson statistic
// over n - p.
void CompareSleepstudyWithGlm(TargetDistType dist, const std::string& fixture) {
  const std::unique_ptr<MCEngineTestFixture::Model> m =
      MCEngineTestFixture::Load("sleepstudy.csv", std::set<std::string>{"Subject"});
  m->fpDesign->SetResponse("Reaction");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("Days");
  m->fInput = m->fpDesign->Build();
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(m->fInput, GeneralizedSettings(dist, true)).IsError());
  const MCEngineResult& result = fitter.GetResult();
  const nlohmann::json ref = ReadReference(fixture);
  ASSERT_FALSE(ref.is_null());
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const int col = m->fpDesign->FindColumnName(ref["columns"][i].get<std::string>());
    ASSERT_GE(col, 0);
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(col)];
    EXPECT_TRUE(Near(b.GetEstimate(), ref["estimates"][i].get<double>(), 1e-7));
    EXPECT_TRUE(Near(b.GetStdError(), ref["std_errors"][i].get<double>(), 1e-6));
  }
  EXPECT_FALSE(result.IsScaleFixed());
  EXPECT_TRUE(Near(result.GetScale(), ref["scale"].get<double>(), 1e-6));
  EXPECT_TRUE(Near(result.GetDeviance(), ref["deviance"].get<double>(), 1e-7));
  EXPECT_TRUE(Near(result.GetPearsonChiSquare(), ref["pearson"].get<double>(), 1e-6));
}

}  // namespace

TEST(MCEnginePseudoLikelihoodTest, GammaWithoutRandomEffectsIsTheGeneralizedLinearModel) {
  CompareSleepstudyWithGlm(DIST_GAMMA, "sleep_gamma");
}

TEST(MCEnginePseudoLikelihoodTest, InverseGaussianWithoutRandomEffectsIsTheGeneralizedLinearModel) {
  CompareSleepstudyWithGlm(DIST_IGAUSS, "sleep_igauss");
}

TEST(MCEnginePseudoLikelihoodTest, NegativeBinomialCountsEstimateTheirShape) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_NEGBIN, true)).IsError());
  const nlohmann::json ref = ReadReference("epil_negbin");
  CompareWithReference(ref, *c.design, fitter.GetResult(), 1e-6);
  EXPECT_TRUE(Near(fitter.GetResult().GetShape(), ref["shape"].get<double>(), 1e-6));
  EXPECT_TRUE(fitter.GetResult().IsScaleFixed());
}
