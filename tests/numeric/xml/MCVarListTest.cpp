#include "numeric/xml/MCVarList.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/display/MCDisplay.h"

using MCXML_850::IMCVariable;
using MCXML_850::MCVarList;
using namespace MCMath_850::MCConst;

TEST(MCVarList, Defaults) {
  MCVarList list;
  EXPECT_EQ(list.Size(), 0);
  EXPECT_EQ(list.GetVarAt(0), nullptr);
  EXPECT_FALSE(list.GetListwiseDeletion());
  EXPECT_EQ(list.GetUnWeightedCount(), 0);
  EXPECT_EQ(list.GetWeightedCount(), 0.0);
  EXPECT_EQ(list.GetDroppedCount(), 0);
  EXPECT_EQ(list.GetWeightedDroppedCount(), 0.0);
}

TEST(MCVarList, VariablesInOrder) {
  MCVarList list;
  EXPECT_EQ(list.AddVariable(IMCVariable("y", ROLE_TARGET, MEASURE_CONTINUOUS)), 0);
  EXPECT_EQ(list.AddVariable(IMCVariable("w", ROLE_FREQUENCY_WEIGHT, MEASURE_CONTINUOUS)), 1);
  EXPECT_EQ(list.Size(), 2);
  ASSERT_NE(list.GetVarAt(1), nullptr);
  EXPECT_EQ(list.GetVarAt(1)->GetName(), "w");
  EXPECT_EQ(list.GetVarAt(-1), nullptr);
  EXPECT_EQ(list.GetVarAt(2), nullptr);
  EXPECT_EQ(list.FindVar("y"), 0);
  EXPECT_EQ(list.FindVar("z"), -1);
  list.GetVarAt(0)->SetLabel("Yield");
  const MCVarList& constList = list;
  EXPECT_EQ(constList.GetVarAt(0)->GetLabel(), "Yield");
}

TEST(MCVarList, CountsRoundTripAndClear) {
  MCVarList list;
  list.SetListwiseDeletion(true);
  list.SetUnWeightedCount(120);
  list.SetWeightedCount(240.5);
  list.SetDroppedCount(3);
  list.SetWeightedDroppedCount(6.5);
  EXPECT_TRUE(list.GetListwiseDeletion());
  EXPECT_EQ(list.GetUnWeightedCount(), 120);
  EXPECT_EQ(list.GetWeightedCount(), 240.5);
  EXPECT_EQ(list.GetDroppedCount(), 3);
  EXPECT_EQ(list.GetWeightedDroppedCount(), 6.5);
  list.AddVariable(IMCVariable());
  list.Clear();
  EXPECT_EQ(list.Size(), 0);
  EXPECT_FALSE(list.GetListwiseDeletion());
}

TEST(MCVarList, DisplayOnTheCurrentStream) {
  MCVarList list;
  list.AddVariable(IMCVariable("y", ROLE_TARGET, MEASURE_CONTINUOUS));
  list.SetUnWeightedCount(10);
  std::ostream* saved = MCDisplay_850::GetOutStream();
  std::ostringstream os;
  MCDisplay_850::SetOutStream(os);
  list.Display();
  MCDisplay_850::SetOutStream(*saved);
  EXPECT_EQ(os.str(),
            "Begin MCVarList display.\n"
            "Variables: 1\n"
            "Variable: y\n"
            "Record index: -1\n"
            "Role: target (1)\n"
            "Measurement level: continuous (1)\n"
            "Categories: 0\n"
            "Listwise deletion: false\n"
            "Unweighted count: 10\n"
            "Weighted count: 0\n"
            "Dropped count: 0\n"
            "Weighted dropped count: 0\n"
            "End MCVarList display.\n");
}
