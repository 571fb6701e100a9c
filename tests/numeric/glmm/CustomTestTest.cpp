#include "numeric/glmm/CustomTest.h"

#include <gtest/gtest.h>

#include <sstream>

using MCGLMM_850::CustomTest;
using MCGLMM_850::LMatrixRow;
using namespace GLMMConst_850;

namespace {

LMatrixRow Row(LMatrixRowType type, int count, int effect, std::vector<double> values) {
  LMatrixRow row;
  row.Setup(type, count);
  row.AddNewPair(effect, values);
  return row;
}

}  // namespace

TEST(CustomTest, Defaults) {
  CustomTest test;
  EXPECT_TRUE(test.GetLabel().empty());
  EXPECT_EQ(test.GetNRows(), 0);
  EXPECT_TRUE(test.GetKMatrix().empty());
  EXPECT_FALSE(test.HasRandomPart(0));
}

TEST(CustomTest, FixedAndMixedRows) {
  CustomTest test;
  test.SetLabel("A vs B");
  test.AddFixedRow(Row(LROW_FIXED, 2, 0, {1.0, -1.0}));
  test.AddMixedRow(Row(LROW_FIXED, 2, 1, {1.0}), Row(LROW_RANDOM, 1, 0, {0.5}));
  test.SetKMatrix({0.0, 1.0});
  EXPECT_EQ(test.GetLabel(), "A vs B");
  EXPECT_EQ(test.GetNRows(), 2);
  EXPECT_FALSE(test.HasRandomPart(0));
  EXPECT_TRUE(test.HasRandomPart(1));
  EXPECT_FALSE(test.HasRandomPart(2));
  EXPECT_FALSE(test.HasRandomPart(-1));
  EXPECT_EQ(test.GetFixedRows()[1].GetEffectValues(1), (std::vector<double>{1.0}));
  EXPECT_EQ(test.GetRandomRows()[1].GetEffectValues(0), (std::vector<double>{0.5}));
  EXPECT_EQ(test.GetRandomRows()[0].GetNPairs(), 0);
  EXPECT_EQ(test.GetKMatrix(), (std::vector<double>{0.0, 1.0}));
}

TEST(CustomTest, Reset) {
  CustomTest test;
  test.SetLabel("x");
  test.AddFixedRow(Row(LROW_FIXED, 1, 0, {1.0}));
  test.SetKMatrix({2.0});
  test.Reset();
  EXPECT_TRUE(test.GetLabel().empty());
  EXPECT_EQ(test.GetNRows(), 0);
  EXPECT_TRUE(test.GetKMatrix().empty());
}

TEST(CustomTest, Display) {
  CustomTest test;
  test.SetLabel("T1");
  test.AddFixedRow(Row(LROW_FIXED, 1, 0, {1.0}));
  std::ostringstream os;
  test.Display(os);
  EXPECT_EQ(os.str(),
            "Begin CustomTest display.\n"
            "Label: T1\n"
            "Rows: 1\n"
            "Row: 0\n"
            "Row type: fixed (1)\n"
            "Count: 1\n"
            "Effect: 0\n"
            "Values: 1\n"
            "K values: (none)\n"
            "End CustomTest display.\n");
}
