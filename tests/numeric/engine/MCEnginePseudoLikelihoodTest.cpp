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

using namespace MCEngine_850;
using namespace GLMMConst_850;

namespace {

::testing::AssertionResult Near(double a, double b, double rel) {
  if (std::fabs(a - b) <= rel * std::max(std::fabs(b), 1.0)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

std::string GlmmDataPath(const std::string& file) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/numeric/glmm/" + file;
}

nlohmann::json ReadReference(const std::string& fit) {
  std::ifstream in(MCEngineTestFixture::FixturePath("pseudo_likelihood"));
  EXPECT_TRUE(in.good()) << "missing reference file pseudo_likelihood.json";
  if (!in.good()) return nlohmann::json();
  return nlohmann::json::parse(in)[fit];
}

MCEngineSettings GeneralizedSettings(TargetDistType dist, bool reml) {
  MCEngineSettings settings;
  settings.SetREML(reml);
  MCEngineTarget target;
  target.SetDistribution(dist);
  target.SetLink(DefaultLink(dist));
  target.SetLinkPower(DefaultLinkPower(dist));
  target.SetVariable(3);
  settings.SetTarget(target);
  return settings;
}

// A column of the CSV as numbers.
std::vector<double> Column(const MCEngineTestCsv& csv, const std::string& name) {
  const int col = csv.FindColumn(name);
  std::vector<double> out(static_cast<std::size_t>(csv.GetNRows()));
  for (int r = 0; r < csv.GetNRows(); ++r) out[static_cast<std::size_t>(r)] = csv.GetNumber(r, col);
  return out;
}

struct Case {
  MCEngineTestCsv csv;
  std::unique_ptr<MCEngineTestDesign> design;
  MCEngineInput input;
};

void ReadCbpp(Case& c) {
  ASSERT_TRUE(c.csv.Read(MCEngineTestFixture::DataPath("cbpp.csv")));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"herd", "period"});
  c.design->SetResponse("incidence");
  c.design->AddFixedTerm("Intercept");
  c.design->AddFixedTerm("period");
  c.design->AddRandomBlock({"Intercept"}, "herd", MCEngineCovType::VC);
  c.input = c.design->Build();
  c.input.SetTrials(Column(c.csv, "size"));
}

// A data file of tests/data/numeric/glmm with its fixed terms and a random
// intercept per subject.
void ReadGlmm(Case& c, const std::string& file, const std::set<std::string>& factors, const std::string& response,
              const std::vector<std::string>& terms, const std::string& subject) {
  ASSERT_TRUE(c.csv.Read(GlmmDataPath(file)));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, factors);
  c.design->SetResponse(response);
  for (const std::string& term : terms) c.design->AddFixedTerm(term);
  c.design->AddRandomBlock({"Intercept"}, subject, MCEngineCovType::VC);
  c.input = c.design->Build();
}

void ReadEpil(Case& c, const std::vector<std::string>& terms) {
  ReadGlmm(c, "epil.csv", {"subject", "trt"}, "y", terms, "subject");
}

// Estimates and standard errors by column name, the random intercept's
// variance, and the deviance and Pearson statistic at the conditional means.
void CompareWithReference(const nlohmann::json& ref, const MCEngineTestDesign& design, const MCEngineResult& result,
                          double tolerance) {
  ASSERT_FALSE(ref.is_null());
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const std::string name = ref["columns"][i].get<std::string>();
    const int col = design.FindColumnName(name);
    ASSERT_GE(col, 0) << name;
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(col)];
    EXPECT_TRUE(Near(b.GetEstimate(), ref["estimates"][i].get<double>(), tolerance)) << name;
    EXPECT_TRUE(Near(b.GetStdError(), ref["std_errors"][i].get<double>(), tolerance)) << name;
  }
  ASSERT_EQ(result.GetCovParams().size(), 1u);  // the fixed scale is no parameter
  EXPECT_TRUE(Near(result.GetCovParams()[0].GetEstimate(),
                                        ref["random_variance"].get<double>(), tolerance));
  EXPECT_TRUE(Near(result.GetDeviance(), ref["deviance"].get<double>(), tolerance));
  EXPECT_TRUE(Near(result.GetPearsonChiSquare(), ref["pearson"].get<double>(), tolerance));
}

}  // namespace

TEST(MCEnginePseudoLikelihoodTest, CbppEventsOutOfTrialsAgreeWithTheResidualReference) {
  Case c;
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
  Case c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, false)).IsError());
  CompareWithReference(ReadReference("cbpp_ml"), *c.design, fitter.GetResult(), 1e-6);
}

TEST(MCEnginePseudoLikelihoodTest, PoissonCountsAgreeWithTheReference) {
  Case c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_POISSON, true)).IsError());
  CompareWithReference(ReadReference("epil_reml"), *c.design, fitter.GetResult(), 1e-6);
}

TEST(MCEnginePseudoLikelihoodTest, BinaryTargetAgreesWithTheReference) {
  Case c;
  ReadGlmm(c, "bacteria.csv", {"ID", "trt"}, "y", {"Intercept", "trt", "wk2"}, "ID");
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_BINOMIAL, true)).IsError());
  CompareWithReference(ReadReference("bacteria_reml"), *c.design, fitter.GetResult(), 1e-6);
}

namespace {

bool HasWarning(const MCEngineResult& result, long code) {
  for (const MCEngineStatus& w : result.GetWarnings()) {
    if (w.GetCode() == code) return true;
  }
  return false;
}

}  // namespace

TEST(MCEnginePseudoLikelihoodTest, TargetsItCannotFitAreRefusedNotFittedAsNormal) {
  Case c;
  ReadCbpp(c);
  std::vector<MCEngineSettings> refused;
  refused.push_back(GeneralizedSettings(DIST_MULTINOMIAL, true));  // the thresholds are not estimated yet
  MCEngineSettings laplace = GeneralizedSettings(DIST_BINOMIAL, true);
  MCEngineTarget target = laplace.GetTarget();
  target.SetFitMethod(FIT_LAPLACE);
  laplace.SetTarget(target);
  refused.push_back(laplace);
  MCEngineSettings poissonLogit = GeneralizedSettings(DIST_POISSON, true);
  target = poissonLogit.GetTarget();
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
  Case c;
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
  Case c;
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
  Case c;
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
  Case c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, GeneralizedSettings(DIST_NEGBIN, true)).IsError());
  const nlohmann::json ref = ReadReference("epil_negbin");
  CompareWithReference(ref, *c.design, fitter.GetResult(), 1e-6);
  EXPECT_TRUE(Near(fitter.GetResult().GetShape(), ref["shape"].get<double>(), 1e-6));
  EXPECT_TRUE(fitter.GetResult().IsScaleFixed());
}
