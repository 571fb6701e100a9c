#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "RunTestSupport.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "run/MIXFactory.h"

namespace run_test {
namespace {

using MCCommon_850::MCStatus;

class MIXFactoryScoringTest : public RunFixture {
 protected:
  MIXFactory& Factory(const std::vector<GroupData>& groups, bool split, const CommandData& command) {
    MakeGrowthData(fData, groups);
    if (split) fData.SetSplitVars({GRP});
    fpFactory.reset(new MIXFactory(&Specs(command), fData, &fProcedure));
    return *fpFactory;
  }
  static void DataPass(MIXFactory& factory) {
    while (factory.StartNewSplit(true)) {
      factory.ProcedureDataPass(true);
      factory.CompleteMetaData();
    }
  }

  static CommandData SavingCommand() {
    CommandData command;
    command.fvSaves = {{MIXValidSpecs::SAVE_PREDICTED, "pred"}, {MIXValidSpecs::SAVE_RESIDUAL, "resid"}};
    return command;
  }

  bool ColumnUnwritten(int column) const {
    for (long row = 0; row < fData.GetCaseCount(); ++row) {
      if (!fData.IsSysMissing(row, column)) return false;
    }
    return true;
  }

  std::unique_ptr<MIXFactory> fpFactory;
};

TEST_F(MIXFactoryScoringTest, TheSavedVariablesAreMadeAndEachIsListedInANotesTable) {
  MIXFactory& factory = Factory({{12, false}}, false, SavingCommand());
  DataPass(factory);
  const int columns = fData.ColumnCount();
  ASSERT_TRUE(factory.PrepareScoringPass());
  ASSERT_EQ(factory.GetNewVarIndices().size(), 2u);
  EXPECT_EQ(fData.ColumnCount(), columns + 2);
  const ZORV_Variable* pred = fData.GetVariable(static_cast<int>(factory.GetNewVarIndices()[0]));
  const ZORV_Variable* resid = fData.GetVariable(static_cast<int>(factory.GetNewVarIndices()[1]));
  ASSERT_NE(pred, nullptr);
  ASSERT_NE(resid, nullptr);
  EXPECT_EQ(std::string(pred->GetName()), "pred");
  EXPECT_EQ(std::string(resid->GetName()), "resid");
  EXPECT_EQ(std::string(pred->GetLabel()), fSpecs->GetSaveVarLabels()[0]);
  EXPECT_EQ(pred->GetFormat().Packed(), fSpecs->GetSaveVarFormats()[0].Packed());
  EXPECT_EQ(pred->GetWriteFormat().Packed(), fSpecs->GetSaveVarFormats()[0].Packed());
  EXPECT_EQ(pred->GetMeasurementLevel(), 3);

  std::vector<const OmTable*> notes;
  for (const OmItem& item : Heading().fvItems) {
    if (item.fKind == OmItem::TABLE && item.fpTable->fSubType == "Notes") notes.push_back(item.fpTable.get());
  }
  ASSERT_EQ(notes.size(), 2u);
  ASSERT_EQ(notes[0]->fvDimensions.size(), 1u);
  EXPECT_EQ(notes[0]->fvDimensions[0].fName.fText, "Contents");
  const OmDimensionNode& root = notes[0]->fvDimensions[0].fRoot;
  ASSERT_EQ(root.fvChildren.size(), 1u);
  EXPECT_EQ(root.fvChildren[0].fLabel.fText, "Variables Created");
  ASSERT_EQ(root.fvChildren[0].fvChildren.size(), 1u);
  EXPECT_EQ(root.fvChildren[0].fvChildren[0].fLabel.fText, "pred");
  ASSERT_EQ(notes[0]->fCells.size(), 1u);
  EXPECT_EQ(notes[0]->fCells.begin()->second.fContent.fText, fSpecs->GetSaveVarLabels()[0]);

  // A new pass has begun, for writing, and it is the last.
  EXPECT_EQ(factory.GetSplitIndex(), -1);
  EXPECT_TRUE(factory.GetRecordIterator()->GetWriting());
  EXPECT_TRUE(factory.GetRecordIterator()->GetLastPass());
}

TEST_F(MIXFactoryScoringTest, WithoutSavedVariablesNoTableIsMadeAndNothingIsWritten) {
  MIXFactory& factory = Factory({{12, false}}, false, CommandData());
  DataPass(factory);
  const int columns = fData.ColumnCount();
  const std::size_t tables = TableTitles().size();
  ASSERT_TRUE(factory.PrepareScoringPass());
  EXPECT_TRUE(factory.GetNewVarIndices().empty());
  EXPECT_EQ(TableTitles().size(), tables);
  EXPECT_EQ(fData.ColumnCount(), columns);
  EXPECT_TRUE(factory.GetRecordIterator()->GetWriting());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.ScoringDataPass());
  EXPECT_FALSE(factory.GetRecordIterator()->HasRecord());
  EXPECT_TRUE(factory.GetStatus().IsOK());
  EXPECT_EQ(fData.ColumnCount(), columns);
}

TEST_F(MIXFactoryScoringTest, AnErrorStatusStopsThePreparation) {
  MIXFactory& factory = Factory({{12, false}}, false, SavingCommand());
  DataPass(factory);
  const int columns = fData.ColumnCount();
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_FALSE(factory.PrepareScoringPass());
  EXPECT_EQ(fData.ColumnCount(), columns);
  EXPECT_TRUE(TableTitles().empty());
}

TEST_F(MIXFactoryScoringTest, ANullAlgorithmLeavesTheColumnsUnwrittenAndTheRecordsAreWalked) {
  MIXFactory& factory = Factory({{12, false}, {12, false}}, true, SavingCommand());
  DataPass(factory);
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  // Neither split gets an algorithm.
  while (factory.StartNewSplit(true)) {
    factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
    EXPECT_FALSE(factory.RunGLMMComponent());
  }
  ASSERT_EQ(factory.GetAlgorithms(), (std::vector<MCGLMM_850::GLMMAlgorithm*>{nullptr, nullptr}));

  ASSERT_TRUE(factory.PrepareScoringPass());
  int splits = 0;
  while (factory.StartNewSplit(true)) {
    EXPECT_EQ(factory.GetGLMMAlgorithm(), nullptr);
    EXPECT_TRUE(factory.ScoringDataPass());
    EXPECT_FALSE(factory.GetRecordIterator()->HasRecord());
    EXPECT_TRUE(factory.GetStatus().IsOK());
    ++splits;
  }
  EXPECT_EQ(splits, 2);
  for (unsigned int column : factory.GetNewVarIndices()) EXPECT_TRUE(ColumnUnwritten(static_cast<int>(column)));
}

TEST_F(MIXFactoryScoringTest, AFailedFitEndsTheSplitsScoringWithItsErrorButTheResultStaysTrue) {
  MIXFactory& factory = Factory({{1, false}, {12, false}}, true, SavingCommand());
  DataPass(factory);
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_FALSE(factory.RunGLMMComponent());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.RunGLMMComponent());
  // Running out of splits leaves a split file with a clear status.
  ASSERT_FALSE(factory.StartNewSplit(true));
  const long fitError = factory.GetAlgorithms()[0]->GetStatus().GetErrorCode();

