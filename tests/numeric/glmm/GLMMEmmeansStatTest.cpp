// Marginal means through GLMMAlgorithm: the requests' tables, their
// warnings, the component's own tables and the records that hold them.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMEmmeansStat.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/glmm/GLMMTestRecords.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/xml/IMCVariable.h"

using MCCommon_850::MCMV;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMEmmeansContrast;
using MCGLMM_850::GLMMEmmeansMean;
using MCGLMM_850::GLMMEmmeansStat;
using MCGLMM_850::GLMMEmmeansTest;
using MCGLMM_850::GLMMOutputStats;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCEmmeansSpec;
using MCMath_850::MCModelEffect;
namespace MCConst = MCMath_850::MCConst;

namespace {

std::string DataPath(const std::string& file) { return std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file; }

MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (int f : factors) effect.AddNewFactor(f, false);
  for (int c : covariates) effect.AddCovariate(c);
  return effect;
}

// Machines: score 0, Worker 1, Machine 2, and a variable 3 that is 0 in
// every record, a factor of one category; Machine fixed, Worker and
// Worker*Machine random.
class Machines {
 public:
  Machines() {
    fbLoaded = fRecords.Load(DataPath("machines.csv"), {"score", "Worker", "Machine"}, {"Worker", "Machine"});
    fRecords.AddScaledVariable("constant", 0, 0.0);
    fSettings.SetSingleDependent(0);
    fSettings.AddFactor(1, 6);
    fSettings.AddFactor(2, 3);
    fSettings.AddFactor(3, 1);
    const std::vector<int> set = {1, 2, 3};
    fSettings.AddModelEffect(Effect(set, 3, {2}, {}));
    GLMMRandomSpec block;
    block.AddEffect(Effect(set, 3, {1}, {}));
    block.AddEffect(Effect(set, 3, {1, 2}, {}));
    block.SetCovarianceType(GLMMConst_850::VC);
    fSettings.AddRandomSpec(block);
  }
  bool IsLoaded() const { return fbLoaded; }
  GLMMSettings& Settings() { return fSettings; }
  GLMMTestRecords& Records() { return fRecords; }

 private:
  GLMMTestRecords fRecords;
  GLMMSettings fSettings;
  bool fbLoaded = false;
};

MCEmmeansSpec Request(const std::vector<int>& factors, int compare, MCConst::MCContrastType type) {
  MCEmmeansSpec spec;
  for (int f : factors) spec.AddFactor(f, 0);
  if (compare >= 0) spec.AddCompareFactor(compare);
  spec.SetContrastType(type);
  return spec;
}

}  // namespace

TEST(GLMMEmmeansStat, DefaultsAndDisplay) {
  GLMMEmmeansStat stat;
  EXPECT_EQ(stat.GetRequestIndex(), -1);
  EXPECT_EQ(stat.GetEffectIndex(), -1);
  EXPECT_TRUE(stat.GetValid());
  EXPECT_EQ(stat.GetCompareFactor(), -1);
  EXPECT_EQ(stat.GetContrastType(), MCConst::CONTRAST_NONE);
  EXPECT_EQ(stat.GetPAdjust(), MCConst::PADJUST_LSD);
  EXPECT_EQ(stat.GetRefCateg(), -1);
  EXPECT_TRUE(MCMV::IsMissing(stat.GetConfidenceLevel()));
  EXPECT_TRUE(stat.GetMeans().empty());
  const GLMMEmmeansMean mean;
  EXPECT_FALSE(mean.GetEstimable());
  EXPECT_TRUE(MCMV::IsMissing(mean.GetMean()));
  EXPECT_TRUE(MCMV::IsMissing(mean.GetUpperBound()));
  const GLMMEmmeansContrast contrast;
  EXPECT_EQ(contrast.GetCategory(), -1);
  EXPECT_EQ(contrast.GetReference(), -1);
  EXPECT_TRUE(MCMV::IsMissing(contrast.GetAdjustedSig()));
  const GLMMEmmeansTest test;
  EXPECT_FALSE(test.GetValid());
  EXPECT_TRUE(MCMV::IsMissing(test.GetDF2()));

  stat.SetRequestIndex(2);
  stat.AddCovariate(4, 11.5);
  GLMMEmmeansMean m;
  m.SetCategories({1});
  m.SetMean(3.25);
  stat.AddMean(m);
  stat.AddContrast(contrast);
  stat.AddTest(test);
  std::ostringstream os;
  stat.Display(os);
  const std::string text = os.str();
  EXPECT_NE(text.find("Begin GLMMEmmeansStat display."), std::string::npos);
  EXPECT_NE(text.find("Request: 2"), std::string::npos);
  EXPECT_NE(text.find("Covariate values: 11.5"), std::string::npos);
  EXPECT_NE(text.find("Mean: 3.25"), std::string::npos);
  EXPECT_NE(text.find("Adjusted significance: missing"), std::string::npos);
  EXPECT_NE(text.find("End GLMMEmmeansStat display."), std::string::npos);
}

