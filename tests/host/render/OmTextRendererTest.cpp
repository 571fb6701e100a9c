#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "OmRenderSample.h"
#include "host/render/OmTextRenderer.h"
#include "host/render/OmTextTable.h"
#include "host/render/OmUtf8.h"

namespace {

OmDimension Dim(const std::string& name, OmDimension::Place place, std::vector<OmDimensionNode> nodes) {
  OmDimension dim;
  dim.fName.fText = name;
  dim.fPlace = place;
  dim.fRoot.fbIsGroup = true;
  dim.fRoot.fvChildren = std::move(nodes);
  return dim;
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) out.push_back(line);
  return out;
}

// A table of `columns` columns of numbers in groups of three.
OmTable WideTable(int columns) {
  OmTable t;
  t.fTitle.fText = "Wide";
  std::vector<OmDimensionNode> groups;
  for (int g = 0; g * 3 < columns; ++g) {
    std::vector<OmDimensionNode> leaves;
    for (int c = g * 3; c < columns && c < g * 3 + 3; ++c) leaves.push_back(OmRenderSample::Category("Col " + std::to_string(c)));
    groups.push_back(OmRenderSample::Group("Group " + std::to_string(g), leaves));
  }
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("First row"), OmRenderSample::Category("Second")}));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, groups));
  for (int r = 0; r < 2; ++r) {
    for (int c = 0; c < columns; ++c) t.fCells[{r, c}] = OmRenderSample::Number(c, "1234.567");
  }
  return t;
}

OmTable NumberColumn(const std::vector<std::string>& texts) {
  OmTable t;
  std::vector<OmDimensionNode> rows;
  for (std::size_t i = 0; i < texts.size(); ++i) rows.push_back(OmRenderSample::Category("r" + std::to_string(i)));
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, rows));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, {OmRenderSample::Category("V")}));
  for (std::size_t i = 0; i < texts.size(); ++i) {
    t.fCells[{static_cast<int>(i), 0}] = OmRenderSample::Number(0, texts[i]);
  }
  return t;
}

}  // namespace

TEST(OmTextRenderTableTest, NumberColumnWidthIsWidestIntegerPlusWidestFraction) {
  OmTextTable table(NumberColumn({"12.5", "3.25", "100"}), 80);
  ASSERT_EQ(table.GetColumnWidths().size(), 1u);
  EXPECT_EQ(table.GetColumnWidths()[0], 6);  // "100" and ".25"
}

TEST(OmTextRenderTableTest, NumbersLineUpOnTheDecimalPoint) {
  const std::string out = OmTextTable(NumberColumn({"12.5", "3.25", "100", "-.5"}), 80).Render();
  const auto lines = SplitLines(out);
  std::vector<std::size_t> points;
  for (const std::string& line : lines) {
    if (line.rfind("r", 0) != 0) continue;
    const std::size_t point = line.find('.');
    if (point != std::string::npos) points.push_back(point);
    if (line.find("100") != std::string::npos) points.push_back(line.find("100") + 3);
  }
  ASSERT_EQ(points.size(), 4u);
  for (std::size_t p : points) EXPECT_EQ(p, points[0]) << out;
}

TEST(OmTextRenderTableTest, MinimumDataColumnWidthIsHonoured) {
  OmTable t = NumberColumn({"1"});
  t.fMinDataColumnWidth = 70;  // points: ten characters
  OmTextTable table(t, 80);
  EXPECT_EQ(table.GetColumnWidths()[0], 10);
}

TEST(OmTextRenderTableTest, LongLabelsWrapWithinTheStub) {
  OmTable t;
  const std::string label = "A parameter label that is much too long to stand on one line of a narrow page";
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category(label)}));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, {OmRenderSample::Category("Value")}));
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1.000");
  OmTextTable table(t, 40);
  ASSERT_EQ(table.GetStubWidths().size(), 1u);
  EXPECT_LE(table.GetStubWidths()[0], 40 * 3 / 5);
  const auto lines = SplitLines(table.Render());
  for (const std::string& line : lines) EXPECT_LE(OmUtf8::Width(line), 40) << line;
  EXPECT_NE(table.Render().find("A parameter label"), std::string::npos);
}

