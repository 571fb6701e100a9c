#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "AppTestSupport.h"
#include "app/AppSession.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/ScratchFolder.h"

// Runs command texts through a session, in a scratch folder of the test's
// own, and reads what each command said.
class AppDataFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    ZORV_StopFlag::Clear();
    fOptions.fOutputDir = (fDir / "out").string();
  }
  void TearDown() override {
    fpSession.reset();
    ZORV_StopFlag::Clear();
  }

  std::string Write(const std::string& name, const std::string& text) {
    const std::filesystem::path path = fDir / name;
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
  }
  std::string Read(const std::string& name) const {
    std::ifstream in(fDir / name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // Runs the commands as the file "t.gmx" of the scratch folder.
  void Run(const std::string& text) {
    fpSession.reset(new AppSession(fOptions));
    fpSession->RunText(text, "t.gmx", fDir.string());
  }

  ZORV_Dataset& Data() const { return *fpSession->GetData(); }
  int Column(const std::string& name) const { return Data().FindVarIndex(name.c_str(), 0); }
  double Num(long row, const std::string& name) const { return Data().GetNum(row, Column(name)); }
  std::string Text(long row, const std::string& name) const { return Data().GetString(row, Column(name)); }
  bool SysMissing(long row, const std::string& name) const { return Data().IsSysMissing(row, Column(name)); }

  const OmHeading& Command(std::size_t index) const { return *fpSession->GetDocument().fRoot.fvItems.at(index).fpHeading; }
  std::size_t Commands() const { return fpSession->GetDocument().fRoot.fvItems.size(); }
  // The messages of a command, as "ERROR text", "WARNING text", "NOTE text".
  std::vector<std::string> Messages(std::size_t index) const { return apptest::MessagesOf(Command(index)); }
  // The lines a command wrote, its echo first.
  std::vector<std::string> Lines(std::size_t index) const { return apptest::LinesOf(Command(index)); }
  // The line a command wrote after its one-line echo.
  std::string Said(std::size_t index) const {
    const std::vector<std::string> lines = Lines(index);
    return lines.size() == 2 ? lines[1] : "(not one line said)";
  }
  std::string Error(std::size_t index) const {
    const std::vector<std::string> messages = Messages(index);
    return messages.size() == 1 && messages[0].compare(0, 6, "ERROR ") == 0 ? messages[0].substr(6)
                                                                            : "(no single error)";
  }

  ScratchFolder fScratch{"glmixfit-data"};
  const std::filesystem::path& fDir = fScratch.Path();
  AppOptions fOptions;
  std::unique_ptr<AppSession> fpSession;
};
