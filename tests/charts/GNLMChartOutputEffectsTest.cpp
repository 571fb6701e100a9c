// The fixed effects and fixed coefficients diagrams.
#include <cmath>
#include <string>

#include "ChartsTestSupport.h"

using namespace charts_test;

namespace {

class Effects : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    Settings();
    Diagnostics();
    AddFixedEffect({DAYS});
    AddFixedEffect({GROUP});
    AddFixedEffect({DAYS, GROUP});
    AddFixedEffect({SEX});
  }
  void AddTest(int testID, double sig) {
    Stats::EffectTestData* tests = fStats.GetEffectTest() != nullptr ? fStats.GetEffectTest() : fStats.CreateEffectTest();
    tests->fvFixedEffects.push_back({testID, 3, 5.0, 1.0, 20.0, sig});
  }
  Stats::ParamStatsData& AddParameter(const std::string& label, double estimate, double sig) {
    Stats::ParamCollectData* params =
        fStats.GetParamCollect() != nullptr ? fStats.GetParamCollect() : fStats.CreateParamCollect();
    if (params->fvFixedParamEstim.empty()) params->fvFixedParamEstim.resize(1);
    Stats::ParamStatsData param;
    param.fParamLabel = label;
    param.fEstimate = estimate;
    param.fSig = sig;
    param.fStatisticValue = -1;
    params->fvFixedParamEstim[0].fvParamStats.push_back(param);
    return params->fvFixedParamEstim[0].fvParamStats.back();
  }
  Stats::ParamStatsData& AddIntercept(double estimate, double sig) {
    Stats::ParamStatsData& param = AddParameter("Intercept", estimate, sig);
    param.fRegrParam.fIsIntercept = true;
    return param;
  }
  Stats::ParamStatsData& AddCovariate(const std::string& name, int effect, double estimate, double sig) {
    Stats::ParamStatsData& param = AddParameter(name, estimate, sig);
    param.fStatistic = {"fixedEffectIndex", std::to_string(effect)};
    param.fStatisticValue = effect;
    param.fRegrParam.fvCovariates.push_back({name, fData.FindVarIndex(name.c_str(), 0), 1});
    return param;
  }
  Stats::ParamStatsData& AddFactor(const std::string& name, const std::string& value, int effect, double estimate,
                                   double sig) {
    Stats::ParamStatsData& param = AddParameter("[" + name + "=" + value + "]", estimate, sig);
    param.fStatistic = {"fixedEffectIndex", std::to_string(effect)};
    param.fStatisticValue = effect;
    Stats::FactorData factor;
    factor.fField = name;
    factor.fFieldIndex = fData.FindVarIndex(name.c_str(), 0);
    factor.fValue.SetCompleteValue(value, *fData.GetVariable(factor.fFieldIndex));
    param.fRegrParam.fvFactors.push_back(factor);
    return param;
  }
};

}  // namespace

