#include "app/AppProgressLine.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <thread>

#include "app/AppMain.h"
#include "app/AppOptions.h"
#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/data/ProgressRecorder.h"
#include "host/files/ScratchFolder.h"
#include "run/MixDriver.h"

namespace fs = std::filesystem;

namespace {

ZORV_Progress::State FitState() {
  ZORV_Progress::State state;
  state.fTask = "Mixed Model";
  state.fSplit = 2;
  state.fSplits = 4;
  state.fIteration = 7;
  state.fCriterion = 1743.62827;
  return state;
}

}  // namespace

TEST(AppProgressLine, TellsTheStepTheSplitTheIterationTheCriterionAndTheTime) {
  EXPECT_EQ(AppProgressLine::Describe(FitState(), 3.9),
            "glmixfit: Mixed Model, split 2 of 4, iteration 7, -2LL 1743.628 (0:03)");
  ZORV_Progress::State reading;
  reading.fTask = "Load";
  reading.fFraction = 0.456;
  EXPECT_EQ(AppProgressLine::Describe(reading, 3725.0), "glmixfit: Load, 45% (1:02:05)");
  ZORV_Progress::State starting;
  starting.fTask = "Mixed Model";
  EXPECT_EQ(AppProgressLine::Describe(starting, 61.0), "glmixfit: Mixed Model (1:01)");
}

TEST(AppProgressLine, DrawsOverItselfAndRemovesItselfWhenTheStepEnds) {
  std::ostringstream out;
  {
    AppProgressLine line(out, 0.0, 100);
    line.Update(FitState());
    EXPECT_EQ(out.str(), "\rglmixfit: Mixed Model, split 2 of 4, iteration 7, -2LL 1743.628 (0:00)\033[K");
    // At once again: too soon to draw.
    line.Update(FitState());
    EXPECT_EQ(out.str().find('\r', 1), std::string::npos);
    std::this_thread::sleep_for(std::chrono::milliseconds(120));
    line.Update(FitState());
    EXPECT_NE(out.str().find('\r', 1), std::string::npos);
    line.Finish();
    EXPECT_EQ(out.str().substr(out.str().size() - 4), "\r\033[K");
  }
  // Nothing is left to remove once the step has ended.
  EXPECT_EQ(out.str().substr(out.str().size() - 4), "\r\033[K");
  EXPECT_EQ(out.str().find("\r\033[K\r\033[K"), std::string::npos);
}

TEST(AppProgressLine, AStepShorterThanTheDelayShowsNothing) {
  std::ostringstream out;
  AppProgressLine line(out, 60.0, 100);
  line.Update(FitState());
  line.Update(FitState());
  line.Finish();
  EXPECT_EQ(out.str(), "");
}

TEST(AppProgressLine, TheLineFitsTheTerminal) {
  std::ostringstream out;
  AppProgressLine line(out, 0.0, 20);
  line.Update(FitState());
  EXPECT_EQ(out.str(), "\rglmixfit: Mixed Mod\033[K");
}

TEST(AppProgressLine, OnlyATerminalGetsTheLine) {
  int pipeEnds[2];
  ASSERT_EQ(::pipe(pipeEnds), 0);
  EXPECT_FALSE(AppProgressLine::Wanted(pipeEnds[1], false));
  EXPECT_EQ(AppProgressLine::TerminalWidth(pipeEnds[1]), 80);
  ::close(pipeEnds[0]);
  ::close(pipeEnds[1]);
  int master = -1;
  int slave = -1;
  struct winsize size {};
  size.ws_col = 132;
  size.ws_row = 40;
  ASSERT_EQ(::openpty(&master, &slave, nullptr, nullptr, &size), 0);
  EXPECT_TRUE(AppProgressLine::Wanted(slave, false));
  EXPECT_FALSE(AppProgressLine::Wanted(slave, true));
  EXPECT_EQ(AppProgressLine::TerminalWidth(slave), 132);
  ::close(master);
  ::close(slave);
}

// The program itself, on a pseudo-terminal: the status line shows on
// standard error only when that is a terminal and --quiet is not given.
class AppProgressOnATerminal : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(fDir / "run.gmx") << "LOAD '" << GLMIX_SOURCE_DIR << "/examples/data/sleepstudy.csv'.\n"
                                    << "GLMIXFIT Reaction WITH Days /FIXED Days"
                                       " /RANDOM INTERCEPT Days SUBJECTS=Subject STRUCTURE=UN.\n";
  }
  // Runs the program in a child whose terminal is a pseudo-terminal; what
  // the terminal shows, and what standard error held when it went to a file.
  void Run(bool quiet, bool redirectErrors) {
    fTerminal.clear();
    const fs::path errors = fDir / "errors.txt";
    int master = -1;
    struct winsize size {};
    size.ws_col = 200;
    size.ws_row = 40;
    const pid_t child = ::forkpty(&master, nullptr, nullptr, &size);
    ASSERT_GE(child, 0);
    if (child == 0) {
      if (redirectErrors) {
        const int file = ::open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(file, STDERR_FILENO);
      }
      AppProcedureHook::Set(MixDriver);
      AppOptions options;
      options.fCommandFile = (fDir / "run.gmx").string();
      options.fOutputDir = (fDir / "out").string();
      options.fbQuiet = quiet;
      options.fProgressDelay = 0.0;
      const int status = AppMain::Run(options, std::cout, std::cerr);
      std::cout.flush();
      std::cerr.flush();
      ::_exit(status);
    }
    char buffer[4096];
    for (;;) {
      const ssize_t n = ::read(master, buffer, sizeof buffer);
      if (n > 0) fTerminal.append(buffer, static_cast<std::size_t>(n));
      if (n == 0 || (n < 0 && errno != EINTR)) break;
    }
    ::close(master);
    int status = 0;
    ::waitpid(child, &status, 0);
    fExit = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream in(errors);
    fErrors.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  ScratchFolder fScratch{"glmixfit-progress"};
  const fs::path& fDir = fScratch.Path();
  std::string fTerminal;
  std::string fErrors;
  int fExit = -1;
};

