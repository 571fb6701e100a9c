// The templates after the composer's text operations: each edge case the
// operations have still gives chart markup that draws, and draws what the
// operation meant.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>

#include "ChartTemplatePatches.h"
#include "ChartTestSupport.h"
#include "host/viz/XViZTemplate.h"

namespace P = ChartTemplatePatches;
using ChartTestSupport::Count;
using ChartTestSupport::DataBuilder;
using ChartTestSupport::Drawn;
using ChartTestSupport::TemplateText;

namespace {

std::string Diagram(unsigned long count) {
  std::string text = TemplateText("GLMMFixedCoefficients");
  P::DiagramFrame(text, count, "Fixed Effects");
  return text;
}

// Terms on the arc as the diagram places them, with their edges.
OmChartData DiagramData(unsigned long count) {
  DataBuilder data;
  data.Number("targetPointSource", "X", 0, static_cast<double>(count));
  data.Number("targetPointSource", "Y", 0, (count + 1) * 0.5);
  data.Text("targetPointSource", "Nodes", 0, "score");
  const double n = static_cast<double>(count);
  const double mid = (n + 1) * 0.5;
  for (unsigned long row = 0; row < count; ++row) {
    const double i = n - static_cast<double>(row);
    const double x = n - std::sqrt(n * n - 4 * (i - mid) * (i - mid));
    const long r = static_cast<long>(row);
    data.Number("pointSource", "X", r, x).Number("pointSource", "Y", r, i);
    data.Number("pointSource", "Label_X", r, x - 0.2 * n).Number("pointSource", "Label_Y", r, i);
    data.Text("pointSource", "Nodes", r, "term" + std::to_string(row)).Text("pointSource", "Type", r, "continuous");
    data.Number("edgeSource", "FromX", r, x).Number("edgeSource", "FromY", r, i);
    data.Number("edgeSource", "ToX", r, n).Number("edgeSource", "ToY", r, mid);
    data.Number("edgeSource", "Weight", r, 1 + static_cast<double>(row % 9));
    data.Text("edgeSource", "Weight2", r, row % 2 == 0 ? "Positive" : "Negative");
  }
  return data.Get();
}

std::string Converted(XViZTemplate& chart) {
  std::string text;
  std::string other;
  EXPECT_TRUE(chart.convert(text, other));
  return text;
}

}  // namespace

TEST(TemplatePatches, ADiagramWithoutTermsHasItsFixedFrame) {
  const std::string text = Diagram(0);
  EXPECT_NE(text.find("max=\"2\" min=\"0\" />"), std::string::npos);
  EXPECT_NE(text.find("min=\"1\" max=\"1\"/>"), std::string::npos);
  EXPECT_EQ(text.find("margin-bottom"), std::string::npos);
  const std::string svg = Drawn(text, DiagramData(0));
  EXPECT_NE(svg.find(">Fixed Effects</text>"), std::string::npos);
  EXPECT_EQ(Count(svg, "<line x1"), 0);
}

TEST(TemplatePatches, TheBottomMarginComesWithTwoToEightTerms) {
  for (unsigned long count : {1ul, 2ul, 8ul, 9ul}) {
    const std::string text = Diagram(count);
    const bool margin = text.find("id=\"graphStyle\" margin-bottom=\"30px\" ") != std::string::npos;
    EXPECT_EQ(margin, count >= 2 && count <= 8) << count;
    const std::string svg = Drawn(text, DiagramData(count));
    EXPECT_EQ(Count(svg, "class=\"point-label\""), static_cast<int>(count)) << count;
    EXPECT_EQ(Count(svg, ">term"), static_cast<int>(count)) << count;
    EXPECT_EQ(Count(svg, "<line x1"), static_cast<int>(count)) << count;  // one edge per term
  }
}

