#include "viewer/GNLMParamEstimatesOutput.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>
#include <vector>

#include "host/output/BpProcedure.h"
#include "viewer/ViewerTestSupport.h"

namespace {

using viewer_test::CellFootnotes;
using viewer_test::CellOf;
using viewer_test::Footnotes;
using viewer_test::Leaves;
using viewer_test::TextOf;
using viewer_test::Texts;
using Stats = GNLMOutputStats;
using viewer_test::kCI;

class GNLMParamEstimatesOutputTest : public viewer_test::ViewerTest {
 protected:
  GNLMParamEstimatesOutput Estimates() { return GNLMParamEstimatesOutput(fProcedure.get(), fData.get(), &fStats); }
  Stats::BuildSettingsData& Settings() { return *fStats.GetBuildSettings(); }
  void AddWarning(const std::string& key) { fStats.GetAllWarnings().push_back(Stats::WarningMsgData{key, {}}); }
  bool Missing(const OmTable& table, const std::vector<std::string>& leaves) const {
    const OmCell* pCell = CellOf(table, leaves);
    return pCell != nullptr && pCell->fbMissing;
  }
};

// --- Tests of fixed effects ------------------------------------------------------

TEST_F(GNLMParamEstimatesOutputTest, TheFixedEffectsAreTestedAfterTheCorrectedModel) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Estimates().DisplayFixedEffectsTable();
  const OmTable& table = Table("FixedEffects");
  EXPECT_EQ(table.fTitle.fText, "Fixed Effects");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Corrected Model", "treatment", "dose"}));
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"F", "df1", "df2", "Sig."}));
  EXPECT_EQ(TextOf(table, {"Corrected Model", "F"}), "6.843");
  EXPECT_EQ(TextOf(table, {"Corrected Model", "df1"}), "2");
  EXPECT_EQ(TextOf(table, {"Corrected Model", "df2"}), "20");
  EXPECT_EQ(TextOf(table, {"treatment", "F"}), "4.129");
  EXPECT_EQ(TextOf(table, {"dose", "Sig."}), "0.006");
  EXPECT_EQ(Texts(table.fvCaptions), (std::vector<std::string>{"Probability distribution: Binomial\nLink function: Logit"}));
  EXPECT_EQ(Texts(table.fvNotes), (std::vector<std::string>{"Target: Responders/Patients treated"}));
}

TEST_F(GNLMParamEstimatesOutputTest, ALinkParameterJoinsTheDistributionCaption) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Estimates().DisplayFixedEffectsTable();
  EXPECT_EQ(Texts(Table("FixedEffects").fvCaptions),
            (std::vector<std::string>{"Probability distribution: Gamma\nLink function: Power with parameter -1"}));
}

TEST_F(GNLMParamEstimatesOutputTest, WithoutEffectsOrInterceptThereIsNoTestsTable) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Settings().fvFixedEffectList.clear();
  Settings().fIntercept = false;
  fStats.GetEffectTest()->fvFixedEffects.clear();
  Estimates().DisplayFixedEffectsTable();
  EXPECT_TRUE(Outline().empty());
}

TEST_F(GNLMParamEstimatesOutputTest, AnInterceptAloneIsTheCorrectedModelWithItsNote) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Settings().fvFixedEffectList.clear();
  fStats.GetEffectTest()->fvFixedEffects.clear();
  Estimates().DisplayFixedEffectsTable();
  const OmTable& table = Table("FixedEffects");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Corrected Model"}));
  const auto paths = table.fvDimensions[0].LeafPaths();
  EXPECT_EQ(Footnotes(table, paths[0].back()->fLabel),
            (std::vector<std::string>{"The model has no fixed effects other than the intercept; the corrected model "
                                      "is the model with the intercept alone."}));
}

TEST_F(GNLMParamEstimatesOutputTest, TestsAndEffectsThatDisagreeBreakAnInvariant) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.GetEffectTest()->fvFixedEffects.clear();
  EXPECT_DEATH(Estimates().DisplayFixedEffectsTable(), "nEffects == fpBuildSettings->fvFixedEffectList.size\\(\\)");
  fStats.DestroyEffectTest();
  EXPECT_DEATH(Estimates().DisplayFixedEffectsTable(), "pEffectStatData != 0");
}

