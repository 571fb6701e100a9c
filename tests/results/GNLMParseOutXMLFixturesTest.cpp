// The hand-written documents of the model forms our engine cannot make yet
// (tests/data/documents/glmm), each read into the result model with its
// values asserted as the files state them.
#include <gtest/gtest.h>

#include <cmath>

#include "results/ResultsTestSupport.h"

using namespace results_test;
using Stats = GNLMOutputStats;

namespace {

class ReadFixtures : public ReaderTest {
 protected:
  const Stats::BuildSettingsData& Settings() const { return *fStats.GetBuildSettings(); }
  const Stats::ParamEstimData& FixedSet(std::size_t k = 0) const {
    return fStats.GetParamCollect()->fvFixedParamEstim.at(k);
  }
  const Stats::ParamStatsData& Fixed(std::size_t i, std::size_t set = 0) const {
    return FixedSet(set).fvParamStats.at(i);
  }
  const Stats::ParamStatsData& Random(std::size_t i, std::size_t block = 0, std::size_t set = 0) const {
    return fStats.GetParamCollect()->fvRandomParamEstim.at(block).fvParamEstim.at(set).fvParamStats.at(i);
  }
  const Stats::ParamStatsData& Residual(std::size_t i) const {
    return fStats.GetParamCollect()->fvRepeatedParamEstim.at(0).fvParamStats.at(i);
  }
  std::string CovarianceLabel(const Stats::ParamStatsData& p, long block) const {
    std::string key, text;
    std::vector<std::string> args;
    EXPECT_TRUE(fStats.formatRandomEffectLabel(p.fParamList, static_cast<unsigned long>(block), key, args, text));
    return text;
  }
  std::vector<std::string> Keys() const {
    std::vector<std::string> keys;
    for (const Stats::WarningMsgData& w : fStats.GetAllWarnings()) keys.push_back(w.fPattern);
    return keys;
  }
  // Every coefficient of every set is consistent: t = estimate / SE, and
  // the Exp columns are the exponentials.
  void ExpectConsistentCoefficients() const {
    for (const Stats::ParamEstimData& set : fStats.GetParamCollect()->fvFixedParamEstim) {
      for (const Stats::ParamStatsData& p : set.fvParamStats) {
        if (p.fIsRedundant) {
          EXPECT_EQ(p.fEstimate, 0.0);
          EXPECT_EQ(p.fStdError, kSysmis);
          continue;
        }
        EXPECT_NEAR(p.fTTest, p.fEstimate / p.fStdError, 1e-5 * std::fabs(p.fTTest)) << p.fParamName;
        EXPECT_LT(p.fConfIntervalLower, p.fEstimate);
        EXPECT_GT(p.fConfIntervalUpper, p.fEstimate);
        if (p.fExpEstimate != kSysmis) {
          EXPECT_NEAR(p.fExpEstimate, std::exp(p.fEstimate), 1e-5 * p.fExpEstimate) << p.fParamName;
          EXPECT_NEAR(p.fExpCILower, std::exp(p.fConfIntervalLower), 1e-5 * p.fExpCILower) << p.fParamName;
        }
      }
    }
  }
};

}  // namespace

