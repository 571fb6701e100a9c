// The contrast charts of a block of marginal means: deviation and simple
// contrasts as bars from a reference line, pairwise contrasts as a network.
#include <cmath>
#include <string>

#include "ChartsTestSupport.h"

using namespace charts_test;

namespace {

const double kLevel = 0.05;

class Contrasts : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    Settings().fPAdjustment = 1;
    AddFixedEffect({GROUP});
    fData.GetVariable(SUBJECT)->ValueLabels().Add(7.0, "Seven");
  }
  // A block of the means of Group at 1, 2 and 3 (10, 14 and 12), compared
  // by `kind` with the given rows of compared and reference levels.
  static Stats::EMMEANSCustomData Block(int kind, const std::vector<std::string>& compared,
                                        const std::vector<std::string>& reference,
                                        const std::vector<std::string>& estimates,
                                        const std::vector<std::string>& sigs) {
    Stats::EMMEANSCustomData custom;
    custom.fEMMEANSIndex = 0;
    custom.fEstimates.fvGroup = {Array("Group", {"1", "2", "3"})};
    custom.fEstimates.fMean = Array("", {"10", "14", "12"});
    Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
    contrasts.fContrastKind = kind;
    contrasts.fAdjustedSigLevel = kLevel;
    contrasts.fvGroup = {Array("Group", compared), Array("Group", reference)};
    contrasts.fContrastEstimate = Array("", estimates);
    contrasts.fAdjustedSig = Array("", sigs);
    std::vector<std::string> lower;
    std::vector<std::string> upper;
    for (const std::string& estimate : estimates) {
      lower.push_back(std::to_string(std::stod(estimate) - 1.5));
      upper.push_back(std::to_string(std::stod(estimate) + 2.5));
    }
    contrasts.fConfIntervalLower = Array("", lower);
    contrasts.fConfIntervalUpper = Array("", upper);
    custom.fvOverallTests.resize(1);
    return custom;
  }
  static Stats::EMMEANSCustomData Simple() {
    return Block(2, {"1", "2"}, {"3", "3"}, {"-2", "2"}, {"0.01", "0.05"});
  }
  static Stats::EMMEANSCustomData Pairwise() {
    return Block(0, {"1", "1", "2"}, {"2", "3", "3"}, {"-4", "-2", "2"}, {"0.01", "1", "0.05"});
  }
  // Puts facets before the compared factor: their arrays in the contrasts,
  // and the means of each panel.
  static void AddFacets(Stats::EMMEANSCustomData& custom, const std::vector<Stats::CoordinatesData>& facets) {
    std::vector<Stats::CoordinatesData>& group = custom.fContrasts.fvGroup;
    group.insert(group.begin(), facets.begin(), facets.end());
  }
  static std::string FootnoteOf(const XMarkupNode& root) {
    const XMarkupNode* footnote = Find(root, "footnote");
    return footnote != nullptr && footnote->FirstChild("text") != nullptr ? footnote->FirstChild("text")->OwnText()
                                                                          : "<none>";
  }
  static std::vector<std::string> FacetsOf(const XMarkupNode& root) {
    std::vector<std::string> facets;
    const XMarkupNode* faceting = Find(root, "faceting");
    if (faceting == nullptr) return facets;
    for (const XMarkupNode* reference : faceting->Children("variableReference")) {
      facets.push_back(reference->Attribute("variable"));
    }
    return facets;
  }
};

const char* const kBonferroni =
    "Significance values are adjusted for multiple comparisons by the sequential Bonferroni method. The "
    "significance level is 0.05.\nConfidence interval bounds are approximate.";

}  // namespace