TEST_F(GNLMParamEstimatesOutputTest, EffectLabelsJoinTheVariablesAsTheTermIsWritten) {
  ASSERT_TRUE(ReadFixture("gamma"));
  const int patient = fData->FindVarIndex("patient", 0);
  const int visit = fData->FindVarIndex("visit", 0);
  const int dose = fData->FindVarIndex("dose", 0);
  const std::vector<Stats::ModelEffectData> effects = {
      {{}, {}, {}},
      {{"patient", "visit"}, {patient, visit}, {0, 0}},
      {{"dose", "visit", "patient"}, {dose, visit, patient}, {0, 1, 2}},
      {{"dose", "visit", "patient"}, {dose, visit, patient}, {0, 0, 1}}};
  std::vector<std::string> labels;
  Estimates().CreateEffectMap(effects, labels);
  EXPECT_EQ(labels, (std::vector<std::string>{"Intercept", "patient * visit", "dose(visit(patient))",
                                              "dose * visit(patient)"}));
  // A list already filled stays as it is.
  std::vector<std::string> filled{"kept"};
  Estimates().CreateEffectMap(effects, filled);
  EXPECT_EQ(filled, std::vector<std::string>{"kept"});
}

// --- Fixed coefficients ----------------------------------------------------------

TEST_F(GNLMParamEstimatesOutputTest, TheCoefficientsOfOneSet) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_EQ(table.fTitle.fText, "Fixed Coefficients");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Intercept", "[treatment=A]", "[treatment=B]", "dose"}));
  EXPECT_EQ(Leaves(table, 1),
            (std::vector<std::string>{"Coefficient", "Std. Error", "t", "Sig.", kCI + "/Lower", kCI + "/Upper",
                                      "Exp(Coefficient)", "95% Confidence Interval for Exp(Coefficient)/Lower",
                                      "95% Confidence Interval for Exp(Coefficient)/Upper"}));
  EXPECT_EQ(TextOf(table, {"Intercept", "Coefficient"}), "-0.853");
  EXPECT_EQ(TextOf(table, {"Intercept", "Std. Error"}), "0.311");
  EXPECT_EQ(TextOf(table, {"[treatment=A]", "t"}), "2.032");
  EXPECT_EQ(TextOf(table, {"dose", "Coefficient"}), "0.028");
  EXPECT_EQ(TextOf(table, {"Intercept", "Exp(Coefficient)"}), "0.426");
  EXPECT_EQ(TextOf(table, {"[treatment=A]", kCI + "/Lower"}), "-0.017");
  EXPECT_EQ(Texts(table.fvCaptions), (std::vector<std::string>{"Probability distribution: Binomial\nLink function: Logit"}));
}

// The exponentials are worked out once from the document's numbers.
TEST_F(GNLMParamEstimatesOutputTest, TheExpColumnsAreTheExponentialsOfTheCoefficient) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  for (const std::string& row : std::vector<std::string>{"Intercept", "[treatment=A]", "dose"}) {
    EXPECT_NEAR(CellOf(table, {row, "Exp(Coefficient)"})->fValue,
                std::exp(CellOf(table, {row, "Coefficient"})->fValue), 1e-5)
        << row;
  }
}

TEST_F(GNLMParamEstimatesOutputTest, ARedundantCoefficientIsZeroWithANoteAndTheRestMissing) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_EQ(TextOf(table, {"[treatment=B]", "Coefficient"}), "0");
  EXPECT_EQ(CellFootnotes(table, {"[treatment=B]", "Coefficient"}),
            (std::vector<std::string>{"This coefficient is set to zero because it is redundant."}));
  for (const std::string& column : std::vector<std::string>{"Std. Error", "t", "Sig.", kCI + "/Lower", kCI + "/Upper"}) {
    EXPECT_TRUE(Missing(table, {"[treatment=B]", column})) << column;
  }
  // The document gives it no exponential: no cell.
  EXPECT_EQ(CellOf(table, {"[treatment=B]", "Exp(Coefficient)"}), nullptr);
}

