#include "viewer/GNLMEmmeansOutput.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <string>
#include <vector>

#include "host/output/BpProcedure.h"
#include "viewer/ViewerTestSupport.h"

namespace {

using viewer_test::CellOf;
using viewer_test::Leaves;
using viewer_test::TextOf;
using viewer_test::Texts;
using Stats = GNLMOutputStats;
using viewer_test::kCI;

// The poisson model's one request: the treatment's means at a dose of 20,
// their pairwise contrast and its overall test.
class GNLMEmmeansOutputTest : public viewer_test::ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    ASSERT_TRUE(ReadFixture("poisson"));
  }
  GNLMEmmeansOutput Means() { return GNLMEmmeansOutput(fProcedure.get(), fData.get(), &fStats); }
  Stats::BuildSettingsData& Settings() { return *fStats.GetBuildSettings(); }
  std::vector<Stats::EMMEANSCustomData>& Custom() { return *fStats.GetEMMEANSCustomCollect(); }
  // A second request of the same term, as the document would list it.
  void AddSecondRequest() {
    Settings().fvEMMEANS.push_back(Settings().fvEMMEANS.front());
    Custom().push_back(Custom().front());
    Custom().back().fEMMEANSIndex = 1;
  }
  std::string Title(int index) {
    GNLMEmmeansOutput means = Means();
    BpComposite title = means.EMMEANSTitle(index);
    fProcedure->Heading(title);
    return Output().fvItems.back().fpHeading->fText;
  }
};

TEST_F(GNLMEmmeansOutputTest, TheGrandMeanThenEachRequestUnderItsHeading) {
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_EQ(Outline(), (std::vector<std::string>{"table: GrandMeans", "heading: Estimated Marginal Means: Treatment",
                                                 "  table: Estimates", "  chart: GLMMCustomEffects",
                                                 "  table: Contrasts", "  chart: GLMMPairwiseContrasts",
                                                 "  table: OverallTestResults"}));
  const OmTable& grand = Table("GrandMeans");
  EXPECT_EQ(grand.fTitle.fText, "Estimated Marginal Means: Grand Mean");
  EXPECT_EQ(Leaves(grand, 0), (std::vector<std::string>{"Mean", "Std. Error", kCI + "/Lower", kCI + "/Upper"}));
  EXPECT_EQ(TextOf(grand, {"Mean"}), "3.413");
  EXPECT_EQ(TextOf(grand, {"Std. Error"}), "0.403");
  EXPECT_EQ(TextOf(grand, {kCI + "/Lower"}), "2.573");
  EXPECT_EQ(TextOf(grand, {kCI + "/Upper"}), "4.252");
  EXPECT_EQ(Texts(grand.fvNotes), std::vector<std::string>{"Target: Seizures"});
}

TEST_F(GNLMEmmeansOutputTest, WithoutRequestsThereIsNoGrandMeanEither) {
  fStats.DestroyEMMEANSCustomCollect();
  Means().DisplayCustomEMMEANSOutput();
  fStats.CreateEMMEANSCustomCollect();
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_TRUE(Outline().empty());
}

TEST_F(GNLMEmmeansOutputTest, NineteenRequestsAreAllShownAndTwentyMayHaveBeenCut) {
  fStats.GetAllWarnings().push_back(Stats::WarningMsgData{Stats::csKey_C24, {}});
  while (Custom().size() < 19) Custom().push_back(Custom().front());
  Means().displayGrandMeanTable();
  Custom().push_back(Custom().front());
  Means().displayGrandMeanTable();
  const std::vector<const OmTable*> tables = Tables("GrandMeans");
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_TRUE(tables[0]->fvCaptions.empty());
  EXPECT_EQ(Texts(tables[1]->fvCaptions),
            std::vector<std::string>{"Only the first 20 requests for estimated marginal means are displayed."});
}

TEST_F(GNLMEmmeansOutputTest, ASingleRequestIsTitledWithoutANumber) {
  EXPECT_EQ(Title(0), "Estimated Marginal Means: Treatment");
  EXPECT_EQ(Title(-1), "Estimated Marginal Means: Grand Mean");
  AddSecondRequest();
  EXPECT_EQ(Title(0), "Estimated Marginal Means 1: Treatment");
  EXPECT_EQ(Title(1), "Estimated Marginal Means 2: Treatment");
}

