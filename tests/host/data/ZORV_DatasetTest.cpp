#include "host/data/ZORV_Dataset.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace {

// A small file: group (string), x (number), w (weight).
void MakeGroups(ZORV_Dataset& ds) {
  ASSERT_EQ(ds.AddVariable("group", 3), 0);
  ASSERT_EQ(ds.AddVariable("x", 0), 1);
  ASSERT_EQ(ds.AddVariable("w", 0), 2);
  ds.AppendCases(6);
  const char* groups[] = {"b", "a", "b", "a", "c", "a"};
  for (long r = 0; r < 6; ++r) {
    ds.SetString(r, 0, groups[r]);
    ds.SetNum(r, 1, static_cast<double>(r) * 10.0);
    ds.SetNum(r, 2, 1.0);
  }
}

}  // namespace

TEST(ZORV_Dataset, NewColumnsAreMissingAndStringsTakeWholeWords) {
  ZORV_Dataset ds;
  EXPECT_EQ(ds.ColumnCount(), 0);
  ds.AppendCases(2);
  EXPECT_EQ(ds.AddVariable("n", 0), 0);
  EXPECT_EQ(ds.AddVariable("s", 9), 1);
  EXPECT_EQ(ds.AddVariable("t", 8), 2);
  EXPECT_EQ(ds.GetColumnWords(0), 1);
  EXPECT_EQ(ds.GetColumnWords(1), 2);
  EXPECT_EQ(ds.GetColumnWords(2), 1);
  EXPECT_EQ(ds.GetCaseWordCount(), 4);
  EXPECT_EQ(ds.GetCaseWordOffset(1), 1);
  EXPECT_EQ(ds.GetCaseWordOffset(2), 3);
  EXPECT_TRUE(ds.IsSysMissing(1, 0));
  EXPECT_EQ(ds.GetNum(1, 0), -DBL_MAX);
  EXPECT_EQ(ZORV_Dataset::SysMiss(), -DBL_MAX);
  EXPECT_FALSE(ds.IsSysMissing(1, 1));
  EXPECT_EQ(ds.GetString(1, 1), "");
  EXPECT_EQ(ds.GetString(1, 1, false), std::string(9, ' '));
  EXPECT_EQ(std::memcmp(ds.GetCell(1, 1)->fStr, "                ", 16), 0);
}

TEST(ZORV_Dataset, StoresNumbersAndBlankPaddedStrings) {
  ZORV_Dataset ds;
  ds.AddVariable("n", 0);
  ds.AddVariable("s", 10);
  ds.AppendCases(1);
  ds.SetNum(0, 0, 2.5);
  EXPECT_TRUE(ds.SetString(0, 1, "abc"));
  EXPECT_EQ(ds.GetNum(0, 0), 2.5);
  EXPECT_EQ(ds.GetString(0, 1), "abc");
  EXPECT_EQ(std::string(ds.GetCell(0, 1)->fStr, 16), "abc             ");
  ds.SetNum(0, 0, std::nan(""));
  EXPECT_TRUE(ds.IsSysMissing(0, 0));
  EXPECT_FALSE(ds.SetString(0, 1, "0123456789xyz"));
  EXPECT_EQ(ds.GetString(0, 1), "0123456789");
}

TEST(ZORV_Dataset, CutsLongStringsOnCharacterBoundaries) {
  ZORV_Dataset ds;
  ds.AddVariable("s", 4);
  ds.AppendCases(1);
  // "abc" then a two-byte character that would straddle the width.
  EXPECT_FALSE(ds.SetString(0, 0, "abc\xC3\xA9"));
  EXPECT_EQ(ds.GetString(0, 0), "abc");
}