TEST_F(GNLMParamEstimatesOutputTest, ARedundantCoefficientWithAnExponentialShowsItMissing) {
  ASSERT_TRUE(ReadFixture("binomial"));
  fStats.GetParamCollect()->fvFixedParamEstim[0].fvParamStats[2].fExpEstimate = 1.0;
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_TRUE(Missing(table, {"[treatment=B]", "Exp(Coefficient)"}));
  EXPECT_TRUE(Missing(table, {"[treatment=B]", "95% Confidence Interval for Exp(Coefficient)/Lower"}));
}

TEST_F(GNLMParamEstimatesOutputTest, AMissingExpEstimateRemovesTheExpColumnsFromItsRowOnly) {
  ASSERT_TRUE(ReadFixture("binomial"));
  Stats::ParamStatsData& dose = fStats.GetParamCollect()->fvFixedParamEstim[0].fvParamStats[3];
  ASSERT_EQ(dose.fParamLabel, "dose");
  dose.fExpEstimate = -DBL_MAX;
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_EQ(CellOf(table, {"dose", "Exp(Coefficient)"}), nullptr);
  EXPECT_EQ(CellOf(table, {"dose", "95% Confidence Interval for Exp(Coefficient)/Upper"}), nullptr);
  EXPECT_EQ(TextOf(table, {"dose", "Coefficient"}), "0.028");
  EXPECT_EQ(TextOf(table, {"Intercept", "Exp(Coefficient)"}), "0.426");
}

TEST_F(GNLMParamEstimatesOutputTest, WithoutExpEstimatesThereAreNoExpColumns) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Coefficient", "Std. Error", "t", "Sig.",
                                                         "90% Confidence Interval/Lower",
                                                         "90% Confidence Interval/Upper"}));
}

// Parameters of an ordinal target without a Statistic are the thresholds.
TEST_F(GNLMParamEstimatesOutputTest, AnOrdinalTargetsThresholdsStandUnderTheirGroup) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Threshold for Severity =/1", "Threshold for Severity =/2",
                                                         "[treatment=A]", "[treatment=B]", "dose"}));
  EXPECT_EQ(TextOf(table, {"Threshold for Severity =/1", "Coefficient"}), "-0.912");
  EXPECT_EQ(TextOf(table, {"Threshold for Severity =/2", "Coefficient"}), "0.785");
  EXPECT_EQ(TextOf(table, {"[treatment=A]", "Coefficient"}), "-0.563");
}

TEST_F(GNLMParamEstimatesOutputTest, AParameterWithAStatisticStaysAModelTerm) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  Stats::ParamStatsData& second = fStats.GetParamCollect()->fvFixedParamEstim[0].fvParamStats[1];
  second.fStatisticValue = 0;
  Estimates().DisplayParamEstimTable();
  const std::vector<std::string> rows = Leaves(Table("FixedCoefficients"), 0);
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[0], "Threshold for Severity =/1");
  EXPECT_EQ(rows[1], "[severity=2]");
}

// A nominal target has a set of coefficients per category but the last.
TEST_F(GNLMParamEstimatesOutputTest, ANominalTargetHasASetPerCategory) {
  ASSERT_TRUE(ReadFixture("nominal"));
  Estimates().DisplayParamEstimTable();
  const OmTable& table = Table("FixedCoefficients");
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Discharge destination");
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"home", "ward"}));
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Intercept", "[treatment=A]", "[treatment=B]", "dose"}));
  EXPECT_EQ(TextOf(table, {"Intercept", "home", "Coefficient"}), "0.413");
  EXPECT_EQ(TextOf(table, {"Intercept", "ward", "Coefficient"}), "-0.216");
  EXPECT_EQ(TextOf(table, {"dose", "ward", "Coefficient"}), "0.012");
  EXPECT_EQ(TextOf(table, {"[treatment=B]", "home", "Coefficient"}), "0");
}

