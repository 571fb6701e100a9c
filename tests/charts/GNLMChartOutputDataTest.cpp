// What the charts share: the target, the diagram's layout, weights and
// tooltip, its finishing from the template, and the cutting and filling of
// template text.
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include "ChartsTestSupport.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ChartResources.h"
#include "host/viz/XViZTemplate.h"

using namespace charts_test;
using Data = GNLMChartOutput::Data;

namespace {

class ChartData : public ChartTest {
 protected:
  // The diagram as SendChart finishes it for `count` nodes, with no data.
  const OmChart& Diagram(unsigned long count, bool hideLegend = true) {
    Settings();
    GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
    VarDataProcessor proc;
    chart.GetData().SendChart(count, "Fixed Effects", proc, hideLegend);
    return *Charts().back();
  }
};

std::string SimpleContrastsTemplate() {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMSimpleContrasts");
  for (const char* name : {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"}) {
    chart.addVariable(name, name, true, "", "source", nullptr, "");
  }
  std::string text;
  std::string other;
  chart.convert(text, other);
  return text;
}

int Occurrences(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

TEST_F(ChartData, TheTargetIsNamedLabelledAndFormattedFromTheData) {
  Settings();
  fData.GetVariable(REACTION)->SetLabel("Time & <effort>");
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const Data& data = chart.GetData();
  EXPECT_EQ(data.fTargetIndex, REACTION);
  EXPECT_EQ(data.fTargetName, "Reaction");
  EXPECT_EQ(data.fTargetLabel, "Time &amp; &lt;effort&gt;");
  EXPECT_TRUE(data.fTargetHasLabel);
  EXPECT_EQ(data.fTargetFormat, ZORV_Format(ZORV_Format::F, 8, 2));
  EXPECT_EQ(data.fSourceName, "source0");
  EXPECT_EQ(data.fPointSourceName, "pointSource");
  EXPECT_EQ(data.fEdgeSourceName, "edgeSource");
  EXPECT_EQ(data.fSysmis, -1.7976931348623157e308);
  EXPECT_FALSE(data.fWeightRangeSet);
  EXPECT_EQ(data.fMinWeight, 9.0);
  EXPECT_EQ(data.fMaxWeight, 1.0);
  for (double parameter : {data.fDistMean, data.fDistShape, data.fDistRate, data.fDistR, data.fDistP}) {
    EXPECT_EQ(parameter, kSysmis);
  }
}

TEST_F(ChartData, ATargetWithoutLabelIsShownByItsNameAndWithoutSettingsThereIsNone) {
  {
    GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
    EXPECT_EQ(chart.GetData().fTargetIndex, -1);
    EXPECT_EQ(chart.GetData().fTargetName, "");
    EXPECT_EQ(chart.GetData().fTargetFormat, ZORV_Format(ZORV_Format::F, 40, 2));
  }
  Settings().fTargetIndex = SEX;
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  EXPECT_EQ(chart.GetData().fTargetName, "Sex");
  EXPECT_EQ(chart.GetData().fTargetLabel, "Sex");
  EXPECT_FALSE(chart.GetData().fTargetHasLabel);
}

TEST_F(ChartData, OneNodeStandsLeftOfTheTarget) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  unsigned long n = 0;
  const std::vector<Data::PointCalc> points = chart.GetData().getPoints(1, n);
  EXPECT_EQ(n, 1u);
  ASSERT_EQ(points.size(), 1u);
  EXPECT_EQ(points[0].x, 0.0);
  EXPECT_EQ(points[0].y, 1.0);
  EXPECT_EQ(points[0].toX, 1.0);
  EXPECT_EQ(points[0].toY, 1.0);
}

TEST_F(ChartData, ThreeNodesStandOnAnArcTopFirst) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  unsigned long n = 0;
  const std::vector<Data::PointCalc> points = chart.GetData().getPoints(3, n);
  EXPECT_EQ(n, 3u);
  ASSERT_EQ(points.size(), 3u);
  const double outer = 3.0 - std::sqrt(5.0);
  EXPECT_DOUBLE_EQ(points[0].x, outer);
  EXPECT_EQ(points[1].x, 0.0);
  EXPECT_DOUBLE_EQ(points[2].x, outer);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(points[i].y, 3.0 - static_cast<double>(i));
    EXPECT_EQ(points[i].toX, 3.0);
    EXPECT_EQ(points[i].toY, 2.0);
  }
}

TEST_F(ChartData, NoNodesHaveNoPlaces) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  unsigned long n = 7;
  EXPECT_TRUE(chart.GetData().getPoints(0, n).empty());
  EXPECT_EQ(n, 1u);
}