TEST(ZORV_Dataset, UserMissingValuesOfNumbersAndStrings) {
  ZORV_Dataset ds;
  ds.AddVariable("n", 0);
  ds.AddVariable("s", 4);
  ds.AppendCases(4);
  ds.GetVariable(0)->AddMissingValue(9);
  ds.GetVariable(0)->SetMissingRange(90, 99);
  ds.GetVariable(1)->AddMissingString("NA");
  ds.SetNum(0, 0, 9);
  ds.SetNum(1, 0, 95);
  ds.SetNum(2, 0, 5);
  ds.SetString(0, 1, "NA");
  ds.SetString(1, 1, "ok");
  EXPECT_TRUE(ds.IsUserMissing(0, 0));
  EXPECT_TRUE(ds.IsUserMissing(1, 0));
  EXPECT_FALSE(ds.IsUserMissing(2, 0));
  EXPECT_FALSE(ds.IsUserMissing(3, 0));
  EXPECT_TRUE(ds.IsSysMissing(3, 0));
  EXPECT_TRUE(ds.IsMissing(3, 0));
  EXPECT_TRUE(ds.IsUserMissing(0, 1));
  EXPECT_FALSE(ds.IsUserMissing(1, 1));
  EXPECT_TRUE(ds.IsMissing(0, 1));
}

TEST(ZORV_Dataset, FindsVariablesIgnoringCase) {
  ZORV_Dataset ds;
  ds.AddVariable("Subject", 4);
  ds.AddVariable("Days", 0);
  EXPECT_EQ(ds.FindVarIndex("subject", 0), 0);
  EXPECT_EQ(ds.FindVarIndex("DAYS", 0), 1);
  EXPECT_EQ(ds.FindVarIndex("DaysX", 4), 1);
  EXPECT_EQ(ds.FindVarIndex("Day", 0), -1);
  EXPECT_EQ(ds.FindVarIndex(nullptr, 0), -1);
  EXPECT_EQ(ds.AddVariable("SUBJECT", 0), -1);
  EXPECT_EQ(ds.AddVariable("", 0), -1);
  EXPECT_EQ(ds.AddVariable("big", ZORV_Dataset::MAXSTRINGWIDTH + 1), -1);
}

TEST(ZORV_Dataset, ParserCodesAreDictionaryPositions) {
  ZORV_Dataset ds;
  ds.AddVariable("a", 0);
  ds.AddVariable("b", 0);
  EXPECT_EQ(ds.VarIndex(0), 0);
  EXPECT_EQ(ds.VarIndex(1), 1);
  EXPECT_EQ(ds.VarIndex(2), -1);
  EXPECT_EQ(ds.VarIndex(-1), -1);
}

TEST(ZORV_Dataset, MakeVariableAddsAMissingColumnWithAFreshName) {
  ZORV_Dataset ds;
  ds.AddVariable("NEWVAR1", 0);
  ds.AppendCases(3);
  unsigned int index = 99;
  ASSERT_TRUE(ds.MakeVariable(0, &index));
  EXPECT_EQ(index, 1u);
  EXPECT_STREQ(ds.GetVariable(1)->GetName(), "NEWVAR2");
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 0);
  EXPECT_EQ(ds.GetVariable(1)->GetMeasurementLevel(), ZORV_Variable::SCALE);
  EXPECT_TRUE(ds.IsSysMissing(2, 1));
  ASSERT_TRUE(ds.MakeVariable(5, &index));
  EXPECT_EQ(ds.GetVariable(2)->GetType(), 5);
  EXPECT_FALSE(ds.MakeVariable(-1, &index));
  ProcedureDataSource& base = ds;
  ASSERT_NE(base.GetVariable(2), nullptr);
  EXPECT_EQ(base.GetVariable(3), nullptr);
}

TEST(ZORV_Dataset, CopiesACaseAsOneRowOfCells) {
  ZORV_Dataset ds;
  ds.AddVariable("a", 0);
  ds.AddVariable("s", 12);
  ds.AddVariable("b", 0);
  ds.AppendCases(1);
  ds.SetNum(0, 0, 1.5);
  ds.SetString(0, 1, "hello world!");
  ds.SetNum(0, 2, -3);
  std::vector<OBS> row(static_cast<std::size_t>(ds.GetCaseWordCount()));
  ds.CopyCase(0, row.data());
  EXPECT_EQ(row[0].fNum, 1.5);
  EXPECT_EQ(std::string(row[1].fStr, 12), "hello world!");
  EXPECT_EQ(row[3].fNum, -3);
}

TEST(ZORV_Dataset, RejectsBadCellAccess) {
  ZORV_Dataset ds;
  ds.AddVariable("a", 0);
  ds.AddVariable("s", 2);
  ds.AppendCases(1);
  EXPECT_THROW(ds.GetNum(1, 0), std::out_of_range);
  EXPECT_THROW(ds.GetNum(0, 2), std::out_of_range);
  EXPECT_THROW(ds.SetNum(0, 1, 1.0), std::invalid_argument);
  EXPECT_THROW(ds.SetString(0, 0, "x"), std::invalid_argument);
}

