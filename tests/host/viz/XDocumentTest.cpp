#include <gtest/gtest.h>

#include <string>

#include "ChartTestSupport.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XVariable.h"

using ChartTestSupport::Count;

namespace {

const char* const kChart =
    "<chart kind=\"Sample\" width=\"300\">"
    "<data><variable source=\"s\" name=\"x\" label=\"Dose\" categorical=\"true\" format=\"F4.1\">"
    "<relabel value=\"1\" label=\"one\"/></variable>"
    "<variable source=\"s\" name=\"y\"/><variable source=\"t\" name=\"x\"/></data>"
    "<title><text>Sample chart</text></title>"
    "<graph><point x=\"x\" y=\"y\"/></graph></chart>";

// The items of a heading of that kind.
int ItemsOf(const OmHeading& heading, OmItem::Kind kind) {
  int count = 0;
  for (const OmItem& item : heading.fvItems) count += item.fKind == kind ? 1 : 0;
  return count;
}

}  // namespace

TEST(XDocument, TakesTheSessionsLanguageAndLook) {
  XDocument document(kChart);
  document.setLanguage();
  document.applyCTemplate(false);
  const std::string text = document.AsUTF8();
  EXPECT_NE(text.find("lang=\"en\""), std::string::npos);
  EXPECT_NE(text.find("width=\"300\""), std::string::npos);  // its own stays
  EXPECT_NE(text.find("height=\"420\""), std::string::npos);
  EXPECT_NE(text.find("font-family=\"DejaVu Sans"), std::string::npos);
  document.applyCTemplate(true);
  EXPECT_NE(document.AsUTF8().find("width=\"640\""), std::string::npos);
  XDocument style(kChart);
  style.applyStyleTemplate();
  EXPECT_NE(style.AsUTF8().find("palette=\"#3b6fb6,"), std::string::npos);
  EXPECT_EQ(style.AsUTF8().find("height="), std::string::npos);
  // A document nobody changed keeps its text as it came.
  EXPECT_EQ(XDocument(kChart).AsUTF8(), kChart);
}

