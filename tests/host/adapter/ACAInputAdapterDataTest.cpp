// The adapter on a real dataset: splits, counts, category codes.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/adapter/AdapterTestDataset.h"
#include "host/data/ZORV_Session.h"
#include "numeric/common/MCMV.h"

using namespace adapter_test;

namespace {

class ACAInputAdapterData : public ::testing::Test {
 protected:
  ACAInputAdapterData() : fSpecs(true, true, true) {
    MakeSmallFile(fData);
    fData.SetWeightVar(W);
  }

  // y, group and sex, then the weight; the factor's user-missing values are
  // categories when `keepUserMissing`.
  void Register(bool keepUserMissing = false) {
    fY = fSpecs.AddVariable(Y, false, false, true, true);
    fGroup = fSpecs.AddVariable(GROUP, true, false, !keepUserMissing, true);
    fSex = fSpecs.AddVariable(SEX, true, false, !keepUserMissing, true);
    fWeight = fSpecs.SetWeightVar();
  }

  void Open(bool split) {
    if (split) fData.SetSplitVars({REGION});
    fpAdapter = std::make_unique<ACAInputAdapter>(&fSpecs, fData);
    fpAdapter->SetSplitFile(NoProcedure(), true, true, true);
    fpIter = std::make_unique<ACAProcDataSourceIter>(*fpAdapter, true);
  }

  std::string SplitText() const {
    const std::vector<OBS*>& values = fpAdapter->GetSplitValues();
    return values.empty() ? std::string() : std::string(values[0]->fStr, 4);
  }

  ~ACAInputAdapterData() override {
    fpIter.reset();
    fpAdapter.reset();
  }

  ZORV_Dataset fData;
  ACAVarValidSpecs fSpecs;
  int fY = -1, fGroup = -1, fSex = -1, fWeight = -1;
  std::unique_ptr<ACAInputAdapter> fpAdapter;
  std::unique_ptr<ACAProcDataSourceIter> fpIter;
};

}  // namespace

TEST_F(ACAInputAdapterData, UnsplitFileIsOneSplitInTheFileOrder) {
  Register();
  Open(false);
  EXPECT_FALSE(fpAdapter->GetSplitFile());
  EXPECT_EQ(fpIter->GetState(), ACA_ITER_READY);
  EXPECT_FALSE(fpIter->HasRecord());
  EXPECT_EQ(fpAdapter->GetSplitCount(), 0);

  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
  EXPECT_TRUE(fpAdapter->GetSplitValues().empty());
  EXPECT_EQ(fpAdapter->GetNRecords(), 4);
  EXPECT_EQ(fpAdapter->GetUnweightedCount(), 4);
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedCount(), 5.0);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 4);
  // Dropped with weights 1, 1, 0 (its weight is not valid) and 1.
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedDroppedCount(), 3.0);

  std::vector<std::vector<double>> records;
  for (; fpIter->HasRecord(); fpIter->Next()) {
    const double* r = fpIter->Current();
    ASSERT_NE(r, nullptr);
    records.push_back({r[fY], r[fGroup], r[fSex], r[fWeight]});
  }
  EXPECT_EQ(records, (std::vector<std::vector<double>>{{1, 1, 1, 1}, {2, 0, 0, 2}, {3, 2, 0, 1}, {4, 0, 1, 1}}));
  EXPECT_EQ(fpIter->GetState(), ACA_ITER_END);
  EXPECT_EQ(fpIter->Current(), nullptr);

  EXPECT_FALSE(fpIter->NewSplit());
  EXPECT_FALSE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
  // The file's one split stays current after the pass.
  EXPECT_EQ(fpAdapter->GetNRecords(), 4);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 3);
}

