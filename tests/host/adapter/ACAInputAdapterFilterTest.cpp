// The adapter honours the dataset's filter: cases set aside are neither
// delivered nor counted, in unsplit and split files alike.
#include <gtest/gtest.h>

#include <memory>

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/adapter/AdapterTestDataset.h"
#include "host/data/ZORV_InputCaseIterator.h"

using namespace adapter_test;

namespace {

// The small file with a filter column: rows 0, 2, 4 and 6 pass; row 3 is
// missing, row 5 user-missing, rows 1 and 7 zero.
class ACAInputAdapterFilter : public ::testing::Test {
 protected:
  ACAInputAdapterFilter() {
    MakeSmallFile(fData);
    fData.SetWeightVar(W);
    fKeep = fData.AddVariable("keep", 0);
    const double keep[] = {1, 0, 2, kSysMiss, -1, 5, 1, 0};
    for (long r = 0; r < 8; ++r) fData.SetNum(r, fKeep, keep[r]);
    fData.GetVariable(fKeep)->AddMissingValue(5);
    fData.SetFilterVar(fKeep);
  }

  void Open(bool useFilter, bool split, bool requireSorted = true) {
    fpIter.reset();
    fpAdapter.reset();
    fpSpecs = std::make_unique<ACAVarValidSpecs>(useFilter, true, true);
    fY = fpSpecs->AddVariable(Y, false, false, true, true);
    fGroup = fpSpecs->AddVariable(GROUP, true, false, true, true);
    fpSpecs->SetWeightVar();
    if (split) fData.SetSplitVars({REGION});
    fpAdapter = std::make_unique<ACAInputAdapter>(fpSpecs.get(), fData);
    fpAdapter->SetSplitFile(NoProcedure(), true, requireSorted, true);
    fpIter = std::make_unique<ACAProcDataSourceIter>(*fpAdapter, true);
  }

  // The y values of each split of the pass.
  std::vector<std::vector<double>> Splits() {
    std::vector<std::vector<double>> splits;
    while (fpIter->NewSplit()) splits.push_back(ReadSplit(*fpIter, fY));
    return splits;
  }

  ~ACAInputAdapterFilter() override {
    fpIter.reset();
    fpAdapter.reset();
  }

  ZORV_Dataset fData;
  int fKeep = -1;
  int fY = -1, fGroup = -1;
  std::unique_ptr<ACAVarValidSpecs> fpSpecs;
  std::unique_ptr<ACAInputAdapter> fpAdapter;
  std::unique_ptr<ACAProcDataSourceIter> fpIter;
};

}  // namespace

TEST_F(ACAInputAdapterFilter, CasesSetAsideAreNeitherDeliveredNorCounted) {
  Open(true, false);
  ASSERT_TRUE(fpIter->NewSplit());
  // Of rows 0, 2, 4 and 6, row 4 lacks y and row 6 has weight 0.
  EXPECT_EQ(fpAdapter->GetNRecords(), 2);
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedCount(), 2.0);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 2);
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedDroppedCount(), 1.0);
  // The categories are those of the cases delivered: groups 2 and 3.
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 2);
  std::vector<std::vector<double>> records;
  for (; fpIter->HasRecord(); fpIter->Next()) records.push_back({fpIter->Current()[fY], fpIter->Current()[fGroup]});
  EXPECT_EQ(records, (std::vector<std::vector<double>>{{1, 0}, {3, 1}}));
}

TEST_F(ACAInputAdapterFilter, AVariableListThatDoesNotApplyTheFilterReadsEveryCase) {
  Open(false, false);
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetNRecords(), 4);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 4);
}

TEST_F(ACAInputAdapterFilter, ASplitOfCasesSetAsideOnlyDoesNotExist) {
  Open(true, true);
  // Regions a and c have no case that passes; b has rows 0, 2, 4 and 6.
  EXPECT_EQ(Splits(), (std::vector<std::vector<double>>{{1, 3}}));
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
}

TEST_F(ACAInputAdapterFilter, CasesSetAsideDoNotBreakARunOfEqualSplitValues) {
  // In file order the regions alternate; the cases that pass are all of b.
  Open(true, true, false);
  EXPECT_EQ(Splits(), (std::vector<std::vector<double>>{{1, 3}}));
  fData.SetFilterVar(-1);
  Open(true, true, false);
  EXPECT_EQ(Splits().size(), 8u);
}

TEST_F(ACAInputAdapterFilter, SplitsKeepTheirCasesThatPass) {
  fData.SetNum(1, fKeep, 1.0);  // region a, y 2
  Open(true, true);
  EXPECT_EQ(Splits(), (std::vector<std::vector<double>>{{2}, {1, 3}}));
}

TEST_F(ACAInputAdapterFilter, WhenNoCasePassesTheUnsplitFileIsOneEmptySplit) {
  for (long r = 0; r < 8; ++r) fData.SetNum(r, fKeep, 0.0);
  Open(true, false);
  EXPECT_EQ(fpIter->GetState(), ACA_ITER_NO_VALID_CASE);
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetNRecords(), 0);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 0);
  EXPECT_FALSE(fpIter->NewSplit());

  Open(true, true);
  EXPECT_EQ(fpIter->GetState(), ACA_ITER_NO_VALID_CASE);
  EXPECT_FALSE(fpIter->NewSplit());
}

TEST_F(ACAInputAdapterFilter, TheFilterColumnIsNotWrittenByAWritingPass) {
  Open(true, false);
  fpIter->NewPass(true);
  ASSERT_TRUE(fpIter->NewSplit());
  ASSERT_TRUE(fpIter->HasRecord());
  fpIter->GetProcDS()->SetColumnValue(fKeep, 9.0);
  EXPECT_EQ(fData.GetNum(0, fKeep), 1.0);
}