TEST_F(ReadFixtures, BinomialWithTrials) {
  ASSERT_TRUE(ReadFixture("binomial"));
  EXPECT_TRUE(Messages().empty());
  const Stats::BuildSettingsData& settings = Settings();
  EXPECT_EQ(settings.fDistribution, Stats::BINOMIAL);
  EXPECT_EQ(settings.fLinkFunction, Stats::LOGIT);
  EXPECT_TRUE(settings.fUseTrials);
  EXPECT_EQ(settings.fTargetIndex, 4);
  EXPECT_EQ(settings.fTrialsIndex, 5);
  ASSERT_EQ(settings.fvFixedEffectList.size(), 2u);
  ASSERT_EQ(settings.fvRandomSpecs.size(), 1u);
  EXPECT_EQ(settings.fvRandomSpecs[0].fCovarianceType, Stats::VC);

  const Stats::ModelDiagnosticsData* diag = fStats.GetModelDiagnostics();
  EXPECT_EQ(diag->fAICC, 128.839);
  EXPECT_EQ(diag->fMinus2LogLikelihood, 118.734);
  EXPECT_EQ(diag->fClassificationAccuracy, 0.75);
  EXPECT_EQ(diag->fNumOfCommonSubjects, 6);
  EXPECT_EQ(diag->fTargetDist.fTotalFreq, 24);
  EXPECT_EQ(diag->fTargetDist.fMean, 0.698443);
  double total = 0.0;
  for (double f : diag->fTargetDist.fvFrequency) total += f;
  EXPECT_EQ(total, 24.0);
  EXPECT_EQ(diag->fPredByObserv.fvObserved.size(), 24u);

  // The classification table of a target with trials has no labels.
  const Stats::ClassifMatrixData* table = fStats.GetClassifMatrix();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->fNumRows, 2);
  EXPECT_TRUE(table->fLabels.empty());
  EXPECT_EQ(table->fRows[0].fValues, (std::vector<double>{9, 3}));
  EXPECT_EQ(table->fRows[1].fRowSum, 12.0);
  EXPECT_EQ((table->fRows[0].fValues[0] + table->fRows[1].fValues[1]) / 24.0, diag->fClassificationAccuracy);

  ASSERT_EQ(FixedSet().fvParamStats.size(), 4u);
  EXPECT_EQ(Fixed(1).fEstimate, 0.64218);
  EXPECT_EQ(Fixed(1).fStdError, 0.316041);
  EXPECT_EQ(Fixed(1).fSig, 0.0556558);
  EXPECT_EQ(Fixed(1).fExpEstimate, 1.90062);
  EXPECT_EQ(Fixed(1).fExpCIUpper, 3.67455);
  EXPECT_EQ(Fixed(1).fStatisticValue, 0);
  EXPECT_TRUE(Fixed(2).fIsRedundant);
  EXPECT_EQ(Fixed(3).fStatisticValue, 1);
  ExpectConsistentCoefficients();
  EXPECT_EQ(CovarianceLabel(Random(0), 0), "Var(Intercept)");
  EXPECT_EQ(Residual(0).fEstimate, 1.0);
  EXPECT_EQ(Residual(0).fStdError, kSysmis);

  // The first subject's records: responders and patients treated.
  const Stats::StructuredData* data = fStats.GetStructuredData();
  ASSERT_NE(data, nullptr);
  EXPECT_EQ(data->fTotalFreq, 4);
  ASSERT_EQ(data->fvTargetValues.size(), 4u);
  ASSERT_EQ(data->fvTrialsValues.size(), 4u);
  EXPECT_EQ(data->fvTargetValues[0].GetObsValue()->fNum, fData->GetNum(0, 4));
  EXPECT_EQ(data->fvTrialsValues[3].GetObsValue()->fNum, fData->GetNum(3, 5));
  ASSERT_EQ(data->fvRepMeasVars.size(), 1u);
  EXPECT_EQ(data->fvRepMeasVars[0].fNumCategories, 0);
  ASSERT_EQ(data->fvRandEffCovarMats.size(), 1u);
  EXPECT_EQ(data->fvRandEffCovarMats[0].fEffectLabels, std::vector<std::string>{"Intercept"});
  EXPECT_EQ(data->fvRandEffCovarMats[0].fMatrixValues[0].fRows[0].fValues[0], Random(0).fEstimate);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C23", "kGLMM_C10"}));
}