TEST_F(Contrasts, SimpleContrastsAreBarsFromTheReferenceMean) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Simple());
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Simple Contrasts");
  EXPECT_EQ(chart.fKind, "GLMMSimpleContrasts");
  const std::string s = "source";
  // The reference mean is the first level's mean less its contrast: 12.
  EXPECT_EQ(Number(chart, s, "value", 0), 12.0);
  EXPECT_EQ(Number(chart, s, "value", 1), 10.0);
  EXPECT_EQ(Number(chart, s, "value", 2), 12.0);
  EXPECT_EQ(Number(chart, s, "value", 3), 14.0);
  EXPECT_EQ(Number(chart, s, "category", 0), 1.0);
  EXPECT_EQ(Number(chart, s, "category", 3), 2.0);
  EXPECT_EQ(Number(chart, s, "confMargin", 0), -3.5 + 12.0);
  EXPECT_EQ(Number(chart, s, "confMargin", 1), 0.5 + 12.0);
  EXPECT_EQ(Number(chart, s, "type", 0), 1.0);
  EXPECT_EQ(Number(chart, s, "type", 1), 1.0);
  // A significance equal to the level is not significant.
  EXPECT_EQ(Number(chart, s, "type", 2), 0.0);
  EXPECT_EQ(Text(chart, s, "tooltip", 0), "The mean of Reaction time (ms) at Control is significantly lower than at 3.");
  EXPECT_EQ(Text(chart, s, "tooltip", 3),
            "The mean of Reaction time (ms) at Treated does not differ significantly from that at 3.");
  EXPECT_EQ(Cell(chart, s, "facet1", 0), nullptr);

  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "title")->FindDescendant("text")->OwnText(), "Simple Contrasts");
  EXPECT_EQ(Find(*root, "caption")->FindDescendant("text")->OwnText(),
            "The horizontal line is the mean of Reaction time (ms) at the reference level 3 of Treatment group.");
  EXPECT_EQ(FootnoteOf(*root), kBonferroni);
  // One panel: one reference line, shown everywhere, and no facets.
  const std::vector<const XMarkupNode*> guides = root->FirstChild("graph")->Children("lineGuide");
  ASSERT_EQ(guides.size(), 1u);
  EXPECT_EQ(guides[0]->Attribute("y"), "12");
  EXPECT_EQ(guides[0]->Attribute("hideWhen"), "false");
  EXPECT_TRUE(FacetsOf(*root).empty());
  EXPECT_EQ(Find(*root, "facetLayout"), nullptr);
  const XMarkupNode* category = Find(*root, "variable", "name", "category");
  EXPECT_EQ(category->Attribute("label"), "Treatment group");
  EXPECT_EQ(category->Children("relabel").size(), 2u);
  const XMarkupNode* type = Find(*root, "variable", "name", "type");
  EXPECT_EQ(type->Attribute("label"), "Significance");
  ASSERT_EQ(type->Children("relabel").size(), 2u);
  EXPECT_EQ(type->Children("relabel")[0]->Attribute("label"), "Not Significant");
  EXPECT_EQ(type->Children("relabel")[1]->Attribute("label"), "Significant");
}

TEST_F(Contrasts, AReferenceWithAValueLabelIsNamedByIt) {
  Stats::EMMEANSCustomData custom = Block(2, {"2", "3"}, {"1", "1"}, {"4", "2"}, {"0.5", "0.01"});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Number(chart, "source", "value", 0), 10.0);
  EXPECT_EQ(Text(chart, "source", "tooltip", 2),
            "The mean of Reaction time (ms) at 3 is significantly higher than at Control.");
  EXPECT_NE(Find(*Markup(chart), "caption")->FindDescendant("text")->OwnText().find("reference level Control of"),
            std::string::npos);
}

TEST_F(Contrasts, AMeanOnTheReferenceLineWithASignificantDifferenceReadsAsLower) {
  Stats::EMMEANSCustomData custom = Simple();
  custom.fEstimates.fMean.fValues[1] = "12";
  custom.fContrasts.fAdjustedSig.fValues[1] = "0.001";
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  ASSERT_EQ(Number(chart, "source", "value", 3), 12.0);
  ASSERT_EQ(Number(chart, "source", "value", 2), 12.0);
  EXPECT_EQ(Text(chart, "source", "tooltip", 2),
            "The mean of Reaction time (ms) at Treated is significantly lower than at 3.");
}

TEST_F(Contrasts, DeviationContrastsCompareWithTheMeanOfAllLevels) {
  Stats::EMMEANSCustomData custom =
      Block(1, {"1", "2", "3"}, {"__MISSING__", "__MISSING__", "__MISSING__"}, {"-2", "2", "0"}, {"0.01", "0.2", "1"});
  Settings().fPAdjustment = 0;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Deviation Contrasts");
  EXPECT_EQ(Number(chart, "source", "value", 0), 12.0);
  EXPECT_EQ(Number(chart, "source", "value", 4), 12.0);
  EXPECT_EQ(Number(chart, "source", "value", 5), 12.0);
  EXPECT_EQ(Text(chart, "source", "tooltip", 0),
            "The mean of Reaction time (ms) at Control is significantly lower than the overall mean.");
  EXPECT_EQ(Text(chart, "source", "tooltip", 2),
            "The mean of Reaction time (ms) at Treated does not differ significantly from the overall mean.");
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "caption")->FindDescendant("text")->OwnText(),
            "The horizontal line is the mean of Reaction time (ms) over all levels of Treatment group.");
  EXPECT_EQ(FootnoteOf(*root),
            "Significance values are not adjusted for multiple comparisons (least significant difference). The "
            "significance level is 0.05.");
}

