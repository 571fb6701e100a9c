#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

// A folder of the running test's own, empty at the start and removed at
// the end: tests run in parallel processes and beside other checkouts.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& prefix)
      : fPath(std::filesystem::temp_directory_path() /
              (prefix + "-" + ::testing::UnitTest::GetInstance()->current_test_info()->name() + "-" +
               std::to_string(::getpid()))) {
    std::filesystem::remove_all(fPath);
    std::filesystem::create_directories(fPath);
  }
  ~ScratchFolder() {
    std::error_code ec;
    std::filesystem::remove_all(fPath, ec);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& Path() const { return fPath; }

 private:
  std::filesystem::path fPath;
};