TEST_F(ReadFixtures, PoissonWithMarginalMeans) {
  ASSERT_TRUE(ReadFixture("poisson"));
  EXPECT_EQ(Settings().fDistribution, Stats::POISSON);
  EXPECT_EQ(Settings().fLinkFunction, Stats::LOG);
  EXPECT_EQ(Settings().fvRandomSpecs[0].fCovarianceType, Stats::UNSTRUCTURED);
  ASSERT_EQ(Settings().fvEMMEANS.size(), 1u);
  EXPECT_EQ(Settings().fvEMMEANS[0].fCompareFactor, "treatment");
  EXPECT_EQ(Settings().fvEMMEANS[0].fContrastType, 0);
  EXPECT_EQ(Settings().fPAdjustment, 0);

  const Stats::ModelDiagnosticsData* diag = fStats.GetModelDiagnostics();
  EXPECT_EQ(diag->fGrandMean, 3.41275);
  EXPECT_EQ(diag->fGrandMeanCIUpper, 4.25238);
  ASSERT_NE(fStats.GetEffectTest(), nullptr);
  ASSERT_EQ(fStats.GetEffectTest()->fvFixedEffects.size(), 3u);
  EXPECT_EQ(fStats.GetEffectTest()->fvFixedEffects[1].fFStatistic, 11.0412);
  EXPECT_EQ(fStats.GetEffectTest()->fvFixedEffects[2].fTestID, 2);
  EXPECT_EQ(fStats.GetEffectTest()->fCorrectedModel.fDf1, 3.0);

  // The interaction of a covariate and a factor.
  std::string label;
  EXPECT_TRUE(fStats.formatEffectLabel(Fixed(4).fRegrParam, label));
  EXPECT_EQ(label, "dose*[treatment=A]");
  EXPECT_EQ(Fixed(4).fStatisticValue, 2);
  ExpectConsistentCoefficients();

  // An unstructured G of two columns: three parameters and their matrix.
  EXPECT_EQ(CovarianceLabel(Random(0), 0), "UN (1,1)");
  EXPECT_EQ(CovarianceLabel(Random(1), 0), "UN (2,1)");
  EXPECT_EQ(Random(1).fEstimate, -0.00641288);
  const Stats::RandEffCovarMatData& g = fStats.GetStructuredData()->fvRandEffCovarMats.at(0);
  EXPECT_EQ(g.fEffectLabels, (std::vector<std::string>{"Intercept", "dose"}));
  const Stats::ClassifMatrixData& matrix = g.fMatrixValues.at(0);
  EXPECT_EQ(matrix.fRows[0].fValues, (std::vector<double>{Random(0).fEstimate, Random(1).fEstimate}));
  EXPECT_EQ(matrix.fRows[1].fValues, (std::vector<double>{Random(1).fEstimate, Random(2).fEstimate}));

  // The component's own means, and the request's means and contrast.
  ASSERT_NE(fStats.GetEMMEANSSignifCollect(), nullptr);
  ASSERT_EQ(fStats.GetEMMEANSSignifCollect()->size(), 1u);
  EXPECT_EQ(fStats.GetEMMEANSSignifCollect()->front().fvGroup.at(0).fValues, (std::vector<std::string>{"A", "B"}));
  ASSERT_NE(fStats.GetEMMEANSCustomCollect(), nullptr);
  const Stats::EMMEANSCustomData& custom = fStats.GetEMMEANSCustomCollect()->at(0);
  EXPECT_EQ(custom.fEMMEANSIndex, 0);
  ASSERT_EQ(custom.fvFieldValues.size(), 1u);
  EXPECT_EQ(custom.fvFieldValues[0].fFieldName, "dose");
  EXPECT_EQ(custom.fvFieldValues[0].fValue.GetObsValue()->fNum, 20.0);
  ASSERT_EQ(custom.fEstimates.fvGroup.size(), 1u);
  EXPECT_EQ(custom.fEstimates.fvGroup[0].fFeature, 3);
  EXPECT_EQ(custom.fEstimates.fvGroup[0].fField, "treatment");
  EXPECT_EQ(custom.fEstimates.fMean.fValues, (std::vector<std::string>{"3.91824", "2.96132"}));
  EXPECT_EQ(custom.fEstimates.fMean.fStatistic, "mean");
  EXPECT_EQ(custom.fContrasts.fContrastKind, 0);
  EXPECT_EQ(custom.fContrasts.fAdjustedSigLevel, 0.05);
  ASSERT_EQ(custom.fContrasts.fvGroup.size(), 2u);
  EXPECT_EQ(custom.fContrasts.fContrastEstimate.fValues, std::vector<std::string>{"0.95692"});
  ASSERT_EQ(custom.fvOverallTests.size(), 1u);
  EXPECT_EQ(custom.fvOverallTests[0].fTestID, 0);
  EXPECT_TRUE(custom.fvOverallTests[0].fFieldIndices.empty());
  const double t = std::stod(custom.fContrasts.fTTest.fValues[0]);
  EXPECT_NEAR(custom.fvOverallTests[0].fFStatistic, t * t, 1e-4);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C18", "kGLMM_C28"}));
}

