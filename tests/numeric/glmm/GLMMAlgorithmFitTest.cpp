// Fits through GLMMAlgorithm compared with the committed reference values
// of tests/data/numeric/reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"
#include "numeric/xml/IMCVariable.h"

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCModelEffect;
using MCMath_850::MCRegrParameter;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

::testing::AssertionResult NearRelative(double a, double b, double rel, double absFloor) {
  if (std::fabs(a - b) <= rel * std::fabs(b) + absFloor) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs reference " << b;
}

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

std::string FixturePath(const std::string& name) {
  return std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/" + name + ".json";
}

// An effect over the predictor set of the settings (factors, then covariates).
// With nested, each factor after the first is nested in those before it.
MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates, const std::vector<int>& written, bool nested = false) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (std::size_t i = 0; i < factors.size(); ++i) effect.AddNewFactor(factors[i], nested && i > 0);
  for (int c : covariates) effect.AddCovariate(c);
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

// How the reference names a parameter: "Intercept", or the effect's
// variables as written, a factor followed by "=level".
std::string ParameterName(const MCRegrParameter& param, const std::vector<std::vector<int>>& written,
                          const MCXML_850::MCVarList& varList) {
  if (param.IsIntercept()) return "Intercept";
  std::string name;
  for (int v : written[U(param.GetEffectIndex())]) {
    if (!name.empty()) name += "*";
    const MCXML_850::IMCVariable* pVar = varList.GetVarAt(v);
    name += pVar->GetName();
    const auto& factors = param.GetFactors();
    const auto it = std::find(factors.begin(), factors.end(), v);
    if (it != factors.end()) {
      const int code = param.GetCategories()[static_cast<std::size_t>(it - factors.begin())];
      name += "=" + pVar->GetCategoryTexts()[U(code)];
    }
  }
  return name;
}