TEST(OmTextRenderTableTest, WideTableIsCutIntoPanelsThatRepeatTheStub) {
  OmTable t = WideTable(12);
  OmTextTable table(t, 60);
  const auto& panels = table.GetPanels();
  ASSERT_GT(panels.size(), 1u);
  int total = 0;
  for (const auto& panel : panels) {
    ASSERT_FALSE(panel.empty());
    // Cuts fall between the groups of three.
    EXPECT_EQ(panel.front() % 3, 0);
    total += static_cast<int>(panel.size());
  }
  EXPECT_EQ(total, 12);
  const std::string out = table.Render();
  for (const std::string& line : SplitLines(out)) EXPECT_LE(OmUtf8::Width(line), 60) << line;
  std::size_t count = 0;
  for (std::size_t pos = out.find("First row"); pos != std::string::npos; pos = out.find("First row", pos + 1)) ++count;
  EXPECT_EQ(count, panels.size());
}

TEST(OmTextRenderTableTest, NarrowTableIsOnePanel) {
  OmTextTable table(WideTable(3), 80);
  ASSERT_EQ(table.GetPanels().size(), 1u);
  EXPECT_EQ(table.GetPanels()[0], (std::vector<int>{0, 1, 2}));
}

TEST(OmTextRenderTableTest, GroupLabelIsCentredOverARule) {
  const std::string out = OmTextTable(WideTable(3), 80).Render();
  const auto lines = SplitLines(out);
  std::size_t groupLine = lines.size();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find("Group 0") != std::string::npos) groupLine = i;
  }
  ASSERT_LT(groupLine + 2, lines.size());
  const std::string& rule = lines[groupLine + 1];
  const std::size_t first = rule.find('-');
  const std::size_t last = rule.find_last_of('-');
  ASSERT_NE(first, std::string::npos);
  // The rule spans the three columns, and the label sits in its middle.
  EXPECT_LE(first, lines[groupLine + 2].find("Col 0"));
  EXPECT_GE(last + 1, lines[groupLine + 2].find("Col 2") + 5);
  const std::size_t label = lines[groupLine].find("Group 0");
  const std::size_t left = label - first;
  const std::size_t right = last + 1 - (label + 7);
  EXPECT_LE(left > right ? left - right : right - left, 1u);
}

TEST(OmTextRenderTableTest, MissingCellIsEmptyAndMarkersAppear) {
  OmTable t = NumberColumn({"1.5", "2.5"});
  t.fvFootnotes = {"Redundant"};
  OmCell missing = OmRenderSample::Missing();
  t.fCells[{1, 0}] = missing;
  t.fCells[{0, 0}].fContent.fvFootnotes = {0};
  const std::string out = OmTextTable(t, 80).Render();
  EXPECT_NE(out.find("1.5^a"), std::string::npos) << out;
  EXPECT_NE(out.find("a. Redundant"), std::string::npos) << out;
  for (const std::string& line : SplitLines(out)) {
    if (line.rfind("r1", 0) == 0) {
      EXPECT_EQ(line, "r1");
    }
  }
}

TEST(OmTextRenderTableTest, UnicodeLabelsAlignByCharacters) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW,
                               {OmRenderSample::Category("\xce\xbc\xce\xbc\xce\xbc"), OmRenderSample::Category("abc")}));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, {OmRenderSample::Category("V")}));
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1");
  t.fCells[{1, 0}] = OmRenderSample::Number(2, "2");
  const auto lines = SplitLines(OmTextTable(t, 80).Render());
  std::vector<int> ends;
  for (const std::string& line : lines) {
    if (line.find('1') != std::string::npos || line.find('2') != std::string::npos) ends.push_back(OmUtf8::Width(line));
  }
  ASSERT_EQ(ends.size(), 2u);
  EXPECT_EQ(ends[0], ends[1]);
}