TEST_F(ReadFixtures, GammaWithAPowerLink) {
  ASSERT_TRUE(ReadFixture("gamma"));
  EXPECT_EQ(Settings().fDistribution, Stats::GAMMA);
  EXPECT_EQ(Settings().fLinkFunction, Stats::POWER);
  EXPECT_EQ(Settings().fLinkParam, -1.0);
  EXPECT_EQ(Settings().fLinkParamText, "-1.0");
  EXPECT_EQ(Settings().fCIn, 0.9);
  EXPECT_EQ(Stats::LinkWithParamKey(Settings().fLinkFunction, Settings().fDistribution), "Power(^1)");
  const Stats::TargetDistData& target = fStats.GetModelDiagnostics()->fTargetDist;
  EXPECT_EQ(target.fShape, 44.4673);
  EXPECT_EQ(target.fRate, 0.213081);
  EXPECT_NEAR(target.fShape / target.fRate, target.fMean, 1e-3);
  EXPECT_EQ(Fixed(0).fExpEstimate, kSysmis);
  ExpectConsistentCoefficients();
  // The random variance was set to zero (message C8).
  EXPECT_TRUE(fStats.HasWarning(Stats::csKey_C8));
  EXPECT_EQ(Random(0).fEstimate, 0.0);
  EXPECT_EQ(Residual(0).fEstimate, 0.0214561);
  EXPECT_EQ(CovarianceLabel(Residual(0), -1), "Variance");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C8", "kGLMM_C13"}));
}

TEST_F(ReadFixtures, NegativeBinomial) {
  ASSERT_TRUE(ReadFixture("negbin"));
  EXPECT_EQ(Settings().fDistribution, Stats::NEGBIN);
  const Stats::TargetDistData& target = fStats.GetModelDiagnostics()->fTargetDist;
  EXPECT_EQ(target.fR, 4.5743);
  EXPECT_EQ(target.fP, 0.541382);
  EXPECT_NEAR(target.fR * (1.0 - target.fP) / target.fP, target.fMean, 1e-4);
  ExpectConsistentCoefficients();
  EXPECT_TRUE(fStats.HasWarning(Stats::csKey_C9));
  EXPECT_EQ(Residual(0).fEstimate, 1.0);
  EXPECT_EQ(Random(0).fEstimate, 0.0);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C9", "kGLMM_C12", "kGLMM_C14"}));
}

