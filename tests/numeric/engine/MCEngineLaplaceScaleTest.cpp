#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestGlmm.h"

using namespace MCEngine_850;
using namespace GLMMConst_850;

// Likelihood fits of targets whose distribution has a scale of its own, the
// dispersion phi of Var(y) = phi V(mu): gamma (V = mu^2) and inverse
// Gaussian (V = mu^3), with sleepstudy's reaction times.

namespace {

// Reaction ~ Days with a random block of the given columns per subject.
void ReadSleepstudy(MCEngineTestGlmm& c, const std::vector<std::string>& random, MCEngineCovType type) {
  ASSERT_TRUE(c.csv.Read(MCEngineTestFixture::DataPath("sleepstudy.csv")));
  c.design = std::make_unique<MCEngineTestDesign>(c.csv, std::set<std::string>{"Subject"});
  c.design->SetResponse("Reaction");
  c.design->AddFixedTerm("Intercept");
  c.design->AddFixedTerm("Days");
  c.design->AddRandomBlock(random, "Subject", type);
  c.input = c.design->Build();
}

// A POWER link takes its exponent; the others 1, which they ignore.
MCEngineSettings LogLinkSettings(TargetDistType dist, LinkType link = LINK_LOG, double power = 1.0,
                                 GeneralizedFitMethod method = FIT_LAPLACE, int points = 1) {
  MCEngineSettings settings = LikelihoodSettings(dist, method, points);
  MCEngineTarget target = settings.GetTarget();
  target.SetLink(link);
  target.SetLinkPower(power);
  settings.SetTarget(target);
  return settings;
}

// Under a power link the linear predictor and the fixed estimates are far
// below 1 (1e-3 to 1e-7): each relative to itself.
void CompareFixedOnTheirOwnScale(const nlohmann::json& ref, const MCEngineTestDesign& design,
                                 const MCEngineResult& result) {
  ASSERT_FALSE(ref.is_null());
  EXPECT_TRUE(Near(result.GetMinus2LogLik(), ref["minus2loglik"].get<double>(), 1e-6));
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const int col = design.FindColumnName(ref["columns"][i].get<std::string>());
    ASSERT_GE(col, 0);
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(col)];
    const double estimate = ref["estimates"][i].get<double>();
    EXPECT_NEAR(b.GetEstimate(), estimate, kLikelihoodTolerance * std::fabs(estimate)) << i;
  }
  const std::vector<double>& eta = result.GetLinearPredictor();
  ASSERT_EQ(eta.size(), ref["linear_predictor"].size());
  for (std::size_t r = 0; r < eta.size(); ++r) {
    const double expected = ref["linear_predictor"][r].get<double>();
    EXPECT_NEAR(eta[r], expected, kLikelihoodTolerance * std::fabs(expected)) << "record " << r;
  }
}

