#include "numeric/glmm/LMatrixRow.h"

#include <gtest/gtest.h>

#include <sstream>

using MCGLMM_850::LMatrixRow;
using namespace GLMMConst_850;

TEST(LMatrixRow, Defaults) {
  LMatrixRow row;
  EXPECT_EQ(row.GetType(), LROW_FIXED);
  EXPECT_EQ(row.GetCount(), 0);
  EXPECT_EQ(row.GetFirstValue(), 0.0);
  EXPECT_EQ(row.GetNPairs(), 0);
  EXPECT_TRUE(row.GetAllValues().empty());
}

TEST(LMatrixRow, RowByEffectsWithIntercept) {
  LMatrixRow row;
  row.Setup(LROW_FIXED_WITH_INTERCEPT, 3);
  EXPECT_TRUE(row.SetFirstValue(1.0));
  EXPECT_TRUE(row.AddNewPair(2, {0.5, -0.5}));
  EXPECT_TRUE(row.AddNewPair(0, {1.0}));
  EXPECT_FALSE(row.AddNewPair(2, {1.0}));
  EXPECT_FALSE(row.AddNewPair(3, {1.0}));
  EXPECT_FALSE(row.AddNewPair(-1, {1.0}));
  EXPECT_FALSE(row.SetAllValues({1.0}));
  EXPECT_EQ(row.GetFirstValue(), 1.0);
  EXPECT_EQ(row.GetNPairs(), 2);
  EXPECT_EQ(row.GetPairEffects(), (std::vector<int>{2, 0}));
  EXPECT_EQ(row.GetEffectValues(2), (std::vector<double>{0.5, -0.5}));
  EXPECT_TRUE(row.GetEffectValues(1).empty());
}

TEST(LMatrixRow, RowWithoutInterceptRefusesFirstValue) {
  LMatrixRow row;
  row.Setup(LROW_FIXED, 2);
  EXPECT_FALSE(row.SetFirstValue(2.0));
  EXPECT_EQ(row.GetFirstValue(), 0.0);
  row.Setup(LROW_RANDOM, 1);
  EXPECT_TRUE(row.AddNewPair(0, {1.0, 2.0}));
  EXPECT_EQ(row.GetType(), LROW_RANDOM);
}

TEST(LMatrixRow, RowOfAllValues) {
  LMatrixRow row;
  row.Setup(LROW_ALL_VALUES, 3);
  EXPECT_TRUE(row.SetAllValues({1.0, 0.0, -1.0, 2.0}));
  EXPECT_FALSE(row.AddNewPair(0, {1.0}));
  EXPECT_EQ(row.GetAllValues(), (std::vector<double>{1.0, 0.0, -1.0, 2.0}));
  EXPECT_EQ(row.GetCount(), 3);
}

TEST(LMatrixRow, SetupClears) {
  LMatrixRow row;
  row.Setup(LROW_FIXED_WITH_INTERCEPT, 2);
  row.SetFirstValue(3.0);
  row.AddNewPair(1, {1.0});
  row.Setup(LROW_FIXED, -4);
  EXPECT_EQ(row.GetCount(), 0);
  EXPECT_EQ(row.GetNPairs(), 0);
  EXPECT_EQ(row.GetFirstValue(), 0.0);
}

TEST(LMatrixRow, Display) {
  LMatrixRow row;
  row.Setup(LROW_FIXED_WITH_INTERCEPT, 2);
  row.SetFirstValue(1.0);
  row.AddNewPair(1, {0.5, 0.25});
  std::ostringstream os;
  row.Display(os);
  EXPECT_EQ(os.str(),
            "Row type: fixed with intercept (0)\n"
            "Count: 2\n"
            "Intercept value: 1\n"
            "Effect: 1\n"
            "Values: 0.5 0.25\n");
}