// Thresholds are the parameters without an effect: a factor of the target
// and no statistic.
TEST_F(ReadFixtures, OrdinalWithThresholds) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  EXPECT_EQ(Settings().fDistribution, Stats::ORDINAL);
  EXPECT_EQ(fStats.LinkToDisplayString(Settings().fLinkFunction, Settings().fDistribution, false),
            "Cumulative logit");
  ASSERT_EQ(FixedSet().fvParamStats.size(), 5u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(Fixed(i).fStatisticValue, -1);
    ASSERT_EQ(Fixed(i).fRegrParam.fvFactors.size(), 1u);
    EXPECT_EQ(Fixed(i).fRegrParam.fvFactors[0].fField, "severity");
    EXPECT_EQ(Fixed(i).fRegrParam.fvFactors[0].fValue.GetObsValue()->fNum, static_cast<double>(i + 1));
  }
  EXPECT_LT(Fixed(0).fEstimate, Fixed(1).fEstimate);
  EXPECT_EQ(Fixed(2).fStatisticValue, 0);
  EXPECT_EQ(Fixed(4).fStatisticValue, 1);
  ExpectConsistentCoefficients();
  EXPECT_TRUE(fStats.GetParamCollect()->fvRepeatedParamEstim.empty());
  // A classification table of the target's three categories.
  const Stats::ClassifMatrixData* table = fStats.GetClassifMatrix();
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->fLabels.size(), 3u);
  EXPECT_EQ(table->fLabels[2].GetObsValue()->fNum, 3.0);
  double correct = 0.0;
  for (int i = 0; i < 3; ++i) correct += table->fRows[static_cast<std::size_t>(i)].fValues[static_cast<std::size_t>(i)];
  EXPECT_NEAR(correct / 24.0, fStats.GetModelDiagnostics()->fClassificationAccuracy, 1e-6);
  EXPECT_EQ(table->fRows[1].fRowSum, 8.0);
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C10", "kGLMM_C15", "kGLMM_C16"}));
}

// A nominal target has one set of coefficients per category but the last,
// and its random parameters and covariance matrices come by category too.
TEST_F(ReadFixtures, NominalWithSeveralCoefficientSets) {
  ASSERT_TRUE(ReadFixture("nominal"));
  EXPECT_EQ(Settings().fDistribution, Stats::NOMINAL);
  EXPECT_EQ(fStats.LinkToDisplayString(Settings().fLinkFunction, Settings().fDistribution, false),
            "Generalized logit");
  ASSERT_EQ(fStats.GetParamCollect()->fvFixedParamEstim.size(), 2u);
  EXPECT_EQ(FixedSet(0).fTargetValue.GetStringValue(), "home");
  EXPECT_EQ(FixedSet(1).fTargetValue.GetStringValue(), "ward");
  ASSERT_NE(FixedSet(1).fTargetValue.GetObsValue(), nullptr);
  EXPECT_EQ(Fixed(0, 0).fEstimate, 0.412533);
  EXPECT_EQ(Fixed(0, 1).fEstimate, -0.215541);
  EXPECT_EQ(Fixed(1, 1).fParamLabel, "[treatment=A]");
  ExpectConsistentCoefficients();

  ASSERT_EQ(fStats.GetParamCollect()->fvRandomParamEstim.size(), 1u);
  const Stats::ParamEstimBlockCollection& block = fStats.GetParamCollect()->fvRandomParamEstim[0];
  ASSERT_EQ(block.fvParamEstim.size(), 2u);
  EXPECT_EQ(block.fvParamEstim[1].fFiledData.fFieldNames, std::vector<std::string>{"choice"});
  EXPECT_EQ(block.fvParamEstim[1].fFiledData.fSubjectValues[0].GetStringValue(), "ward");
  EXPECT_EQ(block.fvParamEstim[1].fFiledData.fNumCategories, std::vector<int>{3});
  EXPECT_EQ(Random(0, 0, 1).fEstimate, 0.224718);

  const Stats::RandEffCovarMatData& g = fStats.GetStructuredData()->fvRandEffCovarMats.at(0);
  ASSERT_EQ(g.fSimpleSubjects.size(), 2u);
  ASSERT_EQ(g.fMatrixValues.size(), 2u);
  EXPECT_EQ(g.fSimpleSubjects[0].fSubjectValues[0].GetStringValue(), "home");
  EXPECT_EQ(g.fMatrixValues[1].fRows[0].fValues[0], Random(0, 0, 1).fEstimate);

  const Stats::ClassifMatrixData* table = fStats.GetClassifMatrix();
  ASSERT_NE(table, nullptr);
  ASSERT_EQ(table->fLabels.size(), 3u);
  EXPECT_EQ(table->fLabels[1].GetStringValue(), "ward");
  EXPECT_TRUE(table->fLabels[1].IsLoaded());
  EXPECT_EQ(fStats.GetStructuredData()->fvTargetValues.at(0).GetStringValue(), "icu");
  EXPECT_EQ(Keys(), (std::vector<std::string>{"kGLMM_C11", "kGLMM_C17", "kGLMM_C21"}));
}

