#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestGlmm.h"

using namespace MCEngine_850;
using namespace GLMMConst_850;

namespace {

// Besides the fixed estimates (CompareFixedWithReference), the random
// intercept's variance and its standard error.
void CompareWithGlmer(const nlohmann::json& ref, const MCEngineTestDesign& design, const MCEngineResult& result,
                      double constant = 0.0) {
  CompareFixedWithReference(ref, design, result, constant);
  ASSERT_EQ(result.GetCovParams().size(), 1u);
  const MCEngineCovParam& variance = result.GetCovParams()[0];
  EXPECT_TRUE(Near(variance.GetEstimate(), ref["random_variance"].get<double>(), kLikelihoodTolerance));
  EXPECT_TRUE(Near(variance.GetStdError(), ref["random_variance_se"].get<double>(), 1e-3));
}

// cbpp's herds crossed with its periods, each a random intercept, and the
// intercept fixed.
void ReadCbppCrossed(MCEngineTestGlmm& c) {
  ReadCbpp(c);
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"herd", "period"});
  c.design->SetResponse("incidence");
  c.design->AddFixedTerm("Intercept");
  c.design->AddRandomBlock({"Intercept"}, "herd", MCEngineCovType::VC);
  c.design->AddRandomBlock({"Intercept"}, "period", MCEngineCovType::VC);
  c.input = c.design->Build();
  c.input.SetTrials(Column(c.csv, "size"));
}

}  // namespace

TEST(MCEngineLaplaceTest, CbppEventsOutOfTrialsAgreeWithGlmer) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  EXPECT_TRUE(status.IsOK()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_TRUE(result.IsGeneralized());
  EXPECT_TRUE(result.IsConverged());
  EXPECT_FALSE(result.IsREML());
  CompareWithGlmer(ReadGlmmReference("laplace", "cbpp_laplace"), *c.design, result);
  EXPECT_EQ(result.GetTypeIIITests().size(), 2u);
}

TEST(MCEngineLaplaceTest, PoissonCountsAgreeWithGlmer) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, LikelihoodSettings(DIST_POISSON, FIT_LAPLACE)).IsError());
  CompareWithGlmer(ReadGlmmReference("laplace", "epil_laplace"), *c.design, fitter.GetResult());
}

TEST(MCEngineLaplaceTest, BinaryTargetAgreesWithGlmer) {
  MCEngineTestGlmm c;
  ReadGlmm(c, "bacteria.csv", {"ID", "trt"}, "y", {"Intercept", "trt", "wk2"}, "ID");
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE)).IsError());
  CompareWithGlmer(ReadGlmmReference("laplace", "bacteria_laplace"), *c.design, fitter.GetResult());
}

// A random block without subjects ties every record to every other: with a
// random effect per record beside it, 1,001 random effects would be
// integrated jointly, beyond the 1,000 the dense Laplace step takes.
TEST(MCEngineLaplaceTest, TooManyJointRandomEffectsAreRefused) {
  const std::string path = ::testing::TempDir() + "/laplace_joint_effects.csv";
  {
    std::ofstream out(path);
    out << "id,y\n";
    for (int r = 1; r <= 1000; ++r) out << r << "," << (r * 7) % 5 << "\n";
  }
  MCEngineTestGlmm c;
  ASSERT_TRUE(c.csv.Read(path));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"id"});
  c.design->SetResponse("y");
  c.design->AddFixedTerm("Intercept");
  c.design->AddRandomBlock({"Intercept"}, "id", MCEngineCovType::VC);
  c.design->AddRandomBlock({"Intercept"}, "", MCEngineCovType::VC);
  c.input = c.design->Build();
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(c.input, LikelihoodSettings(DIST_POISSON, FIT_LAPLACE)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
  std::remove(path.c_str());
}

// The sandwich sums over independent groups of records; crossed blocks tie
// all of cbpp's records into one, and the robust covariance is refused, not
// answered with the model-based one.
TEST(MCEngineLaplaceTest, RobustCovarianceNeedsTwoIndependentGroups) {
  MCEngineTestGlmm c;
  ReadCbppCrossed(c);
  MCEngineSettings settings = LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE);
  settings.SetRobustCovariance(true);
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(c.input, settings).GetCode(), MCEngineStatus::kGeneralizedUnavailable);
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
}

// The shape k of Var(y) = mu + mu^2 / k is fitted with the other
// parameters, as glmmTMB's nbinom2 fits it.
TEST(MCEngineLaplaceTest, NegativeBinomialAgreesWithGlmmTMB) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "trt", "lbase", "lage", "V4"});
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, LikelihoodSettings(DIST_NEGBIN, FIT_LAPLACE));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_TRUE(result.IsConverged());
  const nlohmann::json ref = ReadGlmmReference("laplace", "epil_negbin_laplace");
  CompareWithGlmer(ref, *c.design, result);
  EXPECT_TRUE(Near(result.GetShape(), ref["shape"].get<double>(), kLikelihoodTolerance));
  EXPECT_TRUE(Near(result.GetShapeStdError(), ref["shape_se"].get<double>(), 1e-3));
  EXPECT_TRUE(result.IsScaleFixed());
  // Five fixed effects, the random variance and the shape, as glmmTMB counts them.
  EXPECT_NEAR(result.GetAIC(), result.GetMinus2LogLik() + 2.0 * 7.0, 1e-9);
}

