#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "numeric/engine/detail/MCEngineFamily.h"
#include "numeric/engine/detail/MCEngineLink.h"

using namespace GLMMConst_850;
using MCEngine_850::MCEngineFamily;
using MCEngine_850::MCEngineLink;

namespace {

nlohmann::json ReadFamilyReference() {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/family.json");
  EXPECT_TRUE(in.good()) << "missing reference file family.json";
  return in.good() ? nlohmann::json::parse(in) : nlohmann::json();
}

LinkType LinkOf(const std::string& name) {
  for (LinkType link : {LINK_IDENTITY, LINK_LOG, LINK_LOGIT, LINK_PROBIT, LINK_CLOGLOG, LINK_NLOGLOG, LINK_LOGC,
                        LINK_POWER, LINK_CAUCHIT}) {
    if (name == GetName(link)) return link;
  }
  ADD_FAILURE() << "unknown link " << name;
  return LINK_IDENTITY;
}

TargetDistType DistOf(const std::string& name) {
  for (TargetDistType dist : {DIST_NORMAL, DIST_BINOMIAL, DIST_POISSON, DIST_NEGBIN, DIST_GAMMA, DIST_IGAUSS}) {
    if (name == GetName(dist)) return dist;
  }
  ADD_FAILURE() << "unknown distribution " << name;
  return DIST_NORMAL;
}

void ExpectRelative(double value, double reference, const std::string& what) {
  EXPECT_NEAR(value, reference, 1e-12 * std::max(1.0, std::fabs(reference))) << what;
}

}  // namespace

TEST(MCEngineLinkTest, LinksAgreeWithReferenceValues) {
  const nlohmann::json ref = ReadFamilyReference();
  ASSERT_TRUE(ref.contains("links"));
  for (const nlohmann::json& row : ref["links"]) {
    const std::string name = row["link"].get<std::string>();
    const double power = row["power"].is_null() ? 1.0 : row["power"].get<double>();
    const MCEngineLink link(LinkOf(name), power);
    for (std::size_t i = 0; i < row["mu"].size(); ++i) {
      ExpectRelative(link.Eta(row["mu"][i].get<double>()), row["eta"][i].get<double>(), name + " eta");
    }
    for (std::size_t i = 0; i < row["eta_in"].size(); ++i) {
      const double eta = row["eta_in"][i].get<double>();
      ExpectRelative(link.Mu(eta), row["mu_out"][i].get<double>(), name + " mu");
      ExpectRelative(link.DMuDEta(eta), row["dmu_deta"][i].get<double>(), name + " dmu/deta");
    }
  }
}

TEST(MCEngineLinkTest, ProbabilityLinksKeepTheMeanInsideTheUnitInterval) {
  for (LinkType type : {LINK_LOGIT, LINK_PROBIT, LINK_CLOGLOG, LINK_NLOGLOG, LINK_CAUCHIT}) {
    const MCEngineLink link(type, 1.0);
    for (double eta : {-800.0, -40.0, 40.0, 800.0}) {
      const double mu = link.Mu(eta);
      EXPECT_TRUE(link.IsValidMu(mu)) << GetName(type) << " at " << eta;
      EXPECT_TRUE(std::isfinite(link.Eta(mu))) << GetName(type) << " at " << eta;
      EXPECT_GT(std::fabs(link.DMuDEta(eta)), 0.0) << GetName(type) << " at " << eta;
    }
  }
}

// The exact second derivatives against differences of the first, on the
// scales their linear predictors have: a power's far below 1.
TEST(MCEngineLinkTest, SecondDerivativesOfTheMeanAgreeWithDifferences) {
  const struct {
    LinkType link;
    double power;
    double eta;
  } cases[] = {{LINK_LOG, 1.0, 5.5}, {LINK_IDENTITY, 1.0, 250.0}, {LINK_POWER, -1.0, 0.004},
               {LINK_POWER, -2.0, 1.5e-5}, {LINK_POWER, 0.5, 16.0}, {LINK_LOGIT, 1.0, 0.3}};
  for (const auto& c : cases) {
    const MCEngineLink link(c.link, c.power);
    const double h = 1e-5 * c.eta;
    const double difference = (link.DMuDEta(c.eta + h) - link.DMuDEta(c.eta - h)) / (2.0 * h);
    EXPECT_NEAR(link.D2MuDEta2(c.eta), difference, 1e-6 * std::max(std::fabs(difference), 1e-12)) << c.eta;
  }
  // By hand: mu = eta^(-1/2) has mu'' = 3/4 eta^(-5/2).
  EXPECT_NEAR(MCEngineLink(LINK_POWER, -2.0).D2MuDEta2(0.25), 0.75 * 32.0, 1e-12);
}

TEST(MCEngineLinkTest, ThePowerZeroIsTheLog) {
  const MCEngineLink power(LINK_POWER, 0.0);
  EXPECT_DOUBLE_EQ(power.Eta(std::exp(1.5)), 1.5);
  EXPECT_DOUBLE_EQ(power.Mu(1.5), std::exp(1.5));
  EXPECT_FALSE(power.IsValidMu(0.0));
  EXPECT_TRUE(MCEngineLink(LINK_POWER, 1.0).IsValidMu(-2.0));
}

