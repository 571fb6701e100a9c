#include "host/output/BpPivotTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpCategory.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDimension.h"
#include "host/output/BpGroup.h"
#include "host/output/BpHeading.h"
#include "host/output/BpNumber.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/output/OmDocument.h"

namespace {

class BpPivotTableTest : public ::testing::Test {
 protected:
  BpPivotTableTest() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {}

  OmHeading& Node() { return *fDocument.fRoot.fvItems[0].fpHeading; }

  // The text of the cell at the given leaf positions; "<none>" when empty.
  static std::string CellText(const OmTable& table, const std::vector<int>& coordinates) {
    const OmCell* cell = table.CellAt(coordinates);
    return cell ? cell->fContent.fText : "<none>";
  }

  static std::vector<std::string> LeafLabels(const OmDimension& dimension) {
    std::vector<std::string> labels;
    for (const auto& path : dimension.LeafPaths()) labels.push_back(path.back()->fLabel.fText);
    return labels;
  }

  OmDocument fDocument;
  BpProcedure fProcedure;
};

}  // namespace

TEST_F(BpPivotTableTest, ProcedureTakesItsTranslatedTitle) {
  EXPECT_EQ(Node().fText, "Mixed");
  EXPECT_EQ(fProcedure.GetTitle(), "Mixed");
  EXPECT_EQ(fProcedure.GetStringTable(), "Mixed");
}

TEST_F(BpPivotTableTest, TitleIsTranslatedAndSubTypeIsNot) {
  BpPivotTable table = fProcedure.PivotTable(BpString("Fixed Parameter Estimates", true),
                                             BpString("Parameter Estimates", true), true);
  ASSERT_EQ(Node().fvItems.size(), 1u);
  const OmTable& written = *Node().fvItems[0].fpTable;
  EXPECT_EQ(&written, table.GetOmTable());
  EXPECT_EQ(written.fTitle.fText, "Estimates of Fixed Effects");
  EXPECT_EQ(written.fSubType, "Parameter Estimates");
  EXPECT_TRUE(table.IsProcedureTable());
}

TEST_F(BpPivotTableTest, CellsLandAtTheCrossingOfTheCurrentCategories) {
  BpPivotTable table =
      fProcedure.PivotTable(BpString("Tests of Fixed Effects", true), BpString("Tests of Fixed Effects", true), true);
  BpDimension rows = table.Dimension(BpString("Source", true), 2);
  rows.Position(0, 1, false, false);
  BpDimension columns = table.Dimension(BpString("Statistics", true), BpPivotTable::AS_CREATED);
  columns.Position(BpDimension::COLUMNS, 1, true, false);

  const char* sources[] = {"(Intercept)", "A", "B"};
  for (int i = 0; i < 3; ++i) {
    rows.Category(BpString(sources[i], i == 0));
    columns.Category(BpString("Numerator DF", true)).Cell(BpNumber(i + 1.0, fProcedure.Count()));
    BpCategory column = columns.Category(BpString("F Value", true));
    column.Cell(BpNumber(10.0 * (i + 1), fProcedure.GeneralStat()));
  }

  const OmTable& written = *table.GetOmTable();
  ASSERT_EQ(written.fvDimensions.size(), 2u);
  EXPECT_EQ(written.fvDimensions[0].fName.fText, "Source");
  EXPECT_TRUE(written.fvDimensions[0].fbShowName);
  EXPECT_EQ(written.fvDimensions[1].fPlace, OmDimension::COLUMN);
  EXPECT_FALSE(written.fvDimensions[1].fbShowName);
  EXPECT_TRUE(written.fvDimensions[1].fbShowLabels);
  EXPECT_EQ(LeafLabels(written.fvDimensions[0]), (std::vector<std::string>{"Intercept", "A", "B"}));
  // A column label seen again gives the same column.
  EXPECT_EQ(LeafLabels(written.fvDimensions[1]), (std::vector<std::string>{"Numerator df", "F"}));
  EXPECT_EQ(CellText(written, {0, 0}), "1");
  EXPECT_EQ(CellText(written, {2, 0}), "3");
  EXPECT_EQ(CellText(written, {1, 1}), "20.000");
  EXPECT_EQ(written.fCells.size(), 6u);
}

