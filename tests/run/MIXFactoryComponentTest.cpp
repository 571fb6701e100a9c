#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "RunTestSupport.h"
#include "base/MixExports.h"
#include "host/files/BEPesRepos.h"
#include "host/strings/FacSTDictionary.h"
#include "numeric/common/MCStatus.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/xml/MCVarList.h"
#include "params/MIXParameterAggregator.h"
#include "run/MIXFactory.h"

namespace run_test {
namespace {

using MCCommon_850::MCStatus;

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

class MIXFactoryComponentTest : public RunFixture {
 protected:
  MIXFactoryComponentTest() : fpSaved(MCDisplay_850::GetOutStream()) { MCDisplay_850::SetOutStream(fDebug); }
  ~MIXFactoryComponentTest() override {
    fpFactory.reset();
    MCDisplay_850::SetOutStream(*fpSaved);
  }

  MIXValidSpecs& Prepare(const std::vector<GroupData>& groups, bool split, const CommandData& command = CommandData()) {
    MakeGrowthData(fData, groups);
    if (split) fData.SetSplitVars({GRP});
    return Specs(command);
  }
  MIXFactory& Factory() {
    fpFactory.reset(new MIXFactory(&*fSpecs, fData, &fProcedure));
    return *fpFactory;
  }
  MIXFactory& Factory(const std::vector<GroupData>& groups, bool split, const CommandData& command = CommandData()) {
    Prepare(groups, split, command);
    return Factory();
  }

  // A factory that has read the records and run the component on every
  // split, each split's result checked against the expected ones.
  MIXFactory& Fitted(const std::vector<bool>& expected) { return Fitted(Factory(), expected); }
  MIXFactory& Fitted(const std::vector<GroupData>& groups, bool split, const std::vector<bool>& expected,
                     const CommandData& command = CommandData()) {
    return Fitted(Factory(groups, split, command), expected);
  }
  static MIXFactory& Fitted(MIXFactory& factory, const std::vector<bool>& expected) {
    DataPass(factory);
    EXPECT_EQ(ComponentPass(factory), expected);
    return factory;
  }

  static void DataPass(MIXFactory& factory) {
    while (factory.StartNewSplit(true)) {
      factory.ProcedureDataPass(true);
      factory.CompleteMetaData();
    }
  }
  static std::vector<bool> ComponentPass(MIXFactory& factory) {
    std::vector<bool> results;
    EXPECT_TRUE(factory.CreateParamAggregators());
    if (!factory.PrepareComponentRun(true)) return results;
    while (factory.StartNewSplit(true)) results.push_back(factory.RunGLMMComponent());
    return results;
  }

  // The data pass of two splits whose second has no records; its metadata is
  // completed as if the split had come through, with a count of 0.
  static void PassWithAnEmptySecondSplit(MIXFactory& factory) {
    ASSERT_TRUE(factory.StartNewSplit(true));
    ASSERT_TRUE(factory.ProcedureDataPass(true));
    ASSERT_TRUE(factory.CompleteMetaData());
    ASSERT_TRUE(factory.StartNewSplit(true));
    EXPECT_FALSE(factory.ProcedureDataPass(true));
    factory.SetStatus(MCStatus());
    ASSERT_TRUE(factory.CompleteMetaData());
  }

  // Runs the component on two splits after the data pass: the first fits,
  // the second does not.
  static void FitFirstOfTwoSplits(MIXFactory& factory) {
    ASSERT_TRUE(factory.CreateParamAggregators());
    ASSERT_TRUE(factory.PrepareComponentRun(true));
    ASSERT_TRUE(factory.StartNewSplit(true));
    EXPECT_TRUE(factory.RunGLMMComponent());
    ASSERT_TRUE(factory.StartNewSplit(true));
    EXPECT_FALSE(factory.RunGLMMComponent());
  }

  static std::vector<const BEPesRepos::FileData*> Registered(const std::string& name) {
    std::vector<const BEPesRepos::FileData*> found;
    for (const BEPesRepos::FileData& file : BEPesRepos::GetFiles()) {
      if (file.fName == name) found.push_back(&file);
    }
    return found;
  }

