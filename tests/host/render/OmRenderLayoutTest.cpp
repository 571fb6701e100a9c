#include <gtest/gtest.h>

#include "OmRenderSample.h"
#include "host/render/OmTableLayout.h"

namespace {

OmDimension Dim(const std::string& name, OmDimension::Place place, std::vector<OmDimensionNode> nodes) {
  OmDimension dim;
  dim.fName.fText = name;
  dim.fPlace = place;
  dim.fRoot.fbIsGroup = true;
  dim.fRoot.fvChildren = std::move(nodes);
  return dim;
}

const OmTableLayout::SpanData* FindSpan(const std::vector<OmTableLayout::SpanData>& spans, const std::string& text) {
  for (const auto& span : spans) {
    if (span.fpText != nullptr && span.fpText->fText == text) return &span;
  }
  return nullptr;
}

}  // namespace

TEST(OmRenderLayoutTest, NestedColumnGroupsSpanTheirChildren) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("r")}));
  t.fvDimensions.push_back(Dim(
      "Statistics", OmDimension::COLUMN,
      {OmRenderSample::Category("Estimate"),
       OmRenderSample::Group("Interval", {OmRenderSample::Group("95%", {OmRenderSample::Category("Lower"),
                                                                       OmRenderSample::Category("Upper")})})}));
  for (int c = 0; c < 3; ++c) t.fCells[{0, c}] = OmRenderSample::Number(c, std::to_string(c));
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetHeaderLevels(), 3);
  EXPECT_EQ(layout.GetColumnCount(), 3);
  const auto* estimate = FindSpan(layout.GetHeaderSpans(), "Estimate");
  ASSERT_NE(estimate, nullptr);
  EXPECT_EQ(estimate->fLevel, 0);
  EXPECT_EQ(estimate->fLevels, 3);  // reaches down to the data
  const auto* interval = FindSpan(layout.GetHeaderSpans(), "Interval");
  ASSERT_NE(interval, nullptr);
  EXPECT_EQ(interval->fFirst, 1);
  EXPECT_EQ(interval->fCount, 2);
  EXPECT_TRUE(interval->fbHasChildren);
  const auto* pct = FindSpan(layout.GetHeaderSpans(), "95%");
  ASSERT_NE(pct, nullptr);
  EXPECT_EQ(pct->fLevel, 1);
  EXPECT_EQ(pct->fCount, 2);
  const auto* upper = FindSpan(layout.GetHeaderSpans(), "Upper");
  ASSERT_NE(upper, nullptr);
  EXPECT_EQ(upper->fLevel, 2);
  EXPECT_FALSE(upper->fbHasChildren);
}

TEST(OmRenderLayoutTest, OuterRowGroupSpansItsRows) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Parameter", OmDimension::ROW,
                               {OmRenderSample::Category("(Intercept)"),
                                OmRenderSample::Group("Group", {OmRenderSample::Category("A"), OmRenderSample::Category("B")})}));
  for (int r = 0; r < 3; ++r) t.fCells[{r}] = OmRenderSample::Number(r, std::to_string(r));
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetStubLevels(), 2);
  const auto& spans = layout.GetStubSpans(0);
  const auto* group = FindSpan(spans, "Group");
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->fFirst, 1);
  EXPECT_EQ(group->fCount, 2);
  const auto* intercept = FindSpan(spans, "(Intercept)");
  ASSERT_NE(intercept, nullptr);
  EXPECT_EQ(intercept->fLevels, 2);  // a shallow row label takes both stub columns
}

TEST(OmRenderLayoutTest, HiddenGroupLabelMovesChildrenUp) {
  OmTable t;
  OmDimensionNode group = OmRenderSample::Group("hidden", {OmRenderSample::Category("A"), OmRenderSample::Category("B")});
  group.fbShowLabel = false;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {group}));
  t.fCells[{0}] = OmRenderSample::Number(1, "1");
  t.fCells[{1}] = OmRenderSample::Number(2, "2");
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetStubLevels(), 1);
  EXPECT_EQ(FindSpan(layout.GetStubSpans(0), "hidden"), nullptr);
}

