// The templates carry, as valid chart markup, every literal fragment that
// the chart composer searches for, replaces, inserts beside or cuts out. The
// table below is the contract between the templates and the composer:
// fragment -> template -> the composer's operation that looks for it, and
// the element in which the first match must fall for that operation to do
// what it means. A second table lists the roles and data sources that the
// composer binds by name.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ChartTestSupport.h"
#include "host/viz/XChartSchema.h"
#include "host/viz/XMarkupReader.h"

namespace {

struct Fragment {
  const char* fTemplate;   // file name without ".viztemplate"
  const char* fFragment;   // the literal text looked for
  const char* fOperation;  // the composer's operation that looks for it
  const char* fElement;    // the element the first match falls in
  int fFrom;               // searched from the match of that row of the table (-1: from the start)
  int fSkip;               // characters skipped behind that match before searching
};

// Rows that search from another row name it by its index in this table.
const Fragment kFragments[] = {
    // 0 - 9: the diagram of the fixed effects and fixed coefficients.
    {"GLMMFixedCoefficients", "9.3", "SendChart step 2: the x range", "axis", -1, 0},
    {"GLMMFixedCoefficients", "/>", "SendChart step 2: min=\"0\" for no terms", "axis", 0, 0},
    {"GLMMFixedCoefficients", "7.0", "SendChart step 3: the y range", "axis", -1, 0},
    {"GLMMFixedCoefficients", "id=\"graphStyle", "SendChart step 4: margin-bottom at +15", "style", -1, 0},
    {"GLMMFixedCoefficients", "title1", "SendChart step 5: the title", "text", -1, 0},
    {"GLMMFixedCoefficients", "high=", "SendChart step 7: highest weight", "width", -1, 0},
    {"GLMMFixedCoefficients", "low=", "SendChart step 7: lowest weight", "width", 5, 0},
    {"GLMMFixedCoefficients", "id=\"legendStyle\"", "SendChart step 8: legend hidden", "style", -1, 0},
    {"GLMMFixedCoefficients", "Coefficient Estimate", "SendChart step 8: legend title", "text", -1, 0},
    {"GLMMFixedCoefficients", "chartSlot=\"true\"", "embedHistogramInChart: EmbedHistogramInGraph", "node", -1, 0},
    // 10 - 18: the pairwise network.
    {"GLMMPairwiseContrasts", "TitleText", "createPairwiseChart step 8: title", "text", -1, 0},
    {"GLMMPairwiseContrasts", "subTitleText", "createPairwiseChart step 9: target", "text", -1, 0},
    {"GLMMPairwiseContrasts", "FootnoteText", "createPairwiseChart step 10: adjustment", "text", -1, 0},
    {"GLMMPairwiseContrasts", "<faceting", "removeFaceting", "faceting", -1, 0},
    {"GLMMPairwiseContrasts", "</facetLayout>", "removeFaceting", "facetLayout", -1, 0},
    {"GLMMPairwiseContrasts", "<variableReference", "removeFacet2 step 1: first facet", "variableReference", -1, 0},
    {"GLMMPairwiseContrasts", "<variableReference", "removeFacet2 step 1: second facet", "variableReference", 15, 2},
    {"GLMMPairwiseContrasts", "</variableReference>", "removeFacet2 step 1: its end", "variableReference", 16, 0},
    {"GLMMPairwiseContrasts", "<facetLevel ", "removeFacet2 step 2: first level", "facetLevel", 16, 0},
    // 19 - 21
    {"GLMMPairwiseContrasts", "<facetLevel ", "removeFacet2 step 2: second level", "facetLevel", 18, 2},
    {"GLMMPairwiseContrasts", "</facetLevel>", "removeFacet2 step 2: its end", "facetLevel", 19, 0},
    // 21 - 23: predicted by observed.
    {"GLMMPredictedByObserved", "98.8", "createPredictedByObservedChart step 5: highest value", "axis", -1, 0},
    {"GLMMPredictedByObserved", "33.667", "createPredictedByObservedChart step 5: lowest value", "axis", -1, 0},
    {"GLMMPredictedByObserved", "id=\"legendStyle", "createPredictedByObservedChart step 6: legend", "style", -1, 0},
    // 24 - 26: the target histogram.
    {"GLMMHistogram", "binStatistic", "embedHistogramInChart step 5: binCount", "binStatistic", -1, 0},
    {"GLMMHistogram", "normal", "embedHistogramInChart step 5: distribution", "distributionStatistic", 24, 0},
    {"GLMMHistogram", "<distributionStatistic", "embedHistogramInChart step 6: parameters", "distributionStatistic", -1,
     0},
    // 27 - 29: marginal means.
    {"GLMMEmMeans", "YAxisLabel", "createEMMeansChart step g: target label", "text", -1, 0},
    {"GLMMEmMeans", "<legend", "createEMMeansChart step h: legend cut", "legend", -1, 0},
    {"GLMMEmMeans", "</legend>", "createEMMeansChart step h: legend cut", "legend", 28, 0},
    // 30 - 39: custom effects.
    {"GLMMCustomEffects", ">TitleText", "createCustomEffectsChart step 8: title", "text", -1, 0},
    {"GLMMCustomEffects", "FootnoteText", "createCustomEffectsChart step 9: fixed predictors", "text", -1, 0},
    {"GLMMCustomEffects", "popup1", "createCustomEffectsChart step 10: tooltip", "text", -1, 0},
    {"GLMMCustomEffects", "popup2", "createCustomEffectsChart step 10: tooltip", "text", 32, 0},
    {"GLMMCustomEffects", "<faceting", "createCustomEffectsChart step 11", "faceting", -1, 0},
    {"GLMMCustomEffects", "</facetLayout>", "createCustomEffectsChart step 11", "facetLayout", -1, 0},
    {"GLMMCustomEffects", "<color", "createCustomEffectsChart step 12: colour", "color", -1, 0},
    {"GLMMCustomEffects", "/>", "createCustomEffectsChart step 12: colour's end", "color", 36, 0},
    {"GLMMCustomEffects", "<legend id=\"legend\">", "createCustomEffectsChart step 12: legend", "legend", -1, 0},
    {"GLMMCustomEffects", "</legend>", "createCustomEffectsChart step 12: legend", "legend", 38, 0},
    // 40 - 51: deviation and simple contrasts.
    {"GLMMCustomEffects", "75%", "createCustomEffectsChart step 12: graph width", "style", -1, 0},
    {"GLMMSimpleContrasts", "TitleText", "createContrastsChart step 9: title", "text", -1, 0},
    {"GLMMSimpleContrasts", "CaptionText", "createContrastsChart step 9: line text", "text", -1, 0},
    {"GLMMSimpleContrasts", "FootnoteText", "createContrastsChart step 9: adjustment", "text", -1, 0},
    {"GLMMSimpleContrasts", "<lineGuide", "updateLineGuides step 1: first slot", "lineGuide", -1, 0},
    {"GLMMSimpleContrasts", "y=", "updateLineGuides step 2: the line's height", "lineGuide", 44, 0},
    {"GLMMSimpleContrasts", "whenText", "updateLineGuides step 3: the panel's condition", "lineGuide", 45, 0},
    {"GLMMSimpleContrasts", "</lineGuide>", "updateLineGuides step 4: spare slots", "lineGuide", 46, 0},
    {"GLMMSimpleContrasts", "<faceting", "removeFaceting", "faceting", -1, 0},
    {"GLMMSimpleContrasts", "</facetLayout>", "removeFaceting", "facetLayout", -1, 0},
    {"GLMMSimpleContrasts", "<variableReference", "removeFacet2", "variableReference", -1, 0},
    {"GLMMSimpleContrasts", "<facetLevel ", "removeFacet2", "facetLevel", -1, 0},
};

struct Binding {
  const char* fTemplate;
  const char* fSource;  // empty for a built-in template's role
  const char* fName;
};

// What the composer binds by name: the roles of the built-in templates and
// the variables of the fetched templates' data sources.
const Binding kBindings[] = {
    {"GLMMFixedCoefficients", "targetPointSource", "X"},
    {"GLMMFixedCoefficients", "targetPointSource", "Y"},
    {"GLMMFixedCoefficients", "targetPointSource", "Type"},
    {"GLMMFixedCoefficients", "targetPointSource", "Nodes"},
    {"GLMMFixedCoefficients", "targetPointSource", "PointTooltip"},
    {"GLMMFixedCoefficients", "pointSource", "X"},
    {"GLMMFixedCoefficients", "pointSource", "Y"},
    {"GLMMFixedCoefficients", "pointSource", "Label_X"},
    {"GLMMFixedCoefficients", "pointSource", "Label_Y"},
    {"GLMMFixedCoefficients", "pointSource", "Type"},
    {"GLMMFixedCoefficients", "pointSource", "Nodes"},
    {"GLMMFixedCoefficients", "pointSource", "PointTooltip"},
    {"GLMMFixedCoefficients", "edgeSource", "FromX"},
    {"GLMMFixedCoefficients", "edgeSource", "FromY"},
    {"GLMMFixedCoefficients", "edgeSource", "ToX"},
    {"GLMMFixedCoefficients", "edgeSource", "ToY"},
    {"GLMMFixedCoefficients", "edgeSource", "Weight"},
    {"GLMMFixedCoefficients", "edgeSource", "Weight2"},
    {"GLMMFixedCoefficients", "edgeSource", "LineTooltip"},
    {"GLMMPairwiseContrasts", "nodeSource_1", "node"},
    {"GLMMPairwiseContrasts", "nodeSource_1", "facet1"},
    {"GLMMPairwiseContrasts", "nodeSource_1", "facet2"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "from"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "to"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "weight"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "weightInPopup"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "type"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "facet1"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "facet2"},
    {"GLMMPairwiseContrasts", "edgeSource_1", "tooltip"},
    {"GLMMPredictedByObserved", "", "X"},
    {"GLMMPredictedByObserved", "", "Y"},
    {"GLMMPredictedByObserved", "", "Transparency"},
    {"GLMMHistogram", "", "X"},
    {"GLMMHistogram", "", "Y"},
    {"GLMMEmMeans", "", "effect1"},
    {"GLMMEmMeans", "", "effect2"},
    {"GLMMEmMeans", "", "target"},
    {"GLMMEmMeans", "", "confMargin"},
    {"GLMMCustomEffects", "", "targetValue"},
    {"GLMMCustomEffects", "", "effect1"},
    {"GLMMCustomEffects", "", "effect2"},
    {"GLMMCustomEffects", "", "effect3"},
    {"GLMMCustomEffects", "", "confMargin"},
    {"GLMMSimpleContrasts", "", "value"},
    {"GLMMSimpleContrasts", "", "category"},
    {"GLMMSimpleContrasts", "", "type"},
    {"GLMMSimpleContrasts", "", "facet1"},
    {"GLMMSimpleContrasts", "", "facet2"},
    {"GLMMSimpleContrasts", "", "confMargin"},
    {"GLMMSimpleContrasts", "", "tooltip"},
};

using ChartTestSupport::TemplateText;

// The innermost element whose text holds the byte at `offset`.
const XMarkupNode* Enclosing(const XMarkupNode& node, std::size_t offset) {
  if (node.IsText() || offset < node.fStart || offset >= node.fEnd) return nullptr;
  for (const auto& child : node.fvChildren) {
    if (const XMarkupNode* inner = Enclosing(*child, offset)) return inner;
  }
  return &node;
}

}  // namespace