TEST_F(BpPivotTableTest, NestedGroupsNumberTheirLeavesInOrder) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Parameter", true), 2);
  BpDimension columns = table.Dimension(BpString("Statistics", true), 2);
  rows.Category(BpString("x", false));
  columns.Category(BpString("B0", true)).Cell(BpNumber(1.5));
  BpComposite interval("^1 Confidence Interval", true);
  interval.Add(BpNumber(95, BpProcedure::SigDigit(95)));
  interval.Finish();
  BpGroup group = columns.Group(interval, true, 2);
  group.Category(BpString("Lower Bound", true)).Cell(BpNumber(1.0));
  group.Category(BpString("Upper Bound", true)).Cell(BpNumber(2.0));
  // The same group and categories come back for the next row.
  rows.Category(BpString("y", false));
  BpGroup again = columns.Group(interval, true, BpGroup::AS_CREATED);
  again.Category(BpString("Upper Bound", true)).Cell(BpNumber(4.0));

  const OmTable& written = *table.GetOmTable();
  const OmDimension& statistics = written.fvDimensions[1];
  ASSERT_EQ(statistics.fRoot.fvChildren.size(), 2u);
  const OmDimensionNode& node = statistics.fRoot.fvChildren[1];
  EXPECT_TRUE(node.fbIsGroup);
  EXPECT_TRUE(node.fbShowLabel);
  EXPECT_EQ(node.fLabel.fText, "95% Confidence Interval");
  EXPECT_EQ(LeafLabels(statistics), (std::vector<std::string>{"Estimate", "Lower Bound", "Upper Bound"}));
  EXPECT_EQ(CellText(written, {0, 1}), "1.000");
  EXPECT_EQ(CellText(written, {1, 2}), "4.000");
  EXPECT_EQ(CellText(written, {1, 1}), "<none>");
}

TEST_F(BpPivotTableTest, FootnotesOnCellsAndCategories) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Parameter", true), 2);
  BpDimension columns = table.Dimension(BpString("Statistics", true), 2);
  BpString redundant("Redundant parameter ...", true);
  for (int i = 0; i < 2; ++i) {
    BpCategory row = rows.Category(BpString(i == 0 ? "a" : "b", false));
    BpCategory cell = columns.Category(BpString("B0", true));
    cell.Cell(BpNumber(0.0, fProcedure.Count()));
    cell.CellNote(BpAnnotation(redundant.Replicate()));
    if (i == 1) row.Note(BpAnnotation(BpString("a category note", false).Replicate()));
  }
  const OmTable& written = *table.GetOmTable();
  ASSERT_EQ(written.fvFootnotes.size(), 2u);
  EXPECT_EQ(written.fvFootnotes[0], "This parameter is set to zero because it is redundant.");
  EXPECT_EQ(written.CellAt({0, 0})->fContent.fvFootnotes, std::vector<int>{0});
  EXPECT_EQ(written.CellAt({1, 0})->fContent.fvFootnotes, std::vector<int>{0});
  EXPECT_EQ(written.CellAt({1, 0})->fContent.fText, "0");
  EXPECT_EQ(written.fvDimensions[0].fRoot.fvChildren[1].fLabel.fvFootnotes, std::vector<int>{1});
}

