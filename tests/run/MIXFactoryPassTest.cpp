#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "AllocationCounter.h"
#include "RunTestSupport.h"
#include "base/MixExports.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/data/ZORV_PMMLPooling.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "params/MIXParameterAggregator.h"
#include "run/MIXFactory.h"

namespace run_test {
namespace {

using MCCommon_850::MCStatus;

class MIXFactoryPassTest : public RunFixture {
 protected:
  MIXFactory& Factory(const std::vector<GroupData>& groups, bool split, const CommandData& command = CommandData()) {
    MakeGrowthData(fData, groups);
    if (split) fData.SetSplitVars({GRP});
    fpFactory.reset(new MIXFactory(&Specs(command), fData, &fProcedure));
    return *fpFactory;
  }

  // The data pass as the run makes it on a split file: every split, results
  // dropped.
  static void DataPass(MIXFactory& factory) {
    while (factory.StartNewSplit(true)) {
      factory.ProcedureDataPass(true);
      factory.CompleteMetaData();
    }
  }
  // The component pass; the results of the component runs, in order.
  static std::vector<bool> ComponentPass(MIXFactory& factory) {
    std::vector<bool> results;
    EXPECT_TRUE(factory.CreateParamAggregators());
    if (!factory.PrepareComponentRun(true)) return results;
    while (factory.StartNewSplit(true)) results.push_back(factory.RunGLMMComponent());
    return results;
  }

  std::unique_ptr<MIXFactory> fpFactory;
};

TEST_F(MIXFactoryPassTest, ConstructionFindsNoValidCaseOnAnUnsplitFile) {
  MIXFactory& factory = Factory({{8, true}}, false);
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
  EXPECT_TRUE(factory.GetStatus().IsError());
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fLevel, 3);
  EXPECT_EQ(messages[0].fText, "There are no valid cases for this analysis.");
  EXPECT_FALSE(factory.PrepareComponentRun(true));
}

TEST_F(MIXFactoryPassTest, ConstructionFindsNoValidCaseInASplitFileAndKeepsTheStatus) {
  MIXFactory& factory = Factory({{8, true}, {8, true}}, true);
  EXPECT_TRUE(factory.GetStatus().IsOK());
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_EQ(messages[0].fText, "There are no valid cases in this split file group. The analysis of the group is skipped.");
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryPassTest, AnUnsplitFileKeepsAnErrorFromConstructionIntoTheFirstPass) {
  MIXFactory& factory = Factory({{8, true}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
}

TEST_F(MIXFactoryPassTest, ASplitWithoutRecordsGetsNullEntriesAndTheLaterSplitsKeepTheirIndices) {
  MIXFactory& factory = Factory({{12, false}, {8, true}, {16, false}}, true);
  DataPass(factory);
  ASSERT_EQ(factory.GetCompSettingsList().size(), 3u);
  EXPECT_NE(factory.GetCompSettingsList()[0], nullptr);
  EXPECT_EQ(factory.GetCompSettingsList()[1], nullptr);
  EXPECT_NE(factory.GetCompSettingsList()[2], nullptr);
  EXPECT_EQ(factory.GetVarLists()[1], nullptr);
  EXPECT_EQ(factory.GetNRecordsList(), (std::vector<int>{12, 0, 16}));
  EXPECT_EQ(factory.GetInputAdapter()->GetSplitCount(), 3);

  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true, false, true}));
  ASSERT_EQ(factory.GetAlgorithms().size(), 3u);
  EXPECT_NE(factory.GetAlgorithms()[0], nullptr);
  EXPECT_EQ(factory.GetAlgorithms()[1], nullptr);
  EXPECT_NE(factory.GetAlgorithms()[2], nullptr);
  // The empty split was told once, in the first pass.
  EXPECT_EQ(Messages().size(), 1u);

  // Output pass: the split without settings has no algorithm.
  ASSERT_TRUE(factory.AggregateParameters());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.ProcedureDataPass(false));
  EXPECT_EQ(factory.GetGLMMAlgorithm(), factory.GetAlgorithms()[0]);
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_EQ(factory.GetSplitIndex(), 1);
  EXPECT_EQ(factory.GetGLMMAlgorithm(), nullptr);
  EXPECT_EQ(factory.GetGLMMSettings(), nullptr);
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_EQ(factory.GetGLMMAlgorithm(), factory.GetAlgorithms()[2]);
  EXPECT_FALSE(factory.StartNewSplit(true));
}

TEST_F(MIXFactoryPassTest, AnEmptySplitInALaterPassSets230024WithoutAMessage) {
  MIXFactory& factory = Factory({{12, false}, {8, true}}, true);
  DataPass(factory);
  const std::size_t said = Messages().size();
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.ProcedureDataPass(false));
  EXPECT_TRUE(factory.GetStatus().IsOK());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_FALSE(factory.ProcedureDataPass(false));
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
  EXPECT_EQ(Messages().size(), said);
}