TEST_F(GNLMParamEstimatesOutputTest, SeveralSetsOutsideANominalTargetBreakAnInvariant) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Stats::ParamCollectData& collect = *fStats.GetParamCollect();
  collect.fvFixedParamEstim.push_back(collect.fvFixedParamEstim.front());
  EXPECT_DEATH(Estimates().DisplayParamEstimTable(), "pParamCollect->fvFixedParamEstim.size\\(\\) == 1");
}

TEST_F(GNLMParamEstimatesOutputTest, WithoutFixedParametersThereIsNoCoefficientsTable) {
  ASSERT_TRUE(ReadFixture("messages"));
  Estimates().DisplayParamEstimTable();
  EXPECT_TRUE(Outline().empty());
}

// --- Random effect covariances -----------------------------------------------------

TEST_F(GNLMParamEstimatesOutputTest, EachRandomBlockHasItsCovarianceMatrix) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Estimates().DisplayRandomEffectCovarTables();
  EXPECT_EQ(Outline(), (std::vector<std::string>{"heading: Random Effect Covariances", "  table: RandomEffects"}));
  const OmTable& table = Table("RandomEffects");
  EXPECT_EQ(table.fTitle.fText, "Random Effect Block 1");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"Intercept", "dose"}));
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Intercept", "dose"}));
  EXPECT_EQ(CellOf(table, {"Intercept", "Intercept"})->fValue, 0.214532);
  EXPECT_EQ(CellOf(table, {"dose", "Intercept"})->fValue, -0.00641288);
  EXPECT_EQ(CellOf(table, {"Intercept", "dose"})->fValue, -0.00641288);
  EXPECT_EQ(CellOf(table, {"dose", "dose"})->fValue, 0.000812451);
  EXPECT_EQ(Texts(table.fvCaptions),
            (std::vector<std::string>{"Covariance structure: Unstructured\nSubject specification: patient"}));
}

TEST_F(GNLMParamEstimatesOutputTest, ANominalTargetsCovariancesStandPerCategory) {
  ASSERT_TRUE(ReadFixture("nominal"));
  Estimates().DisplayRandomEffectCovarTables();
  const OmTable& table = Table("RandomEffects");
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Discharge destination");
  EXPECT_EQ(CellOf(table, {"Intercept", "home", "Intercept"})->fValue, 0.301245);
  EXPECT_EQ(CellOf(table, {"Intercept", "ward", "Intercept"})->fValue, 0.224718);
}

TEST_F(GNLMParamEstimatesOutputTest, WithoutCovarianceMatricesThereIsNoHeading) {
  ASSERT_TRUE(ReadFixture("messages"));
  Estimates().DisplayRandomEffectCovarTables();
  EXPECT_TRUE(Outline().empty());
}

TEST_F(GNLMParamEstimatesOutputTest, SegmentsAndMatricesThatDisagreeBreakAnInvariant) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Stats::RandEffCovarMatData& block = fStats.GetStructuredData()->fvRandEffCovarMats[0];
  block.fMatrixValues.push_back(block.fMatrixValues.front());
  EXPECT_DEATH(Estimates().DisplayRandomEffectCovarTables(),
               "randEffCovars.fSimpleSubjects.size\\(\\) == randEffCovars.fMatrixValues.size\\(\\)");
  block.fSimpleSubjects.push_back(block.fSimpleSubjects.front());
  EXPECT_DEATH(Estimates().DisplayRandomEffectCovarTables(), "nCat == 1");
}

// --- Covariance parameters ---------------------------------------------------------