TEST(GLMMEmmeansStat, CompareFactorWithOneCategoryWarns) {
  Machines model;
  ASSERT_TRUE(model.IsLoaded());
  model.Settings().SetEmmeans({Request({2}, 2, MCConst::CONTRAST_PAIRWISE),
                               Request({2, 3}, 3, MCConst::CONTRAST_PAIRWISE),
                               Request({3, 2}, 2, MCConst::CONTRAST_SIMPLE)});
  GLMMAlgorithm algorithm(model.Settings(), model.Records().GetVarList());
  const MCCommon_850::MCStatus status = algorithm.Execute(&model.Records(), 0);
  EXPECT_TRUE(status.IsOK()) << status.GetErrorCode();
  ASSERT_EQ(algorithm.GetWarnings().size(), 1u);
  const MCCommon_850::MCStatus& warning = algorithm.GetWarnings()[0];
  EXPECT_EQ(warning.GetErrorCode(), MCCommon_850::MC_EMMEANS_ONE_LEVEL);
  EXPECT_TRUE(warning.IsWarning());
  EXPECT_EQ(warning.GetDiscreteDatum(0), 2);

  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  // Three requests, then Machine's own table.
  ASSERT_EQ(pStats->GetEmmeansStats().size(), 4u);
  EXPECT_EQ(pStats->GetNEmmeansRequests(), 3);
  const GLMMEmmeansStat& first = pStats->GetEmmeansStats()[0];
  EXPECT_TRUE(first.GetWarnings().empty());
  EXPECT_EQ(first.GetContrasts().size(), 3u);
  EXPECT_EQ(first.GetTests().size(), 1u);

  const GLMMEmmeansStat& second = pStats->GetEmmeansStats()[1];
  EXPECT_EQ(second.GetRequestIndex(), 1);
  EXPECT_TRUE(second.GetValid());
  ASSERT_EQ(second.GetWarnings().size(), 1u);
  EXPECT_EQ(second.GetWarnings()[0].GetErrorCode(), MCCommon_850::MC_EMMEANS_ONE_LEVEL);
  EXPECT_EQ(second.GetWarnings()[0].GetDiscreteDatum(0), 2);
  // The means are there; contrasts and tests are not.
  ASSERT_EQ(second.GetMeans().size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(second.GetMeans()[i].GetCategories(), (std::vector<int>{static_cast<int>(i), 0}));
    EXPECT_NEAR(second.GetMeans()[i].GetMean(), first.GetMeans()[i].GetMean(), 1e-9);
  }
  EXPECT_TRUE(second.GetContrasts().empty());
  EXPECT_TRUE(second.GetTests().empty());

  // A by-factor of one category is no obstacle; simple contrasts compare
  // with the last category by default.
  const GLMMEmmeansStat& third = pStats->GetEmmeansStats()[2];
  EXPECT_TRUE(third.GetWarnings().empty());
  EXPECT_EQ(third.GetRefCateg(), 2);
  ASSERT_EQ(third.GetContrasts().size(), 2u);
  EXPECT_EQ(third.GetContrasts()[0].GetCategories(), std::vector<int>{0});
  EXPECT_EQ(third.GetContrasts()[0].GetReference(), 2);
  ASSERT_EQ(third.GetTests().size(), 1u);
  EXPECT_NEAR(third.GetTests()[0].GetF(), first.GetTests()[0].GetF(), 1e-8);
  EXPECT_EQ(pStats->GetEmmeansStats()[3].GetEffectIndex(), 0);
}