// Compares a fit with a reference: termNames are the names of the model
// effects in order, written their variables in the reference's order.
void Compare(const std::string& fixture, const GLMMAlgorithm& algorithm, const std::vector<std::string>& termNames,
             const std::vector<std::vector<int>>& written, double tol = 1e-5, double tolDF = 1e-3) {
  SCOPED_TRACE(fixture);
  std::ifstream in(FixturePath(fixture));
  ASSERT_TRUE(in.good()) << "missing reference file " << fixture;
  const nlohmann::json ref = nlohmann::json::parse(in);
  ASSERT_FALSE(algorithm.GetStatus().IsError()) << "status " << algorithm.GetStatus().GetErrorCode();
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  EXPECT_TRUE(NearRelative(pStats->GetLogLikehood(), ref["minus2ll"].get<double>(), tol, 0.0)) << "-2LL";

  const auto& params = pStats->GetBetaParameters();
  const auto& stats = pStats->GetBetaParamStats();
  ASSERT_EQ(params.size(), stats.size());
  EXPECT_EQ(pStats->GetRedundancyIndicatorsBeta().Count(), static_cast<int>(ref["beta"].size()));
  double scale = 0.0;
  for (const auto& b : ref["beta"]) scale = std::max(scale, std::fabs(b["estimate"].get<double>()));
  for (const auto& b : ref["beta"]) {
    const std::string name = b["name"].get<std::string>();
    SCOPED_TRACE(name);
    int found = -1;
    for (std::size_t i = 0; i < params.size(); ++i) {
      if (ParameterName(params[i], written, algorithm.GetVarList()) == name) found = static_cast<int>(i);
    }
    ASSERT_GE(found, 0) << "no parameter " << name;
    const MCMath_850::BetaParamStat& st = stats[U(found)];
    EXPECT_FALSE(st.GetRedundant());
    EXPECT_TRUE(pStats->GetRedundancyIndicatorsBeta().IsMember(found));
    EXPECT_TRUE(NearRelative(st.GetEstimate(), b["estimate"].get<double>(), tol, 1e-9 * scale)) << "estimate";
    EXPECT_TRUE(NearRelative(st.GetStdError(), b["se"].get<double>(), tol, 0.0)) << "standard error";
    EXPECT_TRUE(NearRelative(st.GetDF(), b["df"].get<double>(), tolDF, 0.0)) << "df";
    EXPECT_TRUE(NearRelative(st.GetSig(), b["p"].get<double>(), tolDF, 1e-12)) << "p";
    const MCMath_850::MCSymMatrix* pCov = pStats->GetCovarianceMatrixBeta();
    ASSERT_NE(pCov, nullptr);
    EXPECT_TRUE(NearRelative(std::sqrt(pCov->GetElem(0, 0, found, found)), b["se"].get<double>(), tol, 0.0));
  }

  const auto& cps = ref["covparams"];
  const std::vector<double>& theta = pStats->GetThetaParamEtimates();
  ASSERT_EQ(theta.size(), cps.size());
  double cscale = 0.0;
  for (const auto& c : cps) cscale = std::max(cscale, std::fabs(c["estimate"].get<double>()));
  for (std::size_t i = 0; i < cps.size(); ++i) {
    EXPECT_TRUE(NearRelative(theta[i], cps[i]["estimate"].get<double>(), tol, 1e-9 * cscale))
        << cps[i]["label"].get<std::string>();
  }
  // Their statistics, from a numerical Hessian in the reference.
  const double tolCov = 1e-4;
  const std::vector<MCGLMM_850::GLMMThetaParamStat>& thetaStats = pStats->GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), cps.size());
  const MCMath_850::MCSymMatrix* pThetaCov = pStats->GetCovarianceMatrixTheta();
  ASSERT_NE(pThetaCov, nullptr);
  ASSERT_EQ(pThetaCov->GetDimension(), static_cast<int>(cps.size()));
  for (std::size_t i = 0; i < cps.size(); ++i) {
    const MCGLMM_850::GLMMThetaParamStat& st = thetaStats[i];
    SCOPED_TRACE(cps[i]["label"].get<std::string>());
    EXPECT_EQ(st.GetLabel(), cps[i]["label"].get<std::string>());
    EXPECT_EQ(st.GetEstimate(), theta[i]);
    EXPECT_FALSE(st.GetRedundant());
    EXPECT_TRUE(NearRelative(st.GetStdError(), cps[i]["se"].get<double>(), tolCov, 0.0)) << "standard error";
    EXPECT_TRUE(NearRelative(st.GetWaldZ(), cps[i]["z"].get<double>(), tolCov, 0.0)) << "Wald Z";
    EXPECT_TRUE(NearRelative(st.GetSig(), cps[i]["p"].get<double>(), 10.0 * tolCov, 1e-12)) << "significance";
    const double width = cps[i]["upper"].get<double>() - cps[i]["lower"].get<double>();
    EXPECT_TRUE(NearRelative(st.GetLowerBound(), cps[i]["lower"].get<double>(), 0.0, tolCov * width)) << "lower";
    EXPECT_TRUE(NearRelative(st.GetUpperBound(), cps[i]["upper"].get<double>(), 0.0, tolCov * width)) << "upper";
    EXPECT_NEAR(pThetaCov->GetElem(0, 0, static_cast<int>(i), static_cast<int>(i)), st.GetStdError() * st.GetStdError(),
                1e-9 * st.GetStdError() * st.GetStdError());
    for (std::size_t j = 0; j < cps.size(); ++j) {
      const auto& cov = ref["covparams_cov"];
      const double scale = std::sqrt(cov[i][i].get<double>() * cov[j][j].get<double>());
      EXPECT_TRUE(NearRelative(pThetaCov->GetElem(0, 0, static_cast<int>(i), static_cast<int>(j)),
                               cov[i][j].get<double>(), 0.0, tolCov * scale));
    }
  }

  // Test 0 is the intercept's; test i the model effect i - 1.
  auto compareTests = [&](const nlohmann::json& refTests, const MCMath_850::MCModelTestStats* pTests) {
    ASSERT_NE(pTests, nullptr);
    ASSERT_EQ(pTests->GetNTests(), static_cast<int>(termNames.size()) + 1);
    for (const auto& t : refTests) {
      const std::string term = t["term"].get<std::string>();
      SCOPED_TRACE(term);
      const auto it = std::find(termNames.begin(), termNames.end(), term);
      ASSERT_NE(it, termNames.end());
      const int i = static_cast<int>(it - termNames.begin()) + 1;
      const MCMath_850::MCTestStats& ts = pTests->GetTestStats(i);
      EXPECT_TRUE(NearRelative(ts.GetWald(), t["F"].get<double>(), tol, 0.0)) << "F";
      EXPECT_EQ(ts.GetDF(), t["numDF"].get<double>());
      EXPECT_TRUE(NearRelative(ts.GetDF2(), t["denDF"].get<double>(), tolDF, 0.0)) << "denominator df";
      EXPECT_TRUE(NearRelative(ts.GetSig(), t["p"].get<double>(), tolDF, 1e-12)) << "p";
      EXPECT_EQ(pTests->GetLMatrix(i).size(), static_cast<std::size_t>(ts.GetDF()));
      EXPECT_TRUE(pTests->GetStatus(i).IsOK());
    }
  };
  {
    SCOPED_TRACE("Type III");
    compareTests(ref["typeIII"], pStats->GetTypeIIITestStats());
  }
  if (ref.contains("typeI")) {
    SCOPED_TRACE("Type I");
    compareTests(ref["typeI"], pStats->GetTypeITestStats());
  }
}

