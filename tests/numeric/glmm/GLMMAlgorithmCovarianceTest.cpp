// Residual covariance structures through GLMMAlgorithm, from the settings to
// the output statistics, compared with the references of
// tests/data/numeric/reference/covariance.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCGLMM_850::GLMMThetaParamStat;
using MCMath_850::MCModelEffect;

namespace {

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

nlohmann::json Reference(const std::string& name) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/covariance/" + name + ".json");
  EXPECT_TRUE(in.good()) << "missing reference file " << name;
  return in.good() ? nlohmann::json::parse(in) : nlohmann::json();
}

MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (int f : factors) effect.AddNewFactor(f, false);
  for (int c : covariates) effect.AddCovariate(c);
  std::vector<int> written = factors;
  written.insert(written.end(), covariates.begin(), covariates.end());
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

void Compare(const nlohmann::json& ref, const GLMMAlgorithm& algorithm,
             const std::vector<GLMMThetaParamStat::ParamKind>& kinds) {
  ASSERT_FALSE(algorithm.GetStatus().IsError()) << algorithm.GetStatus().GetErrorCode();
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  const double m2ll = ref["minus2ll"].get<double>();
  EXPECT_NEAR(pStats->GetLogLikehood(), m2ll, 1e-5 * m2ll);
  const std::vector<double>& theta = pStats->GetThetaParamEtimates();
  const std::vector<GLMMThetaParamStat>& stats = pStats->GetThetaParamStats();
  const auto& cps = ref["covparams"];
  ASSERT_EQ(theta.size(), cps.size());
  ASSERT_EQ(stats.size(), cps.size());
  ASSERT_EQ(kinds.size(), cps.size());
  for (std::size_t i = 0; i < cps.size(); ++i) {
    SCOPED_TRACE(cps[i]["label"].get<std::string>());
    const double est = cps[i]["estimate"].get<double>();
    EXPECT_NEAR(theta[i], est, 1e-4 * std::fabs(est));
    EXPECT_EQ(stats[i].GetLabel(), cps[i]["label"].get<std::string>());
    EXPECT_EQ(stats[i].GetKind(), kinds[i]);
    EXPECT_EQ(stats[i].GetBlockIndex(), GLMMThetaParamStat::kResidualBlock);
    EXPECT_NEAR(stats[i].GetStdError(), cps[i]["se"].get<double>(), 2e-3 * cps[i]["se"].get<double>());
  }
}

}  // namespace

TEST(GLMMAlgorithmCovariance, SpatialExponentialOverTheDays) {
  // weight 0, Time 1, Rat 2, Diet 3.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("bodyweight.csv"), {"weight", "Time", "Rat", "Diet"}, {"Rat", "Diet"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(3, records.GetVarList().GetVarAt(3)->GetNCategories());
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::SP_EXP);
  settings.SetRepeated(repeated);
  settings.AddSpatialVar(1);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  algorithm.Execute(&records, 0);
  Compare(Reference("bodyweight_sp_exp"), algorithm, {GLMMThetaParamStat::RANGE, GLMMThetaParamStat::VARIANCE});
}

TEST(GLMMAlgorithmCovariance, HeterogeneousFactorAnalyticOverTheAges) {
  // distance 0, age 1, Subject 2, Sex 3.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(3, 2);
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {1};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(1, false);
  position.SetVarsIndicesForTheEffectInSetting(repeatedSet);
  repeated.AddEffect(position);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::FAH1);
  settings.SetRepeated(repeated);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  algorithm.Execute(&records, 0);
  const auto L = GLMMThetaParamStat::LOADING;
  const auto V = GLMMThetaParamStat::VARIANCE;
  Compare(Reference("orthodont_fah1"), algorithm, {L, L, L, L, V, V, V, V});
}