TEST(OmRenderLayoutTest, DimensionWithHiddenLabelsTakesNoPlace) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Record", OmDimension::ROW, {OmRenderSample::Category("0"), OmRenderSample::Category("1")}));
  t.fvDimensions.back().fbShowLabels = false;
  t.fvDimensions.push_back(Dim("Data", OmDimension::ROW, {OmRenderSample::Category("first")}));
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1");
  t.fCells[{1, 0}] = OmRenderSample::Number(2, "2");
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetStubLevels(), 1);
  EXPECT_EQ(layout.GetRowCount(), 2);
}

TEST(OmRenderLayoutTest, HigherOrderStandsOutside) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Inner", OmDimension::ROW, {OmRenderSample::Category("x"), OmRenderSample::Category("y")}));
  t.fvDimensions.push_back(Dim("Outer", OmDimension::ROW, {OmRenderSample::Category("P"), OmRenderSample::Category("Q")}));
  t.fvDimensions.back().fOrder = 2;
  for (int i = 0; i < 2; ++i) {
    for (int o = 0; o < 2; ++o) t.fCells[{i, o}] = OmRenderSample::Number(i, "1");
  }
  OmTableLayout layout(t);
  const auto* outer = FindSpan(layout.GetStubSpans(0), "P");
  ASSERT_NE(outer, nullptr);
  EXPECT_EQ(outer->fLevel, 0);
  EXPECT_EQ(outer->fCount, 2);
  // Rows run inner fastest: P x, P y, Q x, Q y.
  EXPECT_EQ(layout.Coordinates(0, 1, 0), (std::vector<int>{1, 0}));
}

TEST(OmRenderLayoutTest, EmptyCombinationsAreLeftOut) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Data", OmDimension::ROW, {OmRenderSample::Category("first"), OmRenderSample::Category("total")}));
  t.fvDimensions.push_back(Dim("Record", OmDimension::ROW,
                               {OmRenderSample::Category("0"), OmRenderSample::Category("1"), OmRenderSample::Category("Levels")}));
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1");
  t.fCells[{0, 1}] = OmRenderSample::Number(1, "1");
  t.fCells[{1, 2}] = OmRenderSample::Number(1, "1");
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetRowCount(), 3);  // not 6
}

TEST(OmRenderLayoutTest, TableWithoutCellsShowsItsStructure) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("a"), OmRenderSample::Category("b")}));
  t.fvDimensions.push_back(Dim("Cols", OmDimension::COLUMN, {OmRenderSample::Category("c")}));
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetRowCount(), 2);
  EXPECT_EQ(layout.GetColumnCount(), 1);
  EXPECT_EQ(layout.CellAt(0, 1, 0), nullptr);
}

TEST(OmRenderLayoutTest, CellsWithBadCoordinatesAreIgnored) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("a")}));
  t.fCells[{0}] = OmRenderSample::Number(1, "1");
  t.fCells[{5}] = OmRenderSample::Number(2, "2");
  t.fCells[{0, 0}] = OmRenderSample::Number(3, "3");
  t.fCells[{-1}] = OmRenderSample::Number(4, "4");
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetRowCount(), 1);
  ASSERT_NE(layout.CellAt(0, 0, 0), nullptr);
  EXPECT_EQ(layout.CellAt(0, 0, 0)->fContent.fText, "1");
  EXPECT_EQ(layout.CellAt(0, 3, 0), nullptr);
}

