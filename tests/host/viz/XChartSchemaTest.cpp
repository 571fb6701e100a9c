#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "host/viz/XChartSchema.h"
#include "host/viz/XMarkupReader.h"

namespace {

XMarkupError Problem(const std::string& text) {
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  EXPECT_TRUE(root) << error.ToText();
  if (!root) return error;
  EXPECT_FALSE(XChartSchema::Check(*root, error)) << text;
  return error;
}

bool Follows(const std::string& text) {
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  return root && XChartSchema::Check(*root, error);
}

}  // namespace

TEST(XChartSchema, NamesTheElementAndThePlaceOfEachProblem) {
  XMarkupError error = Problem("<chart>\n  <graph>\n    <pie/>\n  </graph>\n</chart>");
  EXPECT_EQ(error.ToText(), "line 3, column 5: the chart markup has no element <pie>");
  error = Problem("<graph/>");
  EXPECT_EQ(error.ToText(), "line 1, column 1: a chart document begins with <chart>, not <graph>");
  error = Problem("<chart><point/></chart>");
  EXPECT_EQ(error.ToText(), "line 1, column 8: <point> cannot stand inside <chart>");
  error = Problem("<chart><graph><point colour=\"red\"/></graph></chart>");
  EXPECT_EQ(error.fMessage, "<point> has no attribute colour");
  error = Problem("<chart><graph><coordinates><axis dimension=\"z\"/></coordinates></graph></chart>");
  EXPECT_EQ(error.fMessage, "the attribute dimension of <axis> cannot be \"z\" (it is one of: x y)");
  error = Problem("<chart><graph><coordinates><axis/></coordinates></graph></chart>");
  EXPECT_EQ(error.fMessage, "<axis> needs the attribute dimension");
  error = Problem("<chart><graph>stray text</graph></chart>");
  EXPECT_EQ(error.fMessage, "<graph> cannot hold text");
}

TEST(XChartSchema, ChecksTheKindsOfValues) {
  EXPECT_TRUE(Follows("<chart width=\"640\" height=\"400px\" font-size=\"11.5\" palette=\"#123, red,#abcdef\"/>"));
  EXPECT_FALSE(Follows("<chart width=\"-5\"/>"));
  EXPECT_FALSE(Follows("<chart width=\"wide\"/>"));
  EXPECT_FALSE(Follows("<chart palette=\"#12\"/>"));
  EXPECT_FALSE(Follows("<chart version=\"1.0.0\"/>"));
  EXPECT_TRUE(Follows("<chart><data><variable source=\"s\" name=\"n\" format=\"F8.2\"/></data></chart>"));
  EXPECT_FALSE(Follows("<chart><data><variable source=\"s\" name=\"n\" format=\"Q8\"/></data></chart>"));
  EXPECT_FALSE(Follows("<chart><data><source name=\"s\" rows=\"1.5\"/></data></chart>"));
  EXPECT_TRUE(Follows("<chart><graph><style width=\"75%\"/></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><graph><style width=\"175%\"/></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><graph><style visible=\"no\"/></graph></chart>"));
  EXPECT_TRUE(Follows("<chart><graph><lineGuide y=\"00\" hideWhen=\"facet1!=&quot;A&quot;\"/></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><graph><lineGuide y=\"00\" hideWhen=\"facet1!=&quot;A\"/></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><graph><lineGuide y=\"high\"/></graph></chart>"));
}

TEST(XChartSchema, AChartMayHoldAnotherInsideANode) {
  EXPECT_TRUE(
      Follows("<chart><graph><node chartSlot=\"true\"><embeddedChart fieldType=\"2\"><chart><graph/></chart>"
              "</embeddedChart></node></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><graph><node><embeddedChart><graph/></embeddedChart></node></graph></chart>"));
  EXPECT_FALSE(Follows("<chart><chart/></chart>"));
}

TEST(XChartSchema, EveryElementAndAttributeIsDocumented) {
  std::ifstream in(std::string(GLMIX_SOURCE_DIR) + "/docs/charts.md");
  ASSERT_TRUE(in.good());
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::string doc = buffer.str();
  for (const XChartSchema::ElementRule& rule : XChartSchema::Elements()) {
    // Each element has a section of its own, with its attributes and an
    // example that shows it.
    const std::size_t section = doc.find("### `<" + rule.fName + ">`");
    ASSERT_NE(section, std::string::npos) << rule.fName;
    const std::size_t next = doc.find("\n## ", section + 1) < doc.find("\n### ", section + 1)
                                 ? doc.find("\n## ", section + 1)
                                 : doc.find("\n### ", section + 1);
    const std::string text = doc.substr(section, next == std::string::npos ? std::string::npos : next - section);
    const std::size_t example = text.find("```xml");
    ASSERT_NE(example, std::string::npos) << rule.fName << " has no example";
    EXPECT_NE(text.find("<" + rule.fName, example), std::string::npos) << rule.fName << "'s example does not show it";
    for (const XChartSchema::AttributeRule& attribute : rule.fvAttributes) {
      EXPECT_NE(text.find("`" + attribute.fName + "`"), std::string::npos) << rule.fName << " " << attribute.fName;
    }
  }
}
