#include "app/AppSession.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "AppTestSupport.h"
#include "app/AppProcedureHook.h"
#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/output/BpError.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "run/MixDriver.h"

using namespace apptest;

namespace {

// What a hook saw of the command it was handed.
struct Seen {
  int fCalls = 0;
  void* fCommand = nullptr;
  std::intptr_t fNumeric = 0;
  std::intptr_t fCharacter = 0;
  std::string fHeading;
  int fColumns = 0;
  INTEGER fTarget = 0;
};
Seen gSeen;

void Record(void* command, BpProcedure& procedure, ProcedureDataSource& data) {
  ++gSeen.fCalls;
  gSeen.fCommand = command;
  gSeen.fNumeric = CmnMix;
  gSeen.fCharacter = CmaMix;
  gSeen.fHeading = procedure.GetOmHeading() ? procedure.GetOmHeading()->fText : "";
  gSeen.fColumns = data.ColumnCount();
  INTEGER target = 0;
  std::memcpy(&target, reinterpret_cast<const char*>(CmnMix) + MIXCommandLayout::TARGET, sizeof target);
  gSeen.fTarget = target;
}

void Fails(void*, BpProcedure&, ProcedureDataSource&) {
  BpError(BpString("the fit failed", false), BpErrorShowOutput, BpErrorLevelError);
}

void Throws(void*, BpProcedure&, ProcedureDataSource&) { throw std::logic_error("MixDriver: not implemented yet"); }

void Interrupts(void*, BpProcedure&, ProcedureDataSource&) { ZORV_StopFlag::Raise(); }

class AppSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    gSeen = Seen();
    AppProcedureHook::Set(nullptr);
    ZORV_StopFlag::Clear();
    // Tests run in parallel processes: each gets a folder of its own.
    fOptions.fOutputDir = (std::filesystem::temp_directory_path() /
                           ("glmixfit-session-" +
                            std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
                            std::to_string(::getpid())))
                              .string();
    std::filesystem::remove_all(fOptions.fOutputDir);
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    ZORV_StopFlag::Clear();
    std::filesystem::remove_all(fOptions.fOutputDir);
  }

  void Run(const std::string& text) {
    fpSession.reset(new AppSession(fOptions));
    fpSession->RunText(text, "t.gmx", std::string(GLMIX_TEST_DATA_DIR) + "/app");
  }

  // The messages of the i-th command, as "LEVEL text".
  std::vector<std::string> Messages(std::size_t command) const {
    return MessagesOf(*fpSession->GetDocument().fRoot.fvItems.at(command).fpHeading);
  }
  std::vector<std::string> Lines(std::size_t command) const {
    return LinesOf(*fpSession->GetDocument().fRoot.fvItems.at(command).fpHeading);
  }
  std::string Error(std::size_t command) const {
    std::vector<std::string> messages = Messages(command);
    return messages.size() == 1 && messages[0].compare(0, 6, "ERROR ") == 0 ? messages[0].substr(6) : "(no single error)";
  }
  std::size_t Commands() const { return fpSession->GetDocument().fRoot.fvItems.size(); }

  AppOptions fOptions;
  std::unique_ptr<AppSession> fpSession;
};

const char* const kLoad = "LOAD 'trial.csv'.\n";

}  // namespace

TEST_F(AppSessionTest, EachCommandGetsAHeadingWithItsText) {
  Run(std::string(kLoad) + "SET VARIABLES=NAMES.\nSPLIT OFF.\nWEIGHT OFF.\nglmixfit y\n  /FIXED INTERCEPT=YES.");
  ASSERT_EQ(Commands(), 5u);
  const OmHeading& root = fpSession->GetDocument().fRoot;
  EXPECT_EQ(root.fvItems[0].fpHeading->fText, "Load");
  EXPECT_EQ(root.fvItems[1].fpHeading->fText, "Set");
  EXPECT_EQ(root.fvItems[2].fpHeading->fText, "Split File");
  EXPECT_EQ(root.fvItems[3].fpHeading->fText, "Weight");
  EXPECT_EQ(root.fvItems[4].fpHeading->fText, "Mixed Model");
  EXPECT_EQ(Lines(4), (std::vector<std::string>{"glmixfit y", "  /FIXED INTERCEPT=YES."}));
  EXPECT_EQ(fpSession->ExitStatus(), 0);
}