TEST(ZORV_DatasetSplits, AnUnsplitFileIsOneSplitInOriginalOrder) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  EXPECT_EQ(ds.GetNSplitVars(), 0);
  EXPECT_EQ(ds.GetSplitCount(), 1);
  EXPECT_EQ(ds.GetSplitBegin(0), 0);
  EXPECT_EQ(ds.GetSplitEnd(0), 6);
  for (long p = 0; p < 6; ++p) EXPECT_EQ(ds.GetOrderedCase(p), p);
  std::vector<const OBS*> values;
  ds.GetSplitValues(0, values);
  EXPECT_TRUE(values.empty());

  ZORV_Dataset empty;
  empty.AddVariable("x", 0);
  EXPECT_EQ(empty.GetSplitCount(), 1);
  EXPECT_EQ(empty.GetSplitEnd(0), 0);
}

TEST(ZORV_DatasetSplits, GroupsCasesByAStableSortOfTheSplitValues) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ASSERT_TRUE(ds.SetSplitVars({0}));
  EXPECT_EQ(ds.GetNSplitVars(), 1);
  EXPECT_EQ(ds.GetSplitVar(0), 0);
  EXPECT_EQ(ds.GetSplitVar(1), -1);
  ASSERT_EQ(ds.GetSplitCount(), 3);
  // a: cases 1, 3, 5 in their order; b: 0, 2; c: 4.
  std::vector<long> order;
  for (long p = 0; p < ds.GetCaseCount(); ++p) order.push_back(ds.GetOrderedCase(p));
  EXPECT_EQ(order, (std::vector<long>{1, 3, 5, 0, 2, 4}));
  EXPECT_EQ(ds.GetSplitBegin(1), 3);
  EXPECT_EQ(ds.GetSplitEnd(1), 5);
  std::vector<const OBS*> values;
  ds.GetSplitValues(2, values);
  ASSERT_EQ(values.size(), 1u);
  EXPECT_EQ(std::string(values[0]->fStr, 3), "c  ");
  // The store keeps the original order.
  EXPECT_EQ(ds.GetString(0, 0), "b");
  EXPECT_THROW(ds.GetSplitBegin(3), std::out_of_range);
}

TEST(ZORV_DatasetSplits, NumbersSortWithSystemMissingFirst) {
  ZORV_Dataset ds;
  ds.AddVariable("g", 0);
  ds.AddVariable("h", 0);
  ds.AppendCases(5);
  double g[] = {2, 1, -DBL_MAX, 2, 1};
  double h[] = {1, 1, 1, 0, 1};
  for (long r = 0; r < 5; ++r) {
    ds.SetNum(r, 0, g[r]);
    ds.SetNum(r, 1, h[r]);
  }
  ASSERT_TRUE(ds.SetSplitVars({0, 1}));
  ASSERT_EQ(ds.GetSplitCount(), 4);
  std::vector<const OBS*> values;
  ds.GetSplitValues(0, values);
  EXPECT_EQ(values[0]->fNum, -DBL_MAX);
  ds.GetSplitValues(1, values);
  EXPECT_EQ(values[0]->fNum, 1);
  EXPECT_EQ(ds.GetSplitEnd(1) - ds.GetSplitBegin(1), 2);
  ds.GetSplitValues(2, values);
  EXPECT_EQ(values[0]->fNum, 2);
  EXPECT_EQ(values[1]->fNum, 0);
  EXPECT_EQ(ds.GetOrderedCase(ds.GetSplitBegin(2)), 3);
}

TEST(ZORV_DatasetSplits, ChangesOfSplitValuesRegroupTheCases) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ds.SetSplitVars({0});
  ASSERT_EQ(ds.GetSplitCount(), 3);
  ds.SetString(4, 0, "a");
  EXPECT_EQ(ds.GetSplitCount(), 2);
  ds.AppendCases(1);  // a blank group sorts first
  EXPECT_EQ(ds.GetSplitCount(), 3);
  EXPECT_EQ(ds.GetOrderedCase(0), 6);
  ASSERT_TRUE(ds.SetSplitVars({}));
  EXPECT_EQ(ds.GetSplitCount(), 1);
}