TEST_F(MIXFactoryPassTest, AnUnsplitFileStandsOnSplitZeroInTheComponentAndOutputPasses) {
  MIXFactory& factory = Factory({{24, false}}, false);
  EXPECT_EQ(factory.GetSplitIndex(), -1);
  DataPass(factory);
  EXPECT_EQ(factory.GetSplitIndex(), 0);
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true}));
  EXPECT_EQ(factory.GetSplitIndex(), 0);
  ASSERT_TRUE(factory.AggregateParameters());
  // The output pass of an unsplit file moves nowhere.
  EXPECT_EQ(factory.GetSplitIndex(), 0);
  EXPECT_NE(factory.GetGLMMAlgorithm(), nullptr);
  EXPECT_NE(factory.GetOutputStats(), nullptr);
}

TEST_F(MIXFactoryPassTest, StartNewSplitResetsTheStatusOfASplitFileOnly) {
  MIXFactory& split = Factory({{12, false}, {12, false}}, true);
  split.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_TRUE(split.StartNewSplit(true));
  EXPECT_TRUE(split.GetStatus().IsOK());
  EXPECT_TRUE(split.StartNewSplit(true));
  split.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  // Also on the call that finds the file exhausted.
  EXPECT_FALSE(split.StartNewSplit(true));
  EXPECT_TRUE(split.GetStatus().IsOK());
  EXPECT_EQ(split.GetSplitIndex(), 1);
}

TEST_F(MIXFactoryPassTest, StartNewSplitWithoutTheIteratorMovesWithinTheSplitsMet) {
  MIXFactory& factory = Factory({{12, false}, {12, false}}, true);
  DataPass(factory);
  ASSERT_TRUE(factory.PrepareComponentRun(false));
  EXPECT_EQ(factory.GetSplitIndex(), -1);
  EXPECT_TRUE(factory.StartNewSplit(false));
  EXPECT_EQ(factory.GetSplitIndex(), 0);
  EXPECT_EQ(factory.GetInputAdapter()->GetSplitIndex(), 0);
  EXPECT_TRUE(factory.StartNewSplit(false));
  EXPECT_EQ(factory.GetInputAdapter()->GetSplitIndex(), 1);
  EXPECT_FALSE(factory.StartNewSplit(false));
  EXPECT_EQ(factory.GetSplitIndex(), 1);
}

TEST_F(MIXFactoryPassTest, PrepareComponentRunRefusesAnErrorStatus) {
  MIXFactory& factory = Factory({{24, false}}, false);
  DataPass(factory);
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_FALSE(factory.PrepareComponentRun(true));
  EXPECT_EQ(factory.GetSplitIndex(), 0);
  factory.SetStatus(MCStatus(MCCommon_850::MC_MAX_STEP_HALVING, false));  // a warning does not stop it
  EXPECT_TRUE(factory.PrepareComponentRun(true));
  EXPECT_EQ(factory.GetSplitIndex(), -1);
}

TEST_F(MIXFactoryPassTest, ADataPassClearsAWarningButNeverAnEarlierError) {
  MIXFactory& factory = Factory({{24, false}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_MAX_STEP_HALVING, false));
  EXPECT_TRUE(factory.ProcedureDataPass(true));
  EXPECT_TRUE(factory.GetStatus().IsOK());

  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_TRUE(factory.ProcedureDataPass(false));
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_INITIAL_VALUE_FAILED);
}

TEST_F(MIXFactoryPassTest, AStopRequestEndsTheRecordLoopWithoutAnError) {
  MIXFactory& factory = Factory({{24, false}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  ZORV_StopFlag::Raise();
  EXPECT_TRUE(factory.ProcedureDataPass(true));
  EXPECT_TRUE(factory.GetStatus().IsOK());
  // The loop stopped before the first step.
  EXPECT_TRUE(factory.GetRecordIterator()->HasRecord());
  ZORV_StopFlag::Clear();
  EXPECT_TRUE(factory.ProcedureDataPass(true));
  EXPECT_FALSE(factory.GetRecordIterator()->HasRecord());
}

TEST_F(MIXFactoryPassTest, AFailingIteratorEndsThePassWith230024AndNoMessage) {
  MIXFactory& factory = Factory({{24, false}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  // Cases added while the data are read make the iterator fail.
  fData.AppendCases(1);
  EXPECT_FALSE(factory.ProcedureDataPass(true));
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(MIXFactoryPassTest, TheRecordLoopAllocatesNothing) {
  MakeGrowthData(fData, {{4000, false}});
  MIXFactory factory(&Specs(CommandData()), fData, &fProcedure);
  ASSERT_TRUE(factory.StartNewSplit(true));
  const long before = AllocationCount();
  EXPECT_TRUE(factory.ProcedureDataPass(true));
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_FALSE(factory.GetRecordIterator()->HasRecord());
}

TEST_F(MIXFactoryPassTest, WithoutRandomBlocksThereAreNoRandomAggregators) {
  CommandData command;
  command.fbRandom = false;
  MIXFactory& factory = Factory({{24, false}}, false, command);
  DataPass(factory);
  aggreg_random = true;
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true}));
  EXPECT_NE(factory.GetFixParamAggr(), nullptr);
  EXPECT_TRUE(factory.GetRandomParamAggrs()->empty());
  EXPECT_TRUE(factory.AggregateParameters());
  EXPECT_EQ(factory.GetFixParamAggr()->GetAllParameters().size(), 2u);
  EXPECT_EQ(factory.GetPMMLPooling(), nullptr);
}

TEST_F(MIXFactoryPassTest, TheRandomAggregatorsAreFedOnlyWithTheSwitch) {
  MIXFactory& factory = Factory({{24, false}}, false);
  DataPass(factory);
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true}));
  ASSERT_EQ(factory.GetRandomParamAggrs()->size(), 1u);
  EXPECT_TRUE(factory.AggregateParameters());
  EXPECT_EQ(factory.GetFixParamAggr()->GetAllParameters().size(), 2u);
  // Built, never fed, never completed.
  EXPECT_TRUE((*factory.GetRandomParamAggrs())[0]->GetAllParameters().empty());
}

