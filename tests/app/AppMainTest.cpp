#include "app/AppMain.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "app/AppInterrupt.h"
#include "host/data/ZORV_StopFlag.h"

namespace fs = std::filesystem;

namespace {

class AppMainTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fDir = fs::temp_directory_path() / ("glmixfit-main-test-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
                                            std::to_string(::getpid()));
    fs::remove_all(fDir);
    fs::create_directories(fDir / "data");
    fs::copy_file(fs::path(GLMIX_TEST_DATA_DIR) / "app" / "trial.csv", fDir / "data" / "trial.csv");
  }
  void TearDown() override { fs::remove_all(fDir); }

  std::string Write(const std::string& name, const std::string& text) {
    fs::path path = fDir / name;
    std::ofstream(path) << text;
    return path.string();
  }

  int Run(std::vector<std::string> args) {
    args.insert(args.begin(), "glmixfit");
    std::vector<const char*> argv;
    for (const std::string& a : args) argv.push_back(a.c_str());
    fOut.str("");
    fErr.str("");
    return AppMain::Run(static_cast<int>(argv.size()), argv.data(), fOut, fErr);
  }

  fs::path fDir;
  std::ostringstream fOut;
  std::ostringstream fErr;
};

}  // namespace

TEST_F(AppMainTest, RunsACommandFileAndWritesTheReports) {
  std::string file = Write("run.gmx",
                           "# a small analysis\n"
                           "LOAD 'data/trial.csv'.\n"
                           "GLMIXFIT y BY a WITH x\n"
                           "  /FIXED a x\n"
                           "  /RANDOM INTERCEPT SUBJECTS=s.\n");
  std::string out = (fDir / "out").string();
  EXPECT_EQ(Run({"--html", "--json", "-o", out, "--width", "100", file}), 0);
  EXPECT_TRUE(fs::is_regular_file(fs::path(out) / "report.html"));
  EXPECT_TRUE(fs::is_regular_file(fs::path(out) / "report.json"));
  EXPECT_NE(fOut.str().find("GLMIXFIT y BY a WITH x"), std::string::npos);
  EXPECT_NE(fOut.str().find("model fitting is not available"), std::string::npos);
  std::ifstream json((fs::path(out) / "report.json").string());
  std::stringstream content;
  content << json.rdbuf();
  EXPECT_NE(content.str().find("Mixed Model"), std::string::npos);
}

TEST_F(AppMainTest, ACommandErrorGivesStatusOne) {
  std::string file = Write("bad.gmx", "LOAD 'data/trial.csv'.\nGLMIXFIT y BY nosuch.\nSPLIT OFF.\n");
  EXPECT_EQ(Run({"--no-text", file}), 1);
  EXPECT_EQ(fOut.str(), "");
  EXPECT_EQ(Run({"--width", "1000", file}), 1);
  EXPECT_NE(fOut.str().find("bad.gmx:2:15: expected a factor, found 'nosuch'"), std::string::npos) << fOut.str();
}

TEST_F(AppMainTest, AnUnusableCommandLineOrFileGivesStatusTwo) {
  EXPECT_EQ(Run({}), 2);
  EXPECT_NE(fErr.str().find("no command file given"), std::string::npos);
  EXPECT_EQ(Run({"--frobnicate", "x.gmx"}), 2);
  EXPECT_EQ(Run({"--no-text", (fDir / "nosuch.gmx").string()}), 2);
  EXPECT_NE(fErr.str().find("the command file cannot be read"), std::string::npos);
  EXPECT_EQ(Run({"--width", "1000", (fDir / "nosuch.gmx").string()}), 2);
  EXPECT_NE(fOut.str().find("the command file cannot be read"), std::string::npos);
}

TEST_F(AppMainTest, HelpSummarisesTheLanguage) {
  EXPECT_EQ(Run({"--help"}), 0);
  for (const char* word : {"Usage: glmixfit", "LOAD 'file'", "SET VARIABLES=", "SPLIT BY", "WEIGHT BY",
                           "GLMIXFIT target", "/FIXED", "/RANDOM", "/RESIDUAL", "/ESTIMATION", "/MISSING", "/TESTS",
                           "/DISPLAY", "/FORMAT", "/CONTRAST", "/MEANS", "/SAVE", "/EXPORT", "/SCALEWEIGHT",
                           "/TARGET", "FIT=",
                           "COMPUTE var = expression", "RECODE var", "SELECT IF", "FILTER BY", "LABEL var", "VALUES var",
                           "MISSING var", "LEVEL var", "FORMAT var", "WRITE", "--quiet", "SUBSTR(s, start[, length])",
                           "docs/syntax.md"}) {
    EXPECT_NE(fOut.str().find(word), std::string::npos) << word;
  }
  std::istringstream lines(fOut.str());
  for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80u) << line;
  EXPECT_EQ(Run({"--version"}), 0);
  EXPECT_EQ(fOut.str(), std::string("glmixfit ") + GLMIX_VERSION + "\n");
}

TEST(AppInterrupt, RaisesTheStopFlag) {
  ZORV_StopFlag::Clear();
  AppInterrupt::Install();
  std::raise(SIGINT);
  EXPECT_TRUE(ZORV_StopFlag::IsRaised());
  ZORV_StopFlag::Clear();
  // The first interrupt gave the default back; install again for the rest.
  AppInterrupt::Install();
  std::signal(SIGINT, SIG_DFL);
}
