// The charts as drawn: whatever the composer cut from or patched into a
// template, the chart library draws what the composer meant.
#include <algorithm>
#include <string>

#include "ChartsTestSupport.h"

using namespace charts_test;

namespace {

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

// The drawing of the histogram in a diagram's target node.
std::string EmbeddedDrawing(const OmChart& chart) {
  const std::size_t mark = chart.fSvg.find("class=\"embedded-chart\"");
  if (mark == std::string::npos) return std::string();
  const std::size_t start = chart.fSvg.rfind("<svg", mark);
  return chart.fSvg.substr(start, chart.fSvg.find("</svg>", mark) - start);
}

class Drawing : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    Settings();
    AddFixedEffect({DAYS});
    AddFixedEffect({GROUP});
  }
  // A coefficient per term, alternately positive and negative.
  void Coefficients(int count) {
    Stats::ParamCollectData& params = *fStats.CreateParamCollect();
    params.fvFixedParamEstim.resize(1);
    for (int i = 0; i < count; ++i) {
      Stats::ParamStatsData param;
      param.fParamLabel = "term" + std::to_string(i);
      param.fEstimate = i % 2 == 0 ? 1.5 : -1.5;
      param.fSig = 0.001 * i;
      param.fStatistic = {"fixedEffectIndex", "0"};
      param.fStatisticValue = 0;
      params.fvFixedParamEstim[0].fvParamStats.push_back(param);
    }
  }
  // Contrasts of the levels 1 and 2 of Group with level 3 (simple) or with
  // the next level (pairwise), in `panels` panels of Sex, or in one panel
  // without facets for 0.
  Stats::EMMEANSCustomData Panels(int kind, int panels) {
    Stats::EMMEANSCustomData custom;
    custom.fEMMEANSIndex = 0;
    custom.fvOverallTests.resize(1);
    const char* levels[] = {"F", "M", "X"};
    std::vector<std::string> facet, group, reference, estimates, sigs, lower, upper, meanFacet, meanGroup, means;
    for (int p = 0; p < std::max(panels, 1); ++p) {
      for (int level = 1; level <= 3; ++level) {
        meanFacet.push_back(levels[p]);
        meanGroup.push_back(std::to_string(level));
        means.push_back(std::to_string(10 * (p + 1) + level));
      }
      for (int level = 1; level <= 2; ++level) {
        facet.push_back(levels[p]);
        group.push_back(std::to_string(level));
        reference.push_back(kind == 0 ? std::to_string(level + 1) : "3");
        estimates.push_back(std::to_string(level - 3));
        sigs.push_back(level == 1 ? "0.01" : "0.5");
        lower.push_back(std::to_string(level - 4));
        upper.push_back(std::to_string(level - 2));
      }
    }
    custom.fEstimates.fvGroup = {Array("Group", meanGroup)};
    if (panels > 0) custom.fEstimates.fvGroup.push_back(Array("Sex", meanFacet));
    custom.fEstimates.fMean = Array("", means);
    Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
    contrasts.fContrastKind = kind;
    contrasts.fAdjustedSigLevel = 0.05;
    contrasts.fvGroup = {Array("Group", group), Array("Group", reference)};
    if (panels > 0) contrasts.fvGroup.insert(contrasts.fvGroup.begin(), Array("Sex", facet));
    contrasts.fContrastEstimate = Array("", estimates);
    contrasts.fAdjustedSig = Array("", sigs);
    contrasts.fConfIntervalLower = Array("", lower);
    contrasts.fConfIntervalUpper = Array("", upper);
    return custom;
  }
};

}  // namespace

TEST_F(Drawing, ADiagramWithoutTestsHasItsFrameAndNoEdges) {
  Diagnostics();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
  const std::string& svg = OnlyChart().fSvg;
  EXPECT_NE(svg.find(">Fixed Effects</text>"), std::string::npos);
  EXPECT_EQ(Count(svg, "<line x1"), 0);
}

TEST_F(Drawing, EachTermHasItsNodeLabelAndEdge) {
  for (int count : {1, 2, 8, 9}) {
    Coefficients(count);
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
    const std::string& svg = Charts().back()->fSvg;
    EXPECT_EQ(Count(svg, "class=\"point-label\""), count) << count;
    EXPECT_EQ(Count(svg, ">term"), count) << count;
    EXPECT_EQ(Count(svg, "<line x1"), count) << count;
  }
}

TEST_F(Drawing, TheEffectsDiagramHasNoLegendAndTheCoefficientsOneOfSigns) {
  Diagnostics();
  fStats.CreateEffectTest()->fvFixedEffects = {{0, 3, 5.0, 1.0, 20.0, 0.001}, {1, 3, 5.0, 1.0, 20.0, 0.3}};
  Coefficients(3);
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  chart.createFixedEffectsChart();
  chart.createFixedCoefficientsChart();
  ASSERT_EQ(Charts().size(), 2u);
  EXPECT_EQ(Charts()[0]->fSvg.find("class=\"legend\""), std::string::npos);
  const std::string& svg = Charts()[1]->fSvg;
  EXPECT_NE(svg.find("class=\"legend\""), std::string::npos);
  EXPECT_NE(svg.find(">Coefficient Estimate</text>"), std::string::npos);
  EXPECT_NE(svg.find(">Positive</text>"), std::string::npos);
  EXPECT_NE(svg.find(">Negative</text>"), std::string::npos);
}