TEST_F(AppSessionTest, LoadReadsTheDataWithTheDictionaryBesideIt) {
  Run(kLoad);
  ASSERT_NE(fpSession->GetData(), nullptr);
  EXPECT_EQ(fpSession->GetData()->GetCaseCount(), 9);
  EXPECT_EQ(fpSession->GetData()->ColumnCount(), 9);
  EXPECT_STREQ(fpSession->GetData()->GetVariable(0)->GetLabel(), "Response");
  std::string path = std::string(GLMIX_TEST_DATA_DIR) + "/app/trial.csv";
  EXPECT_EQ(Lines(0), (std::vector<std::string>{"LOAD 'trial.csv'.", "9 cases and 9 variables read from " + path + "."}));
  EXPECT_TRUE(Messages(0).empty());
}

TEST_F(AppSessionTest, LoadTakesADictionaryNamedByTheUser) {
  Run("load 'trial.csv' dictionary='other.dictionary.json'.");
  ASSERT_NE(fpSession->GetData(), nullptr);
  EXPECT_STREQ(fpSession->GetData()->GetVariable(0)->GetLabel(), "Outcome from other dictionary");
}

TEST_F(AppSessionTest, LoadErrorsNameTheFileAndTheLoadersPlace) {
  Run(std::string(kLoad) + "LOAD 'nosuch.csv'.\nLOAD 'broken.csv'.\nLOAD 'trial.csv' DICTIONARY='badlabel.dictionary.json'.");
  ASSERT_EQ(Commands(), 4u);
  std::string missing = Error(1);
  EXPECT_EQ(missing.compare(0, 38, "t.gmx:2:6: the data cannot be loaded: "), 0) << missing;
  EXPECT_NE(missing.find("nosuch.csv"), std::string::npos) << missing;
  std::string broken = Error(2);
  EXPECT_EQ(broken.compare(0, 38, "t.gmx:3:6: the data cannot be loaded: "), 0) << broken;
  EXPECT_NE(broken.find("broken.csv, line 3"), std::string::npos) << broken;
  std::string dictionary = Error(3);
  EXPECT_NE(dictionary.find("badlabel.dictionary.json"), std::string::npos) << dictionary;
  EXPECT_NE(dictionary.find("nosuch"), std::string::npos) << dictionary;
  // The data loaded first stay the active data.
  ASSERT_NE(fpSession->GetData(), nullptr);
  EXPECT_EQ(fpSession->GetData()->GetCaseCount(), 9);
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppSessionTest, LoadSyntaxErrors) {
  Run("LOAD.\nLOAD 'a.csv' FOO.\nLOAD ''.\nLOAD 'a.csv' DICTIONARY='d.json' DICTIONARY='e.json'.\nLOAD 'a' "
      "DICTIONARY=5.");
  ASSERT_EQ(Commands(), 5u);
  EXPECT_EQ(Error(0), "t.gmx:1:5: expected the data file's name in quotes, found the end of the command.");
  EXPECT_EQ(Error(1), "t.gmx:2:14: expected DICTIONARY= or the end of the command, found 'FOO'.");
  EXPECT_EQ(Error(2), "t.gmx:3:6: expected the data file's name in quotes, found the text ''.");
  EXPECT_EQ(Error(3), "t.gmx:4:34: expected the end of the command, found 'DICTIONARY'.");
  EXPECT_EQ(Error(4), "t.gmx:5:21: expected the dictionary file's name in quotes, found 5.");
}

TEST_F(AppSessionTest, SetFeedsTheDisplayOptions) {
  long varSecond = 0, valSecond = 0, varFirst = 0, valFirst = 0;
  Run("SET VARIABLES=NAMES VALUES=BOTH.");
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  EXPECT_EQ(varSecond, 1);
  EXPECT_EQ(valSecond, 3);
  EXPECT_EQ(varFirst, 1);
  EXPECT_EQ(valFirst, 3);
  Run("SET TABLEVARIABLES=BOTH CAPTIONVALUES=NAMES.\nSET tablevalues=labels captionvariables=labels.");
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  EXPECT_EQ(varFirst, 3);
  EXPECT_EQ(valSecond, 1);
  EXPECT_EQ(valFirst, 2);
  EXPECT_EQ(varSecond, 2);
  EXPECT_EQ(fpSession->ExitStatus(), 0);
}