// glmer leaves the saturated model's log likelihood out of its deviance
// with more than one quadrature point; the reference file holds it.
TEST(MCEngineLaplaceTest, TenPointQuadratureAgreesWithGlmer) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_QUADRATURE, 10)).IsError());
  const nlohmann::json ref = ReadGlmmReference("laplace", "cbpp_quadrature10");
  CompareWithGlmer(ref, *c.design, fitter.GetResult(), ref["saturated_minus2loglik"].get<double>());
}

TEST(MCEngineLaplaceTest, OnePointQuadratureIsTheLaplaceFit) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter laplace, quadrature;
  ASSERT_FALSE(laplace.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE)).IsError());
  ASSERT_FALSE(quadrature.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_QUADRATURE, 1)).IsError());
  EXPECT_DOUBLE_EQ(laplace.GetResult().GetMinus2LogLik(), quadrature.GetResult().GetMinus2LogLik());
}

// True maximum likelihood: the criteria count the fixed and covariance
// parameters, with -2 log likelihood of the target itself.
TEST(MCEngineLaplaceTest, InformationCriteriaCountEveryParameter) {
  MCEngineTestGlmm c;
  ReadCbpp(c);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE)).IsError());
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_NEAR(result.GetAIC(), result.GetMinus2LogLik() + 2.0 * 5.0, 1e-9);
  EXPECT_NEAR(result.GetBIC(), result.GetMinus2LogLik() + 5.0 * std::log(15.0), 1e-9);
}

namespace {

// Besides the fixed estimates, each random block's variance.
void CompareSeveralBlocksWithGlmer(const nlohmann::json& ref, const MCEngineTestDesign& design,
                                   const MCEngineResult& result) {
  EXPECT_TRUE(result.IsConverged());
  CompareFixedWithReference(ref, design, result);
  ASSERT_EQ(result.GetCovParams().size(), ref["random_variances"].size());
  for (std::size_t k = 0; k < result.GetCovParams().size(); ++k) {
    EXPECT_TRUE(Near(result.GetCovParams()[k].GetEstimate(), ref["random_variances"][k].get<double>(), kLikelihoodTolerance))
        << k;
  }
}

}  // namespace

// Broods within locations: the records of a location are integrated
// jointly over its own and its broods' random effects.
TEST(MCEngineLaplaceTest, NestedRandomBlocksAgreeWithGlmer) {
  MCEngineTestGlmm c;
  ASSERT_TRUE(c.csv.Read(GlmmDataPath("grouseticks.csv")));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"BROOD", "LOCATION", "YEAR"});
  c.design->SetResponse("TICKS");
  for (const char* term : {"Intercept", "YEAR", "cHEIGHT"}) c.design->AddFixedTerm(term);
  c.design->AddRandomBlock({"Intercept"}, "BROOD", MCEngineCovType::VC);
  c.design->AddRandomBlock({"Intercept"}, "LOCATION", MCEngineCovType::VC);
  c.input = c.design->Build();
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, LikelihoodSettings(DIST_POISSON, FIT_LAPLACE));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  CompareSeveralBlocksWithGlmer(ReadGlmmReference("laplace", "grouseticks_laplace"), *c.design, fitter.GetResult());
}

// Herds crossed with periods: every record is tied to every other, so all
// random effects are integrated jointly.
TEST(MCEngineLaplaceTest, CrossedRandomBlocksAgreeWithGlmer) {
  MCEngineTestGlmm c;
  ReadCbppCrossed(c);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_LAPLACE));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  CompareSeveralBlocksWithGlmer(ReadGlmmReference("laplace", "cbpp_crossed_laplace"), *c.design, fitter.GetResult());
  // Quadrature integrates one scalar random effect only.
  EXPECT_EQ(fitter.Fit(c.input, LikelihoodSettings(DIST_BINOMIAL, FIT_QUADRATURE, 5)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
}

TEST(MCEngineLaplaceTest, QuadratureNeedsOneScalarRandomEffectLaplaceFitsAnUnstructuredOne) {
  MCEngineTestGlmm c;
  ReadEpil(c, {"Intercept", "lbase"});
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"subject", "trt"});
  c.design->SetResponse("y");
  c.design->AddFixedTerm("Intercept");
  c.design->AddFixedTerm("V4");
  c.design->AddRandomBlock({"Intercept", "V4"}, "subject", MCEngineCovType::UN);
  c.input = c.design->Build();
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(c.input, LikelihoodSettings(DIST_POISSON, FIT_QUADRATURE, 5)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  // Laplace fits the same correlated random intercept and slope.
  const MCEngineStatus status = fitter.Fit(c.input, LikelihoodSettings(DIST_POISSON, FIT_LAPLACE));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  const nlohmann::json ref = ReadGlmmReference("laplace", "epil_slope_laplace");
  ASSERT_FALSE(ref.is_null());
  EXPECT_TRUE(Near(result.GetMinus2LogLik(), ref["minus2loglik"].get<double>(), 1e-6));
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const int col = c.design->FindColumnName(ref["columns"][i].get<std::string>());
    ASSERT_GE(col, 0);
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(col)];
    EXPECT_TRUE(Near(b.GetEstimate(), ref["estimates"][i].get<double>(), kLikelihoodTolerance)) << i;
    EXPECT_TRUE(Near(b.GetStdError(), ref["std_errors"][i].get<double>(), kLikelihoodTolerance)) << i;
  }
  ASSERT_EQ(result.GetCovParams().size(), 3u);  // UN(1,1), UN(2,1), UN(2,2)
  for (std::size_t k = 0; k < 3; ++k) {
    EXPECT_TRUE(Near(result.GetCovParams()[k].GetEstimate(), ref["random_covariance"][k].get<double>(), kLikelihoodTolerance))
        << result.GetCovParams()[k].GetLabel();
  }
}
