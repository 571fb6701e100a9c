#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "OutputFixture.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/strings/FacSTDictionary.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "output/MIXComOutputData.h"
#include "output/MIXOutput.h"
#include "params/MIXParameterMap.h"

namespace output_test {
namespace {

const char* const kDyestuffCaption = "Dependent Variable: Yield of dyestuff (grams of standard colour).";
const char* const kOatsCaption = "Dependent Variable: Yield (quarter pounds per subplot).";

std::vector<std::string> Texts(const std::vector<OmText>& texts) {
  std::vector<std::string> out;
  for (const OmText& text : texts) out.push_back(text.fText);
  return out;
}

class DyestuffRun : public OutputFixture {
 protected:
  void SetUp() override {
    Load("dyestuff");
    Command("Yield", {}, {}, {}, {RandomBlock{{{}}, {"Batch"}, false}});
    SetOption(L::METHOD, 1);
  }
};

// Oats: the factor Variety (three levels, the last one redundant), the
// covariate nitro, and two random blocks.
class OatsRun : public OutputFixture {
 protected:
  void SetUp() override {
    Load("oats");
    Command("yield", {"Variety"}, {"nitro"}, {{1, 0}, {0, 1}},
            {RandomBlock{{{}}, {"Block"}, false}, RandomBlock{{{}}, {"Block", "Variety"}, false}});
  }
};

TEST_F(DyestuffRun, InformationCriteriaOfAMaximumLikelihoodFit) {
  RunDriver();
  const std::vector<const OmTable*> tables = TablesOf("Information Criteria");
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  EXPECT_EQ(table.fTitle.fText, "Information Criteria");
  ASSERT_EQ(table.fvDimensions.size(), 1u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Statistics");
  EXPECT_EQ(table.fvDimensions[0].fPlace, OmDimension::ROW);
  EXPECT_FALSE(table.fvDimensions[0].fbShowName);
  EXPECT_EQ(LeafLabels(table, 0),
            (std::vector<std::string>{"-2 Log Likelihood", "Akaike Information Criterion (AIC)",
                                      "Corrected Akaike Information Criterion (AICC)",
                                      "Consistent Akaike Information Criterion (CAIC)",
                                      "Bayesian Information Criterion (BIC)"}));
  EXPECT_EQ(Texts(table.fvCaptions),
            (std::vector<std::string>{"The information criteria are displayed in smaller-is-better form."}));
  EXPECT_EQ(Texts(table.fvNotes), (std::vector<std::string>{kDyestuffCaption}));

  // Maximum likelihood: one fixed parameter and two covariance parameters
  // count, on all 30 cases.
  const double logLik = table.CellAt({0})->fValue;
  EXPECT_NEAR(logLik, 327.3271, 1e-3);
  EXPECT_EQ(table.CellAt({0})->fContent.fText, "327.327");
  EXPECT_EQ(table.CellAt({0})->fFormat, "F40.3");
  EXPECT_DOUBLE_EQ(table.CellAt({1})->fValue, logLik + 2.0 * 3.0);
  EXPECT_DOUBLE_EQ(table.CellAt({3})->fValue, logLik + 3.0 * (std::log(30.0) + 1.0));
  EXPECT_EQ(table.CellAt({3})->fContent.fText, "340.531");
  EXPECT_FALSE(table.CellAt({2})->fbMissing);
  EXPECT_FALSE(table.CellAt({4})->fbMissing);
}

TEST_F(DyestuffRun, AModelWithOnlyAnInterceptTestsTheInterceptAlone) {
  RunDriver();
  const std::vector<const OmTable*> tables = TablesOf("Tests of Fixed Effects");
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  EXPECT_EQ(table.fTitle.fText, "Type III Tests of Fixed Effects");
  ASSERT_EQ(table.fvDimensions.size(), 2u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Source");
  EXPECT_TRUE(table.fvDimensions[0].fbShowName);
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Statistics");
  EXPECT_FALSE(table.fvDimensions[1].fbShowName);
  EXPECT_EQ(LeafLabels(table, 0), (std::vector<std::string>{"Intercept"}));
  EXPECT_EQ(LeafLabels(table, 1), (std::vector<std::string>{"Numerator df", "Denominator df", "F", "Sig."}));
  EXPECT_EQ(Cell(table, "Intercept", "Numerator df")->fContent.fText, "1");
  EXPECT_EQ(Cell(table, "Intercept", "Numerator df")->fFormat, BpProcedure::Count().ToText());
  EXPECT_NEAR(Cell(table, "Intercept", "F")->fValue, 7452.18, 0.5);
  EXPECT_EQ(Cell(table, "Intercept", "Sig.")->fFormat, BpProcedure::Significance().ToText());
  EXPECT_EQ(Texts(table.fvNotes), (std::vector<std::string>{kDyestuffCaption}));
}

TEST_F(DyestuffRun, TablesStandInTheirOrderUnderTheirHeadings) {
  SetOption(L::SHOW_ESTIMATES, 1);
  SetOption(L::SHOW_ESTIMATE_CORRELATIONS, 1);
  SetOption(L::SHOW_ESTIMATE_COVARIANCES, 1);
  RunDriver();
  std::vector<std::string> subTypes;
  for (const OmTable* table : Tables()) subTypes.push_back(table->fSubType);
  EXPECT_EQ(subTypes, (std::vector<std::string>{"Notes", "Information Criteria", "Tests of Fixed Effects",
                                                "Parameter Estimates", "Correlation Matrix", "Covariance Matrix"}));
  EXPECT_EQ(Headings(), (std::vector<std::string>{"Fixed Effects", "Fixed Effects", "Fixed Effects", "Fixed Effects"}));

  const OmTable& estimates = *TablesOf("Parameter Estimates")[0];
  EXPECT_EQ(estimates.fTitle.fText, "Estimates of Fixed Effects");
  EXPECT_NEAR(Cell(estimates, "Intercept", "Estimate")->fValue, 1527.5, 1e-6);
  EXPECT_EQ(Cell(estimates, "Intercept", "Estimate")->fContent.fText, "1527.5000");
  EXPECT_NEAR(Cell(estimates, "Intercept", "Std. Error")->fValue, 17.6946, 1e-3);
  const OmTable& correlations = *TablesOf("Correlation Matrix")[0];
  EXPECT_EQ(correlations.fTitle.fText, "Correlation Matrix for Estimates of Fixed Effects");
  EXPECT_EQ(Cell(correlations, "Intercept", "Intercept")->fContent.fText, "1");
  const OmTable& covariances = *TablesOf("Covariance Matrix")[0];
  EXPECT_EQ(covariances.fTitle.fText, "Covariance Matrix for Estimates of Fixed Effects");
  EXPECT_NEAR(Cell(covariances, "Intercept", "Intercept")->fValue, 17.6946 * 17.6946, 0.1);
}

TEST_F(OatsRun, RestrictedCriteriaCountTheCovarianceParametersOnTheReducedCases) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const MCGLMM_850::GLMMOutputStats& stats = *fFactory->GetOutputStats();
  const OmTable& table = *TablesOf("Information Criteria")[0];
  EXPECT_EQ(LeafLabels(table, 0)[0], "-2 Restricted Log Likelihood");
  const double logLik = stats.GetLogLikehood();
  EXPECT_DOUBLE_EQ(table.CellAt({0})->fValue, logLik);
  // Three covariance parameters; four fixed parameters that are not
  // redundant come off the 72 cases.
  ASSERT_EQ(stats.GetThetaParamEtimates().size(), 3u);
  EXPECT_DOUBLE_EQ(table.CellAt({1})->fValue, logLik + 6.0);
  EXPECT_DOUBLE_EQ(table.CellAt({3})->fValue, logLik + 3.0 * (std::log(68.0) + 1.0));
  EXPECT_DOUBLE_EQ(table.CellAt({2})->fValue, stats.GetAICC());
  EXPECT_DOUBLE_EQ(table.CellAt({4})->fValue, stats.GetBIC());
  EXPECT_EQ(Texts(table.fvNotes), (std::vector<std::string>{kOatsCaption}));
}

TEST_F(OatsRun, TestsNameTheEffects) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const OmTable& table = *TablesOf("Tests of Fixed Effects")[0];
  EXPECT_EQ(LeafLabels(table, 0), (std::vector<std::string>{"Intercept", "Variety", "nitro"}));
  EXPECT_EQ(Cell(table, "Variety", "Numerator df")->fValue, 2.0);
  EXPECT_EQ(Cell(table, "nitro", "Numerator df")->fValue, 1.0);
  const MCMath_850::MCModelTestStats& tests = *fFactory->GetOutputStats()->GetTypeIIITestStats();
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "F")->fValue, tests.GetTestStats(2).GetWald());
  EXPECT_DOUBLE_EQ(Cell(table, "Variety", "Denominator df")->fValue, tests.GetTestStats(1).GetDF2());
  EXPECT_NEAR(Cell(table, "nitro", "F")->fValue, 118.0, 0.1);
}

