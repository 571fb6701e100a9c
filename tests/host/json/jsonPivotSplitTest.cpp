#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "JsonPivotFixture.h"
#include "host/data/OBS.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"

namespace {

const char* const kTable = R"({
  "dimensions": [
    {"name": "Subject", "categories": [{"label": "1"}, {"label": "2"}]},
    {"name": "Statistics", "place": "column", "categories": [{"label": "Prediction"}]}],
  "cells": [{"at": [0, 0], "value": 1.5}, {"at": [1, 0], "value": 2.5}]})";

// A dataset split by a labelled number and a string, with the split
// (region 2, group "b") made the host's current one.
class jsonPivotSplit : public JsonPivotFixture {
 protected:
  jsonPivotSplit() {
    fRegion = fData.AddVariable("region", 0);
    fGroup = fData.AddVariable("group", 3);
    fData.AddVariable("y", 0);
    fData.GetVariable(fRegion)->ValueLabels().Add(2.0, "North");
    fData.GetVariable(fRegion)->SetLabel("Sales region");
    EXPECT_TRUE(fData.SetSplitVars({fRegion, fGroup}));
  }
  ~jsonPivotSplit() override { ZORV_Session::Current().ClearCurrentSplit(); }

  void MakeSplitCurrent() {
    ZORV_Session::SplitValue region;
    region.fpVariable = fData.GetVariable(fRegion);
    OBS number;
    number.fNum = 2.0;
    region.fvValue.push_back(number);
    ZORV_Session::SplitValue group;
    group.fpVariable = fData.GetVariable(fGroup);
    OBS text;
    std::memcpy(text.fStr, "b       ", 8);
    group.fvValue.push_back(text);
    ZORV_Session::Current().SetCurrentSplit({region, group});
  }

  ZORV_Dataset fData;
  int fRegion = -1;
  int fGroup = -1;
};

}  // namespace

TEST_F(jsonPivotSplit, SplitVariablesBecomeTheOutermostRowDimensions) {
  MakeSplitCurrent();
  ASSERT_TRUE(Build(kTable, "T", false, true, &fData)) << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 4u);

  const OmDimension& region = table.fvDimensions[0];
  EXPECT_EQ(region.fName.fText, "Sales region");
  EXPECT_EQ(region.fPlace, OmDimension::ROW);
  EXPECT_EQ(region.fOrder, 3);
  EXPECT_TRUE(region.fbShowName);
  EXPECT_EQ(LeafLabels(region), (std::vector<std::string>{"North"}));

  const OmDimension& group = table.fvDimensions[1];
  EXPECT_EQ(group.fName.fText, "group");
  EXPECT_EQ(group.fPlace, OmDimension::ROW);
  EXPECT_EQ(group.fOrder, 2);
  EXPECT_EQ(LeafLabels(group), (std::vector<std::string>{"b"}));

  EXPECT_EQ(table.fvDimensions[2].fName.fText, "Subject");
  EXPECT_EQ(table.fvDimensions[2].fOrder, 1);
  EXPECT_EQ(table.fvDimensions[3].fPlace, OmDimension::COLUMN);

  // The cells sit at the split's one category on the split dimensions.
  EXPECT_EQ(CellText(table, {0, 0, 0, 0}), "1.500");
  EXPECT_EQ(CellText(table, {0, 0, 1, 0}), "2.500");
  EXPECT_EQ(table.fCells.size(), 2u);
  // The rows show the split, so no caption repeats it.
  EXPECT_TRUE(table.fvCaptions.empty());
}

TEST_F(jsonPivotSplit, AValueWithoutLabelShowsTheValue) {
  ZORV_Session::SplitValue region;
  region.fpVariable = fData.GetVariable(fRegion);
  OBS number;
  number.fNum = 7.0;
  region.fvValue.push_back(number);
  ZORV_Session::Current().SetCurrentSplit({region});
  ASSERT_TRUE(Build(kTable, "T", false, true, &fData)) << fProblem;
  const OmTable& table = OnlyTable();
  // Only the variable whose value the host published makes a dimension.
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  ASSERT_EQ(LeafLabels(table.fvDimensions[0]).size(), 1u);
  EXPECT_NE(LeafLabels(table.fvDimensions[0])[0].find('7'), std::string::npos);
}

TEST_F(jsonPivotSplit, WithoutSplitSupportTheTableIsTheSplitsOwnWithItsCaption) {
  MakeSplitCurrent();
  ASSERT_TRUE(Build(kTable, "North, b", false, false, &fData)) << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 2u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Subject");
  EXPECT_EQ(table.fTitle.fText, "North, b");
  ASSERT_EQ(table.fvCaptions.size(), 1u);
  EXPECT_NE(table.fvCaptions[0].fText.find("North"), std::string::npos);
}

TEST_F(jsonPivotSplit, WithoutACurrentSplitNothingIsAdded) {
  ZORV_Session::Current().ClearCurrentSplit();
  ASSERT_TRUE(Build(kTable, "T", false, true, &fData)) << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fvDimensions.size(), 2u);
  EXPECT_TRUE(table.fvCaptions.empty());
}

TEST_F(jsonPivotSplit, AnUnsplitFileAddsNothing) {
  MakeSplitCurrent();
  ZORV_Dataset unsplit;
  unsplit.AddVariable("y", 0);
  ASSERT_TRUE(Build(kTable, "T", false, true, &unsplit)) << fProblem;
  EXPECT_EQ(OnlyTable().fvDimensions.size(), 2u);
}

TEST_F(jsonPivotSplit, WithoutADataSourceNothingIsAdded) {
  MakeSplitCurrent();
  ASSERT_TRUE(Build(kTable, "T", false, true, nullptr)) << fProblem;
  EXPECT_EQ(OnlyTable().fvDimensions.size(), 2u);
}

TEST_F(jsonPivotSplit, ASplitValueTooShortForItsVariableIsLeftOut) {
  // The host's copy is 8 characters wide and its value one cell; the data
  // source's variable of that name is 20 characters wide.
  ZORV_Variable narrow("group", 8);
  ZORV_Session::SplitValue group;
  group.fpVariable = &narrow;
  OBS text;
  std::memcpy(text.fStr, "b       ", 8);
  group.fvValue.push_back(text);
  ZORV_Dataset data;
  int column = data.AddVariable("group", 20);
  ASSERT_TRUE(data.SetSplitVars({column}));
  // Found by name, but one cell cannot hold a value of 20 characters.
  ZORV_Session::Current().SetCurrentSplit({group});
  ASSERT_TRUE(Build(kTable, "T", false, true, &data)) << fProblem;
  EXPECT_EQ(OnlyTable().fvDimensions.size(), 2u);
}

TEST_F(jsonPivotSplit, ASplitVariableIsFoundByNameWhenTheHostHoldsAnotherCopy) {
  ZORV_Variable copy("region", 0);
  ZORV_Session::SplitValue region;
  region.fpVariable = &copy;
  OBS number;
  number.fNum = 2.0;
  region.fvValue.push_back(number);
  ZORV_Session::Current().SetCurrentSplit({region});
  ASSERT_TRUE(Build(kTable, "T", false, true, &fData)) << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  // The data source's variable, with its labels, names the dimension.
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Sales region");
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"North"}));
}

TEST_F(jsonPivotSplit, ARefusedTableWritesNoSplitDimensionsEither) {
  MakeSplitCurrent();
  EXPECT_FALSE(Build(R"({"dimensions": [{"name": "r", "categories": []}]})", "T", false, true, &fData));
  EXPECT_TRUE(Node().fvItems.empty());
}
