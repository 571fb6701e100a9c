#include "host/adapter/ACAProcDataSourceIter.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/adapter/ACADataFileIter.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/adapter/AdapterTestDataset.h"
#include "host/data/ZORV_InputCaseIterator.h"

using namespace adapter_test;

namespace {

class ACAProcDataSourceIterTest : public ::testing::Test {
 protected:
  ACAProcDataSourceIterTest() : fSpecs(true, true, true) {
    MakeSmallFile(fData);
    fData.SetWeightVar(W);
    fY = fSpecs.AddVariable(Y, false, false, true, true);
    fGroup = fSpecs.AddVariable(GROUP, true, false, true, true);
  }

  ZORV_Dataset fData;
  ACAVarValidSpecs fSpecs;
  int fY = -1, fGroup = -1;
};

}  // namespace

TEST_F(ACAProcDataSourceIterTest, StateOneWhenNoCaseIsValid) {
  for (long r = 0; r < fData.GetCaseCount(); ++r) fData.SetNum(r, Y, kSysMiss);
  ACAInputAdapter adapter(&fSpecs, fData);
  ACAProcDataSourceIter it(adapter, true);
  EXPECT_EQ(it.GetState(), ACA_ITER_NO_VALID_CASE);
  EXPECT_FALSE(it.HasRecord());
  // The unsplit file still opens once, with nothing in it.
  ASSERT_TRUE(it.NewSplit());
  EXPECT_FALSE(it.HasRecord());
  EXPECT_EQ(it.GetState(), ACA_ITER_END);
  EXPECT_EQ(adapter.GetDroppedCount(), 8);
  EXPECT_FALSE(it.NewSplit());
}

TEST_F(ACAProcDataSourceIterTest, StateOneForAFileWithoutCases) {
  ZORV_Dataset empty;
  empty.AddVariable("y", 0);
  empty.AddVariable("g", 0);
  ACAVarValidSpecs specs(true, true, true);
  specs.AddVariable(0, false, false, true, true);
  ACAInputAdapter adapter(&specs, empty);
  ACAProcDataSourceIter it(adapter, true);
  EXPECT_EQ(it.GetState(), ACA_ITER_NO_VALID_CASE);
  EXPECT_TRUE(it.NewSplit());
  EXPECT_FALSE(it.NewSplit());

  // A split file without cases has no split at all.
  empty.SetSplitVars({1});
  ACAInputAdapter splitAdapter(&specs, empty);
  splitAdapter.SetSplitFile(NoProcedure(), true, true, true);
  ACAProcDataSourceIter splitIt(splitAdapter, true);
  EXPECT_EQ(splitIt.GetState(), ACA_ITER_NO_VALID_CASE);
  EXPECT_FALSE(splitIt.NewSplit());
  EXPECT_EQ(splitAdapter.GetSplitCount(), 0);
}

TEST_F(ACAProcDataSourceIterTest, StateThreeWhenTheLayoutCannotBeRead) {
  ACAVarValidSpecs empty(true, true, true);
  ACAInputAdapter emptyAdapter(&empty, fData);
  ACAProcDataSourceIter emptyIt(emptyAdapter, true);
  EXPECT_EQ(emptyIt.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(emptyIt.NewSplit());

  ACAVarValidSpecs stringAsNumber(true, true, true);
  stringAsNumber.AddVariable(SEX, false, false, true, true);
  ACAInputAdapter stringAdapter(&stringAsNumber, fData);
  ACAProcDataSourceIter stringIt(stringAdapter, true);
  EXPECT_EQ(stringIt.GetState(), ACA_ITER_FAILED);

  ACAVarValidSpecs missingColumn(true, true, true);
  missingColumn.AddVariable(42, false, false, true, true);
  ACAInputAdapter columnAdapter(&missingColumn, fData);
  ACAProcDataSourceIter columnIt(columnAdapter, true);
  EXPECT_EQ(columnIt.GetState(), ACA_ITER_FAILED);
  columnIt.Rewind();
  columnIt.NewPass(false);
  EXPECT_EQ(columnIt.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(columnIt.NewSplit());
}

TEST_F(ACAProcDataSourceIterTest, StateThreeWhenCasesChangeWhileReading) {
  ACAInputAdapter adapter(&fSpecs, fData);
  ACAProcDataSourceIter it(adapter, true);
  ASSERT_TRUE(it.NewSplit());
  ASSERT_TRUE(it.HasRecord());
  fData.AppendCases(1);
  it.Next();
  EXPECT_EQ(it.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(it.HasRecord());
  EXPECT_FALSE(it.NewSplit());
  it.Rewind();
  EXPECT_EQ(it.GetState(), ACA_ITER_FAILED);
}

TEST_F(ACAProcDataSourceIterTest, RewindStartsThePassAgain) {
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, true);
  ACAProcDataSourceIter it(adapter, true);
  EXPECT_TRUE(it.GetSplitByIter());
  ASSERT_TRUE(it.NewSplit());
  ASSERT_TRUE(it.NewSplit());
  it.Next();
  it.Rewind();
  EXPECT_FALSE(it.HasRecord());
  EXPECT_EQ(it.GetState(), ACA_ITER_READY);
  EXPECT_EQ(adapter.GetSplitCount(), 0);
  ASSERT_TRUE(it.NewSplit());
  EXPECT_EQ(ReadSplit(it, fY), (std::vector<double>{2, 4}));
}

TEST_F(ACAProcDataSourceIterTest, WithoutSplittingItReadsTheAdaptersSplit) {
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, true);
  ACAProcDataSourceIter it(adapter, false);
  adapter.ChangeSplitNoIter();
  adapter.ChangeSplitNoIter();
  EXPECT_FALSE(it.HasRecord());
  it.Rewind();
  EXPECT_EQ(ReadSplit(it, fY), (std::vector<double>{1, 3}));
  it.Rewind();
  EXPECT_EQ(ReadSplit(it, fY), (std::vector<double>{1, 3}));
}

TEST_F(ACAProcDataSourceIterTest, WritesNewValuesIntoTheirOwnCases) {
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, true);
  ACAProcDataSourceIter it(adapter, true);
  unsigned int column = 0;
  ASSERT_TRUE(fData.MakeVariable(0, &column));

  // Outside a writing pass nothing is written.
  ASSERT_TRUE(it.NewSplit());
  it.GetProcDS()->SetColumnValue(static_cast<int>(column), 5.0);
  EXPECT_EQ(fData.GetNum(1, static_cast<int>(column)), kSysMiss);

  it.NewPass(true);
  EXPECT_TRUE(it.GetWriting());
  ZORV_InputCaseIterator* cursor = it.GetProcDS();
  ASSERT_NE(cursor, nullptr);
  while (it.NewSplit()) {
    for (; it.HasRecord(); it.Next()) {
      cursor->SetColumnValue(static_cast<int>(column), it.Current()[fY] * 10.0);
      // Columns the pass reads, and strings, are left alone.
      cursor->SetColumnValue(Y, -1.0);
      cursor->SetColumnValue(REGION, -1.0);
      cursor->SetColumnValue(W, -1.0);
      cursor->SetColumnValue(SEX, -1.0);
      cursor->SetColumnValue(99, -1.0);
    }
  }
  std::vector<double> written;
  for (long r = 0; r < fData.GetCaseCount(); ++r) written.push_back(fData.GetNum(r, static_cast<int>(column)));
  EXPECT_EQ(written, (std::vector<double>{10, 20, 30, 40, kSysMiss, kSysMiss, kSysMiss, kSysMiss}));
  EXPECT_EQ(fData.GetNum(0, Y), 1.0);
  EXPECT_EQ(fData.GetNum(0, W), 1.0);
  EXPECT_EQ(fData.GetString(0, SEX), "m");
  // No case is current between records.
  cursor->SetColumnValue(static_cast<int>(column), 7.0);
  EXPECT_EQ(fData.GetNum(7, static_cast<int>(column)), kSysMiss);
}

