// Generalized targets fitted through GLMMAlgorithm: the target's
// distribution, link and trials reach the engine from the settings.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <sstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "numeric/common/MCStatusCode.h"
#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMClassification.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"
#include "numeric/math/MCEmmeansSpec.h"

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

// bacteria: y 0, trt 1, wk2 2, ID 3; a binary target by treatment and
// week, a random intercept per child.
GLMMSettings BacteriaSettings(const GLMMTestRecords& records) {
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(1, records.GetVarList().GetVarAt(1)->GetNCategories());
  settings.AddCovariate(2);
  const std::vector<int> set = {1, 2};
  MCModelEffect trt;
  trt.Setup(1, 1, &set);
  trt.AddNewFactor(1, false);
  trt.SetVarsIndicesForTheEffectInSetting({1});
  settings.AddModelEffect(trt);
  MCModelEffect wk2;
  wk2.Setup(1, 1, &set);
  wk2.AddCovariate(2);
  wk2.SetVarsIndicesForTheEffectInSetting({2});
  settings.AddModelEffect(wk2);
  GLMMRandomSpec block;
  block.AddEffect(MCModelEffect());
  block.AddSubjectVar(3);
  block.SetCovarianceType(GLMMConst_850::VC);
  block.SetIndex(0);
  settings.AddRandomSpec(block);
  GLMMTargetSpec target;
  target.SetDistribution(GLMMConst_850::DIST_BINOMIAL);
  settings.SetTargetSpec(target);
  return settings;
}

nlohmann::json GeneralizedOutputsReference(const std::string& name) {
  std::ifstream in(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/reference/generalized_outputs.json");
  EXPECT_TRUE(in.good());
  return in.good() ? nlohmann::json::parse(in)[name] : nlohmann::json();
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

TEST_F(GLMMAlgorithmGeneralized, MarginalMeansComeOnTheDataScaleWithDeltaMethodErrors) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL);
  MCMath_850::MCEmmeansSpec request;
  request.AddFactor(3, 0);
  settings.SetEmmeans({request});
  ASSERT_FALSE(Fit(settings).IsError());
  const nlohmann::json ref = GeneralizedOutputsReference("cbpp_means");
  const auto& tables = fpAlgorithm->GetOutputStats()->GetEmmeansStats();
  ASSERT_FALSE(tables.empty());
  const auto& means = tables.front().GetMeans();
  ASSERT_EQ(means.size(), 4u);
  // The reference's periods by their texts.
  const std::vector<std::string>& texts = fRecords.GetVarList().GetVarAt(3)->GetCategoryTexts();
  for (const MCGLMM_850::GLMMEmmeansMean& m : means) {
    ASSERT_EQ(m.GetCategories().size(), 1u);
    const std::string period = texts[static_cast<std::size_t>(m.GetCategories()[0])];
    std::size_t j = 0;
    while (j < 4 && ref["period"][j].get<std::string>() != period) ++j;
    ASSERT_LT(j, 4u) << period;
    ASSERT_TRUE(m.HasDataScale());
    EXPECT_NEAR(m.GetMean(), ref["eta"][j].get<double>(), 1e-6) << j;
    EXPECT_NEAR(m.GetStdError(), ref["eta_se"][j].get<double>(), 1e-6) << j;
    EXPECT_NEAR(m.GetDataMean(), ref["mean"][j].get<double>(), 1e-7) << j;
    EXPECT_NEAR(m.GetDataStdError(), ref["mean_se"][j].get<double>(), 1e-7) << j;
    // The interval is the inverse logit of the linear predictor's.
    EXPECT_NEAR(m.GetDataLowerBound(), 1.0 / (1.0 + std::exp(-m.GetLowerBound())), 1e-12) << j;
    EXPECT_NEAR(m.GetDataUpperBound(), 1.0 / (1.0 + std::exp(-m.GetUpperBound())), 1e-12) << j;
    EXPECT_LT(m.GetDataLowerBound(), m.GetDataMean());
    EXPECT_GT(m.GetDataUpperBound(), m.GetDataMean());
  }
  const MCGLMM_850::GLMMEmmeansMean* pGrand = fpAlgorithm->GetOutputStats()->GetGrandMean();
  ASSERT_NE(pGrand, nullptr);
  EXPECT_NEAR(pGrand->GetDataMean(), 1.0 / (1.0 + std::exp(-pGrand->GetMean())), 1e-12);
}

TEST_F(GLMMAlgorithmGeneralized, ALinearModelsMeansHaveNoDataScale) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_NORMAL);
  settings.SetTargetSpec(GLMMTargetSpec());
  MCMath_850::MCEmmeansSpec request;
  request.AddFactor(3, 0);
  settings.SetEmmeans({request});
  ASSERT_FALSE(Fit(settings).IsError());
  const auto& means = fpAlgorithm->GetOutputStats()->GetEmmeansStats().front().GetMeans();
  ASSERT_FALSE(means.empty());
  EXPECT_FALSE(means.front().HasDataScale());
  EXPECT_TRUE(MCCommon_850::MCMV::IsMissing(means.front().GetDataMean()));
}

TEST_F(GLMMAlgorithmGeneralized, EventsOutOfTrialsClassifyEachTrial) {
  ASSERT_FALSE(Fit(CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL)).IsError());
  const MCGLMM_850::GLMMClassification& table = fpAlgorithm->GetOutputStats()->GetClassification();
  ASSERT_FALSE(table.IsEmpty());
  EXPECT_TRUE(table.GetUsesTrials());
  const nlohmann::json ref = GeneralizedOutputsReference("cbpp_classification");
  ASSERT_EQ(table.GetCounts().size(), 4u);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_DOUBLE_EQ(table.GetCounts()[i], ref[i].get<double>()) << i;
  // Every trial once: the trials of the data.
  double trials = 0.0;
  for (fRecords.Rewind(); fRecords.HasRecord(); fRecords.Next()) trials += fRecords.Current()[1];
  EXPECT_DOUBLE_EQ(table.GetCounts()[0] + table.GetCounts()[1] + table.GetCounts()[2] + table.GetCounts()[3], trials);
  EXPECT_NEAR(table.GetAccuracy(), 743.0 / 842.0, 1e-12);
}