TEST_F(ACAInputAdapterData, SplitsComeInSortedOrderWithCategoriesOfTheirOwn) {
  Register();
  Open(true);
  ASSERT_TRUE(fpAdapter->GetSplitFile());

  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(SplitText(), "a   ");
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
  EXPECT_EQ(fpAdapter->GetNRecords(), 2);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 1);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fSex), 2);
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedCount(), 3.0);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 1);
  int type = -1;
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 0, type)->fNum, 1.0);
  EXPECT_EQ(type, 0);
  EXPECT_EQ(ReadSplit(*fpIter, fY), (std::vector<double>{2, 4}));

  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(SplitText(), "b   ");
  EXPECT_EQ(fpAdapter->GetSplitCount(), 2);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 2);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 0, type)->fNum, 2.0);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 1, type)->fNum, 3.0);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 2, type), nullptr);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 2);
  EXPECT_DOUBLE_EQ(fpAdapter->GetWeightedDroppedCount(), 1.0);
  // Group 2 has code 0 here, where it was code 1 in the unsplit file.
  EXPECT_EQ(ReadSplit(*fpIter, fGroup), (std::vector<double>{0, 1}));

  // The last split has no valid case, and is opened all the same.
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(SplitText(), "c   ");
  EXPECT_FALSE(fpIter->HasRecord());
  EXPECT_EQ(fpIter->GetState(), ACA_ITER_END);
  EXPECT_EQ(fpAdapter->GetNRecords(), 0);
  EXPECT_EQ(fpAdapter->GetDroppedCount(), 1);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 0);

  EXPECT_FALSE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetSplitCount(), 3);
  EXPECT_TRUE(fpAdapter->GetSplitValues().empty());
}

TEST_F(ACAInputAdapterData, NewSplitSkipsWhatIsLeftOfTheSplitBefore) {
  Register();
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  ASSERT_TRUE(fpIter->HasRecord());
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(SplitText(), "b   ");
  EXPECT_EQ(ReadSplit(*fpIter, fY), (std::vector<double>{1, 3}));
}

TEST_F(ACAInputAdapterData, EncodesAndDecodesStringsWithoutTrailingBlanks) {
  Register();
  Open(false);
  ASSERT_TRUE(fpIter->NewSplit());
  bool notFound = true;
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fSex, Text("m", 6).Get(), notFound, false), 1);
  EXPECT_FALSE(notFound);
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fSex, Text("f", 6).Get(), notFound, false), 0);
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fSex, Text("x", 6).Get(), notFound, false), -1);
  EXPECT_TRUE(notFound);
  int type = 0;
  const OBS* value = fpAdapter->DecodeCatValue(fSex, 0, type);
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(type, 6);
  EXPECT_EQ(std::string(value->fStr, 8), "f       ");

  OBS two = Num(2);
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, &two, notFound, false), 1);
  EXPECT_FALSE(notFound);
  OBS nan = Num(std::nan(""));
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, &nan, notFound, true), -1);
  EXPECT_TRUE(notFound);
  // Continuous variables, the weight and null values have no codes.
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fY, &two, notFound, true), -1);
  EXPECT_TRUE(notFound);
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, nullptr, notFound, true), -1);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fY), 0);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fWeight), 0);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(99), 0);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fY, 0, type), nullptr);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, -1, type), nullptr);
}

TEST_F(ACAInputAdapterData, StringOrderIgnoresTrailingBlanks) {
  // "ab" sorts before "ab!" though its padding blank is above the byte 0x01.
  ZORV_Dataset ds;
  int s = ds.AddVariable("s", 3);
  ds.AppendCases(3);
  ds.SetString(0, s, "ab\x01");
  ds.SetString(1, s, "ab");
  ds.SetString(2, s, "a");
  ACAVarValidSpecs specs(true, true, true);
  int rec = specs.AddVariable(s, true, false, true, true);
  ACAInputAdapter adapter(&specs, ds);
  ACAProcDataSourceIter it(adapter, true);
  ASSERT_TRUE(it.NewSplit());
  EXPECT_EQ(ReadSplit(it, rec), (std::vector<double>{2, 1, 0}));
  bool notFound = true;
  EXPECT_EQ(adapter.EncodeRecordCatValue(rec, Text("ab", 3).Get(), notFound, false), 1);
}

TEST_F(ACAInputAdapterData, UserMissingFactorValuesAreCategoriesWhenKept) {
  Register(true);
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetNRecords(), 3);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 2);
  EXPECT_EQ(ReadSplit(*fpIter, fGroup), (std::vector<double>{0, 0, 1}));
  OBS nine = Num(9);
  bool notFound = false;
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, &nine, notFound, false), -1);
  EXPECT_TRUE(notFound);
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, &nine, notFound, true), 1);
  EXPECT_FALSE(notFound);
  int type = 0;
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 1, type)->fNum, 9.0);
}

TEST_F(ACAInputAdapterData, UserMissingFactorValuesDropTheCaseOtherwise) {
  Register(false);
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(fpAdapter->GetNRecords(), 2);
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 1);
}

