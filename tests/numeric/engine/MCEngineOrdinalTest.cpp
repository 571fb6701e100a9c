#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineEmmeans.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineProbability.h"
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

TEST(MCEngineOrdinalTest, WithoutRandomEffectsTheFitIsTheCumulativeLinkModel) {
  auto m = Wine(false);
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_PSEUDO_LIKELIHOOD, 1)).IsError());
  const MCEngineResult& result = fitter.GetResult();
  std::ifstream in(MCEngineTestFixture::FixturePath("ordinal"));
  const nlohmann::json ref = nlohmann::json::parse(in)["fixed"];
  for (std::size_t j = 0; j < 4; ++j) {
    EXPECT_TRUE(Near(result.GetThresholds()[j].GetEstimate(), ref["thresholds"][j].get<double>(), 1e-5)) << j;
    EXPECT_TRUE(Near(result.GetThresholds()[j].GetStdError(), ref["threshold_se"][j].get<double>(), 1e-4)) << j;
  }
  const MCEngineBetaStat& cold = result.GetBeta()[static_cast<std::size_t>(m->fpDesign->FindColumnName("temp=cold"))];
  EXPECT_TRUE(Near(cold.GetEstimate(), ref["beta"][0].get<double>(), 1e-5));
  EXPECT_TRUE(Near(cold.GetStdError(), ref["beta_se"][0].get<double>(), 1e-4));
  EXPECT_TRUE(Near(-0.5 * result.GetMinus2LogLik(), ref["loglik"].get<double>(), 1e-8));
  EXPECT_TRUE(result.GetCovParams().empty());
}

TEST(MCEngineOrdinalTest, OnePointOfQuadratureIsTheLaplaceApproximation) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter laplace, quadrature;
  ASSERT_FALSE(laplace.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).IsError());
  ASSERT_FALSE(quadrature.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_QUADRATURE, 1)).IsError());
  EXPECT_DOUBLE_EQ(laplace.GetResult().GetMinus2LogLik(), quadrature.GetResult().GetMinus2LogLik());
}

TEST(MCEngineOrdinalTest, EveryLinkKeepsTheThresholdsInOrder) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  for (LinkType link : {LINK_CLOGLOG, LINK_NLOGLOG, LINK_CAUCHIT}) {
    MCEngineFitter fitter;
    ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(link, FIT_LAPLACE, 1)).IsError()) << GetName(link);
    const std::vector<MCEngineBetaStat>& thresholds = fitter.GetResult().GetThresholds();
    ASSERT_EQ(thresholds.size(), 4u);
    for (std::size_t j = 1; j < thresholds.size(); ++j) {
      EXPECT_GT(thresholds[j].GetEstimate(), thresholds[j - 1].GetEstimate()) << GetName(link);
    }
    EXPECT_TRUE(fitter.GetResult().IsConverged()) << GetName(link);
  }
}