void FitSleepstudy(const std::string& fixture, GLMMConst_850::ThetaEstType method) {
  SCOPED_TRACE(fixture);
  // Reaction 0, Days 1, Subject 2.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  // The reference holds Type I tests too: asked for, they come beside the Type III ones.
  settings.SetEffectAnalysisType(MCMath_850::MCConst::EFFECT_TYPE_I);
  settings.SetThetaEstType(method);
  settings.AddCovariate(1);
  const std::vector<int> set = {1};
  settings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddEffect(Effect(set, 0, {}, {1}, {1}));
  block.AddSubjectVar(2);
  block.SetCovarianceType(GLMMConst_850::UN);
  block.SetIndex(0);
  settings.AddRandomSpec(block);

  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_FALSE(status.IsError());
  Compare(fixture, algorithm, {"Days"}, {{1}});

  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  EXPECT_DOUBLE_EQ(pStats->GetTotalFreqWeight(), 180.0);
  ASSERT_EQ(pStats->GetGammaBasicParameters().size(), 1u);
  const auto& gamma = pStats->GetGammaBasicParameters()[0];
  ASSERT_EQ(gamma.size(), 2u);
  EXPECT_TRUE(gamma[0].IsIntercept());
  EXPECT_EQ(gamma[1].GetEffectIndex(), 1);
  EXPECT_EQ(gamma[1].GetCovariateMult(1), 1);
  EXPECT_NE(pStats->GetAICC(), MCCommon_850::MCMV::Missing());
  EXPECT_NE(pStats->GetBIC(), MCCommon_850::MCMV::Missing());
  EXPECT_EQ(pStats->GetBetaParameters()[1].GetEffectIndex(), 0);
  // UN(1,1), UN(2,1), UN(2,2) of block 0, then the residual.
  const auto& thetaStats = pStats->GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), 4u);
  EXPECT_EQ(thetaStats[1].GetKind(), MCGLMM_850::GLMMThetaParamStat::COVARIANCE);
  EXPECT_EQ(thetaStats[2].GetKind(), MCGLMM_850::GLMMThetaParamStat::VARIANCE);
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(thetaStats[U(k)].GetBlockIndex(), 0);
    EXPECT_EQ(thetaStats[U(k)].GetEffectIndex(), -1);
  }
  EXPECT_EQ(thetaStats[3].GetBlockIndex(), MCGLMM_850::GLMMThetaParamStat::kResidualBlock);
}

