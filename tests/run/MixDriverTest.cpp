#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "RunTestSupport.h"
#include "base/MixExports.h"
#include "host/output/BpProcedure.h"
#include "run/MIXFactory.h"
#include "run/MIXRunTrace.h"
#include "run/MixDriver.h"

namespace run_test {
namespace {

// A dataset that hides a variable from every caller once the run's trace
// shows a given step: a way to make a later step fail on data the earlier
// steps accepted.
class HidingDataset : public ZORV_Dataset {
 public:
  void HideAfter(const std::vector<std::string>* log, const std::string& step, int column) {
    fpLog = log;
    fStep = step;
    fColumn = column;
  }
  const ZORV_Variable* GetVariable(int index) const override {
    if (index == fColumn && Hidden()) return nullptr;
    return ZORV_Dataset::GetVariable(index);
  }
  ZORV_Variable* GetVariable(int index) override {
    if (index == fColumn && Hidden()) return nullptr;
    return ZORV_Dataset::GetVariable(index);
  }

 private:
  bool Hidden() const { return fpLog != nullptr && std::find(fpLog->begin(), fpLog->end(), fStep) != fpLog->end(); }

  const std::vector<std::string>* fpLog = nullptr;
  std::string fStep;
  int fColumn = -1;
};

// A dataset whose selection turns out empty once the specification is
// complete (the trace shows the repository cleared).
class EmptySelectionDataset : public ZORV_Dataset {
 public:
  explicit EmptySelectionDataset(const std::vector<std::string>* log) : fpLog(log) {}
  int ColumnCount() const override {
    if (std::find(fpLog->begin(), fpLog->end(), "BEPesClear") != fpLog->end()) return 0;
    return ZORV_Dataset::ColumnCount();
  }

 private:
  const std::vector<std::string>* fpLog;
};

class MixDriverTest : public RunFixture {
 protected:
  MixDriverTest() { MIXRunTrace::SetLog(&fLog); }

  void Run(ProcedureDataSource& data, const CommandData& command = CommandData()) {
    Publish(command);
    MixDriver(fMemory.GetCommand(), fProcedure, data);
  }
  void Run(const CommandData& command = CommandData()) { Run(fData, command); }

  bool Logged(const std::string& step) const { return std::find(fLog.begin(), fLog.end(), step) != fLog.end(); }
  long CountLogged(const std::string& step) const { return std::count(fLog.begin(), fLog.end(), step); }