  ASSERT_TRUE(factory.PrepareScoringPass());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.ScoringDataPass());
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), fitError);
  EXPECT_TRUE(factory.GetStatus().IsError());
  for (unsigned int column : factory.GetNewVarIndices()) EXPECT_TRUE(ColumnUnwritten(static_cast<int>(column)));
}

TEST_F(MIXFactoryScoringTest, AnErrorBeforeTheScoringPassMakesItFalseButTheRecordsAreStillWalked) {
  MIXFactory& factory = Factory({{12, false}}, false, SavingCommand());
  DataPass(factory);
  ASSERT_TRUE(factory.PrepareScoringPass());
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_FALSE(factory.ScoringDataPass());
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_INITIAL_VALUE_FAILED);
  EXPECT_FALSE(factory.GetRecordIterator()->HasRecord());
}

}  // namespace
}  // namespace run_test

namespace run_test {
namespace {

TEST_F(MIXFactoryScoringTest, AFittedSplitGetsItsScoresWritten) {
  MIXFactory& factory = Factory({{12, false}, {16, false}}, true, SavingCommand());
  DataPass(factory);
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  while (factory.StartNewSplit(true)) EXPECT_TRUE(factory.RunGLMMComponent());

  ASSERT_TRUE(factory.PrepareScoringPass());
  while (factory.StartNewSplit(true)) {
    EXPECT_TRUE(factory.ScoringDataPass());
    EXPECT_TRUE(factory.GetStatus().IsOK()) << factory.GetStatus().GetErrorCode();
  }
  ASSERT_EQ(factory.GetNewVarIndices().size(), 2u);
  const int pred = static_cast<int>(factory.GetNewVarIndices()[0]);
  const int resid = static_cast<int>(factory.GetNewVarIndices()[1]);
  for (long row = 0; row < fData.GetCaseCount(); ++row) {
    ASSERT_FALSE(fData.IsSysMissing(row, pred)) << row;
    ASSERT_FALSE(fData.IsSysMissing(row, resid)) << row;
    EXPECT_NEAR(fData.GetNum(row, pred) + fData.GetNum(row, resid), fData.GetNum(row, Y), 1e-8) << row;
  }
}

}  // namespace
}  // namespace run_test
