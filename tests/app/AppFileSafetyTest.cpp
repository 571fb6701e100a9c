#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "run/MixDriver.h"

// Nothing a command names may destroy a file the run reads, and nothing but
// regular files is read or written.

namespace fs = std::filesystem;

namespace {

std::string ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void CollectMessages(const OmHeading& heading, std::vector<std::string>& messages) {
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::HEADING) CollectMessages(*item.fpHeading, messages);
    if (item.fKind == OmItem::MESSAGE && item.fpMessage->fLevel == OmMessage::ERROR) {
      messages.push_back(item.fpMessage->fText);
    }
  }
}

class AppFileSafetyTest : public ::testing::Test {
 protected:
  void SetUp() override {
    AppProcedureHook::Set(MixDriver);
    fDir = fs::temp_directory_path() /
           ("glmixfit-safety-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
            std::to_string(::getpid()));
    fs::remove_all(fDir);
    fs::create_directories(fDir / "inner");
    fs::copy_file(fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / "dyestuff.csv", fDir / "inner" / "d.csv");
  }
  void TearDown() override {
    AppProcedureHook::Set(nullptr);
    fs::remove_all(fDir);
  }

  // Runs `commands` from inner/run.gmx, named relative to the test's folder
  // as a user in that folder would; the error messages.
  std::vector<std::string> Run(const std::string& commands, int& exitStatus, bool& ran) {
    std::ofstream(fDir / "inner" / "run.gmx") << commands;
    const fs::path before = fs::current_path();
    fs::current_path(fDir);
    AppOptions options;
    options.fOutputDir = (fDir / "out").string();
    options.fbText = false;
    std::vector<std::string> messages;
    {
      AppSession session(options);
      ran = session.RunFile("inner/run.gmx");
      exitStatus = session.ExitStatus();
      CollectMessages(session.GetDocument().fRoot, messages);
    }
    fs::current_path(before);
    return messages;
  }

  fs::path fDir;
};

const char kLoad[] = "LOAD 'd.csv'.\n";

TEST_F(AppFileSafetyTest, ExportsOfACommandFileGivenWithAFolderAreWrittenBesideIt) {
  int status = -1;
  bool ran = false;
  const std::vector<std::string> errors =
      Run(std::string(kLoad) + "GLMIXFIT Yield /RANDOM INTERCEPT SUBJECTS=Batch /EXPORT MODEL='m.xml' STATXML='s.xml'.\n",
          status, ran);
  EXPECT_TRUE(ran);
  EXPECT_TRUE(errors.empty()) << errors.front();
  EXPECT_EQ(status, 0);
  EXPECT_NE(ReadAll(fDir / "inner" / "m.xml").find("<PMML"), std::string::npos);
  EXPECT_FALSE(ReadAll(fDir / "inner" / "s.xml").empty());
  EXPECT_FALSE(fs::exists(fDir / "inner" / "inner"));
}

TEST_F(AppFileSafetyTest, ADocumentNeverOverwritesTheCommandFileTheDataOrAnotherDocument) {
  const std::string data = ReadAll(fDir / "inner" / "d.csv");
  const std::string commands = std::string(kLoad) +
                               "GLMIXFIT Yield /EXPORT MODEL='d.csv'.\n"
                               "GLMIXFIT Yield /EXPORT STATXML='run.gmx'.\n"
                               "GLMIXFIT Yield /EXPORT STATXML='a.xml' STATJSON='./a.xml'.\n";
  int status = -1;
  bool ran = false;
  const std::vector<std::string> errors = Run(commands, status, ran);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(errors.size(), 3u);
  const std::string inner = (fDir / "inner").string();
  EXPECT_EQ(errors[0], "inner/run.gmx:2:30: the document would overwrite " + inner +
                           "/d.csv, which the run reads; give another name.");
  EXPECT_EQ(errors[1], "inner/run.gmx:3:32: the document would overwrite inner/run.gmx, which the run reads; "
                       "give another name.");
  EXPECT_EQ(errors[2], "inner/run.gmx:4:49: the document would overwrite " + inner +
                           "/a.xml, another document of the command; give each its own name.");
  EXPECT_EQ(ReadAll(fDir / "inner" / "d.csv"), data);
  EXPECT_EQ(ReadAll(fDir / "inner" / "run.gmx"), commands);
  EXPECT_FALSE(fs::exists(fDir / "inner" / "a.xml"));
}

