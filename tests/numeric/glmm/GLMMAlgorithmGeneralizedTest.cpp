// Generalized targets fitted through GLMMAlgorithm: the target's
// distribution, link and trials reach the engine from the settings.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::GLMMTargetSpec;
using MCMath_850::MCModelEffect;

namespace {

// cbpp: incidence 0, size 1, herd 2, period 3; incidence out of size by
// period, a random intercept per herd.
GLMMSettings CbppSettings(const GLMMTestRecords& records, GLMMConst_850::TargetDistType dist) {
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(3, records.GetVarList().GetVarAt(3)->GetNCategories());
  const std::vector<int> set = {3};
  MCModelEffect period;
  period.Setup(1, 0, &set);
  period.AddNewFactor(3, false);
  period.SetVarsIndicesForTheEffectInSetting({3});
  settings.AddModelEffect(period);
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(2);
  block.SetCovarianceType(GLMMConst_850::VC);
  block.SetIndex(0);
  settings.AddRandomSpec(block);
  GLMMTargetSpec target;
  target.SetDistribution(dist);
  target.SetTrialsVariable(1);
  settings.SetTargetSpec(target);
  return settings;
}

void SetTrialsVariable(GLMMSettings& settings, int index) {
  GLMMTargetSpec target = settings.GetTargetSpec();
  target.SetTrialsVariable(index);
  settings.SetTargetSpec(target);
}

bool LoadCbpp(GLMMTestRecords& records) {
  return records.Load(std::string(GLMIX_SOURCE_DIR) + "/examples/data/cbpp.csv", {"incidence", "size", "herd", "period"},
                      {"herd", "period"});
}

}  // namespace

// The cbpp records, and a fit of them through the algorithm; the settings
// live as long as the algorithm that refers to them.
class GLMMAlgorithmGeneralized : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(LoadCbpp(fRecords)); }
  MCCommon_850::MCStatus Fit(const GLMMSettings& settings) {
    fSettings = settings;
    fpAlgorithm = std::make_unique<GLMMAlgorithm>(fSettings, fRecords.GetVarList());
    return fpAlgorithm->Execute(&fRecords, 0);
  }

  GLMMTestRecords fRecords;
  GLMMSettings fSettings;
  std::unique_ptr<GLMMAlgorithm> fpAlgorithm;
};

TEST_F(GLMMAlgorithmGeneralized, CbppEventsOutOfTrialsAgreeWithTheReference) {
  const MCCommon_850::MCStatus status = Fit(CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL));
  ASSERT_FALSE(status.IsError()) << status.GetErrorCode();
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/pseudo_likelihood.json");
  ASSERT_TRUE(in.good());
  const nlohmann::json ref = nlohmann::json::parse(in)["cbpp_reml"];
  // Columns: the intercept, then periods 1 to 4, the last one aliased.
  const auto& beta = fpAlgorithm->GetOutputStats()->GetBetaParamStats();
  ASSERT_EQ(beta.size(), 5u);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(beta[i].GetEstimate(), ref["estimates"][i].get<double>(), 1e-6) << i;
    EXPECT_NEAR(beta[i].GetStdError(), ref["std_errors"][i].get<double>(), 1e-6) << i;
  }
  EXPECT_TRUE(beta[4].GetRedundant());
  // The herd variance only: the scale is fixed by the distribution.
  const auto& theta = fpAlgorithm->GetOutputStats()->GetThetaParamStats();
  ASSERT_EQ(theta.size(), 1u);
  EXPECT_NEAR(theta[0].GetEstimate(), ref["random_variance"].get<double>(), 1e-6);
}

TEST_F(GLMMAlgorithmGeneralized, ATargetTheEngineCannotFitIsAnError) {
  const MCCommon_850::MCStatus status = Fit(CbppSettings(fRecords, GLMMConst_850::DIST_MULTINOMIAL));
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_GENERALIZED_UNAVAILABLE);
  EXPECT_EQ(fpAlgorithm->GetOutputStats(), nullptr);
}

TEST_F(GLMMAlgorithmGeneralized, EventsAboveTheirTrialsNameTheTargetAndTheirCount) {
  // Trials of 1 leave every record with more than one event above them.
  fRecords.AddVariable("one", std::vector<double>(static_cast<std::size_t>(fRecords.GetNRecords()), 1.0));
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL);
  SetTrialsVariable(settings, 4);
  const MCCommon_850::MCStatus status = Fit(settings);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), MCCommon_850::MC_TARGET_OUT_OF_SUPPORT);
  EXPECT_EQ(status.GetDiscreteDatum(0), 0);
  long above = 0;
  for (fRecords.Rewind(); fRecords.HasRecord(); fRecords.Next()) above += fRecords.Current()[0] > 1.0 ? 1 : 0;
  EXPECT_GT(above, 0);
  EXPECT_EQ(status.GetDiscreteDatum(1), above);
}

TEST_F(GLMMAlgorithmGeneralized, ATrialsVariableOutsideTheListIsInvalidSettings) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL);
  SetTrialsVariable(settings, 9);
  GLMMAlgorithm algorithm(settings, fRecords.GetVarList());
  EXPECT_EQ(algorithm.GetStatus().GetErrorCode(), MCCommon_850::MC_SETTINGS_INVALID);
}