  std::ostream* fpSaved;
  std::ostringstream fDebug;
  std::unique_ptr<MIXFactory> fpFactory;
};

TEST_F(MIXFactoryComponentTest, AFitHandsItsParametersToTheAggregators) {
  MIXFactory& factory = Fitted({{24, false}}, false, {true});
  EXPECT_TRUE(factory.GetStatus().IsOK());
  EXPECT_EQ(factory.GetSortVars().size(), 1u);
  EXPECT_TRUE(factory.AggregateParameters());
  EXPECT_EQ(factory.GetFixParamAggr()->GetAllParameters().size(), 2u);
  EXPECT_TRUE(Messages().empty());
}

TEST_F(MIXFactoryComponentTest, AFailedFitKeepsItsAlgorithmAndSkipsTheSplitsRecords) {
  MIXFactory& factory = Fitted({{1, false}, {20, false}}, true, {false, true});
  ASSERT_EQ(factory.GetAlgorithms().size(), 2u);
  ASSERT_NE(factory.GetAlgorithms()[0], nullptr);
  EXPECT_TRUE(factory.GetAlgorithms()[0]->GetStatus().IsError());
  EXPECT_TRUE(factory.GetAlgorithms()[1]->GetStatus().IsOK());
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0].fLevel, 2);
  EXPECT_NE(messages[0].fText.find("grp=1"), std::string::npos) << messages[0].fText;
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryComponentTest, AnErrorStatusBeforeTheRunLeavesANullAlgorithmAndSkipsTheRecords) {
  MIXFactory& factory = Factory({{12, false}, {12, false}}, true);
  DataPass(factory);
  ASSERT_TRUE(factory.CreateParamAggregators());
  ASSERT_TRUE(factory.PrepareComponentRun(true));
  ASSERT_TRUE(factory.StartNewSplit(true));
  factory.SetStatus(MCStatus(MCCommon_850::MC_INITIAL_VALUE_FAILED, false));
  EXPECT_FALSE(factory.RunGLMMComponent());
  ASSERT_EQ(factory.GetAlgorithms().size(), 1u);
  EXPECT_EQ(factory.GetAlgorithms()[0], nullptr);
  EXPECT_TRUE(Messages().empty());
  // The split's records were stepped over: the next split fits.
  ASSERT_TRUE(factory.StartNewSplit(true));
  EXPECT_TRUE(factory.RunGLMMComponent());
}

TEST_F(MIXFactoryComponentTest, ASplitWithoutSortVariablesAndNoRecordsIsStillRun) {
  CommandData command;
  command.fbRandom = false;
  MIXFactory& factory = Factory({{12, false}, {8, true}}, true, command);
  ASSERT_NO_FATAL_FAILURE(PassWithAnEmptySecondSplit(factory));
  ASSERT_EQ(factory.GetNRecordsList(), (std::vector<int>{12, 0}));
  ASSERT_TRUE(factory.GetSortVars().empty());
  const std::size_t said = Messages().size();

  ASSERT_NO_FATAL_FAILURE(FitFirstOfTwoSplits(factory));
  // The component itself read the empty split and said so.
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
  std::vector<MessageText> messages = Messages();
  ASSERT_EQ(messages.size(), said + 1);
  EXPECT_NE(messages.back().fText.find("grp=2"), std::string::npos) << messages.back().fText;
}

TEST_F(MIXFactoryComponentTest, ASplitWithSortVariablesAndNoRecordsIsNotRun) {
  MIXFactory& factory = Factory({{12, false}, {8, true}}, true);
  ASSERT_NO_FATAL_FAILURE(PassWithAnEmptySecondSplit(factory));
  ASSERT_FALSE(factory.GetSortVars().empty());
  const std::size_t said = Messages().size();

  ASSERT_NO_FATAL_FAILURE(FitFirstOfTwoSplits(factory));
  // The algorithm was built and kept, but never given records.
  ASSERT_EQ(factory.GetAlgorithms().size(), 2u);
  ASSERT_NE(factory.GetAlgorithms()[1], nullptr);
  EXPECT_EQ(factory.GetAlgorithms()[1]->GetOutputStats(), nullptr);
  EXPECT_EQ(Messages().size(), said);
  // The failure tail walked the empty split again.
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), MCCommon_850::MC_NO_VALID_CASES);
}