TEST_F(ChartData, TheEdgeWeightGrowsAsTheSignificanceFalls) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const Data& data = chart.GetData();
  EXPECT_EQ(data.getWeight(0.05), 3.0);
  EXPECT_EQ(data.getWeight(0.0001), 8.0);
  EXPECT_EQ(data.getWeight(std::numeric_limits<double>::quiet_NaN()), 1.0);
  EXPECT_EQ(data.getWeight(0.0), 9.0);
  EXPECT_EQ(data.getWeight(0.00049), 8.0);
  EXPECT_EQ(data.getWeight(0.0005), 7.0);
  EXPECT_EQ(data.getWeight(0.004), 6.0);
  EXPECT_EQ(data.getWeight(0.009), 5.0);
  EXPECT_EQ(data.getWeight(0.049), 4.0);
  EXPECT_EQ(data.getWeight(0.19), 2.0);
  EXPECT_EQ(data.getWeight(0.2), 1.0);
  EXPECT_EQ(data.getWeight(1.0), 1.0);
}

TEST_F(ChartData, TheTargetTooltipNamesTheDistributionAndTheLink) {
  Settings();
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  EXPECT_EQ(chart.GetData().getTooltip(),
            "Reaction\nReaction time (ms)\nProbability distribution: Normal\nLink function: Identity");
}

TEST_F(ChartData, APowerLinkShowsItsParameter) {
  Settings().fDistribution = Stats::GAMMA;
  Settings().fLinkFunction = Stats::POWER;
  Settings().fLinkParamText = "-1";
  fData.GetVariable(REACTION)->SetLabel("");
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  EXPECT_EQ(chart.GetData().getTooltip(), "Reaction\nProbability distribution: Gamma\nLink function: Power (-1)");
}

TEST_F(ChartData, ATooltipKeepsItsBackslashesUnlessOneStandsBeforeAColon) {
  Settings();
  fData.GetVariable(REACTION)->SetLabel("a\\b");
  {
    GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
    EXPECT_EQ(chart.GetData().getTooltip(),
              "Reaction\na\\b\nProbability distribution: Normal\nLink function: Identity");
  }
  fData.GetVariable(REACTION)->SetLabel("a\\b\\: c");
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  EXPECT_EQ(chart.GetData().getTooltip(), "Reaction\nab: c\nProbability distribution: Normal\nLink function: Identity");
}

TEST_F(ChartData, TheTargetNodeStandsRightOfTheMiddleNode) {
  Settings();
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  VarDataProcessor proc;
  chart.GetData().setTargetPointSource(proc, 4);
  VarDataProcessor::VarInfo info;
  double value = 0.0;
  std::string text;
  ASSERT_TRUE(proc.FindVariable("targetPointSource", "X", &info));
  ASSERT_TRUE(proc.GetNumericValue(info, 0, value));
  EXPECT_EQ(value, 4.0);
  ASSERT_TRUE(proc.FindVariable("targetPointSource", "Y", &info));
  ASSERT_TRUE(proc.GetNumericValue(info, 0, value));
  EXPECT_EQ(value, 2.5);
  ASSERT_TRUE(proc.FindVariable("targetPointSource", "Type", &info));
  ASSERT_TRUE(proc.GetStringValue(info, 0, text));
  EXPECT_EQ(text, "target");
  ASSERT_TRUE(proc.FindVariable("targetPointSource", "Nodes", &info));
  ASSERT_TRUE(proc.GetStringValue(info, 0, text));
  EXPECT_EQ(text, "Reaction");
  ASSERT_TRUE(proc.FindVariable("targetPointSource", "PointTooltip", &info));
  ASSERT_TRUE(proc.GetStringValue(info, 0, text));
  EXPECT_EQ(text, chart.GetData().getTooltip());

  // Without nodes the target has no place.
  VarDataProcessor empty;
  chart.GetData().setTargetPointSource(empty, 0);
  ASSERT_TRUE(empty.FindVariable("targetPointSource", "X", &info));
  EXPECT_FALSE(empty.IsValueSet(info, 0));
}

TEST_F(ChartData, TheNodeAndEdgeSourcesAreDeclaredInOrder) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  VarDataProcessor proc;
  chart.GetData().setPointEdgeSource(proc);
  const int points = proc.FindDataSource("pointSource");
  const int edges = proc.FindDataSource("edgeSource");
  ASSERT_GE(points, 0);
  ASSERT_GE(edges, 0);
  const char* pointNames[] = {"X", "Y", "Label_X", "Label_Y", "Type", "Nodes", "PointTooltip"};
  const char* edgeNames[] = {"FromX", "FromY", "ToX", "ToY", "Weight", "Weight2", "LineTooltip"};
  ASSERT_EQ(proc.GetVariableCount(points), 7);
  ASSERT_EQ(proc.GetVariableCount(edges), 7);
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(proc.GetVariableName(points, i), pointNames[i]);
    EXPECT_EQ(proc.GetVariableName(edges, i), edgeNames[i]);
  }
  EXPECT_EQ(proc.GetRowCount(points), 0);
  EXPECT_EQ(proc.GetRowCount(edges), 0);
}