TEST_F(ACAInputAdapterData, SystemMissingKeptOrDeliveredAsMissing) {
  // y keeps its system-missing values; group is not listwise.
  int y = fSpecs.AddVariable(Y, false, true, true, true);
  int group = fSpecs.AddVariable(GROUP, true, false, true, false);
  Open(false);
  ASSERT_TRUE(fpIter->NewSplit());
  // Only the case with weight 0 is dropped.
  EXPECT_EQ(fpAdapter->GetNRecords(), 7);
  std::vector<double> ys;
  std::vector<double> groups;
  for (; fpIter->HasRecord(); fpIter->Next()) {
    ys.push_back(fpIter->Current()[y]);
    groups.push_back(fpIter->Current()[group]);
  }
  const double m = MCCommon_850::MCMV::Missing();
  EXPECT_EQ(ys, (std::vector<double>{1, 2, 3, 4, m, 6, 8}));
  EXPECT_EQ(groups, (std::vector<double>{1, 0, 2, 0, 1, m, m}));
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(group), 3);
}

TEST_F(ACAInputAdapterData, WithoutTheWeightEveryCaseWeighsOne) {
  ACAVarValidSpecs unweighted(true, false, true);
  int y = unweighted.AddVariable(Y, false, false, true, true);
  int weight = unweighted.SetWeightVar();
  ACAInputAdapter adapter(&unweighted, fData);
  ACAProcDataSourceIter it(adapter, true);
  ASSERT_TRUE(it.NewSplit());
  // Only the system-missing y is dropped; the case of weight 0 counts.
  EXPECT_EQ(adapter.GetNRecords(), 7);
  EXPECT_DOUBLE_EQ(adapter.GetWeightedCount(), 7.0);
  EXPECT_EQ(adapter.GetDroppedCount(), 1);
  EXPECT_DOUBLE_EQ(adapter.GetWeightedDroppedCount(), 1.0);
  ASSERT_TRUE(it.HasRecord());
  EXPECT_EQ(it.Current()[weight], 1.0);
  EXPECT_EQ(it.Current()[y], 1.0);
}

TEST_F(ACAInputAdapterData, ReorderChangesTheCodesForTheRestOfTheRun) {
  Register();
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  ReadSplit(*fpIter, fGroup);
  ASSERT_TRUE(fpIter->NewSplit());
  ReadSplit(*fpIter, fGroup);
  fpAdapter->ReorderRecordCats(fGroup, false);
  fpAdapter->ReorderRecordCats(fY, false);  // not categorical: nothing to do
  int type = 0;
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 0, type)->fNum, 3.0);
  OBS two = Num(2);
  bool notFound = true;
  EXPECT_EQ(fpAdapter->EncodeRecordCatValue(fGroup, &two, notFound, false), 1);
  while (fpIter->NewSplit()) {
  }

  // A second pass delivers the reordered codes in split b only.
  fpIter->Rewind();
  EXPECT_EQ(fpAdapter->GetSplitCount(), 0);
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(ReadSplit(*fpIter, fSex), (std::vector<double>{0, 1}));
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(ReadSplit(*fpIter, fGroup), (std::vector<double>{1, 0}));
  fpAdapter->ReorderRecordCats(fGroup, true);
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 0, type)->fNum, 2.0);
}

TEST_F(ACAInputAdapterData, DecodedValuesStayWhereTheyAre) {
  Register();
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  ASSERT_TRUE(fpIter->NewSplit());
  int type = 0;
  const OBS* three = fpAdapter->DecodeCatValue(fGroup, 1, type);
  fpAdapter->ReorderRecordCats(fGroup, false);
  while (fpIter->NewSplit()) {
  }
  EXPECT_EQ(three->fNum, 3.0);
  fpAdapter->ResetSplitNoIter();
  fpAdapter->ChangeSplitNoIter();
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(fpAdapter->DecodeCatValue(fGroup, 0, type), three);
}

TEST_F(ACAInputAdapterData, MovesWithoutTheIteratorOverWhatAPassLearned) {
  Register();
  Open(true);
  while (fpIter->NewSplit()) {
  }
  EXPECT_EQ(fpAdapter->GetSplitCount(), 3);

  fpAdapter->ClearDSIterator();
  fpAdapter->ResetSplitNoIter();
  EXPECT_EQ(fpAdapter->GetSplitCount(), 0);
  EXPECT_TRUE(fpAdapter->GetSplitValues().empty());
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
  EXPECT_EQ(SplitText(), "a   ");
  EXPECT_EQ(fpAdapter->GetNRecords(), 2);
  EXPECT_FALSE(fpIter->HasRecord());
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(SplitText(), "b   ");
  EXPECT_EQ(fpAdapter->GetRecordCatVarSize(fGroup), 2);
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(SplitText(), "c   ");
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(fpAdapter->GetSplitCount(), 3);
  EXPECT_TRUE(fpAdapter->GetSplitValues().empty());
  fpAdapter->ChangeSplitNoIter();
  EXPECT_EQ(fpAdapter->GetSplitCount(), 3);
}

