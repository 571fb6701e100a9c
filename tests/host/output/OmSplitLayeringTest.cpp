#include "host/output/OmSplitLayering.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "host/output/OmDocument.h"

namespace {

OmDimensionNode Category(const std::string& label) {
  OmDimensionNode node;
  node.fLabel.fText = label;
  return node;
}

OmDimensionNode Group(const std::string& label, const std::vector<std::string>& categories) {
  OmDimensionNode node;
  node.fLabel.fText = label;
  node.fbIsGroup = true;
  for (const std::string& category : categories) node.fvChildren.push_back(Category(category));
  return node;
}

OmDimension Dimension(const std::string& name, OmDimension::Place place, const std::vector<OmDimensionNode>& nodes) {
  OmDimension dimension;
  dimension.fName.fText = name;
  dimension.fPlace = place;
  dimension.fRoot.fbIsGroup = true;
  dimension.fRoot.fvChildren = nodes;
  return dimension;
}

std::vector<OmDimensionNode> Categories(const std::vector<std::string>& labels) {
  std::vector<OmDimensionNode> nodes;
  for (const std::string& label : labels) nodes.push_back(Category(label));
  return nodes;
}

OmCell Number(double value) {
  OmCell cell;
  cell.fbNumeric = true;
  cell.fValue = value;
  cell.fContent.fText = std::to_string(value);
  return cell;
}

// A table of one row dimension and one column, made for the split
// "Sex = <split>" (no split when `split` is empty); row i holds 10 * i plus
// `base`.
OmTable& AddTable(OmHeading& heading, const std::string& title, const std::string& split,
                  const std::vector<std::string>& rows, double base) {
  OmTable& table = heading.AddTable();
  table.fTitle.fText = title;
  table.fSubType = title;
  table.fvDimensions.push_back(Dimension("Parameter", OmDimension::ROW, Categories(rows)));
  table.fvDimensions.push_back(Dimension("Statistics", OmDimension::COLUMN, Categories({"Estimate"})));
  for (std::size_t i = 0; i < rows.size(); ++i) table.fCells[{static_cast<int>(i), 0}] = Number(base + 10.0 * i);
  if (!split.empty()) table.fvSplit.push_back(OmSplitLevel{"Sex", split});
  return table;
}

std::vector<std::string> LeafLabels(const OmDimension& dimension) {
  std::vector<std::string> labels;
  for (const auto& path : dimension.LeafPaths()) labels.push_back(path.back()->fLabel.fText);
  return labels;
}

double ValueAt(const OmTable& table, const std::vector<int>& coordinates) {
  const OmCell* cell = table.CellAt(coordinates);
  return cell == nullptr ? -1.0 : cell->fValue;
}

std::vector<const OmTable*> Tables(const OmHeading& heading) {
  std::vector<const OmTable*> tables;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::TABLE) tables.push_back(item.fpTable.get());
  }
  return tables;
}

std::vector<std::string> Texts(const std::vector<OmText>& texts) {
  std::vector<std::string> out;
  for (const OmText& text : texts) out.push_back(text.fText);
  return out;
}

class OmSplitLayeringTest : public ::testing::Test {
 protected:
  OmHeading fCommand;
  OmSplitLayering fLayering;
};

}  // namespace

