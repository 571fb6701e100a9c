#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

#include "host/data/ZORV_Variable.h"
#include "host/viz/FetchFile.h"
#include "host/viz/JNIException.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ViZEditor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XVariable.h"
#include "host/viz/XViZTemplate.h"
#include "host/viz/ZorvJVM.h"


TEST(VarDataProcessor, HoldsSourcesVariablesAndCellsByRow) {
  VarDataProcessor data;
  EXPECT_EQ(data.AddDataSource("pointSource", 0), 0);
  EXPECT_EQ(data.AddDataSource("edgeSource", 3), 1);
  VarDataProcessor::VarInfo x;
  VarDataProcessor::VarInfo nodes;
  ASSERT_TRUE(data.AddVariable("pointSource", "X", &x));
  ASSERT_TRUE(data.AddVariable("pointSource", "Nodes", &nodes));
  EXPECT_EQ(x.fSource, 0);
  EXPECT_EQ(x.fVariable, 0);
  EXPECT_EQ(nodes.fVariable, 1);

  // Rows in any order; the source grows to hold them.
  EXPECT_TRUE(data.SetVariableValue(x, 2, 1.5));
  EXPECT_TRUE(data.SetStringVariableValue(nodes, 0, "caf\xc3\xa9"));
  EXPECT_EQ(data.GetRowCount(0), 3);
  EXPECT_EQ(data.GetRowCount(1), 3);

  double number = 0;
  std::string text;
  EXPECT_TRUE(data.GetNumericValue(x, 2, number));
  EXPECT_EQ(number, 1.5);
  EXPECT_FALSE(data.IsValueSet(x, 0));
  EXPECT_FALSE(data.GetNumericValue(x, 1, number));
  EXPECT_TRUE(data.GetStringValue(nodes, 0, text));
  EXPECT_EQ(text, "caf\xc3\xa9");
  EXPECT_FALSE(data.GetNumericValue(nodes, 0, number));
  EXPECT_FALSE(data.GetStringValue(x, 2, text));

  // Writing again replaces, also with the other kind.
  EXPECT_TRUE(data.SetStringVariableValue(x, 2, "text now"));
  EXPECT_TRUE(data.GetStringValue(x, 2, text));
  EXPECT_EQ(text, "text now");
}

TEST(VarDataProcessor, DeclaringAgainGivesWhatExists) {
  VarDataProcessor data;
  EXPECT_EQ(data.AddDataSource("s", 2), 0);
  EXPECT_EQ(data.AddDataSource("s", 5), 0);
  EXPECT_EQ(data.GetRowCount(0), 5);
  EXPECT_EQ(data.AddDataSource("s", 1), 0);
  EXPECT_EQ(data.GetRowCount(0), 5);
  EXPECT_EQ(data.AddDataSource("t", -4), 1);
  EXPECT_EQ(data.GetRowCount(1), 0);
  VarDataProcessor::VarInfo a;
  VarDataProcessor::VarInfo again;
  ASSERT_TRUE(data.AddVariable("s", "a", &a));
  ASSERT_TRUE(data.AddVariable("s", "a", &again));
  EXPECT_EQ(a.fVariable, again.fVariable);
  EXPECT_EQ(data.GetVariableCount(0), 1);
  // The same name in another source is another variable.
  VarDataProcessor::VarInfo other;
  ASSERT_TRUE(data.AddVariable("t", "a", &other));
  EXPECT_EQ(other.fSource, 1);
  EXPECT_EQ(data.GetDataSourceCount(), 2);
  EXPECT_EQ(data.GetDataSourceName(1), "t");
  EXPECT_EQ(data.GetVariableName(1, 0), "a");
  VarDataProcessor::VarInfo found;
  EXPECT_TRUE(data.FindVariable("t", "a", &found));
  EXPECT_EQ(found.fSource, 1);
  EXPECT_FALSE(data.FindVariable("t", "b", &found));
  EXPECT_FALSE(data.FindVariable("u", "a", &found));
}

TEST(VarDataProcessor, RefusesWhatWasNotDeclared) {
  VarDataProcessor data;
  VarDataProcessor::VarInfo info;
  EXPECT_FALSE(data.AddVariable("missing", "v", &info));
  EXPECT_EQ(info.fSource, -1);
  data.AddDataSource("s", 0);
  EXPECT_FALSE(data.AddVariable("s", "", &info));
  EXPECT_TRUE(data.AddVariable("s", "v", nullptr));
  EXPECT_FALSE(data.SetVariableValue(VarDataProcessor::VarInfo(), 0, 1.0));
  EXPECT_FALSE(data.SetVariableValue(VarDataProcessor::VarInfo{0, 5}, 0, 1.0));
  ASSERT_TRUE(data.FindVariable("s", "v", &info));
  EXPECT_FALSE(data.SetVariableValue(info, -1, 1.0));
  EXPECT_FALSE(data.SetStringVariableValue(info, LONG_MAX, "x"));
  EXPECT_TRUE(data.SetVariableValue(info, 1000000000L, 1.0));
  EXPECT_EQ(data.GetRowCount(0), 1000000001L);
  EXPECT_EQ(data.GetRowCount(7), 0);
  EXPECT_EQ(data.GetVariableCount(-1), 0);
  EXPECT_EQ(data.GetDataSourceName(3), "");
  EXPECT_EQ(data.GetVariableName(0, 9), "");
  EXPECT_EQ(data.FindDataSource("none"), -1);
}