TEST_F(AppSessionTest, SetErrors) {
  const char* allowed = "VARIABLES=, VALUES=, TABLEVARIABLES=, TABLEVALUES=, CAPTIONVARIABLES= or CAPTIONVALUES=";
  Run("SET.\nSET FOO=NAMES.\nSET VARIABLES=ALL.\nSET VALUES=NAMES values=LABELS.\nSET VARIABLES NAMES.");
  EXPECT_EQ(Error(0), std::string("t.gmx:1:4: expected ") + allowed + ", found the end of the command.");
  EXPECT_EQ(Error(1), std::string("t.gmx:2:5: expected ") + allowed + ", found 'FOO'.");
  EXPECT_EQ(Error(2), "t.gmx:3:15: expected NAMES, LABELS or BOTH, found 'ALL'.");
  EXPECT_EQ(Error(3), "t.gmx:4:18: expected each setting once, found VALUES= again.");
  EXPECT_EQ(Error(4), std::string("t.gmx:5:5: expected ") + allowed + ", found 'VARIABLES'.");
  // A SET with a mistake changes nothing.
  long varSecond = 0, valSecond = 0, varFirst = 0, valFirst = 0;
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  EXPECT_EQ(valFirst, 2);
}

TEST_F(AppSessionTest, SplitAndWeightChangeTheDataset) {
  Run(std::string(kLoad) + "SPLIT BY a b SEPARATE.\nWEIGHT BY w.");
  ZORV_Dataset* data = fpSession->GetData();
  ASSERT_NE(data, nullptr);
  ASSERT_EQ(data->GetNSplitVars(), 2);
  EXPECT_EQ(data->GetSplitVar(0), 4);
  EXPECT_EQ(data->GetSplitVar(1), 5);
  EXPECT_FALSE(data->SplitsInOneTable());
  EXPECT_EQ(data->GetWeightVarIndex(), 3);
  EXPECT_EQ(fpSession->ExitStatus(), 0);

  Run(std::string(kLoad) + "SPLIT BY s.\nWEIGHT BY w.\nWEIGHT OFF.");
  data = fpSession->GetData();
  ASSERT_EQ(data->GetNSplitVars(), 1);
  EXPECT_TRUE(data->SplitsInOneTable());
  EXPECT_EQ(data->GetSplitCount(), 3);
  EXPECT_EQ(data->GetWeightVarIndex(), -1);

  Run(std::string(kLoad) + "SPLIT BY s LAYERED.\nSPLIT OFF.");
  EXPECT_EQ(fpSession->GetData()->GetNSplitVars(), 0);
}

