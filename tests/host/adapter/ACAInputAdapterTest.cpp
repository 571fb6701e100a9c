#include "host/adapter/ACAInputAdapter.h"

#include <gtest/gtest.h>

#include <memory>

#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/HostDataTestSource.h"
#include "host/output/BpProcedure.h"

namespace {

BpProcedure& NoProcedure() {
  // The split settings come from the data source; the procedure is not read.
  static BpProcedure unbound;
  return unbound;
}

}  // namespace

TEST(ACAInputAdapter, AdoptsTheSplitFileOfTheDataSource) {
  hostdata_test::HostDataTestSource source;
  int group = source.Add("group", 0);
  ACAVarValidSpecs specs(true, true, true);
  std::unique_ptr<ACAInputAdapter> adapter(new ACAInputAdapter(&specs, source));
  EXPECT_FALSE(adapter->GetSplitFile());
  adapter->SetSplitFile(NoProcedure(), true, true, true);
  EXPECT_FALSE(adapter->GetSplitFile());
  EXPECT_TRUE(adapter->GetKeepSplitValues());

  source.SetSplitVars({group});
  adapter->SetSplitFile(NoProcedure(), true, true, true);
  EXPECT_TRUE(adapter->GetSplitFile());
  EXPECT_EQ(adapter->GetSplitCount(), 0);
  EXPECT_TRUE(adapter->GetSplitValues().empty());
  EXPECT_EQ(adapter->GetNRecords(), 0);
  EXPECT_EQ(adapter->GetVarValidSpecs(), &specs);

  ACAVarValidSpecs noSplits(true, true, false);
  ACAInputAdapter ignoring(&noSplits, source);
  ignoring.SetSplitFile(NoProcedure(), true, true, true);
  EXPECT_FALSE(ignoring.GetSplitFile());
}

TEST(ACAInputAdapter, GivesTheWeightItsColumn) {
  hostdata_test::HostDataTestSource source;
  source.Add("x", 0);
  source.SetWeight(source.Add("w", 0));
  ACAVarValidSpecs specs(true, true, true);
  specs.AddVariable(0, false, false, true, true);
  int weight = specs.SetWeightVar();
  ACAInputAdapter adapter(&specs, source);
  EXPECT_EQ(specs.GetZORVVarIndex(weight), 1);

  ACAVarValidSpecs unweighted(true, false, true);
  int ignored = unweighted.SetWeightVar();
  ACAInputAdapter other(&unweighted, source);
  EXPECT_EQ(unweighted.GetZORVVarIndex(ignored), -1);
}

TEST(ACAInputAdapter, WithoutCasesThereIsNoSplitAndNoCategory) {
  // A dictionary-only source has no cases to read.
  hostdata_test::HostDataTestSource source;
  int group = source.Add("group", 0);
  ACAVarValidSpecs specs(true, true, true);
  int rec = specs.AddVariable(group, true, false, true, true);
  ACAInputAdapter adapter(&specs, source);
  EXPECT_EQ(adapter.GetDataset(), nullptr);
  bool notFound = false;
  int type = -1;
  OBS value;
  value.fNum = 1;
  adapter.ChangeSplitNoIter();
  EXPECT_EQ(adapter.GetSplitCount(), 0);
  adapter.ResetSplitNoIter();
  adapter.ClearDSIterator();
  EXPECT_EQ(adapter.EncodeRecordCatValue(rec, &value, notFound, false), -1);
  EXPECT_TRUE(notFound);
  EXPECT_EQ(adapter.DecodeCatValue(rec, 0, type), nullptr);
  EXPECT_EQ(type, 0);
  EXPECT_EQ(adapter.GetRecordCatVarSize(rec), 0);
  adapter.ReorderRecordCats(rec, false);
  EXPECT_EQ(adapter.GetNRecords(), 0);
  ACAProcDataSourceIter it(adapter, true);
  EXPECT_EQ(it.GetState(), ACA_ITER_FAILED);
  EXPECT_FALSE(it.NewSplit());
  EXPECT_FALSE(it.HasRecord());
  EXPECT_EQ(it.Current(), nullptr);
}