TEST_F(Contrasts, OtherKindsAndBlocksWithoutOverallTestsHaveNoChart) {
  Stats::EMMEANSCustomData custom = Simple();
  custom.fContrasts.fContrastKind = 3;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  for (int kind : {0, 1, 2}) {
    Stats::EMMEANSCustomData untested = kind == 0 ? Pairwise() : Simple();
    untested.fContrasts.fContrastKind = kind;
    untested.fvOverallTests.clear();
    GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(untested);
  }
  Stats::EMMEANSCustomData ungrouped = Simple();
  ungrouped.fContrasts.fvGroup.clear();
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(ungrouped);
  EXPECT_TRUE(Charts().empty());
}

TEST_F(Contrasts, FacetsOfTheFirstPanelDecideWhatFacetMarkupStays) {
  // One facet, Sex: the second facet's markup goes.
  Stats::EMMEANSCustomData custom = Simple();
  custom.fEstimates.fvGroup = {Array("Sex", {"F", "F", "F", "M", "M", "M"}),
                               Array("Group", {"1", "2", "3", "1", "2", "3"})};
  custom.fEstimates.fMean = Array("", {"10", "14", "12", "20", "26", "22"});
  custom.fContrasts.fvGroup = {Array("Sex", {"F", "F", "M", "M"}), Array("Group", {"1", "2", "1", "2"}),
                               Array("Group", {"3", "3", "3", "3"})};
  custom.fContrasts.fContrastEstimate = Array("", {"-2", "2", "-2", "4"});
  custom.fContrasts.fAdjustedSig = Array("", {"0.01", "0.2", "0.3", "0.001"});
  custom.fContrasts.fConfIntervalLower = Array("", {"-3", "1", "-3", "3"});
  custom.fContrasts.fConfIntervalUpper = Array("", {"-1", "3", "-1", "5"});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(FacetsOf(*root), std::vector<std::string>({"facet1"}));
  EXPECT_EQ(Find(*root, "facetLayout")->Children("facetLevel").size(), 1u);
  // Each panel has its reference line, shown in that panel only.
  const std::vector<const XMarkupNode*> guides = root->FirstChild("graph")->Children("lineGuide");
  ASSERT_EQ(guides.size(), 2u);
  EXPECT_EQ(guides[0]->Attribute("y"), "12");
  EXPECT_EQ(guides[0]->Attribute("hideWhen"), "facet1!=\"F\"");
  EXPECT_EQ(guides[1]->Attribute("y"), "22");
  EXPECT_EQ(guides[1]->Attribute("hideWhen"), "facet1!=\"M\"");
  EXPECT_EQ(Number(chart, "source", "value", 7), 26.0);
  EXPECT_EQ(Text(chart, "source", "facet1", 7), "M");
  EXPECT_EQ(Number(chart, "source", "confMargin", 6), 25.0);
  const XMarkupNode* facet = Find(*root, "variable", "name", "facet1");
  EXPECT_EQ(facet->Attribute("label"), "Sex");
  EXPECT_EQ(facet->Attribute("prefix"), "Sex = ");
  EXPECT_EQ(facet->Attribute("format"), "A6");
}

