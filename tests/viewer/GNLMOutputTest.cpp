#include "viewer/GNLMOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "viewer/GNLMExports.h"
#include "viewer/ViewerTestSupport.h"

namespace {

using viewer_test::CellFootnotes;
using viewer_test::Footnotes;
using viewer_test::Leaves;
using viewer_test::TextOf;
using viewer_test::Texts;
using Stats = GNLMOutputStats;

class GNLMOutputTest : public viewer_test::ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    display_result_model = false;
  }
  GNLMOutput Viewer() { return GNLMOutput(fProcedure.get(), fData.get(), &fStats); }
  Stats::BuildSettingsData& Settings() { return *fStats.GetBuildSettings(); }
};

// --- The order of the whole output -------------------------------------------

// The tables follow one another in the order the viewer fixes, each under
// its heading, with the charts in their places between them.
TEST_F(GNLMOutputTest, TheWholeOutputFollowsItsFixedOrder) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Viewer().DisplayOutput();
  EXPECT_EQ(Outline(), (std::vector<std::string>{"table: ModelSummary",
                                                 "table: DataStructure",
                                                 "chart: GLMMPredictedByObserved",
                                                 "table: FixedEffects",
                                                 "chart: GLMMFixedCoefficients",
                                                 "table: FixedCoefficients",
                                                 "chart: GLMMFixedCoefficients",
                                                 "heading: Random Effect Covariances",
                                                 "  table: RandomEffects",
                                                 "heading: Covariance Parameters",
                                                 "  table: CovarianceParametersSummary",
                                                 "  table: ResidualEffect",
                                                 "  table: CovarianceParameters",
                                                 "heading: Estimated Marginal Means for Top Significant Fixed Effects",
                                                 "  chart: GLMMEmMeans",
                                                 "table: GrandMeans",
                                                 "heading: Estimated Marginal Means: Treatment",
                                                 "  table: Estimates",
                                                 "  chart: GLMMCustomEffects",
                                                 "  table: Contrasts",
                                                 "  chart: GLMMPairwiseContrasts",
                                                 "  table: OverallTestResults"}));
}

TEST_F(GNLMOutputTest, ACategoricalTargetHasItsClassificationAfterTheDataStructure) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Viewer().DisplayOutput();
  const std::vector<std::string> outline = Outline();
  ASSERT_GE(outline.size(), 4u);
  EXPECT_EQ(outline[1], "table: DataStructure");
  EXPECT_EQ(outline[2], "table: Classification");
  EXPECT_EQ(outline[3], "table: FixedEffects");
}

// The debug switch puts the dump of the result model before the tables.
TEST_F(GNLMOutputTest, TheDebugSwitchShowsTheModelFirst) {
  ASSERT_TRUE(ReadFixture("gamma"));
  display_result_model = true;
  Viewer().DisplayOutput();
  display_result_model = false;
  ASSERT_FALSE(Output().fvItems.empty());
  EXPECT_EQ(Output().fvItems.front().fKind, OmItem::TEXT);
  EXPECT_EQ(Tables("ModelSummary").size(), 1u);
}

TEST_F(GNLMOutputTest, WithoutAModelNothingIsWritten) {
  GNLMOutput(fProcedure.get(), fData.get(), nullptr).DisplayOutput();
  GNLMOutput empty(fProcedure.get(), fData.get(), &fStats);
  empty.DisplayOutput();
  EXPECT_TRUE(Outline().empty());
}

// --- Model summary -------------------------------------------------------------

TEST_F(GNLMOutputTest, TheModelSummaryNamesTargetDistributionLinkAndCriteria) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Viewer().DisplayModelSummaryTable();
  const OmTable& table = Table("ModelSummary");
  EXPECT_EQ(table.fTitle.fText, "Model Summary");
  EXPECT_EQ(table.fMinDataColumnWidth, 150);
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Target", "Probability Distribution", "Link Function",
                                                         "Information Criterion/Akaike Corrected",
                                                         "Information Criterion/Bayesian"}));
  EXPECT_EQ(TextOf(table, {"Target"}), "Seizures");
  EXPECT_EQ(TextOf(table, {"Probability Distribution"}), "Poisson");
  EXPECT_EQ(TextOf(table, {"Link Function"}), "Log");
  const Stats::ModelDiagnosticsData& diagnostics = *fStats.GetModelDiagnostics();
  EXPECT_EQ(viewer_test::CellOf(table, {"Information Criterion/Akaike Corrected"})->fValue, diagnostics.fAICC);
  EXPECT_EQ(viewer_test::CellOf(table, {"Information Criterion/Bayesian"})->fValue, diagnostics.fBIC);
  ASSERT_EQ(table.fvCaptions.size(), 1u);
  EXPECT_NE(table.fvCaptions[0].fText.find("-2 log likelihood (101.562)"), std::string::npos)
      << table.fvCaptions[0].fText;
}