TEST_F(MIXFactoryComponentTest, AWarningFromTheFitIsShownOnceAndTheRunGoesOn) {
  CommandData command;
  command.fIterations = 1;
  command.fCovariance = 15;  // UN, which needs iterations
  Prepare({{24, false}}, false, command);
  fSpecs->SetOutFStatXMLFileName(InDir("statxml.xml"));
  MIXFactory& factory = Fitted({true});
  const MCStatus status = factory.GetStatus();
  EXPECT_TRUE(status.IsWarning()) << status.GetErrorCode();
  std::vector<MessageText> messages = Messages();
  FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
  dictionary.SetProcedure("Mixed");
  std::size_t shown = 0;
  for (const MessageText& message : messages) {
    EXPECT_EQ(message.fLevel, 2);
    shown += message.fText == dictionary.LookUp("Model validity is uncertain ...") ? 1u : 0u;
  }
  EXPECT_EQ(shown, 1u);
  // Stages 5 and 6 ran: the document was saved and the parameters taken.
  EXPECT_EQ(Registered(InDir("statxml.xml")).size(), 1u);
  EXPECT_TRUE(factory.AggregateParameters());
  EXPECT_EQ(factory.GetFixParamAggr()->GetAllParameters().size(), 2u);
}

TEST_F(MIXFactoryComponentTest, WithTheStatXMLOptionAloneTheDocumentIsWrittenWithoutAPool) {
  Prepare({{24, false}}, false);
  fSpecs->SetOutFStatXMLFileName(InDir("alone.xml"));
  MIXFactory& factory = Fitted({true});
  EXPECT_EQ(factory.GetPMMLPooling(), nullptr);
  EXPECT_TRUE(std::filesystem::exists(InDir("alone.xml")));
  std::vector<const BEPesRepos::FileData*> files = Registered(InDir("alone.xml"));
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0]->fKind, 6);
  EXPECT_TRUE(files[0]->fbDeliver);
  EXPECT_EQ(BEPesRepos::GetFiles().size(), 1u);
}

TEST_F(MIXFactoryComponentTest, ASplitFileSavesAModelPerSplitAndTheDocumentsAgainForEachSplit) {
  CommandData command;
  command.fFileKind = 2;
  command.fbPredict = true;
  command.fModelFile = InDir("model.xml");
  command.fStatXmlFile = InDir("stat.xml");
  command.fStatJsonFile = InDir("stat.json");
  MIXFactory& factory = Factory({{20, false}, {20, false}}, true, command);
  ASSERT_TRUE(fSpecs->GetUseStatJSON());
  DataPass(factory);
  EXPECT_EQ(ComponentPass(factory), (std::vector<bool>{true, true}));
  std::vector<std::string> names;
  std::vector<int> kinds;
  for (const BEPesRepos::FileData& file : BEPesRepos::GetFiles()) {
    names.push_back(file.fName);
    kinds.push_back(file.fKind);
  }
  const std::vector<std::string> expected = {InDir("model_split1.xml"), InDir("stat.xml"), InDir("stat.json"),
                                             InDir("model_split2.xml"), InDir("stat.xml"), InDir("stat.json")};
  EXPECT_EQ(names, expected);
  EXPECT_EQ(kinds, (std::vector<int>{6, 6, 99, 6, 6, 99}));
  // Each split's StatJSON went to the repository as it was then.
  std::vector<const BEPesRepos::FileData*> json = Registered(InDir("stat.json"));
  ASSERT_EQ(json.size(), 2u);
  EXPECT_FALSE(json[0]->fContent.empty());
  EXPECT_NE(json[0]->fContent, json[1]->fContent);
  EXPECT_EQ(ReadFile(InDir("stat.json")), json[1]->fContent);
}