// A model without estimates is read for its messages: every message of
// the family, one of them with an argument, and a means request that could
// not be answered.
TEST_F(ReadFixtures, EveryMessageOfTheFamily) {
  ASSERT_TRUE(ReadFixture("messages"));
  EXPECT_EQ(fStats.GetParamCollect(), nullptr);
  const std::vector<std::string> keys = Keys();
  ASSERT_EQ(keys.size(), 21u);
  const std::string* expected[] = {&Stats::csKey_C8,  &Stats::csKey_C9,  &Stats::csKey_C10, &Stats::csKey_C11,
                                   &Stats::csKey_C12, &Stats::csKey_C13, &Stats::csKey_C14, &Stats::csKey_C15,
                                   &Stats::csKey_C16, &Stats::csKey_C17, &Stats::csKey_C18, &Stats::csKey_C19,
                                   &Stats::csKey_C20, &Stats::csKey_C21, &Stats::csKey_C22, &Stats::csKey_C23,
                                   &Stats::csKey_C24, &Stats::csKey_C25, &Stats::csKey_C26, &Stats::csKey_C27,
                                   &Stats::csKey_C28};
  for (std::size_t k = 0; k < keys.size(); ++k) {
    EXPECT_EQ(keys[k], *expected[k]);
    EXPECT_TRUE(fStats.HasWarning(*expected[k]));
    // Every key has its text in the string tables.
    EXPECT_NE(fStats.GetTranslatedText(keys[k].c_str()), keys[k]);
  }
  EXPECT_EQ(fStats.GetAllWarnings()[11].fWarningParameters, std::vector<std::string>{"treatment"});
  EXPECT_EQ(fStats.GetModelDiagnostics()->fAICC, kSysmis);
  EXPECT_EQ(Settings().fPAdjustment, 2);
  EXPECT_EQ(Settings().fvEMMEANS.at(0).fContrastType, 2);
  EXPECT_EQ(Settings().fvEMMEANS.at(0).fReferenceType, 1);
  EXPECT_EQ(Settings().fvEMMEANS.at(0).fReferenceValue, "B");
  const Stats::EMMEANSCustomData& custom = fStats.GetEMMEANSCustomCollect()->at(0);
  EXPECT_EQ(custom.fEstimates.fMean.fValues, (std::vector<std::string>{"__MISSING__", "__MISSING__"}));
  ASSERT_EQ(custom.fvWarningList.size(), 4u);
  EXPECT_EQ(custom.fvWarningList[0].fPattern, Stats::csKey_C19);
  EXPECT_EQ(custom.fvWarningList[0].fWarningParameters, std::vector<std::string>{"treatment"});
  EXPECT_EQ(custom.fvWarningList[3].fPattern, Stats::csKey_C25);
  EXPECT_EQ(fStats.GetTranslatedText("kGLMM_C29"), "The scale parameter is fixed at 1 for this distribution.");
  EXPECT_NE(fStats.GetTranslatedText("kGLMM_C30"), "kGLMM_C30");
  EXPECT_NE(fStats.GetTranslatedText("E60868"), "E60868");
}