TEST(TemplateFragments, EveryTemplateIsChartMarkup) {
  for (const char* name : {"GLMMFixedCoefficients", "GLMMPairwiseContrasts", "GLMMPredictedByObserved", "GLMMHistogram",
                           "GLMMEmMeans", "GLMMCustomEffects", "GLMMSimpleContrasts"}) {
    XMarkupError error;
    std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(TemplateText(name), error);
    ASSERT_TRUE(root) << name << ": " << error.ToText();
    EXPECT_TRUE(XChartSchema::Check(*root, error)) << name << ": " << error.ToText();
    EXPECT_EQ(root->Attribute("kind"), name);
  }
}

TEST(TemplateFragments, EachFragmentIsFoundWhereItsOperationLooks) {
  const std::size_t rows = sizeof kFragments / sizeof kFragments[0];
  std::vector<std::size_t> matches(rows, std::string::npos);
  for (std::size_t i = 0; i < rows; ++i) {
    const Fragment& row = kFragments[i];
    const std::string text = TemplateText(row.fTemplate);
    std::size_t from = 0;
    if (row.fFrom >= 0) {
      ASSERT_LT(static_cast<std::size_t>(row.fFrom), i);
      ASSERT_STREQ(kFragments[row.fFrom].fTemplate, row.fTemplate);
      ASSERT_NE(matches[static_cast<std::size_t>(row.fFrom)], std::string::npos);
      from = matches[static_cast<std::size_t>(row.fFrom)] + static_cast<std::size_t>(row.fSkip);
    }
    matches[i] = text.find(row.fFragment, from);
    ASSERT_NE(matches[i], std::string::npos)
        << row.fTemplate << " lacks \"" << row.fFragment << "\" for " << row.fOperation;
    XMarkupError error;
    std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
    ASSERT_TRUE(root);
    const XMarkupNode* element = Enclosing(*root, matches[i]);
    ASSERT_NE(element, nullptr);
    EXPECT_EQ(element->fName, row.fElement) << row.fTemplate << ": \"" << row.fFragment << "\" (" << row.fOperation
                                            << ") falls in <" << element->fName << "> at line " << element->fLine;
  }
}