TEST_F(GNLMParamEstimatesOutputTest, TheSummaryCountsParametersColumnsAndSubjects) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Estimates().DisplayCovarParamTable();
  EXPECT_EQ(Outline(), (std::vector<std::string>{"heading: Covariance Parameters",
                                                 "  table: CovarianceParametersSummary", "  table: ResidualEffect",
                                                 "  table: CovarianceParameters"}));
  const OmTable& table = Table("CovarianceParametersSummary");
  EXPECT_EQ(Leaves(table, 0),
            (std::vector<std::string>{"Covariance Parameters/Residual Effect", "Covariance Parameters/Random Effects",
                                      "Design Matrix Columns/Fixed Effects", "Design Matrix Columns/Random Effects",
                                      "Common Subjects"}));
  EXPECT_EQ(TextOf(table, {"Covariance Parameters/Residual Effect"}), "1");
  EXPECT_EQ(TextOf(table, {"Covariance Parameters/Random Effects"}), "3");
  EXPECT_EQ(TextOf(table, {"Design Matrix Columns/Fixed Effects"}), "6");
  EXPECT_EQ(TextOf(table, {"Design Matrix Columns/Random Effects"}), "2");
  EXPECT_EQ(TextOf(table, {"Common Subjects"}), "6");
  EXPECT_EQ(CellFootnotes(table, {"Design Matrix Columns/Random Effects"}),
            (std::vector<std::string>{"The number of columns of the random effect design matrix is given per common "
                                      "subject."}));
  EXPECT_EQ(table.fvCaptions.size(), 1u);
}

TEST_F(GNLMParamEstimatesOutputTest, ConstrainedParametersLeaveTheCommonSubjectsOut) {
  ASSERT_TRUE(ReadFixture("gamma"));
  ASSERT_TRUE(fStats.HasWarning(Stats::csKey_C8));
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("CovarianceParametersSummary");
  EXPECT_EQ(Leaves(table, 0).size(), 4u);
  EXPECT_TRUE(table.fvCaptions.empty());
  EXPECT_TRUE(table.fvFootnotes.empty());
}

TEST_F(GNLMParamEstimatesOutputTest, TheEstimatedParametersOfABlock) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("CovarianceParameters");
  // One random block: its table needs no number.
  EXPECT_EQ(table.fTitle.fText, "Random Effect");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Random Effect Covariance");
  EXPECT_EQ(Leaves(table, 0), (std::vector<std::string>{"UN (1,1)", "UN (2,1)", "UN (2,2)"}));
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Estimate", "Std. Error", "Z", "Sig.", kCI + "/Lower",
                                                         kCI + "/Upper"}));
  EXPECT_EQ(TextOf(table, {"UN (1,1)", "Estimate"}), "0.215");
  EXPECT_EQ(TextOf(table, {"UN (2,1)", "Std. Error"}), "0.004");
  EXPECT_EQ(TextOf(table, {"UN (1,1)", "Z"}), "1.814");
  EXPECT_EQ(TextOf(table, {"UN (2,1)", "Sig."}), "0.119");
  // The notes of the messages kGLMM_C18 and kGLMM_C28, after the structure.
  EXPECT_EQ(Texts(table.fvCaptions),
            (std::vector<std::string>{
                "Covariance structure: Unstructured\nSubject specification: patient\nThe final Hessian matrix is not "
                "positive definite although all convergence criteria are satisfied; the covariance parameter "
                "estimates may be unreliable.\nSome covariance parameters are redundant and are not estimated."}));
}

TEST_F(GNLMParamEstimatesOutputTest, TheResidualsVarianceIsTheScaleParameter) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.GetAllWarnings().clear();
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("ResidualEffect");
  EXPECT_EQ(table.fTitle.fText, "Residual Effect");
  EXPECT_EQ(Leaves(table, 0), std::vector<std::string>{"Variance"});
  const auto paths = table.fvDimensions[0].LeafPaths();
  EXPECT_EQ(Footnotes(table, paths[0].back()->fLabel), std::vector<std::string>{"This is the scale parameter."});
  EXPECT_EQ(TextOf(table, {"Variance", "Estimate"}), "0.021");
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Estimate", "Std. Error", "Z", "Sig.",
                                                         "90% Confidence Interval/Lower",
                                                         "90% Confidence Interval/Upper"}));
  EXPECT_EQ(Texts(table.fvCaptions),
            (std::vector<std::string>{"Covariance structure: Scaled identity\nSubject specification: (None)"}));
}