TEST_F(AppProgressOnATerminal, EachStepShowsItsLineAndTheLineIsRemoved) {
  Run(false, false);
  EXPECT_EQ(fExit, 0);
  EXPECT_NE(fTerminal.find("\rglmixfit: Load"), std::string::npos) << fTerminal;
  EXPECT_NE(fTerminal.find("\rglmixfit: Mixed Model"), std::string::npos);
  // Removed before the report is written.
  const std::size_t report = fTerminal.find("Information Criteria");
  ASSERT_NE(report, std::string::npos);
  const std::size_t lastLine = fTerminal.rfind("\rglmixfit: ");
  const std::size_t lastClear = fTerminal.rfind("\r\033[K");
  EXPECT_LT(lastLine, lastClear);
  EXPECT_LT(lastClear, report);
}

TEST_F(AppProgressOnATerminal, QuietShowsNoLine) {
  Run(true, false);
  EXPECT_EQ(fExit, 0);
  EXPECT_NE(fTerminal.find("Information Criteria"), std::string::npos);
  EXPECT_EQ(fTerminal.find("\033[K"), std::string::npos);
  EXPECT_EQ(fTerminal.find("glmixfit: "), std::string::npos);
}

TEST_F(AppProgressOnATerminal, RedirectedErrorsGetNoLine) {
  Run(false, true);
  EXPECT_EQ(fExit, 0);
  EXPECT_NE(fTerminal.find("Information Criteria"), std::string::npos);
  EXPECT_EQ(fTerminal.find("\033[K"), std::string::npos);
  EXPECT_EQ(fErrors, "");
}

// What the line shows comes from the fit itself: each iteration with its
// -2 log likelihood, and the split being fitted.
TEST(AppProgress, AFitTellsItsSplitsIterationsAndCriterion) {
  const fs::path out = fs::temp_directory_path() / ("glmixfit-progress-fit-" + std::to_string(::getpid()));
  ProgressRecorder recorder;
  ZORV_Progress::SetObserver(&recorder);
  AppProcedureHook::Set(MixDriver);
  std::vector<double> criteria;  // the numbers of the information criteria shown
  {
    AppOptions options;
    options.fOutputDir = out.string();
    AppSession session(options);
    session.RunText("LOAD '" + std::string(GLMIX_SOURCE_DIR) + "/examples/data/orthodont.csv'.\nSPLIT BY Sex.\n"
                    "GLMIXFIT distance WITH age /FIXED age /RANDOM INTERCEPT SUBJECTS=Subject.",
                    "t.gmx", "");
    EXPECT_EQ(session.ExitStatus(), 0);
    for (const OmItem& item : session.GetDocument().fRoot.fvItems.back().fpHeading->fvItems) {
      if (item.fKind != OmItem::TABLE || item.fpTable->fSubType != "Information Criteria") continue;
      for (const auto& cell : item.fpTable->fCells) criteria.push_back(cell.second.fValue);
    }
  }
  AppProcedureHook::Set(nullptr);
  ZORV_Progress::SetObserver(nullptr);
  fs::remove_all(out);

  EXPECT_EQ(recorder.fFinished, 3);  // one per command
  int iterations = 0;
  std::vector<int> splits;
  double lastCriterion = 0.0;
  for (const ZORV_Progress::State& state : recorder.fvStates) {
    if (state.fTask != "Mixed Model") continue;
    if (state.fSplits > 0 && (splits.empty() || splits.back() != state.fSplit)) splits.push_back(state.fSplit);
    if (state.fIteration < 0) continue;
    EXPECT_EQ(state.fSplits, 2);
    ++iterations;
    lastCriterion = state.fCriterion;
  }
  EXPECT_GE(iterations, 4);
  // The data pass, the fits and the output pass each walk both splits.
  EXPECT_GE(splits.size(), 4u);
  EXPECT_EQ(splits.front(), 1);
  // The last iteration of the last split stands at that split's -2 restricted
  // log likelihood, as the table shows it.
  bool shown = false;
  for (double value : criteria) shown = shown || std::fabs(value - lastCriterion) < 1e-6 * std::fabs(value);
  EXPECT_TRUE(shown) << lastCriterion;
}