void FitOrthodontResidual(const std::string& fixture, GLMMConst_850::CovarType type,
                          GLMMConst_850::ThetaEstType method, bool withPositions = true) {
  SCOPED_TRACE(fixture);
  // distance 0, age 1, Subject 2, Sex 3.
  GLMMTestRecords records;
  ASSERT_TRUE(
      records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.SetThetaEstType(method);
  settings.AddFactor(3, 2);
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {1};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(1, false);
  position.SetVarsIndicesForTheEffectInSetting(repeatedSet);
  if (withPositions) repeated.AddEffect(position);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(type);
  settings.SetRepeated(repeated);

  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_FALSE(status.IsError());
  Compare(fixture, algorithm, {"age", "Sex", "age*Sex"}, {{1}, {3}, {1, 3}});

  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  // Intercept, age, two Sex levels, two age*Sex levels; the last level of each factor is redundant.
  ASSERT_EQ(pStats->GetBetaParameters().size(), 6u);
  EXPECT_TRUE(pStats->GetBetaParamStats()[3].GetRedundant());
  EXPECT_TRUE(pStats->GetBetaParamStats()[5].GetRedundant());
  EXPECT_EQ(pStats->GetBetaParamStats()[3].GetEstimate(), 0.0);
  EXPECT_EQ(pStats->GetBetaParameters()[2].GetCategories(), std::vector<int>{0});
  EXPECT_EQ(pStats->GetBetaParameters()[5].GetCategories(), std::vector<int>{1});
  EXPECT_EQ(pStats->GetBetaParameters()[5].GetEffectIndex(), 2);
  EXPECT_TRUE(pStats->GetGammaBasicParameters().empty());
}

void AddFactors(GLMMSettings& settings, const GLMMTestRecords& records, const std::vector<int>& factors) {
  for (int f : factors) settings.AddFactor(f, records.GetVarList().GetVarAt(f)->GetNCategories());
}

GLMMRandomSpec Block(const std::vector<MCModelEffect>& effects, const std::vector<int>& subjects,
                     GLMMConst_850::CovarType type, int index) {
  GLMMRandomSpec block;
  for (const MCModelEffect& effect : effects) block.AddEffect(effect);
  for (int subject : subjects) block.AddSubjectVar(subject);
  block.SetCovarianceType(type);
  block.SetIndex(index);
  return block;
}

GLMMOutputStats Fit(const GLMMSettings& settings, GLMMTestRecords& records, const std::string& fixture,
                    const std::vector<std::string>& termNames, const std::vector<std::vector<int>>& written) {
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_FALSE(status.IsError()) << status.GetErrorCode();
  Compare(fixture, algorithm, termNames, written);
  return algorithm.GetOutputStats() != nullptr ? *algorithm.GetOutputStats() : GLMMOutputStats();
}

}  // namespace

TEST(GLMMAlgorithmFit, OrthodontRandomIntercept) {
  GLMMTestRecords records;
  ASSERT_TRUE(
      records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  AddFactors(settings, records, {3});
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  settings.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
  Fit(settings, records, "orthodont_ri", {"age", "Sex", "age*Sex"}, {{1}, {3}, {1, 3}});
}

TEST(GLMMAlgorithmFit, OatsCrossedFactorsWithRandomBlockAndPlot) {
  // yield 0, Block 1, Variety 2, nitro 3.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("oats.csv"), {"yield", "Block", "Variety", "nitro"}, {"Block", "Variety", "nitro"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  AddFactors(settings, records, {1, 2, 3});
  const std::vector<int> set = {1, 2, 3};
  settings.AddModelEffect(Effect(set, 3, {2}, {}, {2}));
  settings.AddModelEffect(Effect(set, 3, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 3, {2, 3}, {}, {2, 3}));
  settings.AddRandomSpec(
      Block({Effect(set, 3, {1}, {}, {1}), Effect(set, 3, {1, 2}, {}, {1, 2})}, {}, GLMMConst_850::VC, 0));
  const GLMMOutputStats stats =
      Fit(settings, records, "oats", {"Variety", "nitro", "Variety*nitro"}, {{2}, {3}, {2, 3}});
  // Block and Block*Variety are variance components of random block 0.
  const auto& thetaStats = stats.GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), 3u);
  EXPECT_EQ(thetaStats[0].GetBlockIndex(), 0);
  EXPECT_EQ(thetaStats[0].GetEffectIndex(), 0);
  EXPECT_EQ(thetaStats[1].GetBlockIndex(), 0);
  EXPECT_EQ(thetaStats[1].GetEffectIndex(), 1);
  EXPECT_EQ(thetaStats[2].GetBlockIndex(), MCGLMM_850::GLMMThetaParamStat::kResidualBlock);
  EXPECT_EQ(thetaStats[2].GetEffectIndex(), -1);
  for (const auto& st : thetaStats) EXPECT_EQ(st.GetKind(), MCGLMM_850::GLMMThetaParamStat::VARIANCE);
  // Intercept, 3 + 4 + 12 columns; Block 6 and Block*Variety 18 random columns.
  EXPECT_EQ(stats.GetBetaParameters().size(), 20u);
  ASSERT_EQ(stats.GetGammaBasicParameters().size(), 1u);
  EXPECT_EQ(stats.GetGammaBasicParameters()[0].size(), 24u);
  EXPECT_EQ(stats.GetGammaBasicParameters()[0][23].GetCategories(), (std::vector<int>{5, 2}));
  EXPECT_EQ(stats.GetGammaBasicParameters()[0][23].GetEffectIndex(), 1);
}