TEST_F(GNLMParamEstimatesOutputTest, AVarianceKeyWithoutItsBlankIsNoScaleParameter) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.GetParamCollect()->fvRepeatedParamEstim[0].fvParamStats[0].fParamList.fPattern = "Variance";
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("ResidualEffect");
  EXPECT_TRUE(table.fvFootnotes.empty());
}

// A binomial residual with the message kGLMM_C9: the scale is fixed at 1,
// and nothing else is shown; the random block's parameters are 0.
TEST_F(GNLMParamEstimatesOutputTest, AFixedScaleShowsOnlyItsEstimate) {
  ASSERT_TRUE(ReadFixture("binomial"));
  fStats.GetAllWarnings().clear();
  AddWarning(Stats::csKey_C9);
  Estimates().DisplayCovarParamTable();
  const OmTable& residual = Table("ResidualEffect");
  EXPECT_EQ(Leaves(residual, 1), std::vector<std::string>{"Estimate"});
  EXPECT_EQ(TextOf(residual, {"Variance", "Estimate"}), "1.000");
  EXPECT_EQ(CellFootnotes(residual, {"Variance", "Estimate"}),
            (std::vector<std::string>{"The covariance parameters of the random effects could not be estimated and "
                                      "are set to zero; the scale parameter is fixed at 1 for this distribution."}));
  EXPECT_EQ(Texts(residual.fvCaptions), (std::vector<std::string>{"Covariance structure: Scaled identity"}));

  const OmTable& random = Table("CovarianceParameters");
  EXPECT_EQ(Leaves(random, 1), (std::vector<std::string>{"Estimate", "Std. Error", kCI + "/Lower", kCI + "/Upper"}));
  for (const std::string& column : std::vector<std::string>{"Estimate", "Std. Error", kCI + "/Lower", kCI + "/Upper"}) {
    EXPECT_EQ(CellOf(random, {"Var(Intercept)", column})->fValue, 0.0) << column;
  }
  EXPECT_TRUE(CellFootnotes(random, {"Var(Intercept)", "Estimate"}).empty());
  // The summary leaves out the common subjects.
  EXPECT_EQ(Leaves(Table("CovarianceParametersSummary"), 0).size(), 4u);
}

// kGLMM_C9 with a distribution whose scale is estimated shows the estimates.
TEST_F(GNLMParamEstimatesOutputTest, AFixedScaleMessageForAGammaTargetChangesNothing) {
  ASSERT_TRUE(ReadFixture("gamma"));
  AddWarning(Stats::csKey_C9);
  Estimates().DisplayCovarParamTable();
  EXPECT_EQ(TextOf(Table("ResidualEffect"), {"Variance", "Estimate"}), "0.021");
  EXPECT_EQ(Leaves(Table("CovarianceParameters"), 1).size(), 6u);
}

// kGLMM_C8 with a gamma target: the random parameters are 0 without their
// tests; the residual is estimated, its caption the structure alone.
TEST_F(GNLMParamEstimatesOutputTest, UnestimatedRandomEffectsAreZeroWithoutTests) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Estimates().DisplayCovarParamTable();
  const OmTable& random = Table("CovarianceParameters");
  EXPECT_EQ(Leaves(random, 1), (std::vector<std::string>{"Estimate", "Std. Error", "90% Confidence Interval/Lower",
                                                          "90% Confidence Interval/Upper"}));
  EXPECT_EQ(TextOf(random, {"Var(Intercept)", "Estimate"}), "0.000");
  EXPECT_EQ(TextOf(random, {"Var(Intercept)", "90% Confidence Interval/Upper"}), "0.000");
  const OmTable& residual = Table("ResidualEffect");
  EXPECT_EQ(Leaves(residual, 1).size(), 6u);
  EXPECT_EQ(TextOf(residual, {"Variance", "Z"}), "3.277");
  EXPECT_EQ(Texts(residual.fvCaptions), (std::vector<std::string>{"Covariance structure: Scaled identity"}));
}

