#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"
#include "host/json/jsonPivot.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/output/OmSplitLayering.h"

namespace {

// Tables that the JSON table builder makes for the splits of a file split
// by a labelled number: made for two splits, they merge into one.
class OmSplitLayeringPivotTest : public ::testing::Test {
 protected:
  OmSplitLayeringPivotTest() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
    fSex = fData.AddVariable("sex", 0);
    fData.GetVariable(fSex)->SetLabel("Sex of the child");
    fData.GetVariable(fSex)->ValueLabels().Add(1.0, "Male");
    fData.GetVariable(fSex)->ValueLabels().Add(2.0, "Female");
    EXPECT_TRUE(fData.SetSplitVars({fSex}));
  }
  ~OmSplitLayeringPivotTest() override { ZORV_Session::Current().ClearCurrentSplit(); }

  OmHeading& Node() { return *fDocument.fRoot.fvItems[0].fpHeading; }

  // Builds the predictions of one split: subjects `first` and `first` + 1.
  void BuildForSplit(double sex, int first) {
    ZORV_Session::SplitValue value;
    value.fpVariable = fData.GetVariable(fSex);
    OBS cell;
    cell.fNum = sex;
    value.fvValue.push_back(cell);
    ZORV_Session::Current().SetCurrentSplit({value});
    const std::string text = R"({"dimensions": [
        {"name": "Subject", "categories": [{"label": ")" + std::to_string(first) + R"("}, {"label": ")" +
                             std::to_string(first + 1) + R"("}]},
        {"name": "Statistics", "place": "column", "categories": [{"label": "Prediction"}]}],
      "cells": [{"at": [0, 0], "value": )" + std::to_string(sex) + R"(}, {"at": [1, 0], "value": 9}]})";
    JNIJSONObject document(text.c_str());
    ASSERT_TRUE(document.isGood()) << document.getError();
    dataDictionary dictionary;
    jsonPivot pivot(document, *document.getTop(), &fData, dictionary);
    pivot.supportSplits(true);
    EXPECT_TRUE(pivot.createPivotTable(&fProcedure, "Predictions", false, "Predictions")) << pivot.getProblem();
    ZORV_Session::Current().ClearCurrentSplit();
  }

  static std::vector<std::string> LeafLabels(const OmDimension& dimension) {
    std::vector<std::string> labels;
    for (const auto& path : dimension.LeafPaths()) labels.push_back(path.back()->fLabel.fText);
    return labels;
  }

  OmDocument fDocument;
  BpProcedure fProcedure;
  ZORV_Dataset fData;
  int fSex = -1;
};

}  // namespace

TEST_F(OmSplitLayeringPivotTest, ShownTogetherTheSplitsTablesMergeWithoutASecondSplitDimension) {
  fData.SetSplitsInOneTable(true);
  BuildForSplit(2.0, 1);
  BuildForSplit(1.0, 3);
  ASSERT_EQ(Node().fvItems.size(), 2u);
  const OmTable& made = *Node().fvItems[0].fpTable;
  ASSERT_EQ(made.fvSplit.size(), 1u);
  EXPECT_EQ(made.fvSplit[0].fVariable, "Sex of the child");
  EXPECT_EQ(made.fvSplit[0].fValue, "Female");
  EXPECT_TRUE(made.fbSplitInRows);

  OmSplitLayering().Layer(Node());
  ASSERT_EQ(Node().fvItems.size(), 1u);
  const OmTable& table = *Node().fvItems[0].fpTable;
  ASSERT_EQ(table.fvDimensions.size(), 3u);
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Sex of the child");
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"Female", "Male"}));
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"1", "2", "3", "4"}));
  ASSERT_NE(table.CellAt({1, 2, 0}), nullptr);
  EXPECT_EQ(table.CellAt({1, 2, 0})->fValue, 1.0);
  EXPECT_EQ(table.CellAt({0, 2, 0}), nullptr);
  EXPECT_TRUE(table.fvCaptions.empty());
}

TEST_F(OmSplitLayeringPivotTest, InSeparateTablesTheTablesAreNotMarkedForMerging) {
  fData.SetSplitsInOneTable(false);
  BuildForSplit(2.0, 1);
  BuildForSplit(1.0, 3);
  ASSERT_EQ(Node().fvItems.size(), 2u);
  EXPECT_TRUE(Node().fvItems[0].fpTable->fvSplit.empty());
  OmSplitLayering().Layer(Node());
  EXPECT_EQ(Node().fvItems.size(), 2u);
}