TEST(TemplateFragments, TheLineGuideSlotsAreTheLastLineGuidesAndHoldOneHeightEach) {
  const std::string text = TemplateText("GLMMSimpleContrasts");
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  ASSERT_TRUE(root);
  const std::vector<const XMarkupNode*> slots = root->FirstChild("graph")->Children("lineGuide");
  ASSERT_GE(slots.size(), 24u);
  for (const XMarkupNode* slot : slots) {
    const std::string tag = text.substr(slot->fStart, slot->fEnd - slot->fStart);
    // The only "y=" of a slot is its height's, and it comes before its
    // condition; the placeholder is two characters.
    EXPECT_EQ(tag.find("y=\"00\""), tag.find("y="));
    EXPECT_EQ(tag.find("y=", tag.find("y=") + 1), std::string::npos);
    EXPECT_LT(tag.find("y="), tag.find("whenText"));
    EXPECT_FALSE(slot->fbEmptyTag);
  }
  // Nothing behind the last slot is mistaken for one.
  const std::size_t end = slots.back()->fEnd;
  EXPECT_EQ(text.find("y=", end), std::string::npos);
  EXPECT_EQ(text.find("whenText", end), std::string::npos);
  EXPECT_EQ(text.rfind("</lineGuide>") + 12, end);
}