TEST_F(GNLMParamEstimatesOutputTest, AnEstimateOnItsBoundaryCarriesTheMessage) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  ASSERT_TRUE(fStats.HasWarning(Stats::csKey_C10));
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("CovarianceParameters");
  EXPECT_EQ(CellFootnotes(table, {"Var(Intercept)", "Estimate"}),
            (std::vector<std::string>{
                "The estimate lies on the boundary of the parameter space, so its standard error may be unreliable."}));
}

TEST_F(GNLMParamEstimatesOutputTest, ARedundantParameterHasANoteAndNoStatistics) {
  ASSERT_TRUE(ReadFixture("poisson"));
  fStats.GetAllWarnings().clear();
  fStats.GetParamCollect()->fvRandomParamEstim[0].fvParamEstim[0].fvParamStats[1].fIsRedundant = true;
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("CovarianceParameters");
  EXPECT_EQ(CellFootnotes(table, {"UN (2,1)", "Estimate"}), std::vector<std::string>{"This parameter is redundant."});
  for (const std::string& column : std::vector<std::string>{"Std. Error", "Z", "Sig.", kCI + "/Lower", kCI + "/Upper"}) {
    EXPECT_TRUE(Missing(table, {"UN (2,1)", column})) << column;
  }
}

// The linearized scale's note is for targets other than ordinal ones.
TEST_F(GNLMParamEstimatesOutputTest, TheWorkingScaleNoteIsNotForAnOrdinalTarget) {
  ASSERT_TRUE(ReadFixture("ordinal"));
  AddWarning(Stats::csKey_C23);
  Estimates().DisplayCovarParamTable();
  EXPECT_EQ(Texts(Table("CovarianceParameters").fvCaptions),
            (std::vector<std::string>{"Covariance structure: Variance components\nSubject specification: patient"}));
  // An ordinal target's document has no residual parameters: no table.
  EXPECT_TRUE(Tables("ResidualEffect").empty());
}

TEST_F(GNLMParamEstimatesOutputTest, TwoRandomBlocksAreNumbered) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Stats::RandomSpecsData second = Settings().fvRandomSpecs.front();
  second.fCovarianceType = Stats::VC;
  Settings().fvRandomSpecs.push_back(second);
  Stats::ParamEstimBlockCollection block = fStats.GetParamCollect()->fvRandomParamEstim.front();
  block.fBlockIndex = 1;
  fStats.GetParamCollect()->fvRandomParamEstim.push_back(block);
  Estimates().DisplayCovarParamTable();
  const std::vector<const OmTable*> tables = Tables("CovarianceParameters");
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(tables[0]->fTitle.fText, "Random Effect Block 1");
  EXPECT_EQ(tables[1]->fTitle.fText, "Random Effect Block 2");
  EXPECT_EQ(tables[1]->fvDimensions[0].fName.fText, "Random Effect Covariance");
  EXPECT_NE(tables[1]->fvCaptions[0].fText.find("Covariance structure: Variance components"), std::string::npos);
}

TEST_F(GNLMParamEstimatesOutputTest, ANominalTargetsParametersStandPerCategory) {
  ASSERT_TRUE(ReadFixture("nominal"));
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("CovarianceParameters");
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Random Effect Covariance");
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Discharge destination");
  EXPECT_EQ(TextOf(table, {"Var(Intercept)", "home", "Estimate"}), "0.301");
  EXPECT_EQ(TextOf(table, {"Var(Intercept)", "ward", "Std. Error"}), "0.251");
}

