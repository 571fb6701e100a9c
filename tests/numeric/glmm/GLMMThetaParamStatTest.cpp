#include "numeric/glmm/GLMMThetaParamStat.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMOutputStats.h"

using MCCommon_850::MCMV;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMThetaParamStat;

TEST(GLMMThetaParamStat, Defaults) {
  const GLMMThetaParamStat stat;
  EXPECT_EQ(stat.GetBlockIndex(), GLMMThetaParamStat::kResidualBlock);
  EXPECT_EQ(stat.GetEffectIndex(), -1);
  EXPECT_TRUE(stat.GetLabel().empty());
  EXPECT_EQ(stat.GetKind(), GLMMThetaParamStat::VARIANCE);
  EXPECT_FALSE(stat.GetRedundant());
  EXPECT_TRUE(MCMV::IsMissing(stat.GetEstimate()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetStdError()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetWaldZ()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetSig()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetLowerBound()));
  EXPECT_TRUE(MCMV::IsMissing(stat.GetUpperBound()));
}

TEST(GLMMThetaParamStat, RoundTripAndDisplay) {
  GLMMThetaParamStat stat;
  stat.SetBlockIndex(1);
  stat.SetEffectIndex(0);
  stat.SetLabel("UN(2,1)");
  stat.SetKind(GLMMThetaParamStat::COVARIANCE);
  stat.SetEstimate(9.5);
  stat.SetRedundant(true);
  stat.SetStdError(4.0);
  stat.SetWaldZ(2.375);
  stat.SetSig(0.0175);
  stat.SetLowerBound(1.66);
  stat.SetUpperBound(17.34);
  EXPECT_EQ(stat.GetBlockIndex(), 1);
  EXPECT_EQ(stat.GetEffectIndex(), 0);
  EXPECT_EQ(stat.GetLabel(), "UN(2,1)");
  EXPECT_EQ(stat.GetKind(), GLMMThetaParamStat::COVARIANCE);
  EXPECT_EQ(stat.GetEstimate(), 9.5);
  EXPECT_TRUE(stat.GetRedundant());
  EXPECT_EQ(stat.GetStdError(), 4.0);
  EXPECT_EQ(stat.GetWaldZ(), 2.375);
  EXPECT_EQ(stat.GetSig(), 0.0175);
  EXPECT_EQ(stat.GetLowerBound(), 1.66);
  EXPECT_EQ(stat.GetUpperBound(), 17.34);
  std::ostringstream os;
  stat.Display(os);
  EXPECT_NE(os.str().find("UN(2,1)"), std::string::npos);
  EXPECT_NE(os.str().find("COVARIANCE (1)"), std::string::npos);
}

TEST(GLMMThetaParamStat, KindNames) {
  EXPECT_STREQ(GLMMThetaParamStat::GetName(GLMMThetaParamStat::VARIANCE), "VARIANCE");
  EXPECT_STREQ(GLMMThetaParamStat::GetName(GLMMThetaParamStat::CORRELATION), "CORRELATION");
  EXPECT_STREQ(GLMMThetaParamStat::GetName(GLMMThetaParamStat::LOADING), "LOADING");
  EXPECT_STREQ(GLMMThetaParamStat::GetName(GLMMThetaParamStat::RANGE), "RANGE");
}

TEST(GLMMOutputStats, CovarianceParameterStatistics) {
  GLMMOutputStats stats;
  EXPECT_TRUE(stats.GetThetaParamStats().empty());
  EXPECT_EQ(stats.GetCovarianceMatrixTheta(), nullptr);
  GLMMThetaParamStat variance;
  variance.SetLabel("Variance");
  variance.SetEstimate(2.0);
  stats.SetThetaParamStats({variance, GLMMThetaParamStat()});
  MCMath_850::MCSymMatrix cov({2});
  cov.SetElem(0, 0, 1, 0, -0.25);
  stats.SetCovarianceMatrixTheta(cov);
  ASSERT_EQ(stats.GetThetaParamStats().size(), 2u);
  EXPECT_EQ(stats.GetThetaParamStats()[0].GetLabel(), "Variance");
  ASSERT_NE(stats.GetCovarianceMatrixTheta(), nullptr);
  EXPECT_EQ(stats.GetCovarianceMatrixTheta()->GetElem(0, 0, 0, 1), -0.25);
  std::ostringstream os;
  stats.Display(os);
  EXPECT_NE(os.str().find("Covariance parameters: 2"), std::string::npos);
  EXPECT_NE(os.str().find("Covariance of the covariance parameters:"), std::string::npos);
  stats.ClearCovarianceMatrixTheta();
  EXPECT_EQ(stats.GetCovarianceMatrixTheta(), nullptr);
}