TEST(TemplateFragments, FragmentsThatComeInPairsDoNotMeetEachOther) {
  // "TitleText" is found before "subTitleText", which holds it.
  const std::string pairwise = TemplateText("GLMMPairwiseContrasts");
  EXPECT_LT(pairwise.find("TitleText"), pairwise.find("subTitleText"));
  EXPECT_NE(pairwise.find("TitleText"), pairwise.find("subTitleText") + 3);
  // The histogram embedded in the diagram must not hold what the diagram
  // still looks for after the embedding.
  const std::string histogram = TemplateText("GLMMHistogram");
  for (const char* fragment : {"high=", "low=", "id=\"legendStyle\"", "Coefficient Estimate", "chartSlot"}) {
    EXPECT_EQ(histogram.find(fragment), std::string::npos) << fragment;
  }
  // And the diagram's target node, where the histogram goes, stands behind
  // every fragment of steps 7 and 8.
  const std::string diagram = TemplateText("GLMMFixedCoefficients");
  const std::size_t slot = diagram.find("chartSlot");
  EXPECT_LT(diagram.find("high="), slot);
  EXPECT_LT(diagram.find("low="), slot);
  EXPECT_GT(diagram.find("id=\"legendStyle\""), slot);  // searched from the start: the diagram's own legend
  EXPECT_EQ(diagram.find("id=\"legendStyle\""), diagram.rfind("id=\"legendStyle\""));
}

TEST(TemplateFragments, EveryRoleAndSourceTheComposerBindsIsDeclared) {
  for (const Binding& binding : kBindings) {
    XMarkupError error;
    std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(TemplateText(binding.fTemplate), error);
    ASSERT_TRUE(root);
    const XMarkupNode* data = root->FirstChild("data");
    ASSERT_NE(data, nullptr) << binding.fTemplate;
    bool found = false;
    for (const XMarkupNode* node : data->Children(binding.fSource[0] == '\0' ? "role" : "variable")) {
      if (binding.fSource[0] == '\0') {
        found = found || node->Attribute("name") == binding.fName;
      } else {
        found = found || (node->Attribute("source") == binding.fSource && node->Attribute("name") == binding.fName);
      }
    }
    EXPECT_TRUE(found) << binding.fTemplate << " " << binding.fSource << " " << binding.fName;
  }
}
