#include "numeric/glmm/GLMMSettings.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;

namespace {

GLMMRandomSpec Block(std::vector<int> subjects) {
  GLMMRandomSpec spec;
  for (int subject : subjects) spec.AddSubjectVar(subject);
  return spec;
}

}  // namespace

TEST(GLMMSettings, Defaults) {
  GLMMSettings settings;
  EXPECT_EQ(settings.GetNRandomSpecs(), 0);
  EXPECT_TRUE(settings.GetRandomSpecs().empty());
  EXPECT_EQ(settings.GetRepeated().GetCovarianceType(), GLMMConst_850::DIAG);
  EXPECT_EQ(settings.GetRepeated().GetIndex(), -1);
  EXPECT_TRUE(settings.GetSpatialVars().empty());
  EXPECT_EQ(settings.GetThetaEstType(), GLMMConst_850::REML);
  EXPECT_EQ(settings.GetDegreesFreedomType(), GLMMConst_850::DF_SATTERTHWAITE);
  EXPECT_EQ(settings.GetMaxFisherIterNum(), 2);
  EXPECT_TRUE(settings.GetScoringTypes().empty());
  EXPECT_FALSE(settings.GetUse4Mixed());
  std::vector<int> sortVars = {9};
  EXPECT_EQ(settings.GetSortDataVariables(sortVars), 0);
  EXPECT_TRUE(sortVars.empty());
}

TEST(GLMMSettings, RoundTrip) {
  GLMMSettings settings;
  GLMMRandomSpec block = Block({2});
  block.SetCovarianceType(GLMMConst_850::UN);
  settings.AddRandomSpec(block);
  GLMMRandomSpec repeated = Block({1});
  repeated.SetCovarianceType(GLMMConst_850::AR1);
  settings.SetRepeated(repeated);
  settings.AddSpatialVar(6);
  settings.AddSpatialVar(7);
  settings.SetThetaEstType(GLMMConst_850::ML);
  settings.SetDegreesFreedomType(GLMMConst_850::DF_RESIDUAL);
  settings.SetMaxFisherIterNum(0);
  settings.SetScoringTypes({GLMMConst_850::SCORE_FIXED_PREDICTED, GLMMConst_850::SCORE_RESIDUAL});
  settings.SetUse4Mixed(true);
  EXPECT_EQ(settings.GetNRandomSpecs(), 1);
  EXPECT_EQ(settings.GetRandomSpecs()[0].GetCovarianceType(), GLMMConst_850::UN);
  EXPECT_EQ(settings.GetRepeated().GetCovarianceType(), GLMMConst_850::AR1);
  EXPECT_EQ(settings.GetSpatialVars(), (std::vector<int>{6, 7}));
  EXPECT_EQ(settings.GetThetaEstType(), GLMMConst_850::ML);
  EXPECT_EQ(settings.GetDegreesFreedomType(), GLMMConst_850::DF_RESIDUAL);
  EXPECT_EQ(settings.GetMaxFisherIterNum(), 0);
  EXPECT_EQ(settings.GetScoringTypes(),
            (std::vector<GLMMConst_850::ScoreType>{GLMMConst_850::SCORE_FIXED_PREDICTED, GLMMConst_850::SCORE_RESIDUAL}));
  EXPECT_TRUE(settings.GetUse4Mixed());
}

TEST(GLMMSettings, SortVariablesResidualFirstWithoutDuplicates) {
  GLMMSettings settings;
  settings.AddRandomSpec(Block({5, 3}));
  settings.AddRandomSpec(Block({3, 8, 5}));
  settings.SetRepeated(Block({4, 3}));
  std::vector<int> sortVars;
  EXPECT_EQ(settings.GetSortDataVariables(sortVars), 4);
  EXPECT_EQ(sortVars, (std::vector<int>{4, 3, 5, 8}));
}

TEST(GLMMSettings, SortVariablesOfRandomBlocksAlone) {
  GLMMSettings settings;
  settings.AddRandomSpec(Block({2}));
  settings.AddRandomSpec(Block({}));
  settings.AddRandomSpec(Block({1, 2}));
  std::vector<int> sortVars = {7, 7};
  EXPECT_EQ(settings.GetSortDataVariables(sortVars), 2);
  EXPECT_EQ(sortVars, (std::vector<int>{2, 1}));
}

TEST(GLMMSettings, WholeChainThroughTheBase) {
  std::unique_ptr<MCMath_850::MCRegSettings> base(new GLMMSettings());
  base->SetDependent(0);
  auto* settings = dynamic_cast<GLMMSettings*>(base.get());
  ASSERT_NE(settings, nullptr);
  settings->SetSingleDependent(3);
  settings->SetMaxIterations(7);
  settings->SetCIType(GZLConst_850::CI_PROFILE_LIKELIHOOD);
  EXPECT_EQ(base->GetDependent(), 3);
  EXPECT_EQ(settings->GetMaxIterations(), 7);
  EXPECT_EQ(settings->GetCIType(), GZLConst_850::CI_PROFILE_LIKELIHOOD);
}

TEST(GLMMSettings, Display) {
  GLMMSettings settings;
  settings.SetScoringTypes({GLMMConst_850::SCORE_PREDICTED});
  std::ostringstream os;
  settings.Display(os);
  const std::string text = os.str();
  EXPECT_EQ(text.rfind("Dependent variable: -1\n", 0), 0u);
  EXPECT_NE(text.find("\nRandom blocks: 0\nResidual block:\nBegin GLMMRandomSpec display.\n"), std::string::npos);
  EXPECT_NE(text.find("\nCovariance parameter estimation: REML (1)\n"), std::string::npos);
  EXPECT_NE(text.find("\nDegrees of freedom: Satterthwaite (1)\n"), std::string::npos);
  EXPECT_NE(text.find("\nScore: predicted value (0)\n"), std::string::npos);
  EXPECT_NE(text.find("\nMixed procedure: false\n"), std::string::npos);
}