TEST(TemplatePatches, TheDiagramsLegendIsHiddenOrTitled) {
  std::string hidden = Diagram(3);
  P::DiagramLegend(hidden, true, true, 2, 7, "Coefficient Estimate");
  EXPECT_NE(hidden.find("<style visible=\"false\"  id=\"legendStyle\"/>"), std::string::npos);
  EXPECT_NE(hidden.find("high=\"7\" low=\"2\""), std::string::npos);
  EXPECT_EQ(Drawn(hidden, DiagramData(3)).find("class=\"legend\""), std::string::npos);

  std::string shown = Diagram(3);
  P::DiagramLegend(shown, false, true, 1, 9, "Estimated coefficient");
  const std::string svg = Drawn(shown, DiagramData(3));
  EXPECT_NE(svg.find("class=\"legend\""), std::string::npos);
  EXPECT_NE(svg.find(">Estimated coefficient</text>"), std::string::npos);
  EXPECT_NE(svg.find(">Positive</text>"), std::string::npos);
}

TEST(TemplatePatches, PredictedByObservedHidesItsLegendBelowAHundredRecords) {
  for (double total : {99.0, 100.0}) {
    XViZTemplate chart;
    chart.setTemplateInternalName("GLMMPredictedByObserved");
    chart.addVariable("X", "X", false, "", "source0", nullptr, "Observed");
    chart.addVariable("Y", "Y", false, "", "source0", nullptr, "Predicted");
    chart.addVariable("Transparency", "Frequency", false, "", "source0", nullptr, "Frequency");
    chart.addLabel(0, "Predicted by Observed");
    std::string text = Converted(chart);
    P::PatchPredictedByObserved(text, 10.5, 40, total);
    EXPECT_NE(text.find("min=\"10.5\" max=\"40\""), std::string::npos);
    DataBuilder data;
    for (long row = 0; row < 5; ++row) {
      data.Number("source0", "X", row, 12 + 5 * row).Number("source0", "Y", row, 13 + 4.5 * row);
      data.Number("source0", "Frequency", row, 1 + row);
    }
    const std::string svg = Drawn(text, data.Get());
    EXPECT_EQ(svg.find("class=\"legend\"") != std::string::npos, total >= 100) << total;
    EXPECT_EQ(Count(svg, "<circle"), 5);
  }
}

TEST(TemplatePatches, TheHistogramTakesItsBinsAndDistribution) {
  const struct {
    const char* fWord;
    double fParameter;
    double fSecondary;
    bool fHasSecondary;
    bool fCurve;
  } cases[] = {{"normal", 0, 0, false, true},
               {"poisson", 4.5, 0, false, true},
               {"gamma", 2.0, 0.5, true, true},
               {"binomialnegative", 3.0, 0.4, true, true},
               {"gaussianinverse", 5.0, 12.0, true, true},
               // Parameters the composer has not set yet: written as they are, no curve.
               {"gamma", -1.7976931348623157e308, -1.7976931348623157e308, true, false}};
  for (const auto& c : cases) {
    XViZTemplate chart;
    chart.setTemplateInternalName("GLMMHistogram");
    chart.addVariable("X", "X", false, "", "source0", nullptr, "Count of events");
    chart.addVariable("Y", "Y", false, "", "source0", nullptr, nullptr);
    std::string text = Converted(chart);
    P::PatchHistogram(text, 6, c.fWord, c.fParameter, c.fSecondary, c.fHasSecondary);
    EXPECT_NE(text.find("<binStatistic binCount=\"6\" />"), std::string::npos);
    EXPECT_NE(text.find(std::string("distribution=\"") + c.fWord + "\""), std::string::npos);
    DataBuilder data;
    const double frequencies[] = {3, 9, 14, 11, 6, 2};
    for (long row = 0; row < 6; ++row)
      data.Number("source0", "X", row, 1 + 2 * row).Number("source0", "Y", row, frequencies[row]);
    const std::string svg = Drawn(text, data.Get());
    EXPECT_EQ(Count(svg, "<rect x="), 6) << c.fWord;  // one bar per saved bin
    EXPECT_EQ(svg.find("class=\"mark line\"") != std::string::npos && svg.find("<polyline") != std::string::npos,
              c.fCurve)
        << c.fWord;
  }
}

