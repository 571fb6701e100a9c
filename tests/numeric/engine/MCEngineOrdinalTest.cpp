#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/detail/MCEngineGaussHermite.h"
#include "numeric/engine/detail/MCEngineLatentDistribution.h"

using namespace MCEngine_850;
using namespace GLMMConst_850;

namespace {

::testing::AssertionResult Near(double a, double b, double rel) {
  if (std::fabs(a - b) <= rel * std::max(std::fabs(b), 1.0)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

nlohmann::json ReadFit(const std::string& link, int nAGQ) {
  std::ifstream in(MCEngineTestFixture::FixturePath("ordinal"));
  EXPECT_TRUE(in.good()) << "missing reference file ordinal.json";
  if (!in.good()) return nlohmann::json();
  const nlohmann::json ref = nlohmann::json::parse(in);
  for (const nlohmann::json& fit : ref["fits"]) {
    if (fit["link"] == link && fit["nAGQ"] == nAGQ) return fit;
  }
  ADD_FAILURE() << "no reference fit " << link << " " << nAGQ;
  return nlohmann::json();
}

MCEngineSettings OrdinalSettings(LinkType link, GeneralizedFitMethod method, int points) {
  MCEngineSettings settings;
  MCEngineTarget target;
  target.SetDistribution(DIST_MULTINOMIAL);
  target.SetOrdered(true);
  target.SetLink(link);
  target.SetFitMethod(method);
  target.SetQuadraturePoints(points);
  settings.SetTarget(target);
  return settings;
}

// rating ~ temp + contact with a random intercept per judge.
std::unique_ptr<MCEngineTestFixture::Model> Wine(bool random = true) {
  auto m = MCEngineTestFixture::Load("wine.csv", {"temp", "contact", "judge"});
  m->fpDesign->SetResponse("rating");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->AddFixedTerm("temp");
  m->fpDesign->AddFixedTerm("contact");
  if (random) m->fpDesign->AddRandomBlock({"Intercept"}, "judge", MCEngineCovType::VC);
  return m;
}

void ExpectReference(const MCEngineResult& result, const MCEngineTestDesign& design, const nlohmann::json& ref) {
  ASSERT_FALSE(ref.is_null());
  const double rel = 1e-4;
  ASSERT_EQ(result.GetThresholds().size(), ref["thresholds"].size());
  for (std::size_t j = 0; j < result.GetThresholds().size(); ++j) {
    EXPECT_TRUE(Near(result.GetThresholds()[j].GetEstimate(), ref["thresholds"][j].get<double>(), rel)) << j;
    EXPECT_TRUE(Near(result.GetThresholds()[j].GetStdError(), ref["threshold_se"][j].get<double>(), rel)) << j;
  }
  const std::vector<std::string> columns = {"temp=cold", "contact=no"};
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const MCEngineBetaStat& b = result.GetBeta()[static_cast<std::size_t>(design.FindColumnName(columns[i]))];
    EXPECT_TRUE(Near(b.GetEstimate(), ref["beta"][i].get<double>(), rel)) << columns[i];
    EXPECT_TRUE(Near(b.GetStdError(), ref["beta_se"][i].get<double>(), rel)) << columns[i];
  }
  for (const char* aliased : {"Intercept", "temp=warm", "contact=yes"}) {
    EXPECT_TRUE(result.GetBeta()[static_cast<std::size_t>(design.FindColumnName(aliased))].IsRedundant()) << aliased;
  }
  ASSERT_EQ(result.GetCovParams().size(), 1u);
  EXPECT_TRUE(Near(result.GetCovParams()[0].GetEstimate(), ref["variance"].get<double>(), rel));
  // clmm's standard error of log sigma holds about three digits; where the
  // fixture has it, one from the Hessian of the Laplace likelihood written
  // out independently holds to the full tolerance.
  EXPECT_TRUE(Near(result.GetCovParams()[0].GetStdError(), ref["variance_se"].get<double>(), 1e-3));
  if (ref.contains("variance_se_independent")) {
    EXPECT_TRUE(Near(result.GetCovParams()[0].GetStdError(), ref["variance_se_independent"].get<double>(), rel));
  }
  EXPECT_TRUE(Near(-0.5 * result.GetMinus2LogLik(), ref["loglik"].get<double>(), 1e-6));
  ASSERT_EQ(result.GetConditionalModes().size(), ref["modes"].size());
  for (std::size_t s = 0; s < ref["modes"].size(); ++s) {
    EXPECT_TRUE(Near(result.GetConditionalModes()[s], ref["modes"][s].get<double>(), rel)) << s;
  }
}

}  // namespace

TEST(MCEngineGaussHermiteTest, RulesIntegrateGaussianMoments) {
  for (int n : {1, 2, 5, 10, 25}) {
    const MCEngineGaussHermite rule(n);
    ASSERT_EQ(rule.GetSize(), n);
    // The integral of exp(-x^2) x^(2k) is Gamma(k + 1/2). The moments of
    // high degree rest on the tiny weights of the outer nodes, which the
    // eigenvectors give to a few digits only.
    for (int k = 0; k < std::min(n, 8); ++k) {
      double sum = 0.0;
      for (int i = 0; i < n; ++i) sum += rule.GetWeights()[i] * std::pow(rule.GetNodes()[i], 2 * k);
      EXPECT_NEAR(sum, std::tgamma(k + 0.5), 1e-9 * std::tgamma(k + 0.5)) << n << " points, moment " << 2 * k;
    }
  }
  EXPECT_EQ(MCEngineGaussHermite(1).GetNodes()[0], 0.0);
}

TEST(MCEngineLatentDistributionTest, DensitiesAreTheDerivativesOfTheDistributions) {
  for (LinkType link : {LINK_LOGIT, LINK_PROBIT, LINK_CLOGLOG, LINK_NLOGLOG, LINK_CAUCHIT}) {
    const MCEngineLatentDistribution F(link);
    for (double x : {-4.0, -1.3, 0.0, 0.7, 3.1}) {
      const double h = 1e-5;
      EXPECT_NEAR(F.Density(x), (F.Cdf(x + h) - F.Cdf(x - h)) / (2 * h), 1e-8) << GetName(link) << " " << x;
      EXPECT_NEAR(F.DensityDerivative(x), (F.Density(x + h) - F.Density(x - h)) / (2 * h), 1e-8)
          << GetName(link) << " " << x;
    }
    EXPECT_EQ(F.Cdf(-HUGE_VAL), 0.0);
    EXPECT_EQ(F.Cdf(HUGE_VAL), 1.0);
  }
  EXPECT_FALSE(MCEngineLatentDistribution::Takes(LINK_LOG));
}

TEST(MCEngineOrdinalTest, LaplaceFitAgreesWithTheReference) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1));
  ASSERT_FALSE(status.IsError()) << status.GetCode();
  const MCEngineResult& result = fitter.GetResult();
  EXPECT_TRUE(result.IsConverged());
  EXPECT_EQ(result.GetTargetCategories(), (std::vector<double>{1, 2, 3, 4, 5}));
  ExpectReference(result, *m->fpDesign, ReadFit("LOGIT", 1));
}

TEST(MCEngineOrdinalTest, QuadratureFitAgreesWithTheReference) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_QUADRATURE, 10)).IsError());
  ExpectReference(fitter.GetResult(), *m->fpDesign, ReadFit("LOGIT", 10));
}

TEST(MCEngineOrdinalTest, ProbitFitAgreesWithTheReference) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(LINK_PROBIT, FIT_LAPLACE, 1)).IsError());
  ExpectReference(fitter.GetResult(), *m->fpDesign, ReadFit("PROBIT", 1));
}