TEST(OmTextRendererTest, MessagesCarryTheirLevelAndWrapUnderIt) {
  OmTextRenderer renderer(40);
  OmMessage m;
  m.fLevel = OmMessage::WARNING;
  m.fText = "The final Hessian matrix is not positive definite although all convergence criteria are satisfied.";
  const auto lines = SplitLines(renderer.RenderMessage(m));
  ASSERT_GT(lines.size(), 1u);
  EXPECT_EQ(lines[0].rfind("Warning: ", 0), 0u);
  for (std::size_t i = 1; i < lines.size(); ++i) EXPECT_EQ(lines[i].rfind("         ", 0), 0u);
  for (const auto& line : lines) EXPECT_LE(OmUtf8::Width(line), 40);
  m.fLevel = OmMessage::ERROR;
  EXPECT_EQ(renderer.RenderMessage(m).rfind("Error: ", 0), 0u);
  m.fLevel = OmMessage::NOTE;
  EXPECT_EQ(renderer.RenderMessage(m).rfind("Note: ", 0), 0u);
}

TEST(OmTextRendererTest, ChartIsItsTitleAndANoteOnTheHtmlReport) {
  OmChart chart;
  chart.fTitle = "Fixed Effects";
  chart.fKind = "GLMMFixedCoefficients";
  EXPECT_EQ(OmTextRenderer().RenderChart(chart), "Fixed Effects\n[Chart: drawn in the HTML report]\n");
  chart.fbHidden = true;
  EXPECT_EQ(OmTextRenderer().RenderChart(chart), "");
}

TEST(OmTextRendererTest, FrontEndTextStandsAsItCame) {
  OmFrontEndText text;
  text.fvLines = {"  indented   text", std::string(120, 'x')};
  EXPECT_EQ(OmTextRenderer(40).RenderText(text), "  indented   text\n" + std::string(120, 'x') + "\n");
}

TEST(OmTextRendererTest, WidthHasAFloor) {
  OmTextRenderer renderer(3);
  EXPECT_EQ(renderer.GetWidth(), OmTextTable::kMinPageWidth);
  renderer.SetWidth(132);
  EXPECT_EQ(renderer.GetWidth(), 132);
  renderer.SetWidth(-1);
  EXPECT_EQ(renderer.GetWidth(), OmTextTable::kMinPageWidth);
}

TEST(OmTextRendererTest, EmptyDocumentGivesNothing) { EXPECT_EQ(OmTextRenderer().Render(OmDocument()), ""); }

TEST(OmTextRendererTest, HeadingsAreUnderlinedByDepth) {
  OmDocument doc;
  OmHeading& top = doc.fRoot.AddHeading("Run");
  top.AddHeading("Inner").AddMessage(OmMessage::NOTE, "x");
  EXPECT_EQ(OmTextRenderer().Render(doc), "Run\n===\n\nInner\n-----\n\nNote: x\n");
}

TEST(OmTextRendererTest, OddTablesDoNotBreak) {
  OmDocument doc;
  // No dimensions at all, a dimension without categories, a group without
  // children, an unknown place and a malformed label.
  doc.fRoot.AddTable().fTitle.fText = "Empty";
  OmTable& t = doc.fRoot.AddTable();
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {}));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, {OmRenderSample::Group("g", {})}));
  OmTable& u = doc.fRoot.AddTable();
  u.fvDimensions.push_back(Dim("Rows", static_cast<OmDimension::Place>(3), {OmRenderSample::Category("bad \xff label")}));
  u.fCells[{0}] = OmRenderSample::Text("");
  const std::string out = OmTextRenderer(20).Render(doc);
  EXPECT_NE(out.find("Empty"), std::string::npos);
  EXPECT_NE(out.find("bad"), std::string::npos);
}