// Besides the fixed estimates, the random covariance parameters and then
// the dispersion, the working model's residual variance and the result's
// scale.
void CompareScaledWithReference(const nlohmann::json& ref, const MCEngineTestDesign& design,
                                const MCEngineResult& result, bool ownScale) {
  EXPECT_TRUE(result.IsConverged());
  if (ownScale) {
    CompareFixedOnTheirOwnScale(ref, design, result);
  } else {
    CompareFixedWithReference(ref, design, result);
  }
  const std::vector<MCEngineCovParam>& params = result.GetCovParams();
  const nlohmann::json covariance =
      ref["random_covariance"].is_array() ? ref["random_covariance"] : nlohmann::json::array({ref["random_covariance"]});
  ASSERT_EQ(params.size(), covariance.size() + 1);
  // The parameters here are far below 1: relative to the block's size, and
  // the standard errors relative to themselves (to 1e-3 with a random
  // slope, as the difference Hessian gives them there).
  const double seTolerance = covariance.size() > 1 ? 1e-3 : kLikelihoodTolerance;
  double size = 0.0;
  for (const auto& value : covariance) size = std::max(size, std::fabs(value.get<double>()));
  for (std::size_t k = 0; k < covariance.size(); ++k) {
    EXPECT_NEAR(params[k].GetEstimate(), covariance[k].get<double>(), kLikelihoodTolerance * size) << k;
  }
  if (ref.contains("random_variance_se")) {
    const double se = ref["random_variance_se"].get<double>();
    EXPECT_NEAR(params[0].GetStdError(), se, seTolerance * se);
  }
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const int col = design.FindColumnName(ref["columns"][i].get<std::string>());
    ASSERT_GE(col, 0);
    const double se = ref["std_errors"][i].get<double>();
    EXPECT_NEAR(result.GetBeta()[static_cast<std::size_t>(col)].GetStdError(), se, seTolerance * se) << i;
  }
  const MCEngineCovParam& dispersion = params.back();
  EXPECT_LT(dispersion.GetBlock(), 0);
  EXPECT_FALSE(result.IsScaleFixed());
  const double phi = ref["dispersion"].get<double>();
  EXPECT_NEAR(dispersion.GetEstimate(), phi, kLikelihoodTolerance * phi);
  EXPECT_DOUBLE_EQ(result.GetScale(), dispersion.GetEstimate());
  const double phiSE = ref["dispersion_se"].get<double>();
  EXPECT_NEAR(dispersion.GetStdError(), phiSE, seTolerance * phiSE);
  // The criteria count the fixed effects, the random covariance parameters
  // and the dispersion, as R counts them.
  const double count = 2.0 + static_cast<double>(covariance.size()) + 1.0;
  EXPECT_NEAR(result.GetAIC(), result.GetMinus2LogLik() + 2.0 * count, 1e-9);
}

// Fits sleepstudy with the random block and link given and compares the
// fit with a reference of laplace.json.
void FitAndCompare(const std::vector<std::string>& random, MCEngineCovType type, const MCEngineSettings& settings,
                   const std::string& reference) {
  MCEngineTestGlmm c;
  ReadSleepstudy(c, random, type);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, settings);
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  EXPECT_TRUE(status.IsOK()) << status.GetCode();
  const bool ownScale = settings.GetTarget().GetLink() == LINK_POWER;
  CompareScaledWithReference(ReadGlmmReference("laplace", reference), *c.design, fitter.GetResult(), ownScale);
}

void FitAndCompare(const std::vector<std::string>& random, MCEngineCovType type, TargetDistType dist,
                   const std::string& reference, LinkType link = LINK_LOG) {
  FitAndCompare(random, type, LogLinkSettings(dist, link), reference);
}

}  // namespace

TEST(MCEngineLaplaceScaleTest, GammaAgreesWithGlmmTMB) {
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, DIST_GAMMA, "sleepstudy_gamma_laplace");
}

TEST(MCEngineLaplaceScaleTest, GammaWithACorrelatedRandomSlopeAgreesWithGlmmTMB) {
  FitAndCompare({"Intercept", "Days"}, MCEngineCovType::UN, DIST_GAMMA, "sleepstudy_gamma_slope_laplace");
}

TEST(MCEngineLaplaceScaleTest, GammaWithTheIdentityLinkAgreesWithGlmmTMB) {
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, DIST_GAMMA, "sleepstudy_gamma_identity_laplace", LINK_IDENTITY);
}

// No R package fits this family by Laplace; the reference script holds a
// direct Laplace approximation, checked there against glmmTMB's gamma fit.
TEST(MCEngineLaplaceScaleTest, InverseGaussianAgreesWithADirectLaplaceApproximation) {
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, DIST_IGAUSS, "sleepstudy_igauss_laplace");
}