TEST_F(OatsRun, TypeOneTestsHaveTheirTitle) {
  SetOption(L::TEST_TYPE, 1);
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const OmTable& table = *TablesOf("Tests of Fixed Effects")[0];
  EXPECT_EQ(table.fTitle.fText, "Type I Tests of Fixed Effects");
  const MCMath_850::MCModelTestStats& tests = *fFactory->GetOutputStats()->GetTypeITestStats();
  EXPECT_DOUBLE_EQ(Cell(table, "Variety", "F")->fValue, tests.GetTestStats(1).GetWald());
}

TEST_F(OatsRun, WithoutPrintOptionsOnlyCriteriaAndTestsAreWritten) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  std::vector<std::string> subTypes;
  for (const OmTable* table : Tables()) subTypes.push_back(table->fSubType);
  EXPECT_EQ(subTypes, (std::vector<std::string>{"Notes", "Information Criteria", "Tests of Fixed Effects"}));
}

TEST_F(OatsRun, EstimatesShowTheRedundantParameterAsZero) {
  SetOption(L::SHOW_ESTIMATES, 1);
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const std::vector<MCMath_850::BetaParamStat>& stats = fFactory->GetOutputStats()->GetBetaParamStats();
  ASSERT_EQ(stats.size(), 5u);
  const OmTable& table = *TablesOf("Parameter Estimates")[0];
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Parameter");
  EXPECT_TRUE(table.fvDimensions[0].fbShowName);
  EXPECT_EQ(LeafLabels(table, 0), (std::vector<std::string>{"Intercept", "[Variety=Golden Rain]",
                                                            "[Variety=Marvellous]", "[Variety=Victory]", "nitro"}));
  EXPECT_EQ(LeafLabels(table, 1), (std::vector<std::string>{"Estimate", "Std. Error", "df", "t", "Sig.",
                                                            "Lower Bound", "Upper Bound"}));
  const std::vector<std::vector<const OmDimensionNode*>> columns = table.fvDimensions[1].LeafPaths();
  ASSERT_EQ(columns[5].size(), 2u);
  EXPECT_EQ(columns[5][0]->fLabel.fText, "95% Confidence Interval");
  EXPECT_EQ(columns[6][0], columns[5][0]);

  const OmCell* estimate = Cell(table, "nitro", "Estimate");
  EXPECT_DOUBLE_EQ(estimate->fValue, stats[4].GetEstimate());
  EXPECT_EQ(estimate->fFormat, "F40.4");
  EXPECT_NEAR(estimate->fValue, 73.6667, 1e-3);
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "Std. Error")->fValue, stats[4].GetStdError());
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "t")->fValue, stats[4].GetTStat());
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "Lower Bound")->fValue, stats[4].GetLowerBound());
  EXPECT_DOUBLE_EQ(Cell(table, "nitro", "Upper Bound")->fValue, stats[4].GetUpperBound());
  EXPECT_TRUE(CellNotes(table, "nitro", "Estimate").empty());

  ASSERT_TRUE(stats[3].GetRedundant());
  const OmCell* redundant = Cell(table, "[Variety=Victory]", "Estimate");
  EXPECT_EQ(redundant->fContent.fText, "0");
  EXPECT_EQ(redundant->fFormat, BpProcedure::Count().ToText());
  EXPECT_EQ(CellNotes(table, "[Variety=Victory]", "Estimate"),
            (std::vector<std::string>{"This parameter is set to zero because it is redundant."}));
  EXPECT_EQ(Cell(table, "[Variety=Victory]", "Std. Error")->fContent.fText, "0");
  for (const char* column : {"df", "t", "Sig.", "Lower Bound", "Upper Bound"}) {
    EXPECT_TRUE(Cell(table, "[Variety=Victory]", column)->fbMissing) << column;
  }
  EXPECT_EQ(Texts(table.fvNotes), (std::vector<std::string>{kOatsCaption}));
}