TEST_F(OmSplitLayeringTest, TheSplitsOfATableBecomeItsOutermostRows) {
  AddTable(fCommand, "Estimates", "Female", {"Intercept", "age"}, 1.0);
  AddTable(fCommand, "Estimates", "Male", {"Intercept", "age"}, 2.0);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 1);
  EXPECT_EQ(fLayering.GetFoldedCount(), 1);

  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  EXPECT_EQ(table.fTitle.fText, "Estimates");
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  const OmDimension& split = table.fvDimensions[0];
  EXPECT_EQ(split.fName.fText, "Sex");
  EXPECT_EQ(split.fPlace, OmDimension::ROW);
  EXPECT_EQ(split.fOrder, 2);
  EXPECT_TRUE(split.fbShowName);
  EXPECT_EQ(LeafLabels(split), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(table.fvDimensions[1].fOrder, 1);
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"Intercept", "age"}));
  EXPECT_EQ(table.fvDimensions[2].fPlace, OmDimension::COLUMN);

  EXPECT_EQ(table.fCells.size(), 4u);
  EXPECT_EQ(ValueAt(table, {0, 0, 0}), 1.0);
  EXPECT_EQ(ValueAt(table, {0, 1, 0}), 11.0);
  EXPECT_EQ(ValueAt(table, {1, 0, 0}), 2.0);
  EXPECT_EQ(ValueAt(table, {1, 1, 0}), 12.0);
  // Done: the merged table takes part in no further merge.
  EXPECT_TRUE(table.fvSplit.empty());
}

TEST_F(OmSplitLayeringTest, TheMergedTableTakesThePlaceOfTheFirst) {
  OmTable& notes = AddTable(fCommand, "Notes", "", {"Input"}, 0.0);
  OmTable& first = AddTable(fCommand, "Estimates", "Female", {"a"}, 1.0);
  fCommand.AddMessage(OmMessage::WARNING, "between");
  AddTable(fCommand, "Estimates", "Male", {"a"}, 2.0);
  fLayering.Layer(fCommand);
  ASSERT_EQ(fCommand.fvItems.size(), 3u);
  EXPECT_EQ(fCommand.fvItems[0].fpTable.get(), &notes);
  EXPECT_EQ(fCommand.fvItems[1].fpTable.get(), &first);
  EXPECT_EQ(fCommand.fvItems[2].fKind, OmItem::MESSAGE);
  EXPECT_EQ(LeafLabels(first.fvDimensions[0]), (std::vector<std::string>{"Female", "Male"}));
}

TEST_F(OmSplitLayeringTest, TablesMadeOutsideASplitAreLeftAlone) {
  OmTable& notes = AddTable(fCommand, "Notes", "", {"Input", "Output"}, 0.0);
  OmTable& other = AddTable(fCommand, "Notes", "", {"Input", "Output"}, 5.0);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 0);
  ASSERT_EQ(Tables(fCommand).size(), 2u);
  ASSERT_EQ(notes.fvDimensions.size(), 2u);
  EXPECT_EQ(ValueAt(notes, {1, 0}), 10.0);
  EXPECT_EQ(other.fvDimensions.size(), 2u);
}

TEST_F(OmSplitLayeringTest, ATableOfOneSplitStillShowsItsSplit) {
  OmTable& table = AddTable(fCommand, "Estimates", "Male", {"a", "b"}, 1.0);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 1);
  EXPECT_EQ(fLayering.GetFoldedCount(), 0);
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"Male"}));
  EXPECT_EQ(ValueAt(table, {0, 1, 0}), 11.0);
}

TEST_F(OmSplitLayeringTest, CategoriesAreTheUnionInOrderOfFirstAppearance) {
  AddTable(fCommand, "Estimates", "A", {"x", "y"}, 1.0);
  AddTable(fCommand, "Estimates", "B", {"y", "z"}, 2.0);
  fLayering.Layer(fCommand);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"x", "y", "z"}));
  EXPECT_EQ(ValueAt(table, {0, 1, 0}), 11.0);
  EXPECT_EQ(ValueAt(table, {1, 1, 0}), 2.0);
  EXPECT_EQ(ValueAt(table, {1, 2, 0}), 12.0);
  EXPECT_EQ(table.CellAt({0, 2, 0}), nullptr);
  EXPECT_EQ(table.CellAt({1, 0, 0}), nullptr);
}

