#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "AppReportFile.h"
#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "run/MixDriver.h"

// Runs command files or texts through a session with the procedure in place
// and reads back the JSON report they write. Tests run in parallel
// processes, so each test gets a folder of its own (`fOutput`), removed
// afterwards: its data and command files go there, its reports into
// `ReportFolder()` or a folder named by the run.
class AppReportRunFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    AppProcedureHook::Set(MixDriver);
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    fOutput = std::filesystem::temp_directory_path() /
              ("glmixfit-" + std::string(test->test_suite_name()) + "-" + test->name() + "-" +
               std::to_string(::getpid()));
    std::filesystem::remove_all(fOutput);
    std::filesystem::create_directories(fOutput);
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    std::filesystem::remove_all(fOutput);
  }

  std::filesystem::path ReportFolder(const std::string& name = "out") const { return fOutput / name; }

  // Runs a command file, its reports into the report folder `reports`; its
  // exit status is left in `fExitStatus`.
  nlohmann::json RunFile(const std::filesystem::path& file, const std::string& reports = "out") {
    AppSession session(ReportOptions(reports));
    EXPECT_TRUE(session.RunFile(file.string()));
    return WriteReport(session, reports);
  }

  nlohmann::json RunExample(const std::string& name) {
    return RunFile(std::filesystem::path(GLMIX_SOURCE_DIR) / "examples" / (name + ".gmx"));
  }

  // Runs commands as if from a file "t.gmx" in the examples folder, so that
  // they load the examples' data by their short names.
  nlohmann::json RunInExamples(const std::string& commands) {
    AppSession session(ReportOptions("out"));
    session.RunText(commands, "t.gmx", std::string(GLMIX_SOURCE_DIR) + "/examples");
    return WriteReport(session, "out");
  }

  std::filesystem::path fOutput;
  int fExitStatus = -1;

 private:
  AppOptions ReportOptions(const std::string& reports) const {
    AppOptions options;
    options.fOutputDir = ReportFolder(reports).string();
    options.fbText = false;
    options.fbJson = true;
    return options;
  }

  nlohmann::json WriteReport(AppSession& session, const std::string& reports) {
    std::ostringstream terminal;
    std::string error;
    EXPECT_TRUE(session.WriteReports(terminal, error)) << error;
    fExitStatus = session.ExitStatus();
    return apptest::ReadJson(ReportFolder(reports) / "report.json");
  }
};