TEST(GLMMAlgorithmFit, PastesNestedRandomEffect) {
  // strength 0, batch 1, cask 2.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("pastes.csv"), {"strength", "batch", "cask"}, {"batch", "cask"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  // The reference holds Type I tests too: asked for, they come beside the Type III ones.
  settings.SetEffectAnalysisType(MCMath_850::MCConst::EFFECT_TYPE_I);
  AddFactors(settings, records, {1, 2});
  const std::vector<int> set = {1, 2};
  settings.AddRandomSpec(Block({Effect(set, 2, {1}, {}, {1}), Effect(set, 2, {1, 2}, {}, {2, 1}, true)}, {},
                               GLMMConst_850::VC, 0));
  const GLMMOutputStats stats = Fit(settings, records, "pastes", {}, {});
  ASSERT_EQ(stats.GetGammaBasicParameters().size(), 1u);
  const auto& gamma = stats.GetGammaBasicParameters()[0];
  ASSERT_EQ(gamma.size(), 40u);
  // cask(batch): batch is the outer factor and varies slowest.
  EXPECT_EQ(gamma[10 + 4].GetFactors(), (std::vector<int>{1, 2}));
  EXPECT_EQ(gamma[10 + 4].GetCategories(), (std::vector<int>{1, 1}));
  EXPECT_EQ(gamma[10 + 4].GetFactorNestLevels(), (std::vector<int>{0, 1}));
}

TEST(GLMMAlgorithmFit, PenicillinCrossedRandomBlocks) {
  // diameter 0, plate 1, sample 2.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("penicillin.csv"), {"diameter", "plate", "sample"}, {"plate", "sample"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  // The reference holds Type I tests too: asked for, they come beside the Type III ones.
  settings.SetEffectAnalysisType(MCMath_850::MCConst::EFFECT_TYPE_I);
  AddFactors(settings, records, {1, 2});
  const std::vector<int> set = {1, 2};
  settings.AddRandomSpec(Block({Effect(set, 2, {1}, {}, {1})}, {}, GLMMConst_850::VC, 0));
  settings.AddRandomSpec(Block({Effect(set, 2, {2}, {}, {2})}, {}, GLMMConst_850::VC, 1));
  const GLMMOutputStats stats = Fit(settings, records, "penicillin", {}, {});
  EXPECT_EQ(stats.GetGammaBasicParameters().size(), 2u);
  const auto& thetaStats = stats.GetThetaParamStats();
  ASSERT_EQ(thetaStats.size(), 3u);
  EXPECT_EQ(thetaStats[0].GetBlockIndex(), 0);
  EXPECT_EQ(thetaStats[1].GetBlockIndex(), 1);
  EXPECT_EQ(thetaStats[2].GetBlockIndex(), MCGLMM_850::GLMMThetaParamStat::kResidualBlock);
}


TEST(GLMMAlgorithmFit, SleepstudyRandomInterceptAndSlopeUnstructured) {
  FitSleepstudy("sleepstudy_un", GLMMConst_850::REML);
}