TEST_F(OmSplitLayeringTest, GroupsAreMatchedByLabelPath) {
  for (const char* split : {"A", "B"}) {
    OmTable& table = fCommand.AddTable();
    table.fTitle.fText = "Tests";
    const bool bFirst = std::string(split) == "A";
    table.fvDimensions.push_back(
        Dimension("Source", OmDimension::ROW,
                  {Group("G1", bFirst ? std::vector<std::string>{"x"} : std::vector<std::string>{"x", "w"}),
                   Group("G2", {"x"})}));
    // Leaves in order: A: G1/x, G2/x; B: G1/x, G1/w, G2/x.
    const int leaves = bFirst ? 2 : 3;
    for (int i = 0; i < leaves; ++i) table.fCells[{i}] = Number((bFirst ? 100.0 : 200.0) + i);
    table.fvSplit.push_back(OmSplitLevel{"Split", split});
  }
  fLayering.Layer(fCommand);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  const OmDimension& source = table.fvDimensions[1];
  EXPECT_EQ(LeafLabels(source), (std::vector<std::string>{"x", "w", "x"}));
  ASSERT_EQ(source.fRoot.fvChildren.size(), 2u);
  EXPECT_EQ(source.fRoot.fvChildren[0].fLabel.fText, "G1");
  EXPECT_TRUE(source.fRoot.fvChildren[0].fbIsGroup);
  // A's G2/x moved behind the w that B added to G1.
  EXPECT_EQ(ValueAt(table, {0, 0}), 100.0);
  EXPECT_EQ(ValueAt(table, {0, 2}), 101.0);
  EXPECT_EQ(ValueAt(table, {1, 0}), 200.0);
  EXPECT_EQ(ValueAt(table, {1, 1}), 201.0);
  EXPECT_EQ(ValueAt(table, {1, 2}), 202.0);
  EXPECT_EQ(table.CellAt({0, 1}), nullptr);
}

TEST_F(OmSplitLayeringTest, RepeatedLabelsAreMatchedInTurn) {
  AddTable(fCommand, "Estimates", "A", {"x", "x"}, 1.0);
  AddTable(fCommand, "Estimates", "B", {"x", "x", "x"}, 2.0);
  fLayering.Layer(fCommand);
  const OmTable& table = *Tables(fCommand).at(0);
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"x", "x", "x"}));
  EXPECT_EQ(ValueAt(table, {0, 1, 0}), 11.0);
  EXPECT_EQ(ValueAt(table, {1, 2, 0}), 22.0);
}

TEST_F(OmSplitLayeringTest, CaptionsNotesAndFootnotesOfTheSameTextAreKeptOnce) {
  OmTable& a = AddTable(fCommand, "Estimates", "A", {"x"}, 1.0);
  OmTable& b = AddTable(fCommand, "Estimates", "B", {"x"}, 2.0);
  a.fvFootnotes = {"Shared", "Only A"};
  a.fCells[{0, 0}].fContent.fvFootnotes = {1};
  a.fvCaptions.push_back(OmText{"Dependent Variable: y.", {}});
  a.fvNotes.push_back(OmText{"A note.", {0}});
  b.fvFootnotes = {"Only B", "Shared"};
  b.fCells[{0, 0}].fContent.fvFootnotes = {0, 1};
  b.fvDimensions[1].fRoot.fvChildren[0].fLabel.fvFootnotes = {1};
  b.fvCaptions.push_back(OmText{"Dependent Variable: y.", {}});
  b.fvCaptions.push_back(OmText{"Only in B.", {}});
  b.fvNotes.push_back(OmText{"A note.", {1}});
  b.fMinDataColumnWidth = 9;

  fLayering.Layer(fCommand);
  const OmTable& table = *Tables(fCommand).at(0);
  EXPECT_EQ(table.fvFootnotes, (std::vector<std::string>{"Shared", "Only A", "Only B"}));
  EXPECT_EQ(table.CellAt({0, 0, 0})->fContent.fvFootnotes, (std::vector<int>{1}));
  EXPECT_EQ(table.CellAt({1, 0, 0})->fContent.fvFootnotes, (std::vector<int>{2, 0}));
  EXPECT_EQ(table.fvDimensions[2].fRoot.fvChildren[0].fLabel.fvFootnotes, (std::vector<int>{0}));
  EXPECT_EQ(Texts(table.fvCaptions), (std::vector<std::string>{"Dependent Variable: y.", "Only in B."}));
  ASSERT_EQ(table.fvNotes.size(), 1u);
  EXPECT_EQ(table.fvNotes[0].fvFootnotes, (std::vector<int>{0}));
  EXPECT_EQ(table.fMinDataColumnWidth, 9);
}