// The cluster-robust covariance of the fixed estimates over the subjects,
// against the same sandwich computed in R from each subject's share of a
// direct Laplace approximation at glmmTMB's estimates.
TEST(MCEngineLaplaceScaleTest, RobustCovarianceAgreesWithTheSandwichInR) {
  MCEngineTestGlmm c;
  ReadSleepstudy(c, {"Intercept"}, MCEngineCovType::VC);
  MCEngineSettings settings = LogLinkSettings(DIST_GAMMA);
  MCEngineFitter model;
  ASSERT_FALSE(model.Fit(c.input, settings).IsError());
  settings.SetRobustCovariance(true);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(c.input, settings);
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_TRUE(result.IsCovBetaRobust());
  const nlohmann::json ref = ReadGlmmReference("laplace", "sleepstudy_gamma_laplace");
  ASSERT_FALSE(ref.is_null());
  for (std::size_t i = 0; i < ref["columns"].size(); ++i) {
    const int col = c.design->FindColumnName(ref["columns"][i].get<std::string>());
    ASSERT_GE(col, 0);
    const std::size_t j = static_cast<std::size_t>(col);
    const MCEngineBetaStat& b = result.GetBeta()[j];
    // The estimates are the likelihood's; only their covariance changes.
    EXPECT_DOUBLE_EQ(b.GetEstimate(), model.GetResult().GetBeta()[j].GetEstimate());
    const double se = ref["robust_std_errors"][i].get<double>();
    EXPECT_NEAR(b.GetStdError(), se, kLikelihoodTolerance * se) << i;
    // The model-based covariance is kept beside it.
    const std::size_t P = result.GetBeta().size();
    EXPECT_DOUBLE_EQ(result.GetModelCovBeta()[j * P + j], model.GetResult().GetCovBeta()[j * P + j]);
  }
}

// The inverse link, POWER(-1), whose estimates are some 1e-3 and 1e-4
// (reciprocal milliseconds).
TEST(MCEngineLaplaceScaleTest, GammaWithTheInverseLinkAgreesWithGlmmTMB) {
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, LogLinkSettings(DIST_GAMMA, LINK_POWER, -1.0),
                "sleepstudy_gamma_inverse_laplace");
}

// The inverse Gaussian's own link, POWER(-2), taken when no link is given:
// a linear predictor of some 1e-5 and a random variance of some 1e-12.
TEST(MCEngineLaplaceScaleTest, InverseGaussianWithItsDefaultLinkAgreesWithADirectLaplaceApproximation) {
  const MCEngineSettings settings = LikelihoodSettings(DIST_IGAUSS, FIT_LAPLACE);
  ASSERT_EQ(settings.GetTarget().GetLink(), LINK_POWER);
  ASSERT_EQ(settings.GetTarget().GetLinkPower(), -2.0);
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, settings, "sleepstudy_igauss_power_laplace");
}

// Adaptive quadrature against the reference script's own quadrature,
// itself checked there against its Laplace approximation (one point) and
// against R's integrate() (ten points).
TEST(MCEngineLaplaceScaleTest, GammaQuadratureAgreesWithADirectQuadratureInR) {
  for (int points : {5, 10}) {
    SCOPED_TRACE(points);
    FitAndCompare({"Intercept"}, MCEngineCovType::VC, LogLinkSettings(DIST_GAMMA, LINK_LOG, 1.0, FIT_QUADRATURE, points),
                  "sleepstudy_gamma_quadrature" + std::to_string(points));
  }
}

TEST(MCEngineLaplaceScaleTest, InverseGaussianQuadratureAgreesWithADirectQuadratureInR) {
  for (int points : {5, 10}) {
    SCOPED_TRACE(points);
    FitAndCompare({"Intercept"}, MCEngineCovType::VC,
                  LogLinkSettings(DIST_IGAUSS, LINK_LOG, 1.0, FIT_QUADRATURE, points),
                  "sleepstudy_igauss_quadrature" + std::to_string(points));
  }
  FitAndCompare({"Intercept"}, MCEngineCovType::VC, LikelihoodSettings(DIST_IGAUSS, FIT_QUADRATURE, 10),
                "sleepstudy_igauss_power_quadrature10");
}

// The scale is one residual variance: a residual structure beside it is
// refused, not fitted with the structure dropped.
TEST(MCEngineLaplaceScaleTest, ResidualStructureIsRefused) {
  MCEngineTestGlmm c;
  ReadSleepstudy(c, {"Intercept"}, MCEngineCovType::VC);
  c.design->SetResidual("Subject", "Days", MCEngineCovType::AR1);
  c.input = c.design->Build();
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(c.input, LogLinkSettings(DIST_GAMMA)).GetCode(), MCEngineStatus::kGeneralizedUnavailable);
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
}