TEST_F(AppSessionTest, SplitAndWeightErrors) {
  Run("SPLIT BY a.\nWEIGHT BY w.\nSPLIT OFF.\n" + std::string(kLoad) +
      "SPLIT.\nSPLIT BY.\nSPLIT BY a A.\nSPLIT BY nosuch.\nSPLIT OFF x.\nWEIGHT BY name.\nWEIGHT BY w z.\n"
      "WEIGHT BY w.\nSPLIT BY w.\nWEIGHT OFF.\nSPLIT BY a b.\nWEIGHT BY a.\nWEIGHT BY b.\nWEIGHT.");
  EXPECT_EQ(Error(0), "t.gmx:1:1: expected data to work on, found none: LOAD a data file before SPLIT.");
  EXPECT_EQ(Error(1), "t.gmx:2:1: expected data to work on, found none: LOAD a data file before WEIGHT.");
  EXPECT_TRUE(Messages(2).empty());
  EXPECT_EQ(Error(4), "t.gmx:5:6: expected BY or OFF, found the end of the command.");
  EXPECT_EQ(Error(5), "t.gmx:6:9: expected a split variable, found the end of the command.");
  EXPECT_EQ(Error(6), "t.gmx:7:12: expected each split variable once, found 'A' again.");
  EXPECT_EQ(Error(7), "t.gmx:8:10: expected a split variable, found 'nosuch' (the data have no variable of that name).");
  EXPECT_EQ(Error(8), "t.gmx:9:11: expected the end of the command, found 'x'.");
  EXPECT_EQ(Error(9), "t.gmx:10:11: expected a numeric weight variable, found the string variable 'name'.");
  EXPECT_EQ(Error(10), "t.gmx:11:13: expected the end of the command (one weight variable), found 'z'.");
  EXPECT_TRUE(Messages(11).empty());
  EXPECT_EQ(Error(12), "t.gmx:13:10: expected a split variable, found the weight variable 'w'.");
  EXPECT_TRUE(Messages(13).empty());
  EXPECT_TRUE(Messages(14).empty());
  EXPECT_EQ(Error(15), "t.gmx:16:11: expected a numeric weight variable, found the string variable 'a'.");
  EXPECT_EQ(Error(16), "t.gmx:17:11: expected a weight variable, found the split variable 'b'.");
  EXPECT_EQ(Error(17), "t.gmx:18:7: expected BY or OFF, found the end of the command.");
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppSessionTest, UnknownCommandsAreErrorsAndTheRestStillRuns) {
  Run("FROB x.\n5 LOAD.\n" + std::string(kLoad));
  const std::string commands =
      "LOAD, SET, SPLIT, WEIGHT, DEBUG, COMPUTE, RECODE, SELECT, FILTER, LABEL, VALUES, MISSING, LEVEL, FORMAT, WRITE or "
      "GLMIXFIT";
  EXPECT_EQ(Error(0), "t.gmx:1:1: expected a command (" + commands + "), found 'FROB'.");
  EXPECT_EQ(Error(1), "t.gmx:2:1: expected a command (" + commands + "), found 5.");
  EXPECT_NE(fpSession->GetData(), nullptr);
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

// Running out of memory is a sentence, not the library's name for it.
TEST_F(AppSessionTest, RunningOutOfMemoryIsASentenceAndTheNextCommandRuns) {
  AppProcedureHook::Set([](void*, BpProcedure&, ProcedureDataSource&) { throw std::bad_alloc(); });
  Run(std::string(kLoad) + "GLMIXFIT y.\nSET VARIABLES=NAMES.\n");
  EXPECT_EQ(Error(1), "t.gmx:2:1: the command needs more memory than there is; it was not run to its end.");
  EXPECT_TRUE(Messages(2).empty());
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

// A line longer than the front end takes in one call is echoed whole, even
// with a character where the pieces meet.
TEST_F(AppSessionTest, ALongCommandLineIsEchoedWhole) {
  const std::string line = "FROB " + std::string(4090, 'x') + "\xC3\xA9" + std::string(5000, 'y');
  Run(line + ".\n");
  EXPECT_EQ(Lines(0), std::vector<std::string>{line + "."});
}

TEST_F(AppSessionTest, GlmixfitNeedsData) {
  Run("GLMIXFIT y.");
  EXPECT_EQ(Error(0), "t.gmx:1:1: expected data to work on, found none: LOAD a data file before GLMIXFIT.");
}

TEST_F(AppSessionTest, WithoutAProcedureTheSessionSaysSoInANote) {
  Run(std::string(kLoad) + "GLMIXFIT y BY a /FIXED a.");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{
                             "NOTE The command was read and checked, but model fitting is not available in this "
                             "version of glmixfit: no model was fitted."}));
  EXPECT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_EQ(N(fpSession->GetMemory(), 392), 1);
  EXPECT_EQ(CmnMix, 0);
  EXPECT_FALSE(std::filesystem::exists(fOptions.fOutputDir));
}

TEST_F(AppSessionTest, TheProcedureGetsThePublishedMemory) {
  AppProcedureHook::Set(Record);
  Run(std::string(kLoad) + "GLMIXFIT z BY a /FIXED a.\nGLMIXFIT y.");
  EXPECT_EQ(gSeen.fCalls, 2);
  EXPECT_EQ(gSeen.fCommand, const_cast<ParserMemory&>(fpSession->GetMemory()).GetCommand());
  EXPECT_NE(gSeen.fNumeric, 0);
  EXPECT_NE(gSeen.fCharacter, 0);
  EXPECT_EQ(gSeen.fHeading, "Mixed Model");
  EXPECT_EQ(gSeen.fColumns, 9);
  EXPECT_EQ(gSeen.fTarget, 1);
  // Published only while the procedure runs.
  EXPECT_EQ(CmnMix, 0);
  EXPECT_EQ(CmaMix, 0);
  EXPECT_TRUE(Messages(1).empty());
  EXPECT_TRUE(std::filesystem::is_directory(fOptions.fOutputDir));
  // The second command names its documents apart from the first.
  EXPECT_EQ(Field(fpSession->GetMemory(), MIXCommandLayout::MODEL_FILE),
            (std::filesystem::path(fOptions.fOutputDir) / "model-2.xml").lexically_normal().string());
  EXPECT_EQ(fpSession->ExitStatus(), 0);
}