TEST_F(GNLMEmmeansOutputTest, ARequestBeyondTheSettingsBreaksAnInvariant) {
  EXPECT_DEATH(Title(1), "index < nEMMEANS");
  fStats.DestroyBuildSettings();
  EXPECT_DEATH(Title(0), "fpBuildSettings");
}

// Terms read as written, by their fields' labels: a rise of the nesting
// level opens a parenthesis, a cross stays a star.
TEST_F(GNLMEmmeansOutputTest, TermsReadAsTheyAreWritten) {
  const int patient = fData->FindVarIndex("patient", 0);
  const int visit = fData->FindVarIndex("visit", 0);
  const int treatment = fData->FindVarIndex("treatment", 0);
  GNLMEmmeansOutput means = Means();
  std::string label = "stale";
  EXPECT_FALSE(means.CreateEffectMap(Stats::ModelEffectData{}, label));
  EXPECT_EQ(label, "");
  EXPECT_TRUE(means.CreateEffectMap({{"treatment", "visit", "patient"}, {treatment, visit, patient}, {0, 1, 2}}, label));
  EXPECT_EQ(label, "Treatment(Visit(Patient))");
  EXPECT_TRUE(means.CreateEffectMap({{"treatment", "visit", "patient"}, {treatment, visit, patient}, {0, 0, 1}}, label));
  EXPECT_EQ(label, "Treatment * Visit(Patient)");
}

TEST_F(GNLMEmmeansOutputTest, RequestsOfTheSameTermAreNumbered) {
  Stats::EMMEANSData other = Settings().fvEMMEANS.front();
  other.fFactors.fvFieldNames = {"visit"};
  Settings().fvEMMEANS = {Settings().fvEMMEANS.front(), other, Settings().fvEMMEANS.front()};
  GNLMEmmeansOutput means = Means();
  means.computeSuffix();
  EXPECT_EQ(means.GetSuffix(), (std::vector<int>{1, 0, 2}));
}

TEST_F(GNLMEmmeansOutputTest, TheDocumentsTextsReadAsValues) {
  GNLMEmmeansOutput means = Means();
  EXPECT_EQ(means.String2Numeric("__MISSING__"), -DBL_MAX);
  EXPECT_EQ(means.String2Numeric("2.5"), 2.5);
  const ZORV_Variable& treatment = *fData->GetVariable(fData->FindVarIndex("treatment", 0));
  ASSERT_NE(means.String2ObsValue("B", treatment), nullptr);
  EXPECT_EQ(std::string(means.String2ObsValue("B", treatment)->fStr, 1), "B");
}

// --- Estimates -------------------------------------------------------------------

TEST_F(GNLMEmmeansOutputTest, TheEstimatesOfEachCategory) {
  Means().DisplayCustomEMMEANSOutput();
  const OmTable& table = Table("Estimates");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Treatment");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Active", "Placebo"}));
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Mean", "Std. Error", kCI + "/Lower", kCI + "/Upper"}));
  EXPECT_EQ(TextOf(table, {"Active", "Mean"}), "3.918");
  EXPECT_EQ(TextOf(table, {"Placebo", "Std. Error"}), "0.497");
  EXPECT_EQ(TextOf(table, {"Placebo", kCI + "/Upper"}), "3.998");
  // The dose in its own format, with two decimals more.
  EXPECT_EQ(Texts(table.fvCaptions),
            std::vector<std::string>{"Continuous predictors are fixed at the following values: dose=20.00"});
}

TEST_F(GNLMEmmeansOutputTest, AMissingStatisticIsAnEmptyCell) {
  Custom().front().fEstimates.fMean.fValues[1] = "__MISSING__";
  Means().DisplayCustomEMMEANSOutput();
  const OmCell* pCell = CellOf(Table("Estimates"), {"Placebo", "Mean"});
  ASSERT_NE(pCell, nullptr);
  EXPECT_TRUE(pCell->fbMissing);
  EXPECT_EQ(pCell->fContent.fText, "");
}