TEST(XViZTemplate, RecordsItsNameBindingsAndLabels) {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMEmMeans");
  EXPECT_EQ(chart.getTemplateInternalName(), "GLMMEmMeans");
  ZORV_Format format(ZORV_Format::F, 40, 2);
  chart.addVariable("effect1", "effect1", true, "effect1Label", "source0", &format, "Group");
  chart.addVariable("target", "target", false, "", "source0", nullptr, nullptr, 3, nullptr, true);
  chart.addLabel(0, "Means of score");
  ASSERT_EQ(chart.getVariables().size(), 2u);
  const XViZTemplate::Binding& first = chart.getVariables()[0];
  EXPECT_EQ(first.fRole, "effect1");
  EXPECT_EQ(first.fColumn, "effect1");
  EXPECT_TRUE(first.fbCategorical);
  EXPECT_EQ(first.fText, "effect1Label");
  EXPECT_EQ(first.fSource, "source0");
  EXPECT_TRUE(first.fbHasFormat);
  EXPECT_EQ(first.fFormat, format);
  EXPECT_TRUE(first.fbHasLabel);
  EXPECT_EQ(first.fLabel, "Group");
  EXPECT_EQ(first.fMeasurementLevel, 0);
  EXPECT_FALSE(first.fbSortByValue);
  const XViZTemplate::Binding& second = chart.getVariables()[1];
  EXPECT_FALSE(second.fbHasFormat);
  EXPECT_FALSE(second.fbHasLabel);
  EXPECT_EQ(second.fMeasurementLevel, 3);
  EXPECT_TRUE(second.fbSortByValue);
  ASSERT_EQ(chart.getLabels().size(), 1u);
  EXPECT_EQ(chart.getLabels()[0].fPosition, 0);
  EXPECT_EQ(chart.getLabels()[0].fText, "Means of score");
}

TEST(XDocument, HoldsItsTextDescriptionEditorAndData) {
  XDocument doc("<chart>title1</chart>");
  EXPECT_EQ(doc.AsUTF8(), "<chart>title1</chart>");
  EXPECT_EQ(doc.getEditor(), 0);
  doc.setEditor(2);
  EXPECT_EQ(doc.getEditor(), 2);
  ChartString title = ChartString::fromUTF8("Fixed Effects");
  doc.SetDescription(title.xc_str());
  EXPECT_EQ(doc.GetDescription(), title);
  VarDataProcessor data;
  EXPECT_EQ(doc.GetChartData(), nullptr);
  doc.SetChartData(&data);
  EXPECT_EQ(doc.GetChartData(), &data);
}


TEST(XGraph, FindsVariablesByNameAndInstance) {
  XGraph graph;
  EXPECT_EQ(graph.getVariable(ChartString(u"facet1"), 0), nullptr);
  XVariable* nodeFacet = graph.addVariable(ChartString(u"facet1"), ChartString(u"nodeSource_1"));
  XVariable* from = graph.addVariable(ChartString(u"from"), ChartString(u"edgeSource_1"));
  XVariable* edgeFacet = graph.addVariable(ChartString(u"facet1"), ChartString(u"edgeSource_1"));
  EXPECT_EQ(graph.getVariableCount(), 3);
  EXPECT_EQ(graph.getVariable(ChartString(u"facet1"), 0), nodeFacet);
  EXPECT_EQ(graph.getVariable(ChartString(u"facet1"), 1), edgeFacet);
  EXPECT_EQ(graph.getVariable(ChartString(u"facet1"), 2), nullptr);
  EXPECT_EQ(graph.getVariable(ChartString(u"facet1"), -1), nullptr);
  EXPECT_EQ(graph.getVariable(ChartString(u"from"), 0), from);
  EXPECT_EQ(graph.getVariable(ChartString(u"From"), 0), nullptr);
  EXPECT_EQ(edgeFacet->getSource(), ChartString(u"edgeSource_1"));
  EXPECT_EQ(edgeFacet->getName(), ChartString(u"facet1"));
}