TEST_F(GNLMOutputTest, EventsOfTrialsHaveARowEachAndANonEventAndEventClassification) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Viewer().DisplayModelSummaryTable();
  Viewer().DisplayClassificationTable();
  const OmTable& summary = Table("ModelSummary");
  EXPECT_EQ(TextOf(summary, {"Target/Events"}), "Responders");
  EXPECT_EQ(TextOf(summary, {"Target/Trials"}), "Patients treated");

  const OmTable& classification = Table("Classification");
  EXPECT_EQ(classification.fTitle.fText, "Classification (Overall Percent Correct = 75.0%)");
  EXPECT_EQ(Leaves(classification, 0), (std::vector<std::string>{"Non-event", "Event"}));
  EXPECT_EQ(Leaves(classification, 2), (std::vector<std::string>{"Non-event", "Event"}));
  EXPECT_EQ(TextOf(classification, {"Non-event", "Count", "Non-event"}), "9");
  EXPECT_EQ(TextOf(classification, {"Non-event", "Count", "Event"}), "3");
  EXPECT_EQ(TextOf(classification, {"Event", "% within Observed", "Event"}), "75.0%");
  EXPECT_EQ(Texts(classification.fvNotes), (std::vector<std::string>{"Target: Responders/Patients treated"}));
}

TEST_F(GNLMOutputTest, AConstantNumberOfTrialsIsANumberInTheSummaryAndANoteInTheDataStructure) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Settings().fTrialsIndex = -1;
  Settings().fTrialsValue = 12;
  Viewer().DisplayModelSummaryTable();
  Viewer().DisplayDataStructureTable();
  EXPECT_EQ(TextOf(Table("ModelSummary"), {"Target/Trials"}), "12");
  const OmTable& structure = Table("DataStructure");
  EXPECT_EQ(Texts(structure.fvNotes), (std::vector<std::string>{"Target: Responders/12"}));
  // The target's column carries the note; the trials have no column.
  const std::vector<std::string> variables = Leaves(structure, 2);
  EXPECT_EQ(variables.back(), "Target/Responders");
  const auto paths = structure.fvDimensions[2].LeafPaths();
  EXPECT_EQ(Footnotes(structure, paths.back().back()->fLabel), (std::vector<std::string>{"Number of trials = 12"}));
}

TEST_F(GNLMOutputTest, WithoutMultinomialTargetTheSummaryHasNoMeasurementLevel) {
  ASSERT_TRUE(ReadFixture("gamma"));
  ASSERT_EQ(Settings().fDistribution, Stats::GAMMA);
  Settings().fDistribution = Stats::NORMAL;
  Viewer().DisplayModelSummaryTable();
  const std::vector<std::string> rows = Leaves(Table("ModelSummary"), 0);
  EXPECT_EQ(std::count(rows.begin(), rows.end(), "Measurement Level"), 0);
}

TEST_F(GNLMOutputTest, AnOrdinalTargetShowsItsMeasurementLevel) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Viewer().DisplayModelSummaryTable();
  const OmTable& table = Table("ModelSummary");
  EXPECT_EQ(TextOf(table, {"Measurement Level"}), "Ordinal");
  EXPECT_EQ(TextOf(table, {"Probability Distribution"}), "Multinomial");
  EXPECT_EQ(TextOf(table, {"Link Function"}), "Cumulative logit");
}

TEST_F(GNLMOutputTest, ALinkWithAParameterShowsItInThePattern) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Viewer().DisplayModelSummaryTable();
  EXPECT_EQ(TextOf(Table("ModelSummary"), {"Link Function"}), "Power (-1)");
}

// --- Data structure ------------------------------------------------------------

TEST_F(GNLMOutputTest, TheDataStructureShowsTheFirstSubjectsRecordsAndTheLevels) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Viewer().DisplayDataStructureTable();
  const OmTable& table = Table("DataStructure");
  EXPECT_EQ(table.fTitle.fText, "Data Structure");
  // The records are numbered from 0; their labels are hidden.
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"0", "1", "2", "3", "Levels"}));
  EXPECT_FALSE(table.fvDimensions[0].fbShowLabels);
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Data for First Subject", "Total Number of Levels"}));
  EXPECT_EQ(Leaves(table, 2), (std::vector<std::string>{"Subjects/Patient", "Repeated Measures/Visit",
                                                        "Target/Responders", "Target/Patients treated"}));
  const std::string first = "Data for First Subject";
  EXPECT_EQ(TextOf(table, {"0", first, "Subjects/Patient"}), "1");
  EXPECT_EQ(TextOf(table, {"3", first, "Subjects/Patient"}), "1");
  EXPECT_EQ(TextOf(table, {"1", first, "Repeated Measures/Visit"}), "2");
  EXPECT_EQ(TextOf(table, {"0", first, "Target/Responders"}), "5");
  EXPECT_EQ(TextOf(table, {"2", first, "Target/Patients treated"}), "12");
  EXPECT_EQ(TextOf(table, {"Levels", "Total Number of Levels", "Subjects/Patient"}), "6");
  EXPECT_TRUE(table.fvCaptions.empty());
}