TEST_F(Effects, EachTestedEffectIsANodeJoinedToTheTarget) {
  AddTest(0, 0.00002);
  AddTest(1, 0.03);
  AddTest(2, 0.31);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Fixed Effects");
  EXPECT_EQ(chart.fKind, "GLMMFixedCoefficients");
  const std::string points = "pointSource";
  const std::string edges = "edgeSource";
  EXPECT_EQ(Text(chart, points, "Nodes", 0), "Days");
  EXPECT_EQ(Text(chart, points, "Nodes", 1), "Group");
  EXPECT_EQ(Text(chart, points, "Nodes", 2), "Days*Group");
  EXPECT_EQ(Text(chart, points, "Type", 0), "continuous");
  EXPECT_EQ(Text(chart, points, "Type", 1), "categorical");
  EXPECT_EQ(Text(chart, points, "Type", 2), "interaction");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 0), "Days");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 1), "Group\nTreatment group");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 2), "Days(Group\nTreatment group)");
  // Three nodes on the arc: y 3, 2, 1, and the target at (3, 2).
  const double outer = 3.0 - std::sqrt(5.0);
  EXPECT_DOUBLE_EQ(Number(chart, points, "X", 0), outer);
  EXPECT_EQ(Number(chart, points, "X", 1), 0.0);
  EXPECT_EQ(Number(chart, points, "Y", 2), 1.0);
  EXPECT_DOUBLE_EQ(Number(chart, edges, "FromX", 2), outer);
  EXPECT_EQ(Number(chart, edges, "FromY", 0), 3.0);
  EXPECT_EQ(Number(chart, edges, "ToX", 1), 3.0);
  EXPECT_EQ(Number(chart, edges, "ToY", 1), 2.0);
  EXPECT_EQ(Number(chart, "targetPointSource", "X", 0), 3.0);
  EXPECT_EQ(Number(chart, "targetPointSource", "Y", 0), 2.0);
  EXPECT_EQ(Number(chart, edges, "Weight", 0), 9.0);
  EXPECT_EQ(Number(chart, edges, "Weight", 1), 4.0);
  EXPECT_EQ(Number(chart, edges, "Weight", 2), 1.0);
  EXPECT_EQ(Text(chart, edges, "LineTooltip", 0), "Significance = 0.000");
  EXPECT_EQ(Text(chart, edges, "LineTooltip", 1), "Significance = 0.030");
  EXPECT_EQ(Cell(chart, edges, "Weight2", 0), nullptr);
  // Labels stand left of the nodes; the weight range is the edges'.
  EXPECT_DOUBLE_EQ(Number(chart, points, "Label_X", 0), outer - 0.6);
  EXPECT_EQ(Number(chart, points, "Label_Y", 0), 3.0);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "width")->Attribute("high"), "9");
  EXPECT_EQ(Find(*root, "width")->Attribute("low"), "1");
  EXPECT_EQ(Find(*root, "style", "id", "legendStyle")->Attribute("visible"), "false");
}

TEST_F(Effects, LateEffectsCertainAndOddSignificancesHaveNoNode) {
  AddTest(10, 0.01);        // beyond the first ten effects
  AddTest(1, 1.0);          // certain
  AddTest(2, -0.0002);      // below the tolerance
  AddTest(3, -0.00005);     // within it: marked
  AddTest(0, std::nan(""));
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  chart.createFixedEffectsChart();
  // One effect is marked, the fourth record, but only the first record is
  // walked: the diagram is sent with one place and no node.
  const OmChart& sent = OnlyChart();
  EXPECT_EQ(Rows(sent, "pointSource"), 0);
  EXPECT_EQ(Number(sent, "targetPointSource", "X", 0), 1.0);
  EXPECT_FALSE(chart.GetData().fWeightRangeSet);
}

TEST_F(Effects, ASignificanceJustBelowZeroStillCounts) {
  AddTest(3, -0.00005);
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  chart.createFixedEffectsChart();
  const OmChart& sent = OnlyChart();
  EXPECT_EQ(Text(sent, "pointSource", "Nodes", 0), "Sex");
  EXPECT_EQ(Text(sent, "pointSource", "Type", 0), "categorical");
  EXPECT_EQ(Number(sent, "edgeSource", "Weight", 0), 9.0);
  EXPECT_EQ(Text(sent, "edgeSource", "LineTooltip", 0), "Significance = 0.000");
  EXPECT_TRUE(chart.GetData().fWeightRangeSet);
  EXPECT_EQ(chart.GetData().fMinWeight, 9.0);
  EXPECT_EQ(chart.GetData().fMaxWeight, 9.0);
}

TEST_F(Effects, TheLabelOffsetIsAFifthOfTheNodesButAtLeastFourTenths) {
  for (int nodes = 1; nodes <= 3; ++nodes) {
    SCOPED_TRACE(nodes);
    fStats.DestroyEffectTest();
    for (int e = 0; e < nodes; ++e) AddTest(e, 0.5);
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
    const OmChart& chart = *Charts().back();
    const double offset = nodes == 3 ? -0.6 : -0.4;
    for (long row = 0; row < nodes; ++row) {
      EXPECT_DOUBLE_EQ(Number(chart, "pointSource", "Label_X", row) - Number(chart, "pointSource", "X", row),
                       offset);
    }
  }
}

