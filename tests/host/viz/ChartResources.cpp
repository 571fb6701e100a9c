#include "ChartResources.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "host/data/ZORV_Session.h"

ChartResources::ChartResources(bool withTemplateFolder) {
  fPath = std::filesystem::temp_directory_path() /
          ("glmix-chart-resources-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) +
           "-" + std::to_string(::getpid()));
  std::filesystem::remove_all(fPath);
  std::filesystem::create_directories(fPath / "strings");
  if (withTemplateFolder) std::filesystem::create_directories(fPath / "template");
  fSaved = ZORV_Session::Current().GetResourceDir();
  // The session's string tables, so that messages read as they do in a run.
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(fSaved) / "strings")) {
    std::filesystem::copy_file(entry.path(), fPath / "strings" / entry.path().filename());
  }
  ZORV_Session::Current().SetResourceDir(fPath.string());
}

ChartResources::~ChartResources() {
  ZORV_Session::Current().SetResourceDir(fSaved);
  std::error_code ignored;
  std::filesystem::remove_all(fPath, ignored);
}

void ChartResources::Template(const std::string& name, const std::string& text) const {
  std::ofstream(fPath / "template" / (name + ".viztemplate"), std::ios::binary) << text;
}