TEST_F(GNLMEmmeansOutputTest, EstimatesThatDoNotMatchTheRequestBreakAnInvariant) {
  Custom().front().fEstimates.fvGroup.clear();
  EXPECT_DEATH(Means().DisplayCustomEMMEANSOutput(), "nFactor > 0 && nEffect == nFactor");
}

TEST_F(GNLMEmmeansOutputTest, ARequestThatCouldNotBeAnsweredIsAWarningLine) {
  Custom().front().fvWarningList.push_back(Stats::WarningMsgData{Stats::csKey_C25, {}});
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_EQ(Outline(), (std::vector<std::string>{"table: GrandMeans", "heading: Estimated Marginal Means: Treatment",
                                                 "message: Estimated Marginal Means 1: The estimated marginal means of "
                                                 "this request could not be computed."}));
}

// The overall request is the grand mean: it has no block of its own.
TEST_F(GNLMEmmeansOutputTest, TheOverallRequestHasNoBlock) {
  Custom().front().fEMMEANSIndex = -1;
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_EQ(Outline(), std::vector<std::string>{"table: GrandMeans"});
}

// --- Contrasts and overall tests ------------------------------------------------------

TEST_F(GNLMEmmeansOutputTest, PairwiseContrastsWithoutAdjustment) {
  Means().DisplayCustomEMMEANSOutput();
  const OmTable& table = Table("Contrasts");
  EXPECT_EQ(table.fTitle.fText, "Pairwise Contrasts");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Treatment Pairwise Contrasts");
  EXPECT_EQ(Leaves(table, 0), std::vector<std::string>{"Active - Placebo"});
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Contrast Estimate", "Std. Error", "t", "df", "Adj. Sig.",
                                                         kCI + "/Lower", kCI + "/Upper"}));
  EXPECT_EQ(TextOf(table, {"Active - Placebo", "Contrast Estimate"}), "0.957");
  EXPECT_EQ(TextOf(table, {"Active - Placebo", "Std. Error"}), "0.765");
  EXPECT_EQ(TextOf(table, {"Active - Placebo", "df"}), "20");
  EXPECT_EQ(TextOf(table, {"Active - Placebo", "Adj. Sig."}), "0.225");
  EXPECT_EQ(Texts(table.fvCaptions),
            std::vector<std::string>{"Significance values are not adjusted for multiple comparisons (least "
                                     "significant difference)."});
}

// The t of the contrast is its estimate over its standard error, and the F
// of the one-row overall test its square.
TEST_F(GNLMEmmeansOutputTest, TheOverallTestOfOneContrastIsItsTSquared) {
  Means().DisplayCustomEMMEANSOutput();
  const OmTable& contrasts = Table("Contrasts");
  const double t = CellOf(contrasts, {"Active - Placebo", "t"})->fValue;
  EXPECT_NEAR(t, CellOf(contrasts, {"Active - Placebo", "Contrast Estimate"})->fValue /
                     CellOf(contrasts, {"Active - Placebo", "Std. Error"})->fValue,
              1e-6);
  const OmTable& overall = Table("OverallTestResults");
  EXPECT_EQ(overall.fTitle.fText, "Overall Test Results");
  EXPECT_EQ(Leaves(overall, 0), (std::vector<std::string>{"F", "df1", "df2", "Sig."}));
  EXPECT_NEAR(CellOf(overall, {"F"})->fValue, t * t, 1e-5);
  EXPECT_EQ(TextOf(overall, {"df1"}), "1");
  EXPECT_EQ(TextOf(overall, {"Sig."}), TextOf(contrasts, {"Active - Placebo", "Adj. Sig."}));
}

TEST_F(GNLMEmmeansOutputTest, DeviationContrastsCompareEachLevelWithTheMean) {
  Custom().front().fContrasts.fContrastKind = 1;
  Means().DisplayCustomEMMEANSOutput();
  const OmTable& table = Table("Contrasts");
  EXPECT_EQ(table.fTitle.fText, "Deviation Contrasts");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Treatment Deviation Contrasts");
  EXPECT_EQ(Leaves(table, 0), std::vector<std::string>{"Active - Mean"});
}