TEST_F(BpPivotTableTest, CaptionsNotesAndColumnWidth) {
  BpPivotTable table = fProcedure.PivotTable(BpString("Information Criteria", true),
                                             BpString("Information Criteria", true), true);
  table.Caption(BpString("Smaller is better ...", true));
  ZORV_Variable y("y", 0);
  BpComposite caption("Dep variable is ^1", true);
  caption.Add(BpVariable(y, 2));
  caption.Finish();
  table.Note(BpAnnotation(caption.Replicate(), -1, false));
  table.MinDataColumnWidth(150);
  const OmTable& written = *table.GetOmTable();
  ASSERT_EQ(written.fvCaptions.size(), 1u);
  EXPECT_EQ(written.fvCaptions[0].fText, "The information criteria are displayed in smaller-is-better form.");
  ASSERT_EQ(written.fvNotes.size(), 1u);
  EXPECT_EQ(written.fvNotes[0].fText, "Dependent Variable: y.");
  EXPECT_EQ(written.fMinDataColumnWidth, 150);
}

TEST_F(BpPivotTableTest, OutputOutlivesTheHandles) {
  {
    BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
    BpDimension rows = table.Dimension(BpString("Rows", false), 2);
    rows.Category(BpString("r", false)).Cell(BpString("v", false));
  }
  ASSERT_EQ(Node().fvItems.size(), 1u);
  EXPECT_EQ(Node().fvItems[0].fpTable->CellAt({0})->fContent.fText, "v");
}

TEST_F(BpPivotTableTest, HandlesMayGoInAnyOrder) {
  BpCategory survivor;
  {
    OmDocument document;
    BpCategory* category = nullptr;
    {
      BpProcedure procedure(document.fRoot.AddHeading(""), "Mixed", "Mixed");
      BpHeading heading = procedure.Heading(BpString("Fixed Effects", true));
      BpPivotTable table = heading.PivotTable(BpString("T", false), BpString("T", false), true);
      BpDimension rows = table.Dimension(BpString("Rows", false), 2);
      survivor = rows.Category(BpString("r", false));
      category = &survivor;
    }
    // Procedure, heading, table and dimension handles are gone; the category
    // still writes into its table.
    category->Cell(BpString("late", false));
    const OmHeading& fixed = *document.fRoot.fvItems[0].fpHeading->fvItems[0].fpHeading;
    EXPECT_EQ(fixed.fText, "Fixed Effects");
    EXPECT_EQ(fixed.fvItems[0].fpTable->CellAt({0})->fContent.fText, "late");
    survivor = BpCategory();
  }
  EXPECT_FALSE(survivor.IsBound());
}

TEST_F(BpPivotTableTest, AssignmentRebindsACategoryVariable) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Rows", false), 2);
  BpDimension columns = table.Dimension(BpString("Columns", false), 2);
  BpCategory category;
  EXPECT_FALSE(category.IsBound());
  category = rows.Category(BpString("r1", false));
  EXPECT_EQ(category.GetRefCount(), 1);
  BpCategory copy = category;
  EXPECT_EQ(category.GetRefCount(), 2);
  category = columns.Category(BpString("c1", false));
  EXPECT_EQ(copy.GetRefCount(), 1);
  category.Cell(BpString("x", false));
  category = columns.Category(BpString("c2", false));
  category.Cell(BpString("y", false));
  // Writing on an older handle makes its category current again.
  copy = rows.Category(BpString("r2", false));
  category.Cell(BpString("z", false));
  const OmTable& written = *table.GetOmTable();
  EXPECT_EQ(CellText(written, {0, 0}), "x");
  EXPECT_EQ(CellText(written, {0, 1}), "y");
  EXPECT_EQ(CellText(written, {1, 1}), "z");
  EXPECT_EQ(rows.GetIndex(), 0);
  EXPECT_EQ(columns.GetIndex(), 1);
  EXPECT_EQ(category.GetLeafIndex(), 1);
}

