// The data-scale side of a fit, by hand: inverse links, the delta method,
// Pearson residuals and the most probable category.
#include "numeric/engine/MCEngineResponse.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineResult.h"

using namespace MCEngine_850;
using namespace GLMMConst_850;

namespace {

MCEngineTarget Target(TargetDistType dist, LinkType link) {
  MCEngineTarget target;
  target.SetDistribution(dist);
  target.SetLink(link);
  return target;
}

}  // namespace

TEST(MCEngineResponse, ALinearModelKeepsItsPredictionsAsTheyAre) {
  const MCEngineResponse response;
  EXPECT_TRUE(response.IsLinear());
  EXPECT_EQ(response.Mean(3.25), 3.25);
  EXPECT_EQ(response.MeanStdError(3.25, 0.5), 0.5);
  EXPECT_FALSE(response.HasCategories());
  EXPECT_TRUE(MCEngineMissing::Is(response.PredictedCategory(3.25)));
}

TEST(MCEngineResponse, ALogitTargetIsAProbabilityWithItsDeltaMethodError) {
  const MCEngineResponse response(Target(DIST_BINOMIAL, LINK_LOGIT), MCEngineResult());
  const double p = 1.0 / (1.0 + std::exp(0.8));
  EXPECT_NEAR(response.Mean(-0.8), p, 1e-15);
  EXPECT_NEAR(response.MeanStdError(-0.8, 0.3), p * (1.0 - p) * 0.3, 1e-15);
  // 3 events of 10 trials: (0.3 - p) sqrt(10 / (p (1 - p))).
  EXPECT_NEAR(response.PearsonResidual(0.3, p, 10.0), (0.3 - p) * std::sqrt(10.0 / (p * (1.0 - p))), 1e-14);
  EXPECT_EQ(response.PredictedCategory(-0.8), 0.0);
  EXPECT_EQ(response.PredictedCategory(0.1), 1.0);
  EXPECT_TRUE(MCEngineMissing::Is(response.Mean(MCEngineMissing::Value())));
}

TEST(MCEngineResponse, ADecreasingLinkKeepsAPositiveError) {
  // The gamma's inverse link mu = 1 / eta: d mu / d eta = -1 / eta^2.
  MCEngineTarget target = Target(DIST_GAMMA, LINK_POWER);
  target.SetLinkPower(-1.0);
  const MCEngineResponse response(target, MCEngineResult());
  EXPECT_NEAR(response.Mean(0.5), 2.0, 1e-14);
  EXPECT_NEAR(response.MeanStdError(0.5, 0.1), 0.4, 1e-14);
  EXPECT_NEAR(response.PearsonResidual(3.0, 2.0, 1.0), 0.5, 1e-14);
}

TEST(MCEngineResponse, TheNegativeBinomialResidualUsesTheFittedShape) {
  MCEngineResult result;
  result.SetShape(4.0);
  const MCEngineResponse response(Target(DIST_NEGBIN, LINK_LOG), result);
  // V(2) = 2 + 4 / 4 = 3.
  EXPECT_NEAR(response.PearsonResidual(5.0, 2.0, 1.0), 3.0 / std::sqrt(3.0), 1e-14);
}

TEST(MCEngineResponse, AnOrdinalTargetTakesTheCategoryOfTheHighestProbability) {
  MCEngineResult result;
  result.SetTargetCategories({1.0, 2.0, 5.0});
  std::vector<MCEngineBetaStat> thresholds(2);
  thresholds[0].SetEstimate(-1.0);
  thresholds[1].SetEstimate(1.0);
  result.SetThresholds(thresholds);
  const MCEngineResponse response(Target(DIST_MULTINOMIAL, LINK_LOGIT), result);
  EXPECT_TRUE(response.IsOrdinal());
  EXPECT_TRUE(response.HasCategories());
  EXPECT_TRUE(MCEngineMissing::Is(response.Mean(0.0)));
  // At eta = 0: P = F(-1), F(1) - F(-1), 1 - F(1) = 0.269, 0.462, 0.269.
  EXPECT_EQ(response.PredictedCategory(0.0), 2.0);
  // At eta = 2: P(Y = 5) = 1 - F(-1) = 0.731.
  EXPECT_EQ(response.PredictedCategory(2.0), 5.0);
  EXPECT_EQ(response.PredictedCategory(-2.0), 1.0);
}