TEST(XVariable, RecordsWhatTheChartCodeSetsOnIt) {
  XVariable variable(ChartString(u"effect1"), ChartString(u"source0"));
  EXPECT_FALSE(variable.isCategorical());
  EXPECT_FALSE(variable.hasFormat());
  EXPECT_EQ(variable.getZORVVariable(), nullptr);
  variable.setLabel(ChartString(u"Group"));
  variable.setCategorical(true);
  variable.setFormat(ZORV_Format(ZORV_Format::F, 40, 3));
  variable.SetFormatPrefix(ChartString(u"Group = "));
  variable.addRelabel(0, ChartString(u"Not Significant"));
  variable.addRelabel(ChartString(u"7"), ChartString(u"Seven"));
  EXPECT_EQ(variable.getLabel(), ChartString(u"Group"));
  EXPECT_TRUE(variable.isCategorical());
  EXPECT_TRUE(variable.hasFormat());
  EXPECT_EQ(variable.getFormat(), ZORV_Format(ZORV_Format::F, 40, 3));
  EXPECT_EQ(variable.GetFormatPrefix(), ChartString(u"Group = "));
  ASSERT_EQ(variable.getRelabels().size(), 2u);
  EXPECT_TRUE(variable.getRelabels()[0].fbNumeric);
  EXPECT_EQ(variable.getRelabels()[0].fNumber, 0.0);
  EXPECT_EQ(variable.getRelabels()[0].fLabel, ChartString(u"Not Significant"));
  EXPECT_FALSE(variable.getRelabels()[1].fbNumeric);
  EXPECT_EQ(variable.getRelabels()[1].fValue, ChartString(u"7"));
}

TEST(XVariable, TakesRelabelsAndFormatFromAHostVariable) {
  ZORV_Variable number("dose", 0);
  number.SetFormat(ZORV_Format(ZORV_Format::F, 6, 1));
  number.ValueLabels().Add(1.0, "low");
  number.ValueLabels().Add(2.0, "high \xc3\xa9");
  XVariable variable(ChartString(u"category"), ChartString(u"source"));
  variable.addRelabels();
  EXPECT_TRUE(variable.getRelabels().empty());
  variable.setZORVVariable(number);
  EXPECT_EQ(variable.getZORVVariable(), &number);
  variable.addRelabels();
  ASSERT_EQ(variable.getRelabels().size(), 2u);
  EXPECT_EQ(variable.getRelabels()[1].fNumber, 2.0);
  EXPECT_EQ(variable.getRelabels()[1].fLabel, ChartString(u"high \u00e9"));
  variable.setFormatBasedOnZORVVariable(number);
  EXPECT_EQ(variable.getFormat(), ZORV_Format(ZORV_Format::F, 6, 1));

  ZORV_Variable text("group", 4);
  text.ValueLabels().Add("a", "Alpha");
  XVariable textual(ChartString(u"facet1"), ChartString(u"source"));
  textual.setZORVVariable(text);
  textual.addRelabels();
  ASSERT_EQ(textual.getRelabels().size(), 1u);
  EXPECT_FALSE(textual.getRelabels()[0].fbNumeric);
  EXPECT_EQ(textual.getRelabels()[0].fValue, ChartString(u"a"));
  EXPECT_EQ(textual.getRelabels()[0].fLabel, ChartString(u"Alpha"));
}

TEST(FetchFile, ReadsATemplateWithTextLineEnds) {
  // Written here rather than kept with the test data, so that no checkout
  // can change its line ends.
  std::string path = testing::TempDir() + "fetch-file-crlf.viztemplate";
  {
    std::ofstream out(path, std::ios::binary);
    out << "\xEF\xBB\xBF<chart>\r\n  <title1/>\r\n</chart>\r";
  }
  EXPECT_EQ(FetchFile::fetch(path, true, true), "<chart>\n  <title1/>\n</chart>\n");
  EXPECT_EQ(FetchFile::fetch(path, false, false), "\xEF\xBB\xBF<chart>\r\n  <title1/>\r\n</chart>\r");
  EXPECT_EQ(FetchFile::fetch(path, false, true), "<chart>\r\n  <title1/>\r\n</chart>\r");
  std::remove(path.c_str());
}

TEST(FetchFile, RefusesWhatIsNotARegularFile) {
  const std::string folder = std::string(GLMIX_TEST_DATA_DIR);
  try {
    FetchFile::fetch(folder, true, true);
    FAIL() << "fetch returned";
  } catch (const std::runtime_error& e) {
    EXPECT_EQ(std::string(e.what()), "the file \"" + folder + "\" is not a regular file");
  }
}

TEST(FetchFile, RaisesAnErrorNamingAFileThatCannotBeRead) {
  std::string path = std::string(GLMIX_TEST_DATA_DIR) + "/no-such-folder/missing.viztemplate";
  try {
    FetchFile::fetch(path, true, true);
    FAIL() << "fetch returned";
  } catch (const std::runtime_error& e) {
    EXPECT_NE(std::string(e.what()).find("missing.viztemplate"), std::string::npos);
  }
}



TEST(JNIException, CarriesItsMessageAndIsARuntimeError) {
  try {
    throw JNIException("the editor failed");
  } catch (const std::runtime_error& e) {
    EXPECT_STREQ(e.what(), "the editor failed");
    EXPECT_NE(dynamic_cast<const JNIException*>(&e), nullptr);
  }
}