TEST_F(Contrasts, ASecondFacetOfStringsLandsInTheFirstFacetsColumn) {
  Stats::EMMEANSCustomData custom = Simple();
  custom.fEstimates.fvGroup = {Array("Subject", {"7", "7", "7"}), Array("Site", {"01", "01", "01"}),
                               Array("Group", {"1", "2", "3"})};
  custom.fContrasts.fvGroup = {Array("Subject", {"7", "7"}), Array("Site", {"01", "01"}), Array("Group", {"1", "2"}),
                               Array("Group", {"3", "3"})};
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  // Site is a string: its text lands on the first facet's value.
  const OmChart& strings = *Charts().back();
  EXPECT_EQ(Text(strings, "source", "facet1", 0), "01");
  EXPECT_EQ(Cell(strings, "source", "facet2", 0), nullptr);
  const std::unique_ptr<XMarkupNode> root = Markup(strings);
  EXPECT_EQ(FacetsOf(*root), std::vector<std::string>({"facet1", "facet2"}));
  EXPECT_EQ(root->FirstChild("graph")->Children("lineGuide")[0]->Attribute("hideWhen"),
            "facet1!=\"7\"||facet2!=\"01\"");
  // The means of the cell are found whatever the order of the factors.
  EXPECT_EQ(Number(strings, "source", "value", 0), 12.0);

  // A numeric second facet goes to its own column.
  custom.fContrasts.fvGroup[1] = Array("Days", {"5", "5"});
  custom.fEstimates.fvGroup[1] = Array("Days", {"5", "5", "5"});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& numbers = *Charts().back();
  EXPECT_EQ(Number(numbers, "source", "facet1", 0), 7.0);
  EXPECT_EQ(Number(numbers, "source", "facet2", 0), 5.0);
}

TEST_F(Contrasts, PairwiseContrastsAreANetworkOfTheLevels) {
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Pairwise());
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(chart.fTitle, "Pairwise Contrasts");
  EXPECT_EQ(chart.fKind, "GLMMPairwiseContrasts");
  const std::string edges = "edgeSource_1";
  const std::string nodes = "nodeSource_1";
  // The pair of levels 1 and 3 is certain to be alike: no edge.
  EXPECT_EQ(Rows(chart, edges), 2);
  EXPECT_EQ(Number(chart, edges, "from", 0), 2.0);
  EXPECT_EQ(Number(chart, edges, "to", 0), 1.0);
  EXPECT_DOUBLE_EQ(Number(chart, edges, "weight", 0), 1.0 / (0.99 * 0.99));
  EXPECT_EQ(Number(chart, edges, "weightInPopup", 0), 0.01);
  EXPECT_EQ(Number(chart, edges, "type", 0), 1.0);
  EXPECT_EQ(Number(chart, edges, "from", 1), 3.0);
  EXPECT_EQ(Number(chart, edges, "to", 1), 2.0);
  // A significance equal to the level is not significant.
  EXPECT_EQ(Number(chart, edges, "type", 1), 0.0);
  EXPECT_EQ(Text(chart, edges, "tooltip", 0),
            "The mean of Reaction time (ms) at Treated is significantly higher than at Control.");
  EXPECT_EQ(Text(chart, edges, "tooltip", 1),
            "The mean of Reaction time (ms) at Treated does not differ significantly from that at 3.");
  EXPECT_EQ(Text(chart, edges, "facet1", 0), "");
  // Level 3 is a node through its pair with level 2 only.
  EXPECT_EQ(Rows(chart, nodes), 3);
  for (long n = 0; n < 3; ++n) EXPECT_EQ(Number(chart, nodes, "node", n), n + 1.0);

  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "title")->FindDescendant("text")->OwnText(), "Pairwise Contrasts");
  EXPECT_EQ(Find(*root, "subtitle")->FindDescendant("text")->OwnText(), "Target: Reaction time (ms)");
  EXPECT_EQ(FootnoteOf(*root), kBonferroni);
  EXPECT_TRUE(FacetsOf(*root).empty());
  const XMarkupNode* node = Find(*root, "variable", "name", "node");
  EXPECT_EQ(node->Attribute("label"), "Treatment group");
  ASSERT_EQ(node->Children("relabel").size(), 2u);
  EXPECT_EQ(node->Children("relabel")[0]->Attribute("value"), "1");
  EXPECT_EQ(node->Children("relabel")[0]->Attribute("label"), "Control");
  EXPECT_EQ(Find(*root, "variable", "name", "from")->Children("relabel").size(), 2u);
  EXPECT_EQ(Find(*root, "variable", "name", "to")->Children("relabel").size(), 2u);
  EXPECT_EQ(Find(*root, "variable", "name", "type")->Children("relabel").size(), 2u);
}

TEST_F(Contrasts, AnIdentifierWithLeadingZerosIsANumberRelabelledWithoutThem) {
  Stats::EMMEANSCustomData custom = Pairwise();
  custom.fContrasts.fvGroup = {Array("Subject", {"008", "008", "009"}), Array("Subject", {"007", "009", "010"})};
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Number(chart, "edgeSource_1", "from", 0), 7.0);
  EXPECT_EQ(Number(chart, "edgeSource_1", "to", 0), 8.0);
  EXPECT_EQ(Number(chart, "nodeSource_1", "node", 0), 7.0);
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  const XMarkupNode* node = Find(*root, "variable", "name", "node");
  ASSERT_EQ(node->Children("relabel").size(), 1u);
  EXPECT_EQ(node->Children("relabel")[0]->Attribute("value"), "7");
  EXPECT_EQ(node->Children("relabel")[0]->Attribute("label"), "Seven");
}