TEST_F(AppSessionTest, ACommandWithAMistakeDoesNotReachTheProcedure) {
  AppProcedureHook::Set(Record);
  Run(std::string(kLoad) + "GLMIXFIT y BY nosuch.\nGLMIXFIT y.");
  EXPECT_EQ(gSeen.fCalls, 1);
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppSessionTest, AnErrorOfTheProcedureCountsAsACommandError) {
  AppProcedureHook::Set(Fails);
  Run(std::string(kLoad) + "GLMIXFIT y.\nSET VARIABLES=LABELS.");
  EXPECT_EQ(Messages(1), (std::vector<std::string>{"ERROR the fit failed"}));
  EXPECT_TRUE(Messages(2).empty());
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppSessionTest, AnExceptionIsReportedAndTheRunGoesOn) {
  AppProcedureHook::Set(Throws);
  Run(std::string(kLoad) + "GLMIXFIT y.\nSPLIT OFF.");
  EXPECT_EQ(Error(1), "t.gmx:2:1: the command failed: MixDriver: not implemented yet.");
  EXPECT_EQ(Commands(), 3u);
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

TEST_F(AppSessionTest, AnInterruptEndsTheRunAfterTheCommand) {
  AppProcedureHook::Set(Interrupts);
  Run(std::string(kLoad) + "GLMIXFIT y.\nSPLIT OFF.\nWEIGHT OFF.");
  const OmHeading& root = fpSession->GetDocument().fRoot;
  ASSERT_EQ(root.fvItems.size(), 3u);
  ASSERT_EQ(root.fvItems[2].fKind, OmItem::MESSAGE);
  EXPECT_EQ(root.fvItems[2].fpMessage->fText, "The run was interrupted; 2 commands were not run.");
  EXPECT_EQ(Messages(1), std::vector<std::string>{"ERROR The command was interrupted; its results are not shown."});
  EXPECT_EQ(fpSession->ExitStatus(), 130);
}

TEST_F(AppSessionTest, ACommandFileThatCannotBeReadIsReported) {
  AppSession session(fOptions);
  EXPECT_FALSE(session.RunFile(std::string(GLMIX_TEST_DATA_DIR) + "/app/nosuch.gmx"));
  EXPECT_FALSE(session.RunFile(std::string(GLMIX_TEST_DATA_DIR) + "/app"));
  ASSERT_EQ(session.GetDocument().fRoot.fvItems.size(), 2u);
  EXPECT_EQ(session.ExitStatus(), 1);
}

TEST_F(AppSessionTest, AFixedFactorOfTooManyLevelsIsRefusedWithItsSize) {
  // f has a level for each of 3005 records: with the intercept 3006 fixed
  // parameters, past the 3000 the fit takes, and
  // 8 (40 * 3006^2 + 3 * 3005 * 3006) = 3,108,324,240 bytes.
  const std::string csv = fOptions.fOutputDir + "-levels.csv";
  {
    std::ofstream out(csv);
    out << "y,f\n";
    for (int r = 0; r < 3005; ++r) out << 0.1 * (r % 7) << ',' << r << '\n';
  }
  AppProcedureHook::Set(MixDriver);
  Run("LOAD '" + csv + "'.\nGLMIXFIT y BY f\n  /FIXED f.");
  std::filesystem::remove(csv);
  const std::vector<std::string> messages = Messages(1);
  const std::string expected =
      "ERROR The fixed effect f has 3005 parameters, and the fixed effects 3006 together; the fit would hold "
      "matrices over every pair of them, some 3108 MB. The limit is 3000 fixed parameters. No model is fitted.";
  EXPECT_NE(std::find(messages.begin(), messages.end(), expected), messages.end()) << ::testing::PrintToString(messages);
}