TEST(GLMMEmmeansStat, ReferenceCategories) {
  Machines model;
  ASSERT_TRUE(model.IsLoaded());
  MCEmmeansSpec first = Request({2}, 2, MCConst::CONTRAST_SIMPLE);
  first.SetRefCateg(0);
  MCEmmeansSpec last = first;
  last.SetReferenceType(MCConst::REFERENCE_LAST);
  MCEmmeansSpec outside = Request({2}, 2, MCConst::CONTRAST_SIMPLE);
  outside.SetRefCateg(7);
  model.Settings().SetEmmeans({first, last, outside});
  GLMMAlgorithm algorithm(model.Settings(), model.Records().GetVarList());
  ASSERT_FALSE(algorithm.Execute(&model.Records(), 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  EXPECT_EQ(pStats->GetEmmeansStats()[0].GetRefCateg(), 0);
  EXPECT_EQ(pStats->GetEmmeansStats()[0].GetContrasts()[0].GetCategory(), 1);
  EXPECT_EQ(pStats->GetEmmeansStats()[1].GetRefCateg(), 2);
  EXPECT_EQ(pStats->GetEmmeansStats()[2].GetRefCateg(), 2);
  EXPECT_EQ(pStats->GetEmmeansStats()[2].GetContrastType(), MCConst::CONTRAST_SIMPLE);
}

TEST(GLMMEmmeansStat, RequestsThatCannotBeAnswered) {
  Machines model;
  ASSERT_TRUE(model.IsLoaded());
  // The target is not a factor; the compare factor is not in the table.
  model.Settings().SetEmmeans({Request({0}, -1, MCConst::CONTRAST_NONE), Request({2}, 1, MCConst::CONTRAST_PAIRWISE)});
  GLMMAlgorithm algorithm(model.Settings(), model.Records().GetVarList());
  EXPECT_TRUE(algorithm.Execute(&model.Records(), 0).IsOK());
  EXPECT_TRUE(algorithm.GetWarnings().empty());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  ASSERT_EQ(pStats->GetNEmmeansRequests(), 2);
  for (int i = 0; i < 2; ++i) {
    const GLMMEmmeansStat& stat = pStats->GetEmmeansStats()[static_cast<std::size_t>(i)];
    EXPECT_FALSE(stat.GetValid());
    EXPECT_TRUE(stat.GetMeans().empty());
    EXPECT_TRUE(stat.GetContrasts().empty());
  }
  std::ostringstream os;
  pStats->Display(os);
  EXPECT_NE(os.str().find("Marginal means tables: 3"), std::string::npos);
  EXPECT_NE(os.str().find("Grand mean:"), std::string::npos);
}

TEST(GLMMEmmeansStat, CovariatesAtTheirMeanAndTheOwnTablesWithoutRequests) {
  // distance 0, age 1, Subject 2, Sex 3, and a frequency weight of half
  // the age; without random effects every record is a group of its own.
  GLMMTestRecords records;
  ASSERT_TRUE(records.Load(DataPath("orthodont.csv"), {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}));
  records.AddScaledVariable("w", 1, 0.5);
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  settings.AddFactor(3, 2);
  settings.AddCovariate(1);
  settings.SetFrequencyWeightVar(4);
  const std::vector<int> set = {3, 1};
  settings.AddModelEffect(Effect(set, 1, {}, {1}));
  settings.AddModelEffect(Effect(set, 1, {3}, {}));
  GLMMAlgorithm algorithm(settings, records.GetVarList());
  ASSERT_FALSE(algorithm.Execute(&records, 0).IsError());
  const GLMMOutputStats* pStats = algorithm.GetOutputStats();
  ASSERT_NE(pStats, nullptr);
  EXPECT_EQ(pStats->GetNEmmeansRequests(), 0);
  ASSERT_EQ(pStats->GetEmmeansStats().size(), 1u);
  const GLMMEmmeansStat& stat = pStats->GetEmmeansStats()[0];
  EXPECT_EQ(stat.GetEffectIndex(), 1);
  EXPECT_EQ(stat.GetFactors(), std::vector<int>{3});
  EXPECT_EQ(stat.GetConfidenceLevel(), settings.GetConfidenceLevel());
  ASSERT_EQ(stat.GetCovariates(), std::vector<int>{1});
  // Ages 8, 10, 12, 14 in every subject, weighted by half the age.
  const double weighted = (64.0 + 100.0 + 144.0 + 196.0) / (8.0 + 10.0 + 12.0 + 14.0);
  EXPECT_NEAR(stat.GetCovariateValues()[0], weighted, 1e-12);
  ASSERT_EQ(stat.GetMeans().size(), 2u);
  EXPECT_TRUE(stat.GetMeans()[0].GetEstimable());
  ASSERT_NE(pStats->GetGrandMean(), nullptr);
  EXPECT_NEAR(pStats->GetGrandMean()->GetMean(), 0.5 * (stat.GetMeans()[0].GetMean() + stat.GetMeans()[1].GetMean()),
              1e-9);
}