// Residual parameters per group of a grouping field.
TEST_F(GNLMParamEstimatesOutputTest, GroupedResidualParametersStandPerGroup) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.GetAllWarnings().clear();
  Settings().fvResidualGroupSpec = {"treatment"};
  Stats::ParamCollectData& collect = *fStats.GetParamCollect();
  const int treatment = fData->FindVarIndex("treatment", 0);
  for (const char* value : {"A", "B"}) {
    Stats::ParamEstimData set = collect.fvRepeatedParamEstim.front();
    set.fFiledData.fFieldNames = {"treatment"};
    set.fFiledData.fFieldIndices = {treatment};
    set.fFiledData.fSubjectValues = {CFStatVariableValue()};
    set.fFiledData.fSubjectValues[0].SetCompleteValue(value, *fData->GetVariable(treatment));
    set.fFiledData.fNumCategories = {2};
    collect.fvRepeatedParamEstim.push_back(set);
  }
  collect.fvRepeatedParamEstim.erase(collect.fvRepeatedParamEstim.begin());
  Estimates().DisplayCovarParamTable();
  const OmTable& table = Table("ResidualEffect");
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Grouping");
  EXPECT_EQ(Leaves(table, 1), (std::vector<std::string>{"Treatment = Active", "Treatment = Placebo"}));
  EXPECT_EQ(TextOf(table, {"Variance", "Treatment = Placebo", "Estimate"}), "0.021");
}

TEST_F(GNLMParamEstimatesOutputTest, SeveralResidualSetsWithoutGroupsBreakAnInvariant) {
  ASSERT_TRUE(ReadFixture("gamma"));
  Stats::ParamCollectData& collect = *fStats.GetParamCollect();
  collect.fvRepeatedParamEstim.push_back(collect.fvRepeatedParamEstim.front());
  EXPECT_DEATH(Estimates().DisplayCovarParamTable(), "paramEstimVect.size\\(\\) == 1");
}

TEST_F(GNLMParamEstimatesOutputTest, WithoutDiagnosticsTheSummaryBreaksAnInvariant) {
  ASSERT_TRUE(ReadFixture("gamma"));
  fStats.DestroyModelDiagnostics();
  EXPECT_DEATH(Estimates().DisplayCovarParamTable(), "pModelDiagnotics");
}

}  // namespace

// A document that says a block's estimated covariance matrix is not positive
// definite: the viewer says it as a warning after the covariance tables,
// with the block's number, as the fit said it.
TEST_F(GNLMParamEstimatesOutputTest, AnIndefiniteCovarianceMatrixIsAWarningNamingItsBlock) {
  std::string statXML = results_test::ReadFile(results_test::FixturePath("poisson.statxml.xml"));
  const std::size_t end = statXML.find("</TrainingSummary>");
  ASSERT_NE(end, std::string::npos);
  statXML.insert(end,
                 "<Message><PrintableList pattern=\"kGLMM_GNotPD\" isKey=\"true\"><PrintableValue storage=\"string\" "
                 "value=\"1\"/></PrintableList></Message><Message><PrintableList pattern=\"kGLMM_RNotPD\" "
                 "isKey=\"true\"/></Message>");
  ASSERT_TRUE(Read(results_test::ReadFile(results_test::FixturePath("poisson.pmml.xml")), statXML));
  ASSERT_TRUE(fStats.HasWarning(Stats::csKey_GNotPD));
  Estimates().DisplayCovarParamTable();
  EXPECT_EQ(Messages(),
            (std::vector<std::string>{
                "Covariance Parameters: The estimated covariance matrix of the random effects of block 1 is not "
                "positive definite.",
                "Covariance Parameters: The estimated covariance matrix of the residual block is not positive "
                "definite."}));
  const std::vector<std::string> outline = Outline();
  ASSERT_FALSE(outline.empty());
  EXPECT_EQ(outline.front(), "heading: Covariance Parameters");
  for (const OmItem& item : Output().fvItems) {
    if (item.fKind == OmItem::MESSAGE) {
      EXPECT_EQ(item.fpMessage->fLevel, OmMessage::WARNING);
    }
  }
}

TEST_F(GNLMParamEstimatesOutputTest, APositiveDefiniteFitSaysNothingOfItsMatrices) {
  ASSERT_TRUE(ReadFixture("poisson"));
  Estimates().DisplayCovarParamTable();
  EXPECT_TRUE(Messages().empty());
}