TEST_F(OatsRun, MatricesOfTheEstimates) {
  SetOption(L::SHOW_ESTIMATE_CORRELATIONS, 1);
  SetOption(L::SHOW_ESTIMATE_COVARIANCES, 1);
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const MCMath_850::MCSymMatrix& matrix = *fFactory->GetOutputStats()->GetCovarianceMatrixBeta();
  const std::vector<std::string> labels = {"Intercept", "[Variety=Golden Rain]", "[Variety=Marvellous]",
                                           "[Variety=Victory]", "nitro"};

  const OmTable& covariances = *TablesOf("Covariance Matrix")[0];
  EXPECT_EQ(covariances.fvDimensions[0].fName.fText, "Parameter");
  EXPECT_EQ(covariances.fvDimensions[1].fName.fText, "Parameter");
  EXPECT_FALSE(covariances.fvDimensions[0].fbShowName);
  EXPECT_EQ(LeafLabels(covariances, 0), labels);
  EXPECT_EQ(LeafLabels(covariances, 1), labels);
  EXPECT_DOUBLE_EQ(Cell(covariances, "nitro", "Intercept")->fValue, matrix.GetElem(0, 0, 4, 0));
  EXPECT_EQ(Cell(covariances, "nitro", "Intercept")->fFormat, "F40.4");
  EXPECT_EQ(Cell(covariances, "nitro", "[Variety=Victory]")->fContent.fText, "0");
  EXPECT_EQ(CellNotes(covariances, "[Variety=Victory]", "nitro"),
            (std::vector<std::string>{"This covariance is set to zero because a parameter involved is redundant."}));

  const OmTable& correlations = *TablesOf("Correlation Matrix")[0];
  EXPECT_EQ(LeafLabels(correlations, 0), labels);
  for (const std::string& label : {labels[0], labels[1], labels[2], labels[4]}) {
    EXPECT_EQ(Cell(correlations, label, label)->fContent.fText, "1") << label;
    EXPECT_EQ(Cell(correlations, label, label)->fFormat, BpProcedure::Count().ToText()) << label;
  }
  const double expected =
      matrix.GetElem(0, 0, 4, 0) / std::sqrt(matrix.GetElem(0, 0, 4, 4) * matrix.GetElem(0, 0, 0, 0));
  EXPECT_NEAR(Cell(correlations, "nitro", "Intercept")->fValue, expected, 1e-12);
  EXPECT_EQ(Cell(correlations, "nitro", "Intercept")->fFormat, BpProcedure::Correlation().ToText());
  EXPECT_TRUE(Cell(correlations, "[Variety=Victory]", "[Variety=Victory]")->fbMissing);
  EXPECT_EQ(CellNotes(correlations, "Intercept", "[Variety=Victory]"),
            (std::vector<std::string>{"This correlation is not computed because a parameter involved is redundant."}));
}