TEST(ZORV_DatasetSplits, RejectsBadSplitVariablesAndKeepsTheOldOnes) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ASSERT_TRUE(ds.SetSplitVars({0}));
  EXPECT_FALSE(ds.SetSplitVars({1, 1}));
  EXPECT_FALSE(ds.SetSplitVars({7}));
  EXPECT_EQ(ds.GetNSplitVars(), 1);
  EXPECT_EQ(ds.GetSplitVar(0), 0);
}

TEST(ZORV_DatasetSplits, LayeredOrSeparateTables) {
  ZORV_Dataset ds;
  EXPECT_TRUE(ds.SplitsInOneTable());
  EXPECT_FALSE(ds.SplitsInSeparateTables());
  ds.SetSplitsInOneTable(false);
  const ProcedureDataSource& base = ds;
  EXPECT_FALSE(base.SplitsInOneTable());
  EXPECT_TRUE(base.SplitsInSeparateTables());
}

TEST(ZORV_DatasetWeights, DropsCasesWithMissingZeroOrNegativeWeights) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  EXPECT_EQ(ds.GetWeightVarIndex(), -1);
  double weight = 0;
  EXPECT_TRUE(ds.GetCaseWeight(0, weight));
  EXPECT_EQ(weight, 1.0);

  ASSERT_TRUE(ds.SetWeightVar(2));
  EXPECT_EQ(ds.GetWeightVarIndex(), 2);
  ds.SetNum(0, 2, 2.5);
  ds.SetNum(1, 2, 0.0);
  ds.SetNum(2, 2, -1.0);
  ds.SetNum(3, 2, ZORV_Dataset::SysMiss());
  ds.SetNum(4, 2, 99);
  ds.GetVariable(2)->AddMissingValue(99);
  EXPECT_TRUE(ds.GetCaseWeight(0, weight));
  EXPECT_EQ(weight, 2.5);
  EXPECT_FALSE(ds.GetCaseWeight(1, weight));
  EXPECT_EQ(weight, 0.0);
  EXPECT_FALSE(ds.GetCaseWeight(2, weight));
  EXPECT_FALSE(ds.GetCaseWeight(3, weight));
  EXPECT_FALSE(ds.GetCaseWeight(4, weight));
  EXPECT_TRUE(ds.GetCaseWeight(5, weight));
  EXPECT_EQ(ds.GetDroppedWeightCount(), 4);

  ds.SetSplitVars({0});
  // a: cases 1 (0), 3 (missing), 5; b: 0, 2 (negative); c: 4 (user-missing).
  EXPECT_EQ(ds.GetSplitDroppedWeightCount(0), 2);
  EXPECT_EQ(ds.GetSplitDroppedWeightCount(1), 1);
  EXPECT_EQ(ds.GetSplitDroppedWeightCount(2), 1);
  ds.SetNum(2, 2, 1.0);
  EXPECT_EQ(ds.GetSplitDroppedWeightCount(1), 0);
  EXPECT_EQ(ds.GetDroppedWeightCount(), 3);
}

TEST(ZORV_DatasetWeights, OnlyANumericColumnCanWeigh) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  EXPECT_FALSE(ds.SetWeightVar(0));
  EXPECT_FALSE(ds.SetWeightVar(3));
  EXPECT_TRUE(ds.SetWeightVar(1));
  EXPECT_TRUE(ds.SetWeightVar(-1));
  EXPECT_EQ(ds.GetWeightVarIndex(), -1);
  EXPECT_EQ(ds.GetDroppedWeightCount(), 0);
}