  std::vector<std::string> fLog;
};

TEST_F(MixDriverTest, AnUnsplitFileRunsThePassesInOrderAndTearsDownFactoryOutputSpecs) {
  MakeGrowthData(fData, {{24, false}});
  Run();
  const std::vector<std::string> expected = {
      "MIXValidSpecs",        "SetMixedSpecs=1",         "CompleteSpecs",         "MIXOutput",
      "BEPesClear",           "MIXFactory",              "AddToNotesTable",       "StartNewSplit=1",
      "ProcedureDataPass=1",  "CompleteMetaData=1",      "StartNewSplit=0",       "CreateParamAggregators=1",
      "PrepareComponentRun=1", "StartNewSplit=1",        "RunGLMMComponent=1",    "StartNewSplit=0",
      "AggregateParameters=1", "DisplayOutput",          "BEPesCheckError",       "CompleteNotesTable",
      "~MIXFactory",          "~MIXOutput",              "~MIXValidSpecs"};
  EXPECT_EQ(fLog, expected);
  EXPECT_FALSE(Fatal());
  EXPECT_EQ(CountTables("Information Criteria"), 1u);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(MixDriverTest, ASplitFileWalksEverySplitInEachPass) {
  MakeGrowthData(fData, {{20, false}, {20, false}});
  fData.SetSplitVars({GRP});
  Run();
  const std::vector<std::string> expected = {
      "MIXValidSpecs",       "SetMixedSpecs=1",    "CompleteSpecs",         "MIXOutput",
      "BEPesClear",          "MIXFactory",         "AddToNotesTable",       "StartNewSplit=1",
      "ProcedureDataPass=1", "CompleteMetaData=1", "StartNewSplit=1",       "ProcedureDataPass=1",
      "CompleteMetaData=1",  "StartNewSplit=0",    "CreateParamAggregators=1", "PrepareComponentRun=1",
      "StartNewSplit=1",     "RunGLMMComponent=1", "StartNewSplit=1",       "RunGLMMComponent=1",
      "StartNewSplit=0",     "AggregateParameters=1", "PrepareComponentRun=1", "StartNewSplit=1",
      "ProcedureDataPass=1", "DisplayOutput",      "StartNewSplit=1",       "ProcedureDataPass=1",
      "DisplayOutput",       "StartNewSplit=0",    "BEPesCheckError",       "CompleteNotesTable",
      "~MIXFactory",         "~MIXOutput",         "~MIXValidSpecs"};
  EXPECT_EQ(fLog, expected);
  EXPECT_EQ(CountTables("Information Criteria"), 2u);
}

namespace {

int gHostPasses = 0;
int gHostPassSplit = -2;
void CountHostPass(MIXFactory& factory) {
  ++gHostPasses;
  gHostPassSplit = factory.GetSplitIndex();
}

// Installs the host's pass for one test.
struct HostPass {
  HostPass() {
    gHostPasses = 0;
    MixSetHostPass(CountHostPass);
  }
  ~HostPass() { MixSetHostPass(nullptr); }
};

}  // namespace

TEST_F(MixDriverTest, TheHostsPassRunsAfterTheOutputPassBeforeTheClose) {
  HostPass pass;
  MakeGrowthData(fData, {{20, false}, {20, false}});
  fData.SetSplitVars({GRP});
  Run();
  EXPECT_EQ(gHostPasses, 1);
  // The factory still stands where the output pass left it, after the last split.
  EXPECT_EQ(gHostPassSplit, 1);
  const auto at = [this](const std::string& step) { return std::find(fLog.begin(), fLog.end(), step) - fLog.begin(); };
  EXPECT_EQ(at("HostPass"), at("BEPesCheckError") - 1);
  EXPECT_LT(at("HostPass"), at("~MIXFactory"));
  EXPECT_EQ(CountLogged("HostPass"), 1);
}

TEST_F(MixDriverTest, TheHostsPassIsLeftOutWhenTheRunIsFatal) {
  HostPass pass;
  MakeGrowthData(fData, {{1, false}});
  Run();
  ASSERT_TRUE(Fatal());
  EXPECT_EQ(gHostPasses, 0);
  EXPECT_FALSE(Logged("HostPass"));
}

TEST_F(MixDriverTest, WithoutAHostsPassTheRunIsTheSequenceAsItStands) {
  MakeGrowthData(fData, {{24, false}});
  Run();
  EXPECT_FALSE(Logged("HostPass"));
  EXPECT_EQ(gHostPasses, 0);
}

TEST_F(MixDriverTest, TheUnsplitOutputPassStartsNoSplit) {
  MakeGrowthData(fData, {{24, false}});
  Run();
  auto aggregate = std::find(fLog.begin(), fLog.end(), "AggregateParameters=1");
  ASSERT_NE(aggregate, fLog.end());
  for (auto it = aggregate; it != fLog.end(); ++it) {
    EXPECT_EQ(it->find("StartNewSplit"), std::string::npos) << *it;
    EXPECT_EQ(it->find("ProcedureDataPass"), std::string::npos) << *it;
  }
}

TEST_F(MixDriverTest, ASpecificationErrorEndsTheRunAfterTheOutputObjectWithoutNotes) {
  MakeGrowthData(fData, {{24, false}});
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("same.xml");
  command.fStatXmlFile = InDir("same.xml");
  Run(command);
  const std::vector<std::string> expected = {"MIXValidSpecs", "SetMixedSpecs=0", "CompleteSpecs", "MIXOutput",
                                             "~MIXOutput", "~MIXValidSpecs"};
  EXPECT_EQ(fLog, expected);
  EXPECT_TRUE(Fatal());
  EXPECT_TRUE(TableTitles().empty());
}

TEST_F(MixDriverTest, NoValidCasesOnAnUnsplitFileIsAnErrorAndTheNotesStillClose) {
  MakeGrowthData(fData, {{12, true}});
  Run();
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fLevel, 3);
  EXPECT_EQ(messages[0].fText, "There are no valid cases for this analysis.");
  EXPECT_TRUE(Fatal());
  EXPECT_FALSE(Logged("StartNewSplit=1"));
  EXPECT_FALSE(Logged("CreateParamAggregators=1"));
  EXPECT_FALSE(Logged("DisplayOutput"));
  EXPECT_TRUE(Logged("CompleteNotesTable"));
  EXPECT_EQ(fLog.back(), "~MIXValidSpecs");
}

TEST_F(MixDriverTest, ASourceWithoutColumnsIsToldSoAndTheFactoryIsStillBuilt) {
  EmptySelectionDataset data(&fLog);
  MakeGrowthData(data, {{24, false}});
  Run(data);
  std::vector<MessageText> messages = Messages();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_EQ(messages[0].fText,
            "The current selection of the active dataset has no variables, so no cases can be analyzed.");
  auto said = std::find(fLog.begin(), fLog.end(), "NoValidCasesForSelect");
  auto built = std::find(fLog.begin(), fLog.end(), "MIXFactory");
  ASSERT_NE(said, fLog.end());
  ASSERT_NE(built, fLog.end());
  EXPECT_LT(said - fLog.begin(), built - fLog.begin());
  EXPECT_TRUE(Logged("CompleteNotesTable"));
}

TEST_F(MixDriverTest, AnUnsplitFileFailingInCompleteMetaDataMakesNoAggregatorsButClosesTheNotes) {
  HidingDataset data;
  MakeGrowthData(data, {{24, false}});
  data.HideAfter(&fLog, "ProcedureDataPass=1", Y);
  Run(data);
  EXPECT_TRUE(Logged("CompleteMetaData=0"));
  EXPECT_FALSE(Logged("CreateParamAggregators=1"));
  EXPECT_FALSE(Logged("PrepareComponentRun=1"));
  EXPECT_FALSE(Logged("RunGLMMComponent=1"));
  EXPECT_FALSE(Logged("RunGLMMComponent=0"));
  EXPECT_FALSE(Logged("DisplayOutput"));
  EXPECT_TRUE(Logged("CompleteNotesTable"));
  EXPECT_TRUE(TableTitles().size() <= 1u);  // the notes at most
}

TEST_F(MixDriverTest, DisplaySettingsShowsTheSpecificationAfterTheDataPass) {
  MakeGrowthData(fData, {{24, false}});
  display_settings = true;
  Run();
  auto shown = std::find(fLog.begin(), fLog.end(), "Display");
  auto aggregators = std::find(fLog.begin(), fLog.end(), "CreateParamAggregators=1");
  ASSERT_NE(shown, fLog.end());
  EXPECT_LT(shown - fLog.begin(), aggregators - fLog.begin());
  bool found = false;
  for (const std::string& line : FrontEndLines()) found = found || line.find("MIXValidSpecs display start") != std::string::npos;
  EXPECT_TRUE(found);
}

TEST_F(MixDriverTest, DisplaySettingsShowsNothingAfterAFirstPassFailureOnAnUnsplitFile) {
  HidingDataset data;
  MakeGrowthData(data, {{24, false}});
  data.HideAfter(&fLog, "ProcedureDataPass=1", Y);
  display_settings = true;
  Run(data);
  EXPECT_FALSE(Logged("Display"));
  for (const std::string& line : FrontEndLines()) EXPECT_EQ(line.find("MIXValidSpecs display start"), std::string::npos);
}

TEST_F(MixDriverTest, ASplitFileInWhichEverySplitFailsStillRunsEveryStage) {
  // One case per split: no residual degrees of freedom anywhere.
  MakeGrowthData(fData, {{1, false}, {1, false}, {1, false}});
  fData.SetSplitVars({GRP});
  Run();
  EXPECT_FALSE(Fatal());
  EXPECT_TRUE(Logged("CreateParamAggregators=1"));
  EXPECT_EQ(CountLogged("RunGLMMComponent=0"), 3);
  EXPECT_TRUE(Logged("AggregateParameters=1") || Logged("AggregateParameters=0"));
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 3u);
  for (const MessageText& message : messages) EXPECT_EQ(message.fLevel, 2) << message.fText;
  EXPECT_NE(messages[0].fText.find("grp=1"), std::string::npos) << messages[0].fText;
  EXPECT_NE(messages[2].fText.find("grp=3"), std::string::npos) << messages[2].fText;
  EXPECT_EQ(fLog.back(), "~MIXValidSpecs");
}

TEST_F(MixDriverTest, AnEmptySplitIsToldOnceAndTheOtherSplitsAreFitted) {
  MakeGrowthData(fData, {{20, false}, {8, true}, {20, false}});
  fData.SetSplitVars({GRP});
  Run();
  EXPECT_FALSE(Fatal());
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_EQ(messages[0].fText, "There are no valid cases in this split file group. The analysis of the group is skipped.");
  EXPECT_EQ(CountLogged("RunGLMMComponent=1"), 2);
  EXPECT_EQ(CountLogged("RunGLMMComponent=0"), 1);
  // The empty split's records are walked again in the output pass, where it
  // has none: its tables are skipped.
  EXPECT_EQ(CountLogged("ProcedureDataPass=0"), 2);
  EXPECT_EQ(CountLogged("DisplayOutput"), 2);
  EXPECT_EQ(CountTables("Information Criteria"), 2u);
}

TEST_F(MixDriverTest, AFitErrorOnAnUnsplitFileTurnsTheHostFatalAndStopsTheRun) {
  MakeGrowthData(fData, {{1, false}});
  Run();
  EXPECT_TRUE(Fatal());
  EXPECT_TRUE(Logged("RunGLMMComponent=0"));
  EXPECT_FALSE(Logged("AggregateParameters=1"));
  EXPECT_FALSE(Logged("AggregateParameters=0"));
  EXPECT_FALSE(Logged("DisplayOutput"));
  EXPECT_TRUE(Logged("CompleteNotesTable"));
  std::vector<MessageText> messages = Messages();
  ASSERT_FALSE(messages.empty());
  EXPECT_EQ(messages.back().fLevel, 3);
}

TEST_F(MixDriverTest, NeverCompletesTheModelFilePool) {
  MakeGrowthData(fData, {{20, false}, {20, false}});
  fData.SetSplitVars({GRP});
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("model.xml");
  Run(command);
  EXPECT_FALSE(Logged("CompleteExtFileIO"));
  // Each split got its own model file from the pool, which was not closed
  // before the run was torn down.
  EXPECT_TRUE(std::filesystem::exists(InDir("model_split1.xml")));
  EXPECT_TRUE(std::filesystem::exists(InDir("model_split2.xml")));
}

// Stops the procedure from the inside, as a defect of the host would.
class ThrowingDataset : public ZORV_Dataset {
 public:
  explicit ThrowingDataset(const std::vector<std::string>* log) : fpLog(log) {}
  const ZORV_Variable* GetVariable(int index) const override {
    if (std::find(fpLog->begin(), fpLog->end(), "AddToNotesTable") != fpLog->end()) {
      throw std::runtime_error("the host failed");
    }
    return ZORV_Dataset::GetVariable(index);
  }
  using ZORV_Dataset::GetVariable;

 private:
  const std::vector<std::string>* fpLog;
};

TEST_F(MixDriverTest, AnExceptionPassingThroughTearsDownInTheSameOrder) {
  ThrowingDataset data(&fLog);
  MakeGrowthData(data, {{24, false}});
  EXPECT_THROW(Run(data), std::runtime_error);
  ASSERT_GE(fLog.size(), 3u);
  const std::vector<std::string> tail(fLog.end() - 3, fLog.end());
  EXPECT_EQ(tail, (std::vector<std::string>{"~MIXFactory", "~MIXOutput", "~MIXValidSpecs"}));
  EXPECT_FALSE(Logged("CompleteNotesTable"));
}

}  // namespace
}  // namespace run_test