TEST_F(AppFileSafetyTest, DevicesAreRefusedAndAFailedWriteIsAnErrorNamingFileAndReason) {
  int status = -1;
  bool ran = false;
  const std::vector<std::string> errors =
      Run(std::string(kLoad) + "GLMIXFIT Yield /EXPORT MODEL='/dev/full'.\n"
                               "GLMIXFIT Yield /EXPORT STATXML='/dev/zero'.\n"
                               "GLMIXFIT Yield /EXPORT STATXML='nofolder/s.xml'.\n"
                               "GLMIXFIT Yield /EXPORT STATXML='d.csv/s.xml'.\n",
          status, ran);
  EXPECT_EQ(status, 1);
  ASSERT_EQ(errors.size(), 4u);
  EXPECT_EQ(errors[0], "inner/run.gmx:2:30: expected a file to write the document to, found /dev/full, a device.");
  EXPECT_EQ(errors[1], "inner/run.gmx:3:32: expected a file to write the document to, found /dev/zero, a device.");
  EXPECT_EQ(errors[2], "The output file " + (fDir / "inner" / "nofolder" / "s.xml").string() +
                           " was not written: No such file or directory.");
  EXPECT_EQ(errors[3], "The output file " + (fDir / "inner" / "d.csv" / "s.xml").string() +
                           " was not written: Not a directory.");
  struct stat info {};
  ASSERT_EQ(::stat("/dev/full", &info), 0);
  EXPECT_TRUE(S_ISCHR(info.st_mode));
}

TEST_F(AppFileSafetyTest, LoadReadsOnlyRegularFiles) {
  ASSERT_EQ(::mkfifo((fDir / "inner" / "pipe").c_str(), 0600), 0);
  int status = -1;
  bool ran = false;
  const std::vector<std::string> errors =
      Run("LOAD '.'.\nLOAD 'pipe'.\nLOAD '/dev/zero'.\nLOAD 'd.csv' DICTIONARY='/dev/null'.\n", status, ran);
  EXPECT_EQ(status, 1);
  const std::string inner = (fDir / "inner").string();
  EXPECT_EQ(errors, (std::vector<std::string>{
                        "inner/run.gmx:1:6: the data cannot be loaded: " + inner + "/ is a folder, not a file of data.",
                        "inner/run.gmx:2:6: the data cannot be loaded: " + inner + "/pipe is a pipe, not a file of data.",
                        "inner/run.gmx:3:6: the data cannot be loaded: /dev/zero is a device, not a file of data.",
                        "inner/run.gmx:4:6: the data cannot be loaded: /dev/null is a device, not a file of data."}));
}

TEST_F(AppFileSafetyTest, ACommandFileThatIsADeviceOrTooLargeIsRefused) {
  AppOptions options;
  options.fOutputDir = (fDir / "out").string();
  options.fbText = false;
  {
    AppSession session(options);
    EXPECT_FALSE(session.RunFile("/dev/zero"));
    std::vector<std::string> errors;
    CollectMessages(session.GetDocument().fRoot, errors);
    EXPECT_EQ(errors, std::vector<std::string>{"/dev/zero: the command file is a device, not a file of commands."});
  }
  const fs::path large = fDir / "large.gmx";
  {
    std::ofstream out(large, std::ios::binary);
    const std::string line(1023, '#');
    for (std::size_t i = 0; i <= AppSession::kMaxCommandFileBytes / 1024; ++i) out << line << '\n';
  }
  AppSession session(options);
  EXPECT_FALSE(session.RunFile(large.string()));
  std::vector<std::string> errors;
  CollectMessages(session.GetDocument().fRoot, errors);
  EXPECT_EQ(errors, std::vector<std::string>{large.string() +
                                             ": the command file is larger than 16 MB, the most a command file may "
                                             "hold."});
}

}  // namespace