TEST_F(GLMMAlgorithmGeneralized, AContinuousTargetHasNoClassification) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_POISSON);
  GLMMTargetSpec target;
  target.SetDistribution(GLMMConst_850::DIST_POISSON);
  settings.SetTargetSpec(target);
  ASSERT_FALSE(Fit(settings).IsError());
  EXPECT_TRUE(fpAlgorithm->GetOutputStats()->GetClassification().IsEmpty());
}

TEST(GLMMAlgorithmBinary, BacteriaRecordsAreClassifiedByTheirConditionalProbability) {
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(std::string(GLMIX_TEST_DATA_DIR) + "/numeric/glmm/bacteria.csv", {"y", "trt", "wk2", "ID"},
                           {"trt", "ID"}));
  const GLMMSettings settings = BacteriaSettings(records);
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  const MCGLMM_850::GLMMClassification& table = algorithm.GetOutputStats()->GetClassification();
  ASSERT_FALSE(table.IsEmpty());
  EXPECT_FALSE(table.GetUsesTrials());
  EXPECT_EQ(table.GetCategories(), (std::vector<double>{0.0, 1.0}));
  const nlohmann::json ref = GeneralizedOutputsReference("bacteria_classification");
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) EXPECT_DOUBLE_EQ(table.GetCount(i, j), ref[2 * i + j].get<double>()) << i << j;
  }
  EXPECT_NEAR(table.GetAccuracy(), (11.0 + 176.0) / 220.0, 1e-12);
}

TEST_F(GLMMAlgorithmGeneralized, TheStatJSONNamesTheTargetAndHoldsItsClassification) {
  ASSERT_FALSE(Fit(CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL)).IsError());
  std::ostringstream os;
  ASSERT_FALSE(fpAlgorithm->ExportStatJSON(os).IsError());
  const nlohmann::json target = nlohmann::json::parse(os.str())["glmm"]["Target"];
  EXPECT_EQ(target["field"], "incidence");
  EXPECT_EQ(target["distribution"], "BINOMIAL");
  EXPECT_EQ(target["link"], "LOGIT");
  EXPECT_EQ(target["trialsField"], "size");
  EXPECT_FALSE(target.contains("linkParameter"));
  const nlohmann::json& classification = target["classification"];
  EXPECT_EQ(classification["categories"], nlohmann::json({"Non-Event", "Event"}));
  const MCGLMM_850::GLMMClassification& table = fpAlgorithm->GetOutputStats()->GetClassification();
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 2; ++j) EXPECT_DOUBLE_EQ(classification["counts"][i][j].get<double>(), table.GetCount(i, j));
  }
  EXPECT_DOUBLE_EQ(classification["accuracy"].get<double>(), table.GetAccuracy());
}

TEST_F(GLMMAlgorithmGeneralized, ALinearStatJSONHasNoTarget) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_NORMAL);
  settings.SetTargetSpec(GLMMTargetSpec());
  ASSERT_FALSE(Fit(settings).IsError());
  std::ostringstream os;
  ASSERT_FALSE(fpAlgorithm->ExportStatJSON(os).IsError());
  EXPECT_FALSE(nlohmann::json::parse(os.str())["glmm"].contains("Target"));
}

TEST_F(GLMMAlgorithmGeneralized, TheStatXMLHoldsTheClassificationAndBothScalesOfTheMeans) {
  GLMMSettings settings = CbppSettings(fRecords, GLMMConst_850::DIST_BINOMIAL);
  MCMath_850::MCEmmeansSpec request;
  request.AddFactor(3, 0);
  settings.SetEmmeans({request});
  ASSERT_FALSE(Fit(settings).IsError());
  std::ostringstream os;
  ASSERT_FALSE(fpAlgorithm->ExportStatXML(os).IsError());
  const std::string xml = os.str();
  EXPECT_NE(xml.find("<Matrix description=\"classificationTable\" nbRows=\"2\" nbCols=\"2\" kind=\"general\">"),
            std::string::npos);
  // With trials the categories are known without labels.
  EXPECT_EQ(xml.find("<Label label="), std::string::npos);
  EXPECT_NE(xml.find("<Statistic name=\"classificationAccuracy\""), std::string::npos);
  EXPECT_NE(xml.find("statistic=\"linearPredictor\""), std::string::npos);
  EXPECT_NE(xml.find("statistic=\"linearPredictorStdErr\""), std::string::npos);
  // The means of the target are proportions.
  const std::size_t at = xml.find("statistic=\"mean\"");
  ASSERT_NE(at, std::string::npos);
  const std::size_t open = xml.find('>', xml.find("<Array", at)) + 1;
  std::istringstream values(xml.substr(open, xml.find('<', open) - open));
  const auto& means = fpAlgorithm->GetOutputStats()->GetEmmeansStats().front().GetMeans();
  ASSERT_EQ(means.size(), 4u);
  for (std::size_t j = 0; j < 4; ++j) {
    double v = 0.0;
    ASSERT_TRUE(static_cast<bool>(values >> v));
    EXPECT_NEAR(v, means[j].GetDataMean(), 1e-9) << j;
    EXPECT_GT(v, 0.0);
    EXPECT_LT(v, 1.0);
  }
}