TEST_F(ChartData, ADiagramWithoutNodesHasTheSmallestRangesFromZero) {
  const OmChart& chart = Diagram(0);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  ASSERT_TRUE(root);
  const XMarkupNode* x = Find(*root, "axis", "dimension", "x");
  const XMarkupNode* y = Find(*root, "axis", "dimension", "y");
  ASSERT_NE(x, nullptr);
  ASSERT_NE(y, nullptr);
  EXPECT_EQ(x->Attribute("max"), "2");
  EXPECT_EQ(x->Attribute("min"), "0");
  EXPECT_EQ(y->Attribute("max"), "1");
  EXPECT_EQ(chart.fTitle, "Fixed Effects");
  EXPECT_EQ(Find(*root, "title")->FindDescendant("text")->OwnText(), "Fixed Effects");
  EXPECT_FALSE(Find(*root, "style", "id", "graphStyle")->HasAttribute("margin-bottom"));
}

TEST_F(ChartData, TheRangesGrowWithTheNodesAndAFewNodesGetABottomMargin) {
  struct Case {
    unsigned long fCount;
    const char* fMaxX;
    const char* fMaxY;
    bool fMargin;
  };
  const Case cases[] = {{1, "2", "1", false}, {2, "2.66667", "2", true}, {8, "10.6667", "8", true},
                        {9, "12", "9", false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fCount);
    const OmChart& chart = Diagram(c.fCount);
    const std::unique_ptr<XMarkupNode> root = Markup(chart);
    ASSERT_TRUE(root);
    EXPECT_EQ(Find(*root, "axis", "dimension", "x")->Attribute("max"), c.fMaxX);
    EXPECT_FALSE(Find(*root, "axis", "dimension", "x")->HasAttribute("min"));
    EXPECT_EQ(Find(*root, "axis", "dimension", "y")->Attribute("max"), c.fMaxY);
    const XMarkupNode* style = Find(*root, "style", "id", "graphStyle");
    EXPECT_EQ(style->Attribute("margin-bottom"), c.fMargin ? "30px" : "");
  }
}

TEST_F(ChartData, TheLegendIsHiddenOrTitledAndTheWeightRangeWritten) {
  {
    const OmChart& hidden = Diagram(2, true);
    const std::unique_ptr<XMarkupNode> root = Markup(hidden);
    EXPECT_EQ(Find(*root, "style", "id", "legendStyle")->Attribute("visible"), "false");
    // No edge was written: the template's range stays.
    EXPECT_EQ(Find(*root, "width")->Attribute("high"), "9");
    EXPECT_EQ(Find(*root, "width")->Attribute("low"), "1");
  }
  Settings();
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  Data& data = chart.GetData();
  data.fWeightRangeSet = true;
  data.fMinWeight = 3.0;
  data.fMaxWeight = 7.0;
  VarDataProcessor proc;
  data.SendChart(2, "Fixed Coefficients", proc, false);
  const std::unique_ptr<XMarkupNode> root = Markup(*Charts().back());
  EXPECT_EQ(Find(*root, "style", "id", "legendStyle")->Attribute("visible"), "");
  EXPECT_EQ(Find(*root, "legend")->FindDescendant("text")->OwnText(), "Coefficient Estimate");
  EXPECT_EQ(Find(*root, "width")->Attribute("high"), "7");
  EXPECT_EQ(Find(*root, "width")->Attribute("low"), "3");
  EXPECT_EQ(Charts().back()->fTitle, "Fixed Coefficients");
}

TEST_F(ChartData, ADiagramTemplateThatCannotBeReadGivesAWarningAndNoChart) {
  ChartResources resources;
  Settings();
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  VarDataProcessor proc;
  chart.GetData().SendChart(1, "Fixed Effects", proc, true);
  EXPECT_TRUE(Charts().empty());
  ASSERT_EQ(Messages().size(), 1u);
  EXPECT_NE(Messages()[0].find("GLMMFixedCoefficients.viztemplate"), std::string::npos) << Messages()[0];
  EXPECT_NE(Messages()[0].find("cannot be used"), std::string::npos) << Messages()[0];
}

