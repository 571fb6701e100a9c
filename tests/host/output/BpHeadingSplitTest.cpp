#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpHeading.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"

namespace {

// A procedure on a dataset split by a labelled number, with the split
// (sex 2, "Female") current.
class BpHeadingSplitTest : public ::testing::Test {
 protected:
  BpHeadingSplitTest() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
    fSex = fData.AddVariable("sex", 0);
    fData.GetVariable(fSex)->SetLabel("Sex of the child");
    fData.GetVariable(fSex)->ValueLabels().Add(2.0, "Female");
    EXPECT_TRUE(fData.SetSplitVars({fSex}));
    fProcedure.SetDataSource(&fData);
    ZORV_Session::SplitValue value;
    value.fpVariable = fData.GetVariable(fSex);
    OBS cell;
    cell.fNum = 2.0;
    value.fvValue.push_back(cell);
    ZORV_Session::Current().SetCurrentSplit({value});
  }
  ~BpHeadingSplitTest() override { ZORV_Session::Current().ClearCurrentSplit(); }

  OmTable& MakeTable(bool procedureTable) {
    return *fProcedure.PivotTable(BpString("T", false), BpString("T", false), procedureTable).GetOmTable();
  }

  OmDocument fDocument;
  BpProcedure fProcedure;
  ZORV_Dataset fData;
  int fSex = -1;
};

}  // namespace

TEST_F(BpHeadingSplitTest, ShownTogetherTheTableRemembersItsSplitInsteadOfACaption) {
  fData.SetSplitsInOneTable(true);
  OmTable& table = MakeTable(true);
  EXPECT_TRUE(table.fvCaptions.empty());
  ASSERT_EQ(table.fvSplit.size(), 1u);
  EXPECT_EQ(table.fvSplit[0].fVariable, "Sex of the child");
  EXPECT_EQ(table.fvSplit[0].fValue, "Female");
  EXPECT_FALSE(table.fbSplitInRows);
  EXPECT_TRUE(table.fvDimensions.empty());
}

TEST_F(BpHeadingSplitTest, InSeparateTablesTheSplitIsACaption) {
  fData.SetSplitsInOneTable(false);
  OmTable& table = MakeTable(true);
  EXPECT_TRUE(table.fvSplit.empty());
  ASSERT_EQ(table.fvCaptions.size(), 1u);
  EXPECT_EQ(table.fvCaptions[0].fText, "Split file: Sex of the child = Female");
}

TEST_F(BpHeadingSplitTest, TablesOtherThanTheProcedureTablesKeepNoSplit) {
  fData.SetSplitsInOneTable(true);
  OmTable& table = MakeTable(false);
  EXPECT_TRUE(table.fvSplit.empty());
  EXPECT_TRUE(table.fvCaptions.empty());
}