TEST(MCEngineOrdinalTest, FrequencyWeightsCountRecordsAsCopies) {
  // Every record of weight 2 is the data with each record written twice in
  // its judge's group.
  auto m = Wine();
  MCEngineInput weighted = m->fpDesign->Build();
  weighted.SetFrequencyWeights(std::vector<double>(static_cast<std::size_t>(weighted.GetNRecords()), 2.0));
  MCEngineInput doubled = weighted;
  doubled.SetFrequencyWeights({});
  const int n = weighted.GetNRecords(), P = weighted.GetNColumns();
  std::vector<double> y, x;
  std::vector<int> subjects;
  for (int copy = 0; copy < 2; ++copy) {
    y.insert(y.end(), weighted.GetY().begin(), weighted.GetY().end());
    x.insert(x.end(), weighted.GetX().begin(), weighted.GetX().end());
    subjects.insert(subjects.end(), weighted.GetRandomBlocks()[0].GetSubjects().begin(),
                    weighted.GetRandomBlocks()[0].GetSubjects().end());
  }
  doubled.SetY(y);
  doubled.SetX(P, x);
  MCEngineRandomBlock block = weighted.GetRandomBlocks()[0];
  block.SetDenseColumns(1, std::vector<double>(static_cast<std::size_t>(2 * n), 1.0));
  block.SetSubjects(subjects);
  doubled.SetRandomBlocks({block});
  MCEngineFitter a, b;
  ASSERT_FALSE(a.Fit(weighted, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).IsError());
  ASSERT_FALSE(b.Fit(doubled, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).IsError());
  EXPECT_TRUE(Near(a.GetResult().GetMinus2LogLik(), b.GetResult().GetMinus2LogLik(), 1e-10));
  EXPECT_TRUE(Near(a.GetResult().GetThresholds()[0].GetEstimate(), b.GetResult().GetThresholds()[0].GetEstimate(),
                   1e-6));
  EXPECT_TRUE(Near(a.GetResult().GetCovParams()[0].GetEstimate(), b.GetResult().GetCovParams()[0].GetEstimate(),
                   1e-6));
}

TEST(MCEngineOrdinalTest, DesignsItCannotFitAreRefused) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  // A nominal target.
  MCEngineSettings nominal = OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1);
  MCEngineTarget target = nominal.GetTarget();
  target.SetOrdered(false);
  nominal.SetTarget(target);
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(input, nominal).GetCode(), MCEngineStatus::kGeneralizedUnavailable);
  // A link that is not a distribution's.
  EXPECT_EQ(fitter.Fit(input, OrdinalSettings(LINK_LOG, FIT_LAPLACE, 1)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  // A random slope beside the intercept.
  auto slopes = MCEngineTestFixture::Load("wine.csv", {"temp", "contact", "judge"});
  slopes->fpDesign->SetResponse("rating");
  slopes->fpDesign->AddFixedTerm("Intercept");
  slopes->fpDesign->AddFixedTerm("temp");
  slopes->fpDesign->AddRandomBlock({"Intercept", "temp"}, "judge", MCEngineCovType::VC);
  EXPECT_EQ(fitter.Fit(slopes->fpDesign->Build(), OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  // A residual structure.
  MCEngineInput residual = input;
  MCEngineResidualBlock block = residual.GetResidualBlock();
  block.SetSubjects(input.GetRandomBlocks()[0].GetSubjects());
  residual.SetResidualBlock(block);
  EXPECT_EQ(fitter.Fit(residual, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
  // A robust covariance, which the ordinal fit does not form.
  MCEngineSettings robust = OrdinalSettings(LINK_LOGIT, FIT_QUADRATURE, 10);
  robust.SetRobustCovariance(true);
  EXPECT_EQ(fitter.Fit(input, robust).GetCode(), MCEngineStatus::kGeneralizedUnavailable);
  // No intercept: the thresholds would be confounded with the factors.
  auto noIntercept = MCEngineTestFixture::Load("wine.csv", {"temp", "judge"});
  noIntercept->fpDesign->SetResponse("rating");
  noIntercept->fpDesign->AddFixedTerm("temp");
  EXPECT_EQ(fitter.Fit(noIntercept->fpDesign->Build(), OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).GetCode(),
            MCEngineStatus::kGeneralizedUnavailable);
}

TEST(MCEngineOrdinalTest, OneCategoryIsAPerfectFit) {
  auto m = Wine();
  MCEngineInput input = m->fpDesign->Build();
  input.SetY(std::vector<double>(static_cast<std::size_t>(input.GetNRecords()), 3.0));
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1));
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetCode(), MCEngineStatus::kPerfectFit);
}

TEST(MCEngineOrdinalTest, TypeThreeTestsAreWaldTestsOfTheCoefficients) {
  auto m = Wine();
  const MCEngineInput input = m->fpDesign->Build();
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(LINK_LOGIT, FIT_LAPLACE, 1)).IsError());
  const MCEngineResult& result = fitter.GetResult();
  ASSERT_EQ(result.GetTypeIIITests().size(), 3u);
  EXPECT_FALSE(result.GetTypeIIITests()[0].IsValid());
  // One column per factor is free, so each test is the square of its t.
  const MCEngineBetaStat& cold = result.GetBeta()[static_cast<std::size_t>(m->fpDesign->FindColumnName("temp=cold"))];
  EXPECT_TRUE(Near(result.GetTypeIIITests()[1].GetF(), cold.GetT() * cold.GetT(), 1e-8));
  EXPECT_EQ(result.GetTypeIIITests()[1].GetNumDF(), 1.0);
  EXPECT_EQ(result.GetTypeIIITests()[1].GetDenDF(), 72.0 - 4.0 - 2.0);
}