TEST_F(MIXFactoryComponentTest, AFailedFitSavesNoDocument) {
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("model.xml");
  command.fStatXmlFile = InDir("stat.xml");
  Fitted({{1, false}, {20, false}}, true, {false, true}, command);
  std::vector<std::string> names;
  for (const BEPesRepos::FileData& file : BEPesRepos::GetFiles()) names.push_back(file.fName);
  // The pool names the model files in the order it is asked: the failed
  // split never asked.
  EXPECT_EQ(names, (std::vector<std::string>{InDir("model_split1.xml"), InDir("stat.xml")}));
  EXPECT_FALSE(std::filesystem::exists(InDir("model_split2.xml")));
}

TEST_F(MIXFactoryComponentTest, WithoutPredictionsAStaleStatJSONIsRemoved) {
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("model.xml");
  command.fStatJsonFile = InDir("stale.json");
  Prepare({{24, false}}, false, command);
  ASSERT_FALSE(fSpecs->GetUseStatJSON());
  { std::ofstream(InDir("stale.json")) << "{\"old\": true}"; }
  Fitted({true});
  EXPECT_FALSE(std::filesystem::exists(InDir("stale.json")));
  EXPECT_TRUE(Registered(InDir("stale.json")).empty());
  EXPECT_EQ(Registered(InDir("model.xml")).size(), 1u);
}

TEST_F(MIXFactoryComponentTest, ADocumentTheComponentCannotWriteIsLeftShortAndNothingIsSaid) {
  CommandData command;
  command.fFileKind = 2;
  command.fModelFile = InDir("model.xml");
  command.fStatXmlFile = InDir("stat.xml");
  Fitted({{24, false}}, false, {true}, command);
  EXPECT_TRUE(std::filesystem::exists(InDir("model.xml")));
  EXPECT_TRUE(std::filesystem::exists(InDir("stat.xml")));
  EXPECT_EQ(Registered(InDir("model.xml")).size(), 1u);
  EXPECT_EQ(Registered(InDir("stat.xml")).size(), 1u);
  EXPECT_TRUE(Messages().empty());
  EXPECT_FALSE(Fatal());
}

TEST_F(MIXFactoryComponentTest, AFileThatCannotBeOpenedIsSkippedWithoutAMessage) {
  Prepare({{24, false}}, false);
  fSpecs->SetOutFStatXMLFileName(InDir("no-such-folder/stat.xml"));
  Fitted({true});
  EXPECT_TRUE(BEPesRepos::GetFiles().empty());
  EXPECT_TRUE(Messages().empty());
}

TEST_F(MIXFactoryComponentTest, WriteTextDataWritesTheSortedRecords) {
  write_text_data = true;
  Fitted({{24, false}}, false, {true});
  const std::string path = InDir(MIXFactory::GetSortedRecordsFileName());
  EXPECT_EQ(std::string(MIXFactory::GetSortedRecordsFileName()), "mixed_sorted_encoded_records.txt");
  ASSERT_TRUE(std::filesystem::exists(path));
  std::istringstream lines(ReadFile(path));
  std::string line;
  int count = 0;
  while (std::getline(lines, line)) ++count;
  EXPECT_EQ(count, 25);  // a line of names, then one per record
}

TEST_F(MIXFactoryComponentTest, ATextFileThatCannotBeWrittenFailsTheSplitSilently) {
  write_text_data = true;
  ZORV_Session::Current().SetWritableDir(InDir("no-such-folder"));
  MIXFactory& factory = Fitted({{24, false}}, false, {false});
  EXPECT_TRUE(Messages().empty());
  ASSERT_EQ(factory.GetAlgorithms().size(), 1u);
  EXPECT_EQ(factory.GetAlgorithms()[0]->GetOutputStats(), nullptr);
}