TEST_F(BpPivotTableTest, SortedGroupsMoveTheCellsBehindANewCategory) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Rows", false), BpPivotTable::ASCENDING);
  BpDimension columns = table.Dimension(BpString("Columns", false), 2);
  rows.Category(BpString("m", false));
  columns.Category(BpString("c", false)).Cell(BpString("from m", false));
  rows.Category(BpString("z", false));
  columns.Category(BpString("c", false)).Cell(BpString("from z", false));
  rows.Category(BpString("a", false));
  columns.Category(BpString("c", false)).Cell(BpString("from a", false));
  const OmTable& written = *table.GetOmTable();
  EXPECT_EQ(LeafLabels(written.fvDimensions[0]), (std::vector<std::string>{"a", "m", "z"}));
  EXPECT_EQ(CellText(written, {0, 0}), "from a");
  EXPECT_EQ(CellText(written, {1, 0}), "from m");
  EXPECT_EQ(CellText(written, {2, 0}), "from z");
}

TEST_F(BpPivotTableTest, LongLabelInPiecesIsOneCategory) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Parameter", true), 2);
  const std::string label = std::string(255, 'a') + "b";
  BpComposite pieces("[:^1:]1", true);
  pieces.Sublist();
  pieces.Add(BpString(label.substr(0, 255), false));
  pieces.Add(BpString(label.substr(255), false));
  pieces.EndSublist();
  pieces.Finish();
  rows.Category(pieces);
  rows.Category(BpString(label, false));
  EXPECT_EQ(LeafLabels(table.GetOmTable()->fvDimensions[0]), std::vector<std::string>{label});
}

TEST_F(BpPivotTableTest, PositionOrderAndHiddenLabels) {
  BpPivotTable table = fProcedure.PivotTable(BpString("Data Structure", false), BpString("DataStructure", false), true);
  BpDimension record = table.Dimension(BpString("Record", false), 2);
  record.Position(0, 1, true, true);
  BpDimension data = table.Dimension(BpString("Data", false), 2);
  data.Position(0, 2, true, false);
  BpDimension layer = table.Dimension(BpString("Layer", false), 2);
  layer.Position(BpDimension::LAYERS, 1, false, false);
  const OmTable& written = *table.GetOmTable();
  EXPECT_EQ(written.fvDimensions[0].fOrder, 1);
  EXPECT_FALSE(written.fvDimensions[0].fbShowLabels);
  EXPECT_EQ(written.fvDimensions[1].fOrder, 2);
  EXPECT_TRUE(written.fvDimensions[1].fbShowLabels);
  EXPECT_EQ(written.fvDimensions[2].fPlace, OmDimension::LAYER);
}

TEST_F(BpPivotTableTest, ProcedureTablesOfASplitCarryTheSplit) {
  ZORV_Variable sex("sex", 0);
  sex.ValueLabels().Add(2.0, "Female");
  ZORV_Session::SplitValue value;
  value.fpVariable = &sex;
  OBS cell;
  cell.fNum = 2.0;
  value.fvValue.push_back(cell);
  ZORV_Session::Current().SetCurrentSplit({value});
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpPivotTable other = fProcedure.PivotTable(BpString("U", false), BpString("U", false), false);
  ZORV_Session::Current().ClearCurrentSplit();
  ASSERT_EQ(table.GetOmTable()->fvCaptions.size(), 1u);
  EXPECT_EQ(table.GetOmTable()->fvCaptions[0].fText, "Split file: sex = Female");
  EXPECT_TRUE(other.GetOmTable()->fvCaptions.empty());
}

TEST_F(BpPivotTableTest, ACellNeedsACategoryOnEveryDimension) {
  BpPivotTable table = fProcedure.PivotTable(BpString("T", false), BpString("T", false), true);
  BpDimension rows = table.Dimension(BpString("Rows", false), 2);
  BpDimension columns = table.Dimension(BpString("Columns", false), 2);
  BpCategory column = columns.Category(BpString("c", false));
  EXPECT_DEBUG_DEATH(column.Cell(BpString("x", false)), "current category on every dimension");
}