TEST_F(OmSplitLayeringTest, ASplitWithoutTheTableHasNoRowsInIt) {
  AddTable(fCommand, "Estimates", "A", {"x"}, 1.0);
  AddTable(fCommand, "Other", "A", {"x"}, 1.0);
  AddTable(fCommand, "Other", "B", {"x"}, 2.0);
  AddTable(fCommand, "Estimates", "C", {"x"}, 3.0);
  fLayering.Layer(fCommand);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(tables[0]->fTitle.fText, "Estimates");
  EXPECT_EQ(LeafLabels(tables[0]->fvDimensions[0]), (std::vector<std::string>{"A", "C"}));
  EXPECT_EQ(ValueAt(*tables[0], {1, 0, 0}), 3.0);
  EXPECT_EQ(LeafLabels(tables[1]->fvDimensions[0]), (std::vector<std::string>{"A", "B"}));
}

TEST_F(OmSplitLayeringTest, TablesWithOtherDimensionsAreNotMerged) {
  AddTable(fCommand, "Estimates", "A", {"x"}, 1.0);
  OmTable& b = AddTable(fCommand, "Estimates", "B", {"x"}, 2.0);
  b.fvDimensions[0].fName.fText = "Effect";
  AddTable(fCommand, "Estimates", "C", {"x"}, 3.0);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 2);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(LeafLabels(tables[0]->fvDimensions[0]), (std::vector<std::string>{"A", "C"}));
  EXPECT_EQ(tables[1], &b);
  ASSERT_EQ(b.fvDimensions.size(), 3u);
  EXPECT_EQ(LeafLabels(b.fvDimensions[0]), (std::vector<std::string>{"B"}));
}

TEST_F(OmSplitLayeringTest, TablesOfOtherTitlesSubTypesOrHeadingsAreNotMerged) {
  AddTable(fCommand, "Estimates", "A", {"x"}, 1.0);
  AddTable(fCommand, "Covariances", "B", {"x"}, 2.0);
  OmTable& subType = AddTable(fCommand, "Estimates", "C", {"x"}, 3.0);
  subType.fSubType = "Other";
  AddTable(fCommand.AddHeading("Elsewhere"), "Estimates", "D", {"x"}, 4.0);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 4);
  EXPECT_EQ(fLayering.GetFoldedCount(), 0);
  EXPECT_EQ(Tables(fCommand).size(), 3u);
}

TEST_F(OmSplitLayeringTest, TheNthTableOfAKindGoesWithTheNthOfTheOtherSplits) {
  AddTable(fCommand, "Block", "A", {"first"}, 1.0);
  AddTable(fCommand, "Block", "A", {"second"}, 2.0);
  AddTable(fCommand, "Block", "B", {"first"}, 3.0);
  AddTable(fCommand, "Block", "B", {"second"}, 4.0);
  fLayering.Layer(fCommand);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(LeafLabels(tables[0]->fvDimensions[1]), (std::vector<std::string>{"first"}));
  EXPECT_EQ(ValueAt(*tables[0], {1, 0, 0}), 3.0);
  EXPECT_EQ(LeafLabels(tables[1]->fvDimensions[1]), (std::vector<std::string>{"second"}));
  EXPECT_EQ(ValueAt(*tables[1], {1, 0, 0}), 4.0);
}