TEST_F(MIXFactoryPassTest, TheSwitchFeedsAndCompletesTheRandomAggregators) {
  CommandData command;
  command.fbRandomSlope = true;
  MIXFactory& factory = Factory({{24, false}}, false, command);
  DataPass(factory);
  aggreg_random = true;
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true}));
  EXPECT_TRUE(factory.AggregateParameters());
  EXPECT_FALSE((*factory.GetRandomParamAggrs())[0]->GetAllParameters().empty());
}

// A random intercept is an effect of its block without cells to gather, so
// the random aggregation of such a block fails.
TEST_F(MIXFactoryPassTest, ARandomInterceptCannotBeAggregated) {
  MIXFactory& factory = Factory({{24, false}}, false);
  DataPass(factory);
  aggreg_random = true;
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true}));
  EXPECT_FALSE(factory.AggregateParameters());
}

TEST_F(MIXFactoryPassTest, AModelFileMakesThePoolAndCompletingItClosesIt) {
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("model.xml");
  MIXFactory& factory = Factory({{24, false}}, false, command);
  DataPass(factory);
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_NE(factory.GetPMMLPooling(), nullptr);
  EXPECT_FALSE(factory.GetPMMLPooling()->IsComplete());
  EXPECT_TRUE(factory.CompleteExtFileIO());
  EXPECT_TRUE(factory.GetPMMLPooling()->IsComplete());
}

TEST_F(MIXFactoryPassTest, TheFirstSplitWithSortVariablesFixesThemAfterAFailedSplit) {
  MIXFactory& factory = Factory({{8, true}, {12, false}}, true);
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_FALSE(factory.ProcedureDataPass(true));
  EXPECT_FALSE(factory.CompleteMetaData());
  EXPECT_TRUE(factory.GetSortVars().empty());
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.ProcedureDataPass(true));
  EXPECT_TRUE(factory.CompleteMetaData());
  EXPECT_EQ(factory.GetSortVars().size(), 1u);
}

TEST_F(MIXFactoryPassTest, AnUnsplitFileKeepsItsObjectsWhenCompleteMetaDataFails) {
  MIXFactory& factory = Factory({{24, false}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_FALSE(factory.CompleteMetaData());
  ASSERT_EQ(factory.GetCompSettingsList().size(), 1u);
  // The error came before anything was built: nothing to keep.
  EXPECT_EQ(factory.GetCompSettingsList()[0], nullptr);
  EXPECT_EQ(factory.GetNRecordsList(), (std::vector<int>{0}));
}

using MIXFactoryPassDeathTest = MIXFactoryPassTest;

TEST_F(MIXFactoryPassDeathTest, SplitsMustShareTheirSortVariables) {
  CommandData command;
  command.fbRandom = false;
  MIXFactory& factory = Factory({{24, false}}, false, command);
  ASSERT_TRUE(factory.StartNewSplit(true));
  ASSERT_TRUE(factory.ProcedureDataPass(true));
  // As if an earlier split had given sort variables that this one lacks.
  factory.SetSortVars({2});
  EXPECT_DEATH(factory.CompleteMetaData(), "fSortVars == sortVars");
}

TEST_F(MIXFactoryPassDeathTest, ASilentErrorOnAnUnsplitFileReachesTheOutputStatsAssertion) {
  MIXFactory& factory = Factory({{24, false}}, false);
  DataPass(factory);
  ComponentPass(factory);
  factory.SetStatus(MCStatus(MCCommon_850::MC_CANCELLED, false));
  factory.DisplayMessage(factory.GetStatus());
  EXPECT_FALSE(Fatal());
  EXPECT_DEATH(factory.GetOutputStats(), "!fStatus.IsError\\(\\) && \\(pAlgorithm != 0\\)");
}

TEST_F(MIXFactoryPassDeathTest, AnUnsplitFileWithoutSettingsIsABrokenInvariantInTheComponentRun) {
  MIXFactory& factory = Factory({{24, false}}, false);
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  factory.CompleteMetaData();
  factory.SetStatus(MCStatus());
  EXPECT_DEATH(factory.RunGLMMComponent(), "pCompSettings!=0");
}

}  // namespace
}  // namespace run_test