TEST(GLMMAlgorithmFit, SleepstudyRandomInterceptAndSlopeUnstructuredML) {
  FitSleepstudy("sleepstudy_un_ml", GLMMConst_850::ML);
}

TEST(GLMMAlgorithmFit, OrthodontResidualCompoundSymmetry) {
  FitOrthodontResidual("orthodont_cs", GLMMConst_850::CS, GLMMConst_850::REML);
}

TEST(GLMMAlgorithmFit, OrthodontResidualCompoundSymmetryWithoutRepeatedIndex) {
  FitOrthodontResidual("orthodont_cs", GLMMConst_850::CS, GLMMConst_850::REML, false);
}

TEST(GLMMAlgorithmFit, OrthodontResidualCompoundSymmetryML) {
  FitOrthodontResidual("orthodont_cs_ml", GLMMConst_850::CS, GLMMConst_850::ML);
}

TEST(GLMMAlgorithmFit, OrthodontResidualAutoregressive) {
  FitOrthodontResidual("orthodont_ar1", GLMMConst_850::AR1, GLMMConst_850::REML);
}

TEST(GLMMAlgorithmFit, OrthodontResidualUnstructured) {
  FitOrthodontResidual("orthodont_un", GLMMConst_850::UN, GLMMConst_850::REML);
}

TEST(GLMMAlgorithmFit, OrthodontRandomInterceptScaleWeighted) {
  GLMMTestRecords records;
  ASSERT_TRUE(
      records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  records.AddScaledVariable("w", 1, 0.1);
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  AddFactors(settings, records, {3});
  settings.AddCovariate(1);
  settings.SetRegrWeightVar(4);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}, {1, 3}));
  settings.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
  const GLMMOutputStats stats =
      Fit(settings, records, "orthodont_ri_weighted", {"age", "Sex", "age*Sex"}, {{1}, {3}, {1, 3}});
  EXPECT_DOUBLE_EQ(stats.GetTotalFreqWeight(), 108.0);
}

TEST(GLMMAlgorithmFit, IterationLimitIsAWarningWithResults) {
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddCovariate(1);
  settings.SetMaxIterations(1);
  settings.SetParamEstConCriterion(1e-12);
  const std::vector<int> set = {1};
  settings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
  settings.AddRandomSpec(Block({MCModelEffect(), Effect(set, 0, {}, {1}, {1})}, {2}, GLMMConst_850::UN, 0));
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsWarning());
  EXPECT_EQ(status.GetErrorCode(), 230036);
  ASSERT_FALSE(algorithm.GetWarnings().empty());
  EXPECT_EQ(algorithm.GetWarnings().back().GetErrorCode(), 230036);
  ASSERT_NE(algorithm.GetOutputStats(), nullptr);
  EXPECT_EQ(algorithm.GetOutputStats()->GetBuildModelWarnings().back().GetErrorCode(), 230036);
  EXPECT_EQ(algorithm.GetOutputStats()->GetBetaParamStats().size(), 2u);
}

TEST(GLMMAlgorithmFit, MachinesFixedFactorWithRandomInteraction) {
  // score 0, Worker 1, Machine 2.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("machines.csv"), {"score", "Worker", "Machine"}, {"Worker", "Machine"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  // The reference holds Type I tests too: asked for, they come beside the Type III ones.
  settings.SetEffectAnalysisType(MCMath_850::MCConst::EFFECT_TYPE_I);
  AddFactors(settings, records, {1, 2});
  const std::vector<int> set = {1, 2};
  settings.AddModelEffect(Effect(set, 2, {2}, {}, {2}));
  settings.AddRandomSpec(
      Block({Effect(set, 2, {1}, {}, {1}), Effect(set, 2, {1, 2}, {}, {1, 2})}, {}, GLMMConst_850::VC, 0));
  Fit(settings, records, "machines", {"Machine"}, {{2}});
}