TEST(TemplatePatches, MarginalMeansOfOneEffectHaveNoLegend) {
  for (bool second : {false, true}) {
    XViZTemplate chart;
    chart.setTemplateInternalName("GLMMEmMeans");
    chart.addLabel(0, "score by group");
    chart.addVariable("effect1", "effect1", true, "effect1Label", "source0", nullptr, "Group");
    chart.addVariable("effect2", "effect2", true, "", "source0", nullptr, "Dose");
    chart.addVariable("target", "target", false, "", "source0", nullptr, "score");
    chart.addVariable("confMargin", "confMargin", false, "", "source0", nullptr, "score");
    std::string text = Converted(chart);
    P::PatchEmMeans(text, "score &amp; more", second);
    DataBuilder data;
    for (long r = 0; r < 4; ++r) {
      for (long k = 0; k < 2; ++k) {
        data.Text("source0", "effect1", 2 * r + k, r < 2 ? "a" : "b").Number("source0", "target", 2 * r + k, 10 + r);
        if (second) data.Text("source0", "effect2", 2 * r + k, r % 2 == 0 ? "low" : "high");
      }
      data.Number("source0", "confMargin", 2 * r, 9 + r).Number("source0", "confMargin", 2 * r + 1, 11 + r);
    }
    const std::string svg = Drawn(text, data.Get());
    EXPECT_EQ(svg.find("class=\"legend\"") != std::string::npos, second);
    EXPECT_NE(svg.find(">score &amp; more</text>"), std::string::npos);  // the y axis label, escaped once
    EXPECT_NE(svg.find(">Group</text>"), std::string::npos);             // the x axis label from its slot
  }
}

TEST(TemplatePatches, CustomEffectsCutFacetsColourAndLegend) {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMCustomEffects");
  for (const char* role : {"targetValue", "effect1", "effect2", "effect3", "confMargin"}) {
    const bool categorical = std::string(role).rfind("effect", 0) == 0;
    chart.addVariable(role, role, categorical, "", "source_0", nullptr, categorical ? nullptr : "score");
  }
  const std::string converted = Converted(chart);
  // Without data (no estimates index) the chart is empty but whole.
  std::string empty = converted;
  P::PatchCustomEffects(empty, "", "Group", "Estimated Mean", false, false);
  EXPECT_NE(Drawn(empty).find(">Estimates</text>"), std::string::npos);

  std::string cut = converted;
  P::PatchCustomEffects(cut, "Continuous predictors fixed at age = 30", "Group", "Estimated Mean", true, true);
  EXPECT_EQ(cut.find("<faceting"), std::string::npos);
  EXPECT_EQ(cut.find("<color"), std::string::npos);
  EXPECT_EQ(cut.find("<legend"), std::string::npos);
  EXPECT_NE(cut.find("width=\"99%\""), std::string::npos);
  DataBuilder data;
  for (long r = 0; r < 3; ++r) {
    for (long k = 0; k < 2; ++k) {
      data.Number("source_0", "effect1", 2 * r + k, r).Number("source_0", "targetValue", 2 * r + k, 5 + r);
      data.Text("source_0", "effect2", 2 * r + k, "").Text("source_0", "effect3", 2 * r + k, "");
    }
    data.Number("source_0", "confMargin", 2 * r, 4 + r).Number("source_0", "confMargin", 2 * r + 1, 6 + r);
  }
  const std::string svg = Drawn(cut, data.Get());
  EXPECT_EQ(Count(svg, "class=\"panel\""), 1);
  EXPECT_NE(svg.find(">Continuous predictors fixed at age = 30</text>"), std::string::npos);
  EXPECT_NE(svg.find("<title>Group: 0\nEstimated Mean: 5</title>"), std::string::npos);
}