TEST_F(GNLMOutputTest, TenRecordsHaveNoCaptionAndElevenHaveOne) {
  ASSERT_TRUE(ReadFixture("poisson"));
  fStats.GetStructuredData()->fTotalFreq = 10;
  Viewer().DisplayDataStructureTable();
  fStats.GetStructuredData()->fTotalFreq = 11;
  Viewer().DisplayDataStructureTable();
  const std::vector<const OmTable*> tables = Tables("DataStructure");
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_TRUE(tables[0]->fvCaptions.empty());
  EXPECT_EQ(Texts(tables[1]->fvCaptions), (std::vector<std::string>{"Only the first 10 records are displayed."}));
}

TEST_F(GNLMOutputTest, WithoutSubjectFieldsTheMessageReplacesTheTable) {
  ASSERT_TRUE(ReadFixture("messages"));
  ASSERT_TRUE(fStats.HasWarning(Stats::csKey_C26));
  Viewer().DisplayDataStructureTable();
  EXPECT_TRUE(Tables("DataStructure").empty());
  EXPECT_EQ(Outline(), (std::vector<std::string>{
                           "message: Data Structure: No subject field is used by the model, so the data structure "
                           "cannot be shown subject by subject."}));
  EXPECT_EQ(Output().fvItems.front().fpMessage->fLevel, OmMessage::WARNING);
}

TEST_F(GNLMOutputTest, WithoutSubjectFieldsOrTheMessageNothingIsSaid) {
  ASSERT_TRUE(ReadFixture("messages"));
  fStats.GetAllWarnings().clear();
  Viewer().DisplayDataStructureTable();
  EXPECT_TRUE(Outline().empty());
}

// A document with subjects that also says it has none: the table, with the
// message as a note beside the target's.
TEST_F(GNLMOutputTest, SubjectsWithTheNoSubjectMessageKeepTheTableWithANote) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.GetAllWarnings().push_back(Stats::WarningMsgData{Stats::csKey_C26, {}});
  Viewer().DisplayDataStructureTable();
  const OmTable& table = Table("DataStructure");
  ASSERT_EQ(table.fvNotes.size(), 2u);
  EXPECT_EQ(table.fvNotes[1].fText,
            "Target: Cost of care\nNo subject field is used by the model, so the data structure cannot be shown "
            "subject by subject.");
}

// A repeated measure that is a covariate has no number of levels.
TEST_F(GNLMOutputTest, ARepeatedMeasureWithoutCategoriesHasNoLevels) {
  ASSERT_TRUE(ReadFixture("binomial"));
  ASSERT_EQ(fStats.GetStructuredData()->fvRepMeasVars.size(), 1u);
  ASSERT_EQ(fStats.GetStructuredData()->fvRepMeasVars[0].fNumCategories, 0);
  Viewer().DisplayDataStructureTable();
  const OmCell* levels =
      viewer_test::CellOf(Table("DataStructure"), {"Levels", "Total Number of Levels", "Repeated Measures/Visit"});
  ASSERT_NE(levels, nullptr);
  EXPECT_TRUE(levels->fbMissing);
}

// --- Classification ------------------------------------------------------------

TEST_F(GNLMOutputTest, TheClassificationOfAnOrdinalTargetIsLabelledByItsValues) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Viewer().DisplayClassificationTable();
  const OmTable& table = Table("Classification");
  EXPECT_EQ(table.fTitle.fText, "Classification (Overall Percent Correct = 58.3%)");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"mild", "moderate", "severe"}));
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Count", "% within Observed"}));
  EXPECT_EQ(TextOf(table, {"moderate", "Count", "moderate"}), "4");
  EXPECT_EQ(TextOf(table, {"moderate", "% within Observed", "severe"}), "25.0%");
  EXPECT_EQ(TextOf(table, {"mild", "% within Observed", "mild"}), "62.5%");
}

TEST_F(GNLMOutputTest, ARowWithoutRecordsHasZeroPercent) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Stats::ClassifRowData& row = fStats.GetClassifMatrix()->fRows[1];
  row.fValues.assign(row.fValues.size(), 0.0);
  row.fRowSum = 0.0;
  Viewer().DisplayClassificationTable();
  const OmTable& table = Table("Classification");
  EXPECT_EQ(TextOf(table, {"moderate", "% within Observed", "mild"}), "0.0%");
  EXPECT_EQ(TextOf(table, {"moderate", "Count", "mild"}), "0");
}

TEST_F(GNLMOutputTest, AContinuousTargetHasNoClassification) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Viewer().DisplayClassificationTable();
  EXPECT_TRUE(Outline().empty());
}

}  // namespace