TEST(MCEngineFamilyTest, FamiliesAgreeWithReferenceValues) {
  const nlohmann::json ref = ReadFamilyReference();
  ASSERT_TRUE(ref.contains("families"));
  for (const nlohmann::json& row : ref["families"]) {
    const std::string name = row["dist"].get<std::string>();
    const double shape = row["shape"].is_null() ? 1.0 : row["shape"].get<double>();
    const MCEngineFamily family(DistOf(name), shape);
    const double scale = row["scale"].get<double>();
    for (std::size_t i = 0; i < row["y"].size(); ++i) {
      const double y = row["y"][i].get<double>();
      const double mu = row["mu"][i].get<double>();
      const double w = row["w"][i].get<double>();
      ExpectRelative(family.Variance(mu), row["variance"][i].get<double>(), name + " variance");
      ExpectRelative(family.Deviance(y, mu, w), row["deviance"][i].get<double>(), name + " deviance");
      ExpectRelative(family.LogLikelihood(y, mu, w, scale), row["loglik"][i].get<double>(), name + " log likelihood");
    }
  }
}

TEST(MCEngineFamilyTest, TheSupportOfEachDistribution) {
  EXPECT_TRUE(MCEngineFamily(DIST_BINOMIAL).InSupport(0.0));
  EXPECT_TRUE(MCEngineFamily(DIST_BINOMIAL).InSupport(1.0));
  EXPECT_FALSE(MCEngineFamily(DIST_BINOMIAL).InSupport(1.0 + 1e-9));  // more events than trials
  EXPECT_FALSE(MCEngineFamily(DIST_BINOMIAL).InSupport(-0.5));
  EXPECT_TRUE(MCEngineFamily(DIST_POISSON).InSupport(0.0));
  EXPECT_FALSE(MCEngineFamily(DIST_POISSON).InSupport(-1.0));
  EXPECT_FALSE(MCEngineFamily(DIST_NEGBIN, 2.0).InSupport(-1.0));
  EXPECT_FALSE(MCEngineFamily(DIST_GAMMA).InSupport(0.0));
  EXPECT_FALSE(MCEngineFamily(DIST_IGAUSS).InSupport(-3.0));
  EXPECT_TRUE(MCEngineFamily(DIST_NORMAL).InSupport(-3.0));
  EXPECT_FALSE(MCEngineFamily(DIST_NORMAL).InSupport(std::nan("")));
}

// A power link's negative linear predictor gives a mean that is no
// mean of these distributions: the likelihood fits treat it as outside.
TEST(MCEngineFamilyTest, TheMeansEachDistributionCanHave) {
  EXPECT_FALSE(MCEngineFamily(DIST_BINOMIAL).IsValidMean(0.0));
  EXPECT_FALSE(MCEngineFamily(DIST_BINOMIAL).IsValidMean(1.0));
  EXPECT_TRUE(MCEngineFamily(DIST_BINOMIAL).IsValidMean(0.5));
  EXPECT_FALSE(MCEngineFamily(DIST_POISSON).IsValidMean(0.0));
  EXPECT_TRUE(MCEngineFamily(DIST_NEGBIN, 2.0).IsValidMean(1e-9));
  const MCEngineLink inverse(LINK_POWER, -1.0);
  EXPECT_FALSE(MCEngineFamily(DIST_GAMMA).IsValidMean(inverse.Mu(-0.004)));
  EXPECT_TRUE(MCEngineFamily(DIST_GAMMA).IsValidMean(inverse.Mu(0.004)));
  // The inverse Gaussian's density stays finite at a negative mean.
  EXPECT_FALSE(MCEngineFamily(DIST_IGAUSS).IsValidMean(-250.0));
  EXPECT_FALSE(MCEngineFamily(DIST_IGAUSS).IsValidMean(MCEngineLink(LINK_POWER, -2.0).Mu(-1e-5)));
  EXPECT_TRUE(MCEngineFamily(DIST_NORMAL).IsValidMean(-3.0));
  EXPECT_FALSE(MCEngineFamily(DIST_NORMAL).IsValidMean(std::nan("")));
}

TEST(MCEngineFamilyTest, CountAndBinaryDistributionsFixTheScale) {
  EXPECT_TRUE(MCEngineFamily(DIST_BINOMIAL).IsScaleFixed());
  EXPECT_TRUE(MCEngineFamily(DIST_POISSON).IsScaleFixed());
  EXPECT_TRUE(MCEngineFamily(DIST_NEGBIN, 3.0).IsScaleFixed());
  EXPECT_FALSE(MCEngineFamily(DIST_GAMMA).IsScaleFixed());
  EXPECT_FALSE(MCEngineFamily(DIST_IGAUSS).IsScaleFixed());
  EXPECT_FALSE(MCEngineFamily(DIST_NORMAL).IsScaleFixed());
}

TEST(MCEngineFamilyTest, StartingMeansLieInsideTheSupport) {
  const MCEngineFamily binomial(DIST_BINOMIAL);
  EXPECT_DOUBLE_EQ(binomial.StartMu(0.0, 1.0), 0.25);
  EXPECT_DOUBLE_EQ(binomial.StartMu(1.0, 3.0), 3.5 / 4.0);
  EXPECT_DOUBLE_EQ(MCEngineFamily(DIST_POISSON).StartMu(0.0, 1.0), 0.1);
  EXPECT_DOUBLE_EQ(MCEngineFamily(DIST_GAMMA).StartMu(2.0, 1.0), 2.0);
}