TEST(ZORV_DatasetFilter, ACaseWhoseFilterValueIsMissingOrZeroIsSetAside) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ASSERT_EQ(ds.AddVariable("keep", 0), 3);
  EXPECT_EQ(ds.GetFilterVarIndex(), -1);
  for (long r = 0; r < 6; ++r) EXPECT_TRUE(ds.PassesFilter(r)) << r;

  const double keep[] = {1, 0, -2, ZORV_Dataset::SysMiss(), 0.5, 7};
  for (long r = 0; r < 6; ++r) ds.SetNum(r, 3, keep[r]);
  ds.GetVariable(3)->AddMissingValue(7);
  ASSERT_TRUE(ds.SetFilterVar(3));
  EXPECT_EQ(ds.GetFilterVarIndex(), 3);
  const bool passes[] = {true, false, true, false, true, false};
  for (long r = 0; r < 6; ++r) EXPECT_EQ(ds.PassesFilter(r), passes[r]) << r;
  EXPECT_THROW(ds.PassesFilter(6), std::out_of_range);

  // Neither a string nor a column outside the file can filter.
  EXPECT_FALSE(ds.SetFilterVar(0));
  EXPECT_FALSE(ds.SetFilterVar(4));
  EXPECT_EQ(ds.GetFilterVarIndex(), 3);
  EXPECT_TRUE(ds.SetFilterVar(-1));
  EXPECT_TRUE(ds.PassesFilter(1));
}

TEST(ZORV_DatasetFilter, CasesSetAsideAreNotCountedAsDroppedForTheirWeight) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ASSERT_EQ(ds.AddVariable("keep", 0), 3);
  for (long r = 0; r < 6; ++r) ds.SetNum(r, 3, 1.0);
  ASSERT_TRUE(ds.SetWeightVar(2));
  ds.SetNum(1, 2, 0.0);
  ds.SetNum(3, 2, 0.0);
  ASSERT_TRUE(ds.SetFilterVar(3));
  EXPECT_EQ(ds.GetDroppedWeightCount(), 2);
  // Setting case 1 aside is a change of the filter's values.
  ds.SetNum(1, 3, 0.0);
  EXPECT_EQ(ds.GetDroppedWeightCount(), 1);
}

TEST(ZORV_Dataset, KeepCasesRemovesTheOthersForGood) {
  ZORV_Dataset ds;
  MakeGroups(ds);
  ASSERT_EQ(ds.AddVariable("long", 12), 3);
  for (long r = 0; r < 6; ++r) ds.SetString(r, 3, "value " + std::to_string(r));
  ds.SetSplitVars({0});
  ASSERT_TRUE(ds.SetWeightVar(2));
  ds.KeepCases({false, true, true, false, false, true});
  ASSERT_EQ(ds.GetCaseCount(), 3);
  EXPECT_EQ(ds.GetNum(0, 1), 10.0);
  EXPECT_EQ(ds.GetNum(1, 1), 20.0);
  EXPECT_EQ(ds.GetNum(2, 1), 50.0);
  EXPECT_EQ(ds.GetString(0, 3), "value 1");
  EXPECT_EQ(ds.GetString(2, 3), "value 5");
  EXPECT_EQ(ds.GetString(1, 0), "b");
  // The settings stay and the splits follow the cases that are left.
  EXPECT_EQ(ds.GetWeightVarIndex(), 2);
  EXPECT_EQ(ds.GetSplitCount(), 2);
  EXPECT_EQ(ds.GetSplitEnd(0) - ds.GetSplitBegin(0), 2);
  EXPECT_THROW(ds.KeepCases({true}), std::invalid_argument);
  ds.KeepCases({false, false, false});
  EXPECT_EQ(ds.GetCaseCount(), 0);
  EXPECT_EQ(ds.ColumnCount(), 4);
}

TEST(ZORV_DatasetMemory, AMillionCasesOfTenVariablesCostAboutTheirOwnSize) {
  const long cases = 1000000;
  const int columns = 10;
  struct mallinfo2 before = mallinfo2();
  {
    ZORV_Dataset ds;
    for (int c = 0; c < columns; ++c) ds.AddVariable("v" + std::to_string(c), 0);
    ds.AppendCases(cases);
    for (long r = 0; r < cases; r += 1000) ds.SetNum(r, 3, static_cast<double>(r));
    ds.SetSplitVars({3});
    EXPECT_EQ(ds.GetSplitCount(), 1001);  // the thousand values and the missing ones
    struct mallinfo2 after = mallinfo2();
    double data = static_cast<double>(cases) * columns * sizeof(OBS);
    double order = static_cast<double>(cases) * sizeof(long);
    double used = static_cast<double>(after.uordblks + after.hblkhd) - static_cast<double>(before.uordblks + before.hblkhd);
    EXPECT_LT(used, 1.1 * (data + order));
    EXPECT_EQ(ds.GetCaseCount(), cases);
  }
}