TEST_F(Drawing, PredictedByObservedShowsItsLegendFromAHundredRecords) {
  for (int total : {99, 100}) {
    Stats::PredByObservData& points = Diagnostics().fPredByObserv;
    points.fDescription = "observedByPredicted";
    points.fTotalFreq = total;
    points.fvObserved = {12, 17, 22, 27, 32};
    points.fvPredicted = {13, 17.5, 22, 26.5, 31};
    points.fvFrequency = {1, 2, 3, 4, 5};
    points.fMinValue = 10.5;
    points.fMaxValue = 40;
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createPredictedByObservedChart();
    const std::string& svg = Charts().back()->fSvg;
    EXPECT_EQ(svg.find("class=\"legend\"") != std::string::npos, total >= 100) << total;
    EXPECT_EQ(Count(svg, "<circle"), 5);
  }
}

TEST_F(Drawing, TheHistogramHasABarPerBinAndTheFittedCurve) {
  for (Stats::EnumDistTypes distribution : {Stats::NORMAL, Stats::POISSON, Stats::GAMMA, Stats::NEGBIN, Stats::IGAUSS}) {
    fStats.CreateEffectTest()->fvFixedEffects = {{0, 3, 5.0, 1.0, 20.0, 0.001}};
    TargetHistogram(distribution, {1, 3, 5, 7, 9, 11}, {3, 9, 14, 11, 6, 2});
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedEffectsChart();
    const std::string histogram = EmbeddedDrawing(*Charts().back());
    EXPECT_EQ(Count(histogram, "<rect x="), 6) << distribution;
    EXPECT_NE(histogram.find("<polyline"), std::string::npos) << distribution;
  }
  // Parameters not stored yet draw no curve.
  Coefficients(2);
  TargetHistogram(Stats::GAMMA, {1, 3, 5, 7, 9, 11}, {3, 9, 14, 11, 6, 2});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createFixedCoefficientsChart();
  const std::string histogram = EmbeddedDrawing(*Charts().back());
  EXPECT_EQ(Count(histogram, "<rect x="), 6);
  EXPECT_EQ(histogram.find("<polyline"), std::string::npos);
}

TEST_F(Drawing, MeansOfOneFactorHaveNoLegendAndTheTargetLabelIsEscapedOnce) {
  fData.GetVariable(REACTION)->SetLabel("Reaction & time");
  for (bool second : {false, true}) {
    fStats.DestroyEMMEANSSignifCollect();
    Stats::EMMEANSEstimatesData means;
    means.fvGroup = {Array("Group", {"1", "1", "2", "2"})};
    if (second) means.fvGroup.push_back(Array("Sex", {"F", "M", "F", "M"}));
    means.fMean = Array("", {"10", "11", "12", "13"});
    means.fConfIntervalLower = Array("", {"9", "10", "11", "12"});
    means.fConfIntervalUpper = Array("", {"11", "12", "13", "14"});
    fStats.CreateEMMEANSSignifCollect()->push_back(means);
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createEMMeansChart();
    const std::string& svg = Charts().back()->fSvg;
    EXPECT_EQ(svg.find("class=\"legend\"") != std::string::npos, second);
    EXPECT_NE(svg.find(">Reaction &amp; time</text>"), std::string::npos);
    EXPECT_NE(svg.find(">Treatment group</text>"), std::string::npos);
    EXPECT_NE(svg.find(">Treated</text>"), std::string::npos);
  }
}

TEST_F(Drawing, CustomEffectsOfOneFactorHaveOnePanelWithoutColours) {
  Stats::EMMEANSCustomData custom;
  custom.fEMMEANSIndex = -1;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  EXPECT_NE(OnlyChart().fSvg.find(">Estimates</text>"), std::string::npos);

  custom.fEMMEANSIndex = 0;
  custom.fEstimates.fvGroup = {Array("Group", {"1", "2"})};
  custom.fEstimates.fMean = Array("", {"5", "6"});
  custom.fEstimates.fConfIntervalLower = Array("", {"4", "5"});
  custom.fEstimates.fConfIntervalUpper = Array("", {"6", "7"});
  custom.fvFieldValues.push_back({"Age", CFStatVariableValue()});
  custom.fvFieldValues.back().fValue.SetCompleteValue("30", *fData.GetVariable(AGE));
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createCustomEffectsChart(custom);
  const std::string& svg = Charts().back()->fSvg;
  EXPECT_EQ(Count(svg, "class=\"panel\""), 1);
  EXPECT_EQ(svg.find("class=\"legend\""), std::string::npos);
  EXPECT_NE(svg.find(">Continuous predictors are fixed at the following values: Age = 30.0000</text>"),
            std::string::npos);
  EXPECT_NE(svg.find("<title>Treatment group: Control\nEstimated Mean: 5.00</title>"), std::string::npos);
}

TEST_F(Drawing, EachPanelOfContrastsHasItsOwnReferenceLine) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Panels(2, 3));
  const std::string& svg = OnlyChart().fSvg;
  EXPECT_EQ(Count(svg, "class=\"panel\""), 3);
  EXPECT_EQ(Count(svg, "class=\"guide\""), 3);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Panels(1, 0));
  EXPECT_EQ(Count(Charts().back()->fSvg, "class=\"panel\""), 1);
  EXPECT_EQ(Count(Charts().back()->fSvg, "class=\"guide\""), 1);
}

TEST_F(Drawing, ThePairwiseNetworkHasAPanelPerFacetLevelAndNoneWithoutFacets) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Panels(0, 1));
  std::string svg = OnlyChart().fSvg;
  EXPECT_EQ(Count(svg, "class=\"panel\""), 1);
  EXPECT_EQ(Count(svg, "class=\"panel-label\""), 1);
  EXPECT_NE(svg.find(">Target: Reaction time (ms)</text>"), std::string::npos);
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Panels(0, 0));
  svg = Charts().back()->fSvg;
  EXPECT_EQ(Count(svg, "class=\"panel-label\""), 0);
  EXPECT_EQ(Count(svg, "<circle"), 3);  // the nodes; the legend's swatches are squares
}