TEST_F(ACAProcDataSourceIterTest, TheLastPassEndsReading) {
  ACAInputAdapter adapter(&fSpecs, fData);
  ACAProcDataSourceIter it(adapter, true);
  unsigned int column = 0;
  ASSERT_TRUE(fData.MakeVariable(0, &column));
  it.NewPass(true);
  it.SetLastPass();
  EXPECT_TRUE(it.GetLastPass());
  ASSERT_TRUE(it.NewSplit());
  it.GetProcDS()->SetColumnValue(static_cast<int>(column), 1.0);
  EXPECT_EQ(fData.GetNum(0, static_cast<int>(column)), 1.0);
  EXPECT_FALSE(it.NewSplit());
  it.Rewind();
  EXPECT_FALSE(it.NewSplit());
  EXPECT_FALSE(it.HasRecord());

  it.NewPass(false);
  EXPECT_FALSE(it.GetLastPass());
  ASSERT_TRUE(it.NewSplit());
  EXPECT_TRUE(it.HasRecord());
}

TEST_F(ACAProcDataSourceIterTest, FillsTheSortedFileSplitBySplit) {
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, true);
  ACAProcDataSourceIter it(adapter, true);
  std::vector<std::vector<double>> sorted;
  while (it.NewSplit()) {
    ACADataFileIter file(adapter, {fGroup}, adapter.GetNRecords());
    ASSERT_TRUE(file.FillDataFile(it));
    EXPECT_EQ(file.GetNRecords(), adapter.GetNRecords());
    std::vector<double> ys;
    for (file.Rewind(); file.HasRecord(); file.Next()) ys.push_back(file.Current()[fY]);
    sorted.push_back(ys);
  }
  EXPECT_EQ(sorted, (std::vector<std::vector<double>>{{2, 4}, {1, 3}, {}}));
}

TEST_F(ACAProcDataSourceIterTest, OutlivingTheAdapterFails) {
  auto adapter = std::make_unique<ACAInputAdapter>(&fSpecs, fData);
  ACAProcDataSourceIter it(*adapter, true);
  ASSERT_TRUE(it.NewSplit());
  adapter.reset();
  EXPECT_EQ(it.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(it.HasRecord());
  EXPECT_FALSE(it.NewSplit());
  it.Rewind();
  it.NewPass(true);
  it.Next();
  EXPECT_EQ(it.Current(), nullptr);
}

TEST_F(ACAProcDataSourceIterTest, ASecondIteratorTakesTheAdapterOver) {
  ACAInputAdapter adapter(&fSpecs, fData);
  auto first = std::make_unique<ACAProcDataSourceIter>(adapter, true);
  ACAProcDataSourceIter second(adapter, true);
  EXPECT_EQ(first->GetState(), ACA_ITER_FAILED);
  first.reset();
  ASSERT_TRUE(second.NewSplit());
  EXPECT_EQ(ReadSplit(second, fY), (std::vector<double>{1, 2, 3, 4}));
}