TEST(OmRenderLayoutTest, FootnotesLetteredTitleThenCategoriesThenCells) {
  OmTable t;
  t.fvFootnotes = {"cell note", "category note", "title note", "unused"};
  t.fTitle.fText = "T";
  t.fTitle.fvFootnotes = {2};
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("a", {1})}));
  OmCell cell = OmRenderSample::Number(1, "1");
  cell.fContent.fvFootnotes = {0};
  t.fCells[{0}] = cell;
  OmTableLayout layout(t);
  const OmFootnoteMarkers& m = layout.GetMarkers();
  EXPECT_EQ(m.GetMarker(2), "a");
  EXPECT_EQ(m.GetMarker(1), "b");
  EXPECT_EQ(m.GetMarker(0), "c");
  EXPECT_EQ(m.GetMarker(3), "d");
}

TEST(OmRenderLayoutTest, LayersEachShowTheirOwnRows) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Split", OmDimension::LAYER, {OmRenderSample::Category("S1"), OmRenderSample::Category("S2")}));
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("a"), OmRenderSample::Category("b")}));
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1");
  t.fCells[{0, 1}] = OmRenderSample::Number(1, "1");
  t.fCells[{1, 1}] = OmRenderSample::Number(1, "1");
  OmTableLayout layout(t);
  ASSERT_EQ(layout.GetLayerCount(), 2);
  EXPECT_EQ(layout.GetLayerRows(0).size(), 2u);
  EXPECT_EQ(layout.GetLayerRows(1), (std::vector<int>{1}));
  const auto label = layout.GetLayerLabel(1);
  ASSERT_EQ(label.size(), 1u);
  ASSERT_EQ(label[0].fvPath.size(), 1u);
  EXPECT_EQ(label[0].fvPath[0]->fText, "S2");
}

TEST(OmRenderLayoutTest, ShownColumnDimensionNameSpansItsColumns) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("r")}));
  t.fvDimensions.push_back(Dim("Predicted", OmDimension::COLUMN, {OmRenderSample::Category("No"), OmRenderSample::Category("Yes")}));
  t.fvDimensions.back().fbShowName = true;
  t.fCells[{0, 0}] = OmRenderSample::Number(1, "1");
  t.fCells[{0, 1}] = OmRenderSample::Number(2, "2");
  OmTableLayout layout(t);
  EXPECT_EQ(layout.GetHeaderLevels(), 2);
  const auto* name = FindSpan(layout.GetHeaderSpans(), "Predicted");
  ASSERT_NE(name, nullptr);
  EXPECT_TRUE(name->fbDimensionName);
  EXPECT_EQ(name->fCount, 2);
  EXPECT_EQ(name->fLevel, 0);
  const auto* yes = FindSpan(layout.GetHeaderSpans(), "Yes");
  ASSERT_NE(yes, nullptr);
  EXPECT_EQ(yes->fLevel, 1);
}

TEST(OmRenderLayoutTest, NestedColumnDimensionsRepeatTheInnerOne) {
  OmTable t;
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("r")}));
  t.fvDimensions.push_back(Dim("Outer", OmDimension::COLUMN, {OmRenderSample::Category("A"), OmRenderSample::Category("B")}));
  t.fvDimensions.back().fOrder = 2;
  t.fvDimensions.push_back(Dim("Inner", OmDimension::COLUMN, {OmRenderSample::Category("x"), OmRenderSample::Category("y")}));
  for (int o = 0; o < 2; ++o) {
    for (int i = 0; i < 2; ++i) t.fCells[{0, o, i}] = OmRenderSample::Number(1, "1");
  }
  OmTableLayout layout(t);
  ASSERT_EQ(layout.GetColumnCount(), 4);
  int inner = 0;
  for (const auto& span : layout.GetHeaderSpans()) {
    if (span.fpText != nullptr && span.fpText->fText == "x") ++inner;
  }
  EXPECT_EQ(inner, 2);
  const auto* b = FindSpan(layout.GetHeaderSpans(), "B");
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->fFirst, 2);
  EXPECT_EQ(b->fCount, 2);
  EXPECT_TRUE(b->fbHasChildren);
}