TEST_F(GNLMEmmeansOutputTest, SimpleContrastsAreTitledSo) {
  Custom().front().fContrasts.fContrastKind = 2;
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_EQ(Table("Contrasts").fTitle.fText, "Simple Contrasts");
  EXPECT_EQ(Leaves(Table("Contrasts"), 0), std::vector<std::string>{"Active - Placebo"});
}

TEST_F(GNLMEmmeansOutputTest, OtherContrastsHaveNoTable) {
  Custom().front().fContrasts.fContrastKind = 3;
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_TRUE(Tables("Contrasts").empty());
  EXPECT_EQ(Tables("OverallTestResults").size(), 1u);
}

TEST_F(GNLMEmmeansOutputTest, SequentialAdjustmentsSayThatTheBoundsAreApproximate) {
  Settings().fPAdjustment = 1;
  Means().DisplayCustomEMMEANSOutput();
  Settings().fPAdjustment = 2;
  Means().DisplayCustomEMMEANSOutput();
  const std::vector<const OmTable*> tables = Tables("Contrasts");
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(Texts(tables[0]->fvCaptions),
            std::vector<std::string>{"Significance values are adjusted for multiple comparisons by the sequential "
                                     "Bonferroni method.\nConfidence interval bounds are approximate."});
  EXPECT_EQ(Texts(tables[1]->fvCaptions),
            std::vector<std::string>{"Significance values are adjusted for multiple comparisons by the sequential "
                                     "Sidak method.\nConfidence interval bounds are approximate."});
}

// A request's own adjustment wins over the build settings'.
TEST_F(GNLMEmmeansOutputTest, EachRequestShowsItsOwnAdjustment) {
  Settings().fPAdjustment = 0;
  Settings().fvEMMEANS.front().fPAdjustment = 1;
  Means().DisplayCustomEMMEANSOutput();
  EXPECT_NE(Table("Contrasts").fvCaptions.front().fText.find("sequential Bonferroni"), std::string::npos);
}

TEST_F(GNLMEmmeansOutputTest, ACompareFactorOfOneLevelIsAWarningInsteadOfContrasts) {
  Custom().front().fvWarningList.push_back(Stats::WarningMsgData{Stats::csKey_C19, {"treatment"}});
  Means().DisplayCustomEMMEANSOutput();
  // Messages stand at the procedure's level, after the request's block.
  EXPECT_EQ(Outline(), (std::vector<std::string>{"table: GrandMeans", "heading: Estimated Marginal Means: Treatment",
                                                 "  table: Estimates", "  chart: GLMMCustomEffects",
                                                 "  table: OverallTestResults",
                                                 "message: Estimated Marginal Means 1: Contrasts cannot be computed "
                                                 "because the compared factor has fewer than two levels."}));
}

TEST_F(GNLMEmmeansOutputTest, TheOneLevelMessageNamesItsFactor) {
  Custom().front().fvWarningList.push_back(Stats::WarningMsgData{Stats::csKey_C19, {}});
  EXPECT_DEATH(Means().DisplayCustomEMMEANSOutput(),
               "emmeansData.fvWarningList\\[warningIndex\\].fWarningParameters.size\\(\\) == 1");
}

TEST_F(GNLMEmmeansOutputTest, ContrastsThatDoNotMatchTheRequestBreakAnInvariant) {
  Stats::EMMEANSContrastsData& contrasts = Custom().front().fContrasts;
  contrasts.fvGroup.push_back(contrasts.fvGroup.front());
  EXPECT_DEATH(Means().DisplayCustomEMMEANSOutput(), "nFactor >= 2 && nEffect \\+ 1 == nFactor");
}

TEST_F(GNLMEmmeansOutputTest, OverallTestsThatDoNotMatchTheRequestBreakAnInvariant) {
  Stats::EMMEANSOverallTestData& test = Custom().front().fvOverallTests.front();
  test.fFieldNames.push_back("visit");
  test.fFieldIndices.push_back(fData->FindVarIndex("visit", 0));
  test.fSubjectValues.push_back(CFStatVariableValue("1"));
  test.fNumCategories.push_back(0);
  EXPECT_DEATH(Means().DisplayCustomEMMEANSOutput(), "nFactor == nEffect - 1");
}

}  // namespace