TEST_F(Effects, TestsWithoutAMarkSendNothingAndNoTestsAnEmptyFrame) {
  AddTest(12, 0.01);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  EXPECT_TRUE(Charts().empty());
  fStats.GetEffectTest()->fvFixedEffects.clear();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  EXPECT_TRUE(Charts().empty());

  fStats.DestroyEffectTest();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const OmChart& frame = OnlyChart();
  EXPECT_EQ(frame.fTitle, "Fixed Effects");
  EXPECT_TRUE(frame.fData.Empty());
  const std::unique_ptr<XMarkupNode> root = Markup(frame);
  EXPECT_EQ(Find(*root, "axis", "dimension", "x")->Attribute("min"), "0");
}

TEST_F(Effects, WithoutDiagnosticsOrSettingsThereIsNoDiagram) {
  AddTest(0, 0.01);
  fStats.DestroyModelDiagnostics();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  Diagnostics();
  fStats.DestroyBuildSettings();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  EXPECT_TRUE(Charts().empty());
}

TEST_F(Effects, EachCoefficientIsANodeColouredByItsSign) {
  AddIntercept(251.405, 0.00001);
  AddCovariate("Days", 0, 10.467, 0.00003);
  AddFactor("Group", "1", 1, -12.3, 0.008);
  AddFactor("Group", "2", 1, 0.0, 0.12).fIsRedundant = false;
  AddFactor("Sex", "F", 3, 4.1, 0.4);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Fixed Coefficients");
  const std::string points = "pointSource";
  const std::string edges = "edgeSource";
  EXPECT_EQ(Rows(chart, points), 5);
  EXPECT_EQ(Text(chart, points, "Nodes", 0), "Intercept");
  EXPECT_EQ(Text(chart, points, "Type", 0), "intercept");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 0), "");
  EXPECT_EQ(Text(chart, points, "Nodes", 1), "Days");
  EXPECT_EQ(Text(chart, points, "Type", 1), "continuous");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 1), "Days");
  EXPECT_EQ(Text(chart, points, "Nodes", 2), "[Group=1]");
  EXPECT_EQ(Text(chart, points, "Type", 2), "categorical");
  EXPECT_EQ(Text(chart, points, "PointTooltip", 2), "Group = 1\nTreatment group = Control");
  // A variable without a label shows the value label in parentheses.
  EXPECT_EQ(Text(chart, points, "PointTooltip", 4), "Sex = F (Female)");
  EXPECT_EQ(Text(chart, edges, "Weight2", 0), "Positive");
  EXPECT_EQ(Text(chart, edges, "Weight2", 2), "Negative");
  EXPECT_EQ(Text(chart, edges, "Weight2", 3), "Positive");
  EXPECT_EQ(Number(chart, edges, "Weight", 0), 9.0);
  EXPECT_EQ(Number(chart, edges, "Weight", 2), 5.0);
  EXPECT_EQ(Number(chart, edges, "Weight", 4), 1.0);
  EXPECT_EQ(Text(chart, edges, "LineTooltip", 1), "Coefficient = 10.467\nSignificance = 0.000");
  EXPECT_EQ(Text(chart, edges, "LineTooltip", 2), "Coefficient = -12.300\nSignificance = 0.008");
  EXPECT_EQ(Number(chart, "targetPointSource", "X", 0), 5.0);
  EXPECT_EQ(Number(chart, "targetPointSource", "Y", 0), 3.0);
  EXPECT_DOUBLE_EQ(Number(chart, points, "Label_X", 0) - Number(chart, points, "X", 0), -1.0);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  // The legend tells the signs apart; the width range is the edges'.
  EXPECT_EQ(Find(*root, "style", "id", "legendStyle")->Attribute("visible"), "");
  EXPECT_EQ(Find(*root, "legend")->FindDescendant("text")->OwnText(), "Coefficient Estimate");
  EXPECT_EQ(Find(*root, "width")->Attribute("high"), "9");
  EXPECT_EQ(Find(*root, "width")->Attribute("low"), "1");
}

