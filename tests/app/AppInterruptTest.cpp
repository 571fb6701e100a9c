#include "app/AppInterrupt.h"

#include <signal.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "AppReportFile.h"
#include "app/AppMain.h"
#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/ScratchFolder.h"
#include "run/MixDriver.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

// Sends the program an interrupt, as Ctrl-C does, when the fit reaches the
// given iteration.
class InterruptAtIteration : public ZORV_Progress::Observer {
 public:
  explicit InterruptAtIteration(int iteration) : fIteration(iteration) {}
  void Update(const ZORV_Progress::State& state) override {
    if (fbSent || state.fIteration < fIteration) return;
    fbSent = true;
    std::raise(SIGINT);
  }
  void Finish() override {}
  bool Sent() const { return fbSent; }

 private:
  int fIteration;
  bool fbSent = false;
};

bool DefaultInterruptAction() {
  struct sigaction current {};
  sigaction(SIGINT, nullptr, &current);
  return current.sa_handler == SIG_DFL;
}

class AppInterruptTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_StopFlag::Clear();
    AppProcedureHook::Set(MixDriver);
    fs::copy_file(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "sleepstudy.csv", fScratch.Path() / "s.csv");
    fs::copy_file(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "sleepstudy.dictionary.json",
                  fScratch.Path() / "s.dictionary.json");
  }
  void TearDown() override {
    ZORV_Progress::SetObserver(nullptr);
    AppProcedureHook::Set(nullptr);
    ZORV_StopFlag::Clear();
    std::signal(SIGINT, SIG_DFL);
  }

  // Runs the command file through the program's entry, with the JSON
  // report; its exit status.
  int RunProgram(const std::string& commands) {
    const fs::path file = fScratch.Path() / "run.gmx";
    std::ofstream(file) << commands;
    const std::string out = (fScratch.Path() / "out").string();
    const std::string path = file.string();
    const char* argv[] = {"glmixfit", "--json", "-o", out.c_str(), path.c_str()};
    std::ostringstream terminal, errors;
    return AppMain::Run(5, argv, terminal, errors);
  }
  json Report() const { return apptest::ReadJson(fScratch.Path() / "out" / "report.json"); }

  ScratchFolder fScratch{"glmixfit-interrupt"};
};

const char* const kInterruptedFit =
    "LOAD 's.csv'.\n"
    "GLMIXFIT Reaction WITH Days /FIXED Days /RANDOM INTERCEPT Days SUBJECTS=Subject STRUCTURE=UN\n"
    "  /EXPORT MODEL='m.xml' STATXML='s.xml'.\n"
    "SPLIT OFF.\n";

}  // namespace

TEST_F(AppInterruptTest, AnInterruptedFitShowsThatItWasInterruptedAndNothingElse) {
  AppInterrupt::Install();
  InterruptAtIteration interrupt(1);
  ZORV_Progress::SetObserver(&interrupt);
  const int status = RunProgram(kInterruptedFit);
  ASSERT_TRUE(interrupt.Sent()) << "the fit never reached its iteration 1";
  EXPECT_EQ(status, 130);

  const json report = Report();
  const json& items = report["items"];
  ASSERT_EQ(items.size(), 3u);  // Load, Mixed Model, the run's message
  const json& fit = items[1];
  EXPECT_EQ(fit["text"], "Mixed Model");
  std::multimap<std::string, json> tables;
  apptest::CollectTables(fit["items"], tables);
  EXPECT_TRUE(tables.empty()) << tables.begin()->first;
  std::vector<std::string> messages;
  apptest::CollectMessages(fit["items"], messages);
  EXPECT_EQ(messages, std::vector<std::string>{"error: The command was interrupted; its results are not shown."});
  for (const json& item : fit["items"]) EXPECT_NE(item["kind"], "chart");
  EXPECT_EQ(items[2]["kind"], "message");
  EXPECT_EQ(items[2]["text"], "The run was interrupted; 1 command was not run.");

  // No document of the interrupted command was written, not even under a
  // temporary name.
  EXPECT_FALSE(fs::exists(fScratch.Path() / "m.xml"));
  EXPECT_FALSE(fs::exists(fScratch.Path() / "s.xml"));
  for (const fs::directory_entry& entry : fs::directory_iterator(fScratch.Path())) {
    EXPECT_TRUE(entry.path().filename() == "out" || entry.path().extension() != ".xml") << entry.path();
  }
  // The first interrupt gave the default action back: a second one ends
  // the program at once.
  EXPECT_TRUE(DefaultInterruptAction());
}

TEST_F(AppInterruptTest, TheSameFitUninterruptedShowsItsTablesAndWritesItsDocuments) {
  // The check above would also pass for a fit that never gets that far.
  const int status = RunProgram(kInterruptedFit);
  EXPECT_EQ(status, 0);
  std::multimap<std::string, json> tables;
  apptest::CollectTables(Report()["items"], tables);
  EXPECT_EQ(tables.count("Information Criteria"), 1u);
  EXPECT_TRUE(fs::is_regular_file(fScratch.Path() / "m.xml"));
  EXPECT_TRUE(fs::is_regular_file(fScratch.Path() / "s.xml"));
}

TEST_F(AppInterruptTest, AnInterruptWhileTheCommandFileIsReadRunsNoCommand) {
  ZORV_StopFlag::Raise();
  AppOptions options;
  options.fOutputDir = (fScratch.Path() / "out").string();
  AppSession session(options);
  std::ofstream(fScratch.Path() / "run.gmx") << kInterruptedFit;
  EXPECT_FALSE(session.RunFile((fScratch.Path() / "run.gmx").string()));
  EXPECT_EQ(session.ExitStatus(), 130);
  const OmHeading& root = session.GetDocument().fRoot;
  ASSERT_EQ(root.fvItems.size(), 1u);
  ASSERT_EQ(root.fvItems[0].fKind, OmItem::MESSAGE);
  EXPECT_EQ(root.fvItems[0].fpMessage->fText,
            (fScratch.Path() / "run.gmx").string() +
                ": the reading of the command file was interrupted; no command was run.");
}