TEST_F(OatsRun, EveryFixedTextHasItsTranslation) {
  SetOption(L::SHOW_ESTIMATES, 1);
  SetOption(L::SHOW_ESTIMATE_CORRELATIONS, 1);
  SetOption(L::SHOW_ESTIMATE_COVARIANCES, 1);
  FacSTDictionary::ClearMissingKeys();
  RunDriver();
  EXPECT_EQ(Tables().size(), 6u);
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty());
  for (const std::string& key : FacSTDictionary::GetMissingKeys()) ADD_FAILURE() << key;
}

TEST_F(OatsRun, CaptionsListTheEffectsWhenAsked) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  MIXComOutputData& data = *fOutput->GetComOutputData();
  BpPivotTable table = fProcedure.PivotTable(BpString("Information Criteria", true), BpString("Probe", false), true);
  data.AddTableCaption(table, true);
  EXPECT_EQ(Texts(table.GetOmTable()->fvNotes),
            (std::vector<std::string>{"Dependent Variable: Yield (quarter pounds per subplot). Model: Intercept, "
                                      "Variety, nitro."}));
}

TEST_F(OatsRun, ARegressionWeightIsNamedUnderTheTable) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  MIXComOutputData& data = *fOutput->GetComOutputData();
  fSpecs->SetRegrWeightIndex(Column("nitro"));
  BpPivotTable table = fProcedure.PivotTable(BpString("Information Criteria", true), BpString("Probe", false), true);
  data.AddTableCaption(table, false);
  EXPECT_EQ(Texts(table.GetOmTable()->fvNotes),
            (std::vector<std::string>{kOatsCaption, "Regression Weight: Nitrogen (hundredweight per acre)."}));
}