TEST_F(ACAInputAdapterData, MovesWithoutTheIteratorOverSplitsNotReadYet) {
  Register();
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, true);
  adapter.ChangeSplitNoIter();
  adapter.ChangeSplitNoIter();
  EXPECT_EQ(adapter.GetSplitCount(), 2);
  EXPECT_EQ(adapter.GetNRecords(), 2);
  EXPECT_EQ(adapter.GetRecordCatVarSize(fGroup), 2);
}

TEST_F(ACAInputAdapterData, ClearingTheIteratorLeavesTheSplitWhereItIs) {
  Register();
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  ASSERT_TRUE(fpIter->HasRecord());
  fpAdapter->ClearDSIterator();
  EXPECT_FALSE(fpIter->HasRecord());
  EXPECT_EQ(fpIter->Current(), nullptr);
  EXPECT_EQ(fpAdapter->GetSplitCount(), 1);
  EXPECT_EQ(SplitText(), "a   ");
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_EQ(SplitText(), "b   ");
  EXPECT_TRUE(fpIter->HasRecord());
  // Moving the adapter takes the open split from the iterator.
  fpAdapter->ChangeSplitNoIter();
  EXPECT_FALSE(fpIter->HasRecord());
  EXPECT_EQ(SplitText(), "c   ");
}

TEST_F(ACAInputAdapterData, EmptySplitsCanBePassedOver) {
  Register();
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, true, false);
  ACAProcDataSourceIter it(adapter, true);
  ASSERT_TRUE(it.NewSplit());
  ASSERT_TRUE(it.NewSplit());
  EXPECT_EQ(std::string(adapter.GetSplitValues()[0]->fStr, 4), "b   ");
  EXPECT_FALSE(it.NewSplit());
  EXPECT_EQ(adapter.GetSplitCount(), 2);
}

TEST_F(ACAInputAdapterData, UnsortedSplitsAreRunsInFileOrder) {
  Register();
  fData.SetSplitVars({REGION});
  ACAInputAdapter adapter(&fSpecs, fData);
  adapter.SetSplitFile(NoProcedure(), true, false, true);
  ACAProcDataSourceIter it(adapter, true);
  std::string regions;
  std::vector<int> records;
  while (it.NewSplit()) {
    regions += adapter.GetSplitValues()[0]->fStr[0];
    records.push_back(adapter.GetNRecords());
  }
  EXPECT_EQ(regions, "babababc");
  EXPECT_EQ(records, (std::vector<int>{1, 1, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(adapter.GetSplitCount(), 8);
}

TEST_F(ACAInputAdapterData, SplitIsTheHostsCurrentSplitWhenKept) {
  Register();
  Open(true);
  ASSERT_TRUE(fpIter->NewSplit());
  const std::vector<ZORV_Session::SplitValue>& current = ZORV_Session::Current().GetCurrentSplit();
  ASSERT_EQ(current.size(), 1u);
  EXPECT_EQ(current[0].fpVariable, fData.GetVariable(REGION));
  ASSERT_EQ(current[0].fvValue.size(), 1u);
  EXPECT_EQ(std::string(current[0].fvValue[0].fStr, 4), "a   ");
  while (fpIter->NewSplit()) {
  }
  EXPECT_TRUE(ZORV_Session::Current().GetCurrentSplit().empty());

  fpIter->Rewind();
  ASSERT_TRUE(fpIter->NewSplit());
  EXPECT_FALSE(ZORV_Session::Current().GetCurrentSplit().empty());
  fpIter.reset();
  fpAdapter.reset();
  EXPECT_TRUE(ZORV_Session::Current().GetCurrentSplit().empty());

  ACAInputAdapter quiet(&fSpecs, fData);
  quiet.SetSplitFile(NoProcedure(), false, true, true);
  quiet.ChangeSplitNoIter();
  EXPECT_EQ(quiet.GetSplitValues().size(), 1u);
  EXPECT_TRUE(ZORV_Session::Current().GetCurrentSplit().empty());
}
