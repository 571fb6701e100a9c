#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ChartResources.h"
#include "ChartTestSupport.h"
#include "host/data/ZORV_ValueLabelMap.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/viz/XChartSchema.h"
#include "host/viz/XMarkupReader.h"
#include "host/viz/XViZTemplate.h"

using ChartTestSupport::Count;

namespace {

const char* const kTemplate =
    "<chart kind=\"Sample\">\n"
    "  <data>\n"
    "    <role name=\"X\"/>\n"
    "    <role name=\"Y\"/>\n"
    "    <role name=\"Unused\"/>\n"
    "  </data>\n"
    "  <title><text><slot position=\"0\"/></text></title>\n"
    "  <graph>\n"
    "    <coordinates><axis dimension=\"x\"><title><text><slot name=\"xLabel\"/></text></title></axis></coordinates>\n"
    "    <point x=\"X\" y=\"Y\"/>\n"
    "  </graph>\n"
    "</chart>\n";

// The messages of the heading, in order.
std::vector<std::string> Messages(const OmHeading& heading) {
  std::vector<std::string> out;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::MESSAGE) out.push_back(item.fpMessage->fText);
  }
  return out;
}

}  // namespace

TEST(XViZTemplate, ConvertsRolesIntoDeclarationsAndFillsItsSlots) {
  ChartResources resources;
  resources.Template("Sample", kTemplate);
  ZORV_ValueLabelMap labels;
  labels.Add(1.0, "low");
  labels.Add(2.0, "high");
  XViZTemplate chart;
  chart.setTemplateInternalName("Sample");
  const ZORV_Format format(ZORV_Format::F, 8, 2);
  chart.addVariable("X", "dose", true, "xLabel", "source0", &format, "Dose &amp; time<BR/>(h)", 2, &labels, true);
  chart.addVariable("Y", "Y", false, "", "source0", nullptr, nullptr);
  chart.addVariable("Extra", "extra", false, "", "other", nullptr, "Extra");
  chart.addLabel(0, "Title <1>");
  std::string text = "old";
  std::string other = "untouched";
  ASSERT_TRUE(chart.convert(text, other));
  EXPECT_EQ(other, "untouched");
  EXPECT_NE(text.find("    <variable source=\"source0\" name=\"dose\" role=\"X\" categorical=\"true\" "
                      "label=\"Dose &amp;amp; time&lt;BR/&gt;(h)\" format=\"F8.2\" level=\"2\" sort=\"value\">"
                      "<relabel value=\"1\" label=\"low\"/><relabel value=\"2\" label=\"high\"/></variable>\n"
                      "    <variable source=\"source0\" name=\"Y\" role=\"Y\" categorical=\"false\"/>\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("<role"), std::string::npos);
  EXPECT_EQ(text.find("<slot"), std::string::npos);
  // A binding the template has no role for is declared all the same.
  EXPECT_NE(
      text.find(
          "<variable source=\"other\" name=\"extra\" role=\"Extra\" categorical=\"false\" label=\"Extra\"/></data>"),
      std::string::npos);
  EXPECT_NE(text.find("<title><text>Title &lt;1&gt;</text></title>"), std::string::npos);
  EXPECT_NE(text.find("<text>Dose &amp; time<BR/>(h)</text>"), std::string::npos);
  // What comes out is chart markup.
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  ASSERT_TRUE(root) << error.ToText();
  EXPECT_TRUE(XChartSchema::Check(*root, error)) << error.ToText();
}

TEST(XViZTemplate, ATemplateThatCannotBeUsedGivesAWarningAndNoDocument) {
  ChartResources resources;
  resources.Template("Broken", "<chart>\n  <graph>\n</chart>\n");
  OmDocument output;
  OmHeading& command = output.fRoot.AddHeading("Command");
  {
    BpProcedure procedure(command, "Generalized Linear Mixed Models", "Generalized Linear Mixed Models");
    for (const char* name : {"Missing", "Broken", "../strings/global", ""}) {
      XViZTemplate chart;
      chart.setTemplateInternalName(name);
      std::string text = "old";
      std::string other;
      EXPECT_FALSE(chart.convert(text, other)) << name;
      EXPECT_TRUE(text.empty()) << name;
    }
  }
  const std::vector<std::string> messages = Messages(command);
  ASSERT_EQ(messages.size(), 4u);
  EXPECT_EQ(messages[0].rfind("The chart template \"Missing\" cannot be used: cannot open the file \"", 0), 0u);
  EXPECT_NE(messages[0].find("/template/Missing.viztemplate"), std::string::npos);
  EXPECT_NE(messages[1].find("/template/Broken.viztemplate, line 3, column 3: mismatched tag."), std::string::npos)
      << messages[1];
  EXPECT_EQ(messages[2],
            "The chart template \"../strings/global\" cannot be used: a built-in template is named by a plain name.");
  EXPECT_EQ(messages[3], "The chart template \"\" cannot be used: a built-in template is named by a plain name.");
}

TEST(XViZTemplate, FindsItsTemplatesInTheTemplateFolderOfTheResources) {
  ChartResources resources;
  EXPECT_EQ(XViZTemplate::TemplateDirectory(), resources.Path() + "/template/");
  EXPECT_EQ(XViZTemplate::TemplatePath("GLMMEmMeans"), resources.Path() + "/template/GLMMEmMeans.viztemplate");
}