TEST_F(DyestuffRun, AModelWithoutInterceptOrEffectsGetsTheShortPattern) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  MIXComOutputData& data = *fOutput->GetComOutputData();
  ASSERT_EQ(data.GetFixParamMap()->GetEffectMapSize(), 0);

  BpPivotTable listed = fProcedure.PivotTable(BpString("Information Criteria", true), BpString("Probe", false), true);
  data.AddTableCaption(listed, true);
  EXPECT_EQ(Texts(listed.GetOmTable()->fvNotes),
            (std::vector<std::string>{"Dependent Variable: Yield of dyestuff (grams of standard colour). Model: "
                                      "Intercept."}));

  fSpecs->SetInterceptInModel(false);
  BpPivotTable bare = fProcedure.PivotTable(BpString("Information Criteria", true), BpString("Probe", false), true);
  data.AddTableCaption(bare, true);
  EXPECT_EQ(Texts(bare.GetOmTable()->fvNotes),
            (std::vector<std::string>{"Dependent Variable: Yield of dyestuff (grams of standard colour). The model "
                                      "has no fixed effects."}));
}

TEST_F(OatsRun, EachSplitGetsNewOutputData) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const MIXComOutputData* first = fOutput->GetComOutputData();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->GetFixParamMap()->GetParamMapSize(), 5);
  EXPECT_EQ(first->GetFixParamMap()->GetEffectMapSize(), 2);
  EXPECT_EQ(first->GetRandParamMaps()->size(), 2u);
  EXPECT_EQ(first->GetFactory(), &*fFactory);
  EXPECT_EQ(first->GetValidSpecs(), &*fSpecs);
  EXPECT_EQ(first->GetProcedure(), &fProcedure);
  EXPECT_EQ(first->GetProcDS(), &fData);
  fOutput->DisplayOutput();
  EXPECT_EQ(TablesOf("Information Criteria").size(), 2u);
  EXPECT_EQ(fOutput->GetComOutputData()->GetFixParamMap()->GetParamMapSize(), 5);
}

// The orthodontic data split by sex; the host sorts the file by the split
// variable, so Female comes first.
class OrthodontSplitRun : public OutputFixture {
 protected:
  void SetUp() override {
    Load("orthodont");
    fData.SetSplitVars({Column("Sex")});
    Command("distance", {}, {"age"}, {{1}}, {RandomBlock{{{}}, {"Subject"}, false}});
    SetOption(L::SHOW_ESTIMATES, 1);
  }
};

TEST_F(OrthodontSplitRun, EverySplitHasItsTables) {
  RunDriver();
  const std::vector<const OmTable*> criteria = TablesOf("Information Criteria");
  ASSERT_EQ(criteria.size(), 2u);
  EXPECT_EQ(Texts(criteria[0]->fvCaptions)[0], "Split file: Sex of the child = Female");
  EXPECT_EQ(Texts(criteria[1]->fvCaptions)[0], "Split file: Sex of the child = Male");
  EXPECT_NE(criteria[0]->CellAt({0})->fValue, criteria[1]->CellAt({0})->fValue);
  const std::vector<const OmTable*> estimates = TablesOf("Parameter Estimates");
  ASSERT_EQ(estimates.size(), 2u);
  EXPECT_NEAR(Cell(*estimates[0], "age", "Estimate")->fValue, 0.4795, 1e-3);
  EXPECT_NEAR(Cell(*estimates[1], "age", "Estimate")->fValue, 0.7844, 1e-3);
  EXPECT_EQ(LeafLabels(*estimates[1], 0), (std::vector<std::string>{"Intercept", "age"}));
}

TEST_F(OrthodontSplitRun, SplitNameOfTheCurrentSplit) {
  ASSERT_TRUE(Run());
  fOutput->DisplayOutput();
  const MIXComOutputData& data = *fOutput->GetComOutputData();
  EXPECT_EQ(data.GetSplitName(fFactory->GetInputAdapter()->GetSplitValues(), true), "Sex of the child = Female");
  ASSERT_TRUE(NextSplit());
  fOutput->DisplayOutput();
  // A string value keeps the blanks of its width.
  EXPECT_EQ(fOutput->GetComOutputData()->GetSplitName(fFactory->GetInputAdapter()->GetSplitValues(), true),
            "Sex of the child = Male  ");
  EXPECT_FALSE(NextSplit());
}

}  // namespace
}  // namespace output_test