TEST(XDocument, ItsGraphHoldsTheDeclaredVariablesAndWritesChangesBack) {
  XDocument document(kChart);
  XGraph* graph = document.getExternalGraph();
  ASSERT_EQ(graph->getVariableCount(), 3);
  XVariable* x = graph->getVariable(ChartString(u"x"), 0);
  ASSERT_NE(x, nullptr);
  EXPECT_EQ(x->getSource(), ChartString(u"s"));
  EXPECT_EQ(graph->getVariable(ChartString(u"x"), 1)->getSource(), ChartString(u"t"));
  EXPECT_EQ(x->getLabel(), ChartString(u"Dose"));
  EXPECT_TRUE(x->isCategorical());
  EXPECT_EQ(x->getFormat(), ZORV_Format(ZORV_Format::F, 4, 1));
  ASSERT_EQ(x->getRelabels().size(), 1u);
  EXPECT_EQ(graph, document.getExternalGraph());

  ZORV_Variable dose("dose", 0);
  dose.SetMeasurementLevel(ZORV_Variable::ORDINAL);
  dose.ValueLabels().Add(2.0, "two & more");
  x->setLabel(ChartString(u"Dose (mg)"));
  x->setZORVVariable(dose);
  x->addRelabels();
  x->SetFormatPrefix(ChartString(u"Dose = "));
  XVariable* y = graph->getVariable(ChartString(u"y"), 0);
  y->setCategorical(false);
  y->setFormat(ZORV_Format(ZORV_Format::F, 8, 3));
  const std::string text = document.AsUTF8();
  EXPECT_NE(text.find("label=\"Dose (mg)\" categorical=\"true\" format=\"F4.1\" prefix=\"Dose = \" level=\"2\">"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("<relabel value=\"1\" label=\"one\"/><relabel value=\"2\" label=\"two &amp; more\"/>"),
            std::string::npos);
  EXPECT_NE(text.find("name=\"y\" categorical=\"false\" format=\"F8.3\"/>"), std::string::npos);
  // Asking again writes nothing twice.
  EXPECT_EQ(document.AsUTF8(), text);
  EXPECT_EQ(Count(document.AsUTF8(), "<relabel"), 2);
}

TEST(XDocument, SendsTheChartUnderTheInnermostOpenHeading) {
  OmDocument output;
  OmHeading& command = output.fRoot.AddHeading("Command");
  VarDataProcessor data;
  data.AddDataSource("s", 2);
  VarDataProcessor::VarInfo x;
  VarDataProcessor::VarInfo y;
  data.AddVariable("s", "x", &x);
  data.AddVariable("s", "y", &y);
  data.SetVariableValue(x, 0, 1.0);
  data.SetVariableValue(y, 0, 5.0);
  data.SetVariableValue(x, 1, 2.0);
  data.SetVariableValue(y, 1, 7.5);
  {
    BpProcedure procedure(command, "Generalized Linear Mixed Models", "Generalized Linear Mixed Models");
    {
      BpHeading means = procedure.Heading(BpString("Means", false));
      XDocument document(kChart);
      const ChartString description(u"Means of y");
      document.SetDescription(description.xc_str());
      document.SetChartData(&data);
      document.SendChart(true, false, false);
    }
    XDocument after(kChart);
    after.SendChart(false, true, true);
  }
  ASSERT_EQ(ItemsOf(command, OmItem::HEADING), 1);
  const OmHeading& means = *command.fvItems[0].fpHeading;
  ASSERT_EQ(ItemsOf(means, OmItem::CHART), 1);
  const OmChart& chart = *means.fvItems[0].fpChart;
  EXPECT_EQ(chart.fTitle, "Means of y");
  EXPECT_EQ(chart.fKind, "Sample");
  EXPECT_EQ(chart.fMarkup, kChart);
  ASSERT_EQ(chart.fData.fvSources.size(), 1u);
  EXPECT_EQ(chart.fData.fvSources[0].fRowCount, 2);
  EXPECT_FALSE(chart.fbHidden);
  EXPECT_EQ(Count(chart.fSvg, "<circle"), 2);
  // Once the inner heading is gone, charts go to the procedure's heading; a
  // static picture keeps neither markup nor data, and without its data it
  // draws none. Without a description it is listed by its title.
  ASSERT_EQ(ItemsOf(command, OmItem::CHART), 1);
  const OmChart& picture = *command.fvItems[1].fpChart;
  EXPECT_EQ(picture.fTitle, "Sample chart");
  EXPECT_TRUE(picture.fMarkup.empty());
  EXPECT_TRUE(picture.fData.Empty());
  EXPECT_TRUE(picture.fbHidden);
  EXPECT_EQ(Count(picture.fSvg, "<circle"), 0);
  EXPECT_NE(picture.fSvg.find("<svg"), std::string::npos);
}

TEST(XDocument, AChartThatCannotBeDrawnGivesAWarningAndNoChart) {
  OmDocument output;
  OmHeading& command = output.fRoot.AddHeading("Command");
  {
    BpProcedure procedure(command, "Generalized Linear Mixed Models", "Generalized Linear Mixed Models");
    XDocument broken("<chart>\n<graph><point x=\"nosuch\"/></graph></chart>");
    const ChartString description(u"Broken");
    broken.SetDescription(description.xc_str());
    broken.getExternalGraph();
    broken.SendChart(true, false, false);
    XDocument malformed("<chart><graph>");
    EXPECT_NE(malformed.getExternalGraph(), nullptr);
    EXPECT_EQ(malformed.getExternalGraph()->getVariableCount(), 0);
    EXPECT_EQ(malformed.GetReadError().fLine, 1);
    malformed.SendChart(true, false, false);
    // An empty document is what a template that could not be read leaves:
    // that was said already, so nothing more is.
    XDocument empty("");
    empty.setLanguage();
    empty.SendChart(true, false, false);
  }
  EXPECT_EQ(ItemsOf(command, OmItem::CHART), 0);
  ASSERT_EQ(ItemsOf(command, OmItem::MESSAGE), 2);
  const OmMessage& first = *command.fvItems[0].fpMessage;
  EXPECT_EQ(first.fLevel, OmMessage::WARNING);
  EXPECT_EQ(first.fText,
            "The chart \"Broken\" cannot be drawn: line 2, column 8: <point> names the variable \"nosuch\" in its x, "
            "which the data source \"\" does not declare.");
  EXPECT_EQ(command.fvItems[1].fpMessage->fText.rfind("The chart \"(untitled)\" cannot be drawn: line 1, column ", 0),
            0u);
}