TEST_F(OmSplitLayeringTest, HeadingsEmptiedByTheMergeAreRemoved) {
  fCommand.AddHeading("Made empty");
  OmHeading& first = fCommand.AddHeading("Fixed Effects");
  AddTable(first, "Tests", "A", {"x"}, 1.0);
  OmHeading& second = fCommand.AddHeading("Fixed Effects");
  AddTable(second, "Tests", "B", {"x"}, 2.0);
  OmHeading& third = fCommand.AddHeading("Fixed Effects");
  AddTable(third.AddHeading("Inner"), "Tests", "B", {"x"}, 2.0);
  OmHeading& kept = fCommand.AddHeading("Fixed Effects");
  AddTable(kept, "Tests", "C", {"x"}, 3.0);
  kept.AddMessage(OmMessage::NOTE, "stays");
  fLayering.Layer(fCommand);

  // "Made empty" was empty before, and stays; the inner table of B has a
  // path of its own and stays too.
  ASSERT_EQ(fCommand.fvItems.size(), 4u);
  EXPECT_EQ(fCommand.fvItems[0].fpHeading->fText, "Made empty");
  EXPECT_EQ(fCommand.fvItems[1].fpHeading.get(), &first);
  EXPECT_EQ(fCommand.fvItems[2].fpHeading.get(), &third);
  EXPECT_EQ(fCommand.fvItems[3].fpHeading.get(), &kept);
  ASSERT_EQ(kept.fvItems.size(), 1u);
  EXPECT_EQ(kept.fvItems[0].fKind, OmItem::MESSAGE);
  EXPECT_EQ(LeafLabels(first.fvItems.at(0).fpTable->fvDimensions[0]), (std::vector<std::string>{"A", "B", "C"}));
}

TEST_F(OmSplitLayeringTest, TwoSplitVariablesNestInTheirOrder) {
  for (const char* region : {"North", "South"}) {
    OmTable& table = AddTable(fCommand, "Estimates", "", {"x"}, 1.0);
    table.fvSplit.push_back(OmSplitLevel{"Region", region});
    table.fvSplit.push_back(OmSplitLevel{"Group", "b"});
  }
  fLayering.Layer(fCommand);
  const OmTable& table = *Tables(fCommand).at(0);
  ASSERT_EQ(table.fvDimensions.size(), 4u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Region");
  EXPECT_EQ(table.fvDimensions[0].fOrder, 3);
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Group");
  EXPECT_EQ(table.fvDimensions[1].fOrder, 2);
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"North", "South"}));
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"b"}));
  EXPECT_EQ(ValueAt(table, {1, 0, 0, 0}), 1.0);
}

TEST_F(OmSplitLayeringTest, TablesThatShowTheirSplitMergeByTheUnionOfTheSplitCategories) {
  for (const char* split : {"Female", "Male"}) {
    OmTable& table = AddTable(fCommand, "Predictions", "", {"1", "2"}, std::string(split) == "Male" ? 5.0 : 1.0);
    table.fvDimensions.insert(table.fvDimensions.begin(),
                              Dimension("Sex", OmDimension::ROW, Categories({split})));
    std::map<std::vector<int>, OmCell> cells;
    for (const auto& entry : table.fCells) {
      std::vector<int> key{0};
      key.insert(key.end(), entry.first.begin(), entry.first.end());
      cells[key] = entry.second;
    }
    table.fCells = cells;
    table.fvSplit.push_back(OmSplitLevel{"Sex", split});
    table.fbSplitInRows = true;
  }
  fLayering.Layer(fCommand);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 1u);
  const OmTable& table = *tables[0];
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(ValueAt(table, {1, 1, 0}), 15.0);
}

TEST_F(OmSplitLayeringTest, LayeringAgainChangesNothing) {
  AddTable(fCommand, "Estimates", "A", {"x"}, 1.0);
  AddTable(fCommand, "Estimates", "B", {"x"}, 2.0);
  fLayering.Layer(fCommand);
  fLayering.Layer(fCommand);
  EXPECT_EQ(fLayering.GetMergedCount(), 0);
  const std::vector<const OmTable*> tables = Tables(fCommand);
  ASSERT_EQ(tables.size(), 1u);
  EXPECT_EQ(tables[0]->fvDimensions.size(), 3u);
  EXPECT_EQ(tables[0]->fCells.size(), 2u);
}