TEST(TemplatePatches, LineGuidesFillOneSlotPerPanelAndDropTheRest) {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMSimpleContrasts");
  for (const char* role : {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"}) {
    chart.addVariable(role, role, std::string(role) != "value" && std::string(role) != "confMargin", "", "source",
                      nullptr, "");
  }
  const std::string converted = Converted(chart);
  DataBuilder data;
  const char* panels[] = {"A", "B", "C"};
  for (long p = 0; p < 3; ++p) {
    for (long level = 0; level < 2; ++level) {
      const long r = 2 * p + level;
      for (long k = 0; k < 2; ++k) {
        data.Number("source", "category", 2 * r + k, level + 1).Number("source", "type", 2 * r + k, level);
        data.Text("source", "facet1", 2 * r + k, panels[p]).Text("source", "tooltip", 2 * r + k, "tip");
      }
      data.Number("source", "value", 2 * r, 10 * (p + 1))
          .Number("source", "value", 2 * r + 1, 10 * (p + 1) + 3 - level);
      data.Number("source", "confMargin", 2 * r, 10 * (p + 1) + 1)
          .Number("source", "confMargin", 2 * r + 1, 10 * (p + 1) + 4);
    }
  }
  // No panels: every slot goes.
  std::string none = converted;
  P::UpdateLineGuides(none, {});
  EXPECT_EQ(none.find("<lineGuide"), std::string::npos);
  P::RemoveFaceting(none);
  EXPECT_EQ(Count(Drawn(none, data.Get()), "class=\"guide\""), 0);

  // Three panels of one facet: one guide in each, at its own height.
  std::string three = converted;
  std::map<std::string, P::Deviation> deviations;
  for (long p = 0; p < 3; ++p) deviations[panels[p]] = {panels[p], "", 10.0 * (p + 1)};
  P::UpdateLineGuides(three, deviations);
  EXPECT_EQ(Count(three, "<lineGuide"), 3);
  EXPECT_NE(three.find("hideWhen=\"facet1!=&quot;B&quot;\""), std::string::npos);
  P::RemoveFacet2(three);
  EXPECT_EQ(Count(three, "<variableReference"), 1);
  EXPECT_EQ(Count(three, "<facetLevel "), 1);
  const std::string svg = Drawn(three, data.Get());
  EXPECT_EQ(Count(svg, "class=\"panel\""), 3);
  EXPECT_EQ(Count(svg, "class=\"guide\""), 3);
}

TEST(TemplatePatches, ThePairwiseNetworkCutsTheFacetsItLacks) {
  DataBuilder data;
  for (long i = 0; i < 3; ++i) {
    data.Number("nodeSource_1", "node", i, i + 1).Text("nodeSource_1", "facet1", i, "f");
  }
  data.Number("edgeSource_1", "from", 0, 1).Number("edgeSource_1", "to", 0, 2).Number("edgeSource_1", "weight", 0, 1.2);
  data.Number("edgeSource_1", "type", 0, 1).Text("edgeSource_1", "facet1", 0, "f");
  data.Number("edgeSource_1", "from", 1, 2).Number("edgeSource_1", "to", 1, 3).Number("edgeSource_1", "weight", 1, 4);
  data.Number("edgeSource_1", "type", 1, 0).Text("edgeSource_1", "facet1", 1, "f");

  std::string one = TemplateText("GLMMPairwiseContrasts");
  P::PatchPairwiseTexts(one, "Pairwise Contrasts", "Target: score", "");
  P::RemoveFacet2(one);
  EXPECT_EQ(Count(one, "<variableReference"), 1);
  std::string svg = Drawn(one, data.Get());
  EXPECT_EQ(Count(svg, "class=\"panel\""), 1);
  EXPECT_EQ(Count(svg, "class=\"panel-label\""), 1);
  EXPECT_NE(svg.find(">Target: score</text>"), std::string::npos);

  std::string none = TemplateText("GLMMPairwiseContrasts");
  P::RemoveFaceting(none);
  EXPECT_EQ(none.find("<faceting"), std::string::npos);
  EXPECT_EQ(none.find("facetLevel"), std::string::npos);
  svg = Drawn(none, data.Get());
  EXPECT_EQ(Count(svg, "class=\"panel-label\""), 0);
  EXPECT_EQ(Count(svg, "<circle"), 3);  // the nodes; the legend's swatches are squares
}
