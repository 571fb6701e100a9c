#include "numeric/glmm/GLMMOutputStats.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"

using MCGLMM_850::GLMMOutputStats;
using MCCommon_850::MCMV;

TEST(GLMMOutputStats, Defaults) {
  GLMMOutputStats stats;
  EXPECT_TRUE(MCMV::IsMissing(stats.GetLogLikehood()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetAICC()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetBIC()));
  EXPECT_TRUE(MCMV::IsMissing(stats.GetTotalFreqWeight()));
  EXPECT_TRUE(stats.GetBetaParameters().empty());
  EXPECT_TRUE(stats.GetBetaParamStats().empty());
  EXPECT_EQ(stats.GetRedundancyIndicatorsBeta().Size(), 0);
  EXPECT_EQ(stats.GetCovarianceMatrixBeta(), nullptr);
  EXPECT_TRUE(stats.GetGammaBasicParameters().empty());
  EXPECT_TRUE(stats.GetThetaParamEtimates().empty());
  EXPECT_EQ(stats.GetTypeITestStats(), nullptr);
  EXPECT_EQ(stats.GetTypeIIITestStats(), nullptr);
  EXPECT_TRUE(stats.GetBuildModelWarnings().empty());
}

TEST(GLMMOutputStats, RoundTrip) {
  GLMMOutputStats stats;
  stats.SetLogLikehood(123.5);
  stats.SetAICC(130.0);
  stats.SetBIC(135.25);
  stats.SetTotalFreqWeight(40.0);
  MCMath_850::MCRegrParameter intercept;
  MCMath_850::MCRegrParameter slope;
  slope.AddCovariate(2, 1);
  slope.SetEffectIndex(0);
  stats.SetBetaParameters({intercept, slope});
  MCMath_850::BetaParamStat stat;
  stat.SetEstimate(0.75);
  stats.SetBetaParamStats({stat, stat});
  MCMath_850::MCBitSet estimable(2);
  estimable.Set(1);
  stats.SetRedundancyIndicatorsBeta(estimable);
  MCMath_850::MCSymMatrix covb({2});
  covb.SetElem(0, 0, 1, 0, 0.1);
  stats.SetCovarianceMatrixBeta(covb);
  stats.SetGammaBasicParameters({{intercept}});
  stats.SetThetaParamEtimates({2.0, 0.5});
  MCMath_850::MCModelTestStats tests;
  tests.AddTest(MCMath_850::MCTestStats(9.0, 1.0, 30.0, 0.005), MCCommon_850::MCStatus(), {{0.0, 1.0}}, {1});
  stats.SetTypeIIITestStats(tests);
  stats.AddBuildModelWarning(MCCommon_850::MCStatus(230038, false));

  EXPECT_EQ(stats.GetLogLikehood(), 123.5);
  EXPECT_EQ(stats.GetAICC(), 130.0);
  EXPECT_EQ(stats.GetBIC(), 135.25);
  EXPECT_EQ(stats.GetTotalFreqWeight(), 40.0);
  ASSERT_EQ(stats.GetBetaParameters().size(), 2u);
  EXPECT_TRUE(stats.GetBetaParameters()[0].IsIntercept());
  EXPECT_EQ(stats.GetBetaParameters()[1].GetEffectIndex(), 0);
  EXPECT_EQ(stats.GetBetaParamStats()[1].GetEstimate(), 0.75);
  EXPECT_EQ(stats.GetRedundancyIndicatorsBeta().InSet(), (std::vector<int>{1}));
  ASSERT_NE(stats.GetCovarianceMatrixBeta(), nullptr);
  EXPECT_EQ(stats.GetCovarianceMatrixBeta()->GetElem(0, 0, 0, 1), 0.1);
  EXPECT_EQ(stats.GetGammaBasicParameters().size(), 1u);
  EXPECT_EQ(stats.GetThetaParamEtimates(), (std::vector<double>{2.0, 0.5}));
  EXPECT_EQ(stats.GetTypeITestStats(), nullptr);
  ASSERT_NE(stats.GetTypeIIITestStats(), nullptr);
  EXPECT_EQ(stats.GetTypeIIITestStats()->GetTestStats(0).GetWald(), 9.0);
  ASSERT_EQ(stats.GetBuildModelWarnings().size(), 1u);
  EXPECT_EQ(stats.GetBuildModelWarnings()[0].GetErrorCode(), 230038);

  stats.ClearCovarianceMatrixBeta();
  EXPECT_EQ(stats.GetCovarianceMatrixBeta(), nullptr);
}

TEST(GLMMOutputStats, CopiesOwnTheirMatrix) {
  GLMMOutputStats stats;
  stats.SetCovarianceMatrixBeta(MCMath_850::MCSymMatrix({1}));
  GLMMOutputStats copy = stats;
  ASSERT_NE(copy.GetCovarianceMatrixBeta(), nullptr);
  EXPECT_NE(copy.GetCovarianceMatrixBeta(), stats.GetCovarianceMatrixBeta());
}

TEST(GLMMOutputStats, Display) {
  GLMMOutputStats stats;
  stats.SetLogLikehood(10.5);
  std::ostringstream os;
  stats.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Begin GLMMOutputStats display.\n-2 log likelihood: 10.5\nAICC: missing\n", 0), 0u);
  EXPECT_NE(text.find("\nCovariance of the fixed estimates is not available.\n"), std::string::npos);
  EXPECT_NE(text.find("\nType III tests are not available.\n"), std::string::npos);
}

TEST(GLMMOutputStats, DisplayShowsTheDataOfTheFit) {
  GLMMOutputStats stats;
  stats.SetNCommonSubjects(18);
  stats.SetFirstSubjectNRecords(10);
  std::ostringstream os;
  stats.Display(os);
  const std::string text = os.str();
  EXPECT_NE(text.find("\nCommon subjects: 18\n"), std::string::npos);
  EXPECT_NE(text.find("\nFirst subject's records: 10\n"), std::string::npos);
  EXPECT_EQ(text.find("Test of the corrected model:"), std::string::npos);
}