TEST_F(MIXFactoryComponentTest, DisplayComponentSendsTheComponentsTextAndItsStatus) {
  display_component = true;
  MIXFactory& factory = Fitted({{24, false}}, false, {true});
  std::ostringstream component;
  factory.GetGLMMAlgorithm()->Display(component);
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], component.str());
  EXPECT_EQ(lines[lines.size() - 2], " ");
  EXPECT_EQ(lines.back(), "GLMM algorithm status: OK");
  EXPECT_NE(fDebug.str().find("GLMM algorithm returned code: 0"), std::string::npos);
}

TEST_F(MIXFactoryComponentTest, DisplayComponentShowsTheStatusOfAFailedSplit) {
  display_component = true;
  Fitted({{1, false}, {20, false}}, true, {false, true});
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_FALSE(lines.empty());
  EXPECT_NE(std::find(lines.begin(), lines.end(), "GLMM algorithm status: Error"), lines.end());
}

TEST_F(MIXFactoryComponentTest, DisplayOutputSendsTheOutputStatistics) {
  display_output = true;
  MIXFactory& factory = Fitted({{24, false}}, false, {true});
  std::ostringstream stats;
  factory.GetOutputStats()->Display(stats);
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], stats.str());
  EXPECT_FALSE(lines[0].empty());
  // The display went back to its own stream.
  EXPECT_EQ(MCDisplay_850::GetOutStream(), &fDebug);
}

TEST_F(MIXFactoryComponentTest, DisplayOutputWithoutAnAlgorithmSaysSo) {
  MIXFactory& factory = Factory({{24, false}}, false);
  EXPECT_TRUE(factory.DisplayOutput());
  EXPECT_EQ(FrontEndLines(), (std::vector<std::string>{" ", "GLMM output is not available"}));
}

TEST_F(MIXFactoryComponentTest, DisplayMetadataSendsTheVariableList) {
  display_metadata = true;
  MIXFactory& factory = Factory({{24, false}}, false);
  DataPass(factory);
  ASSERT_EQ(factory.GetVarLists().size(), 1u);
  std::ostringstream varList;
  factory.GetVarLists()[0]->Display(varList);
  std::vector<std::string> lines = FrontEndLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], varList.str());
  EXPECT_NE(lines[0].find("y"), std::string::npos);
  EXPECT_EQ(MCDisplay_850::GetOutStream(), &fDebug);
}

TEST_F(MIXFactoryComponentTest, TheSwitchesOffSendNothing) {
  Fitted({{24, false}}, false, {true});
  EXPECT_TRUE(FrontEndLines().empty());
  EXPECT_TRUE(fDebug.str().empty());
  EXPECT_FALSE(std::filesystem::exists(InDir(MIXFactory::GetSortedRecordsFileName())));
}

class TextRoutineTest : public RunFixture {};

TEST_F(TextRoutineTest, ExactlyOnePieceFitsInOneCall) {
  const std::string text(4096, 'a');
  MIXFactory::SendTextToFront(text);
  EXPECT_EQ(FrontEndLines(), (std::vector<std::string>{text}));
}

TEST_F(TextRoutineTest, LongTextGoesInPiecesOf4096) {
  std::string text;
  for (int i = 0; i < 10000; ++i) text += static_cast<char>('a' + i % 26);
  text[5000] = '\n';
  MIXFactory::SendTextToFront(text);
  EXPECT_EQ(FrontEndLines(), (std::vector<std::string>{text}));
  MIXFactory::SendTextToFront(std::string(4097, 'b'));
  EXPECT_EQ(FrontEndLines().back(), std::string(4097, 'b'));
}

TEST_F(TextRoutineTest, TextEndsAtItsFirstNul) {
  MIXFactory::SendTextToFront(std::string("shown\0hidden", 12));
  EXPECT_EQ(FrontEndLines(), (std::vector<std::string>{"shown"}));
}

TEST_F(TextRoutineTest, EmptyTextIsANewLine) {
  MIXFactory::SendTextToFront("");
  MIXFactory::SendTextToFront("next");
  EXPECT_EQ(FrontEndLines(), (std::vector<std::string>{"", "next"}));
}

}  // namespace
}  // namespace run_test