TEST_F(Effects, RedundantAndLateParametersAreLeftOutButAnInterceptBelowCertaintyStays) {
  AddIntercept(1.0, 0.99).fIsRedundant = true;
  AddCovariate("Days", 0, 1.0, 0.5).fIsRedundant = true;
  AddCovariate("Age", 10, 1.0, 0.5);
  AddParameter("Days", 1.0, 0.5);  // no effect index
  AddIntercept(1.0, 1.0);          // certain: left out
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Rows(chart, "pointSource"), 1);
  EXPECT_EQ(Text(chart, "pointSource", "Type", 0), "intercept");
}

TEST_F(Effects, AMissingEstimateReadsPositive) {
  AddIntercept(kSysmis, 0.5);
  AddCovariate("Days", 0, std::nan(""), 0.5);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Text(chart, "edgeSource", "Weight2", 0), "Positive");
  EXPECT_EQ(Text(chart, "edgeSource", "LineTooltip", 0), "Coefficient = .\nSignificance = 0.500");
}

TEST_F(Effects, InteractionsAndUnknownTermsAreTypedByTheirTerms) {
  Stats::ParamStatsData& cross = AddCovariate("Days", 2, 1.0, 0.5);
  cross.fParamLabel = "Days*Age";
  cross.fRegrParam.fvCovariates.push_back({"Age", AGE, 1});
  AddCovariate("Dose", 0, 1.0, 0.5);  // not in the data
  Stats::ParamStatsData& mixed = AddFactor("Group", "2", 2, 1.0, 0.5);
  mixed.fRegrParam.fvCovariates.push_back({"Days", DAYS, 1});
  AddFactor("Sex", "M", 3, 1.0, 0.5).fRegrParam.fvFactors[0].fField = "Gender";
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Text(chart, "pointSource", "Type", 0), "interaction");
  EXPECT_EQ(Text(chart, "pointSource", "PointTooltip", 0), "<empty>");
  EXPECT_EQ(Text(chart, "pointSource", "Type", 1), "unknown");
  EXPECT_EQ(Text(chart, "pointSource", "PointTooltip", 1), "<empty>");
  EXPECT_EQ(Text(chart, "pointSource", "Type", 2), "interaction");
  EXPECT_EQ(Text(chart, "pointSource", "PointTooltip", 2), "Group = 2\nTreatment group = Treated");
  EXPECT_EQ(Text(chart, "pointSource", "Type", 3), "unknown");
  EXPECT_EQ(Text(chart, "pointSource", "PointTooltip", 3), "<empty>");
}

TEST_F(Effects, NothingCollectedSendsNothing) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  AddCovariate("Days", 0, 1.0, 0.5).fIsRedundant = true;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  EXPECT_TRUE(Charts().empty());
}

TEST_F(Effects, TheCoefficientsRangeOfWeightsIncludesTheEffects) {
  AddTest(0, 0.00001);
  AddIntercept(1.0, 0.3);
  AddCovariate("Days", 0, 1.0, 0.04);
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  chart.createFixedEffectsChart();
  chart.createFixedCoefficientsChart();
  ASSERT_EQ(Charts().size(), 2u);
  const std::unique_ptr<XMarkupNode> root = Markup(*Charts()[1]);
  EXPECT_EQ(Find(*root, "width")->Attribute("high"), "9");
  EXPECT_EQ(Find(*root, "width")->Attribute("low"), "1");
  EXPECT_EQ(chart.GetData().fMinWeight, 1.0);
  EXPECT_EQ(chart.GetData().fMaxWeight, 9.0);
}