TEST_F(ChartData, LineGuidesFillOneSlotPerPanelAndTheRestGo) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const std::string original = SimpleContrastsTemplate();
  ASSERT_FALSE(original.empty());
  const int slots = Occurrences(original, "<lineGuide");

  std::map<std::string, Data::DeviationData> deviations;
  deviations["F1"].fFacetLevels = {"F", "1"};
  deviations["F1"].fLineValue = 12.5;
  deviations["M"].fFacetLevels = {"M", ""};
  deviations["M"].fLineValue = -3.0;
  deviations[""].fLineValue = 1e6;
  std::string text = original;
  chart.GetData().updateLineGuides(text, deviations);
  XMarkupError error;
  const std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  ASSERT_TRUE(root) << error.ToText();
  const std::vector<const XMarkupNode*> guides = root->FirstChild("graph")->Children("lineGuide");
  ASSERT_EQ(guides.size(), 3u);
  // In the order of the panels' keys.
  EXPECT_EQ(guides[0]->Attribute("y"), "1e+06");
  EXPECT_EQ(guides[0]->Attribute("hideWhen"), "false");
  EXPECT_EQ(guides[1]->Attribute("y"), "12.5");
  EXPECT_EQ(guides[1]->Attribute("hideWhen"), "facet1!=\"F\"||facet2!=\"1\"");
  EXPECT_EQ(guides[2]->Attribute("y"), "-3");
  EXPECT_EQ(guides[2]->Attribute("hideWhen"), "facet1!=\"M\"");
  EXPECT_EQ(Occurrences(text, "whenText"), 0);
  EXPECT_GT(slots, 3);
}

TEST_F(ChartData, LineGuidesOfNoPanelEraseEverySlot) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const std::string original = SimpleContrastsTemplate();
  std::map<std::string, Data::DeviationData> none;
  std::string text = original;
  chart.GetData().updateLineGuides(text, none);
  EXPECT_EQ(text.find("<lineGuide"), std::string::npos);
  // Everything from the first slot's start through the last slot's end went.
  const std::size_t first = original.find("<lineGuide");
  const std::size_t last = original.rfind("</lineGuide>") + 12;
  EXPECT_EQ(text, original.substr(0, first) + original.substr(last));
}

TEST_F(ChartData, FacetsAreCutWholeOrTheSecondAlone) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const std::string original = SimpleContrastsTemplate();
  std::string noFacets = original;
  chart.GetData().removeFaceting(noFacets);
  EXPECT_EQ(noFacets.find("<faceting"), std::string::npos);
  EXPECT_EQ(noFacets.find("facetLayout"), std::string::npos);
  XMarkupError error;
  EXPECT_TRUE(XMarkupReader::Read(noFacets, error)) << error.ToText();

  std::string oneFacet = original;
  chart.GetData().removeFacet2(oneFacet);
  const std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(oneFacet, error);
  ASSERT_TRUE(root) << error.ToText();
  const XMarkupNode* faceting = Find(*root, "faceting");
  ASSERT_NE(faceting, nullptr);
  ASSERT_EQ(faceting->Children("variableReference").size(), 1u);
  EXPECT_EQ(faceting->Children("variableReference")[0]->Attribute("variable"), "facet1");
  ASSERT_EQ(Find(*root, "facetLayout")->Children("facetLevel").size(), 1u);

  // A text without the markup stays as it is.
  std::string plain = "<chart/>";
  chart.GetData().removeFaceting(plain);
  chart.GetData().removeFacet2(plain);
  EXPECT_EQ(plain, "<chart/>");
}

TEST_F(ChartData, MessagesAreFoundByTheirExactKey) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  std::vector<Stats::WarningMsgData> warnings;
  EXPECT_FALSE(chart.GetData().HasWarning(warnings, Stats::csKey_C20));
  warnings.push_back({"kGLMM_C2", {}});
  warnings.push_back({"KGLMM_C20", {}});
  EXPECT_FALSE(chart.GetData().HasWarning(warnings, Stats::csKey_C20));
  warnings.push_back({"kGLMM_C20", {}});
  EXPECT_TRUE(chart.GetData().HasWarning(warnings, Stats::csKey_C20));
}

TEST_F(ChartData, VariablesAndValueLabelsAreLookedUpInTheData) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  const Data& data = chart.GetData();
  ASSERT_EQ(data.getVariable("group"), fData.GetVariable(GROUP));
  EXPECT_EQ(data.getVariable("nothing"), nullptr);
  EXPECT_STREQ(data.getValueLabel(*fData.GetVariable(GROUP), 2.0), "Treated");
  EXPECT_EQ(data.getValueLabel(*fData.GetVariable(GROUP), 3.0), nullptr);
  EXPECT_STREQ(data.getValueLabel(*fData.GetVariable(SEX), std::string("M")), "Male");
  GNLMChartOutput withoutData(fProcedure.get(), nullptr, fStats);
  EXPECT_EQ(withoutData.GetData().getVariable("Group"), nullptr);
}