namespace {

constexpr int kTemp = 1;
constexpr int kContact = 2;

// The means' columns of the wine design: the intercept, then each factor's
// levels in their sorted order (cold, warm; no, yes).
std::vector<MCEngineMeansColumn> WineColumns(MCEngineTestDesign& design) {
  std::vector<MCEngineMeansColumn> columns;
  for (const std::string& name : design.GetColumnNames()) {
    const std::size_t eq = name.find('=');
    if (eq == std::string::npos) {
      columns.emplace_back();
      continue;
    }
    const std::string factor = name.substr(0, eq);
    const std::vector<std::string>& levels = design.GetLevels(factor);
    const int level = static_cast<int>(std::find(levels.begin(), levels.end(), name.substr(eq + 1)) - levels.begin());
    columns.emplace_back(std::vector<int>{factor == "temp" ? kTemp : kContact}, std::vector<int>{level},
                         std::vector<int>{});
  }
  return columns;
}

// A cell's index in a table of the factors, the first varying slowest.
int CellOf(MCEngineTestDesign& design, const nlohmann::json& levels, std::size_t i,
           const std::vector<std::string>& factors) {
  int index = 0;
  for (const std::string& f : factors) {
    const std::vector<std::string>& sorted = design.GetLevels(f);
    const std::string level = levels[f][i].get<std::string>();
    index = index * static_cast<int>(sorted.size()) +
            static_cast<int>(std::find(sorted.begin(), sorted.end(), level) - sorted.begin());
  }
  return index;
}

// The means of a table and their pairwise differences against emmeans'
// latent means of the same clmm fit.
void ExpectLatentMeans(const MCEngineEmmeans& means, MCEngineTestDesign& design, const std::vector<int>& ids,
                       const std::vector<std::string>& factors, const nlohmann::json& ref) {
  MCEngineMeansRequest request;
  request.SetFactors(ids);
  const MCEngineMeansTable table = means.Compute(request);
  ASSERT_EQ(table.GetCells().size(), ref["emmean"].size());
  // Records less the thresholds and the free coefficients: 72 - 4 - 2.
  const double df = 66.0;
  for (std::size_t i = 0; i < ref["emmean"].size(); ++i) {
    const MCEngineMeansCell& cell = table.GetCells()[static_cast<std::size_t>(CellOf(design, ref["levels"], i, factors))];
    ASSERT_TRUE(cell.IsEstimable()) << i;
    EXPECT_TRUE(Near(cell.GetEstimate(), ref["emmean"][i].get<double>(), 1e-4)) << i;
    EXPECT_TRUE(Near(cell.GetStdError(), ref["se"][i].get<double>(), 1e-4)) << i;
    EXPECT_EQ(cell.GetDF(), df);
    const double q = MCEngineProbability::TQuantile(0.975, df);
    EXPECT_NEAR(cell.GetLower(), cell.GetEstimate() - q * cell.GetStdError(), 1e-10);
    // The latent scale has no inverse link to the categories.
    EXPECT_FALSE(cell.HasDataScale());
  }
  // Each pair tested with the difference of its means (emmeans' pairs).
  request.SetCompareFactor(ids.front());
  request.SetContrast(MCEngineMeansRequest::kPairwise);
  const MCEngineMeansTable compared = means.Compute(request);
  for (const MCEngineMeansContrast& c : compared.GetContrasts()) {
    std::vector<int> a = c.GetByLevels(), b = c.GetByLevels();
    a.insert(a.begin(), c.GetLevel());
    b.insert(b.begin(), c.GetReference());
    const auto find = [&](const std::vector<int>& levels) {
      for (const MCEngineMeansCell& cell : compared.GetCells()) {
        if (cell.GetLevels() == levels) return cell.GetEstimate();
      }
      return std::nan("");
    };
    ASSERT_TRUE(c.IsEstimable());
    EXPECT_NEAR(c.GetEstimate(), find(a) - find(b), 1e-10);
    bool matched = false;
    for (std::size_t k = 0; k < ref["pairs_estimate"].size(); ++k) {
      if (!Near(std::fabs(c.GetEstimate()), std::fabs(ref["pairs_estimate"][k].get<double>()), 1e-4)) continue;
      matched = true;
      EXPECT_TRUE(Near(c.GetStdError(), ref["pairs_se"][k].get<double>(), 1e-4));
    }
    EXPECT_TRUE(matched) << c.GetEstimate();
  }
}

// By hand from the estimates: the grand mean averages each factor's levels
// (the aliased ones at 0) and subtracts the thresholds' mean. A custom test
// that weighs the intercept stays not estimable: only the means are taken
// to the latent scale.
void ExpectGrandLatentMean(const MCEngineFitter& fitter, const MCEngineInput& input, MCEngineTestDesign& design) {
  const MCEngineResult& result = fitter.GetResult();
  double expected = 0.0;
  for (const MCEngineBetaStat& t : result.GetThresholds()) expected -= t.GetEstimate() / 4.0;
  for (const char* column : {"temp=cold", "contact=no"}) {
    expected += 0.5 * result.GetBeta()[static_cast<std::size_t>(design.FindColumnName(column))].GetEstimate();
  }
  const MCEngineMeansTable grand = MCEngineEmmeans(fitter, input, WineColumns(design), 95.0).Compute({});
  ASSERT_EQ(grand.GetCells().size(), 1u);
  EXPECT_NEAR(grand.GetCells()[0].GetEstimate(), expected, 1e-10);
  std::vector<double> intercept(static_cast<std::size_t>(input.GetNColumns()), 0.0);
  intercept[static_cast<std::size_t>(design.FindColumnName("Intercept"))] = 1.0;
  EXPECT_FALSE(fitter.IsEstimable(intercept));
  EXPECT_FALSE(fitter.TestContrast({intercept}).IsValid());
}

}  // namespace

TEST(MCEngineOrdinalTest, MarginalMeansAreOnTheLatentScaleAsEmmeansGivesThem) {
  for (int points : {1, 10}) {
    auto m = Wine();
    const MCEngineInput input = m->fpDesign->Build();
    MCEngineFitter fitter;
    const GeneralizedFitMethod method = points == 1 ? FIT_LAPLACE : FIT_QUADRATURE;
    ASSERT_FALSE(fitter.Fit(input, OrdinalSettings(LINK_LOGIT, method, points)).IsError());
    MCEngineEmmeans means(fitter, input, WineColumns(*m->fpDesign), 95.0);
    means.SetTarget(OrdinalSettings(LINK_LOGIT, method, points).GetTarget());
    const nlohmann::json ref = ReadFit("LOGIT", points);
    ExpectLatentMeans(means, *m->fpDesign, {kTemp}, {"temp"}, ref["latent_temp"]);
    ExpectLatentMeans(means, *m->fpDesign, {kTemp, kContact}, {"temp", "contact"}, ref["latent_temp_contact"]);
    ExpectGrandLatentMean(fitter, input, *m->fpDesign);
  }
}