TEST(GLMMAlgorithmFit, BodyweightResidualAutoregressive) {
  // weight 0, Time 1, Rat 2, Diet 3.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("bodyweight.csv"), {"weight", "Time", "Rat", "Diet"}, {"Rat", "Diet"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  AddFactors(settings, records, {3});
  settings.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {3}, {}, {3}));
  settings.AddModelEffect(Effect(set, 1, {}, {1}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {1}, {3, 1}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {1};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(1, false);
  repeated.AddEffect(position);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::AR1);
  settings.SetRepeated(repeated);
  Fit(settings, records, "bodyweight_ar1", {"Diet", "Time", "Diet*Time"}, {{3}, {1}, {3, 1}});
}

TEST(GLMMAlgorithmFit, StructureNotAvailable) {
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(2);
  // Spatial structures serve the residual block only.
  block.SetCovarianceType(GLMMConst_850::SP_GAU);
  settings.AddRandomSpec(block);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 130018);
  EXPECT_EQ(algorithm.GetOutputStats(), nullptr);
}

TEST(GLMMAlgorithmFit, EveryRecordMissingMeansNoValidCases) {
  GLMMTestRecords records;
  // Subject is no number, so as a covariate every record is missing.
  ASSERT_TRUE(records.Load(DataPath("orthodont.csv"), {"distance", "Subject"}, {}));
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddCovariate(1);
  const std::vector<int> set = {1};
  settings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 230024);
}

// Type I tests are formed where they are read: shown (Type I asked for), or
// stacked into the joint test of a model of several effects. A model of one
// effect shown by Type III spares them (a factor of a thousand levels spares
// a test of 999 df).
TEST(GLMMAlgorithmFit, TypeITestsOnlyWhereTheyAreRead) {
  // Reaction 0, Days 1, Subject 2.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("sleepstudy.csv"), {"Reaction", "Days", "Subject"}, {"Subject"}));
  const auto fit = [&](MCMath_850::MCConst::MCEffectAnalysisType type, bool twoEffects) {
    GLMMSettings settings;
    settings.SetSingleDependent(0);
    settings.SetEffectAnalysisType(type);
    settings.AddCovariate(1);
    const std::vector<int> set = {1};
    settings.AddModelEffect(Effect(set, 0, {}, {1}, {1}));
    if (twoEffects) settings.AddModelEffect(Effect(set, 0, {}, {1, 1}, {1, 1}));
    settings.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
    auto algorithm = std::make_unique<GLMMAlgorithm>(settings, records.GetVarList());
    EXPECT_FALSE(algorithm->Execute(&records, 0).IsError());
    return algorithm;
  };
  const auto typeIII = fit(MCMath_850::MCConst::EFFECT_TYPE_III, false);
  ASSERT_NE(typeIII->GetOutputStats(), nullptr);
  EXPECT_EQ(typeIII->GetOutputStats()->GetTypeITestStats(), nullptr);
  ASSERT_NE(typeIII->GetOutputStats()->GetTypeIIITestStats(), nullptr);
  ASSERT_EQ(typeIII->GetOutputStats()->GetTypeIIITestStats()->GetNTests(), 2);

  const auto typeI = fit(MCMath_850::MCConst::EFFECT_TYPE_I, false);
  ASSERT_NE(typeI->GetOutputStats()->GetTypeITestStats(), nullptr);
  ASSERT_EQ(typeI->GetOutputStats()->GetTypeITestStats()->GetNTests(), 2);
  // Days after the intercept is the one hypothesis both types test.
  const double f = typeIII->GetOutputStats()->GetTypeIIITestStats()->GetTestStats(1).GetWald();
  EXPECT_NEAR(typeI->GetOutputStats()->GetTypeITestStats()->GetTestStats(1).GetWald(), f, 1e-10 * f);

  const auto quadratic = fit(MCMath_850::MCConst::EFFECT_TYPE_III, true);
  ASSERT_NE(quadratic->GetOutputStats()->GetTypeITestStats(), nullptr);
  EXPECT_EQ(quadratic->GetOutputStats()->GetTypeITestStats()->GetNTests(), 3);
  EXPECT_NE(quadratic->GetOutputStats()->GetCorrectedModelTest(), nullptr);
}