TEST_F(Contrasts, AnIdentifierThatIsNoNumberHasNoWeight) {
  Stats::EMMEANSCustomData custom = Pairwise();
  custom.fContrasts.fvGroup = {Array("Sex", {"F", "F", "M"}), Array("Sex", {"M", "X", "X"})};
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const OmChart& chart = OnlyChart();
  EXPECT_EQ(Text(chart, "edgeSource_1", "from", 0), "M");
  EXPECT_EQ(Text(chart, "edgeSource_1", "to", 0), "F");
  EXPECT_EQ(Cell(chart, "edgeSource_1", "weight", 0), nullptr);
  EXPECT_EQ(Cell(chart, "edgeSource_1", "weightInPopup", 0), nullptr);
  EXPECT_EQ(Number(chart, "edgeSource_1", "type", 0), 1.0);
  // Levels of strings are relabelled by their texts.
  const std::unique_ptr<XMarkupNode> root = Markup(chart);
  EXPECT_EQ(Find(*root, "variable", "name", "node")->Children("relabel").size(), 2u);
}

TEST_F(Contrasts, OneFacetCutsTheSecondFacetsMarkupAndTwoKeepBoth) {
  Stats::EMMEANSCustomData custom = Pairwise();
  AddFacets(custom, {Array("Sex", {"F", "F", "M"})});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  {
    const OmChart& chart = *Charts().back();
    const std::unique_ptr<XMarkupNode> root = Markup(chart);
    EXPECT_EQ(FacetsOf(*root), std::vector<std::string>({"facet1"}));
    // Each panel has nodes of its own, identified by the panel's level.
    EXPECT_EQ(Text(chart, "edgeSource_1", "from", 0), "F2");
    EXPECT_EQ(Text(chart, "edgeSource_1", "facet1", 0), "F");
    EXPECT_EQ(Text(chart, "nodeSource_1", "node", 0), "F1");
    EXPECT_EQ(Text(chart, "nodeSource_1", "facet1", 0), "F");
    const std::vector<const XMarkupNode*> facets = root->FirstChild("data")->Children("variable");
    int labelled = 0;
    for (const XMarkupNode* variable : facets) {
      if (variable->Attribute("name") == "facet1" && variable->Attribute("label") == "Sex") ++labelled;
    }
    EXPECT_EQ(labelled, 2);
  }
  AddFacets(custom, {Array("Subject", {"7", "7", "7"})});
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(custom);
  const std::unique_ptr<XMarkupNode> root = Markup(*Charts().back());
  EXPECT_EQ(FacetsOf(*root), std::vector<std::string>({"facet1", "facet2"}));
  EXPECT_EQ(Number(*Charts().back(), "edgeSource_1", "facet1", 0), 7.0);
  EXPECT_EQ(Text(*Charts().back(), "edgeSource_1", "facet2", 0), "F");
}

TEST_F(Contrasts, NoAdjustmentLeavesTheFootnoteEmpty) {
  Settings().fPAdjustment = 3;
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Pairwise());
  GNLMChartOutput(fProcedure.get(), &fData, fStats).createContrastsChart(Simple());
  ASSERT_EQ(Charts().size(), 2u);
  for (const OmChart* chart : Charts()) {
    const std::unique_ptr<XMarkupNode> root = Markup(*chart);
    EXPECT_EQ(FootnoteOf(*root), "");
    EXPECT_EQ(chart->fMarkup.find("FootnoteText"), std::string::npos);
  }
}

TEST_F(Contrasts, TheCaptionNamesTheAdjustmentAndItsLevel) {
  GNLMChartOutput chart(fProcedure.get(), &fData, fStats);
  Stats::EMMEANSCustomData custom = Simple();
  custom.fContrasts.fAdjustedSigLevel = 0.1;
  Settings().fPAdjustment = 2;
  EXPECT_EQ(chart.GetData().createContrastsCaption(custom).toUTF8(),
            "Significance values are adjusted for multiple comparisons by the sequential Sidak method. The "
            "significance level is 0.10.\nConfidence interval bounds are approximate.");
}
