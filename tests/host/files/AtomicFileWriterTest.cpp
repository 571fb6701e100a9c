#include "host/files/AtomicFileWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "host/files/ScratchFolder.h"

namespace fs = std::filesystem;

namespace {

class AtomicFileWriterTest : public ::testing::Test {
 protected:

  std::string Read(const fs::path& path) const {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  int Entries() const { return static_cast<int>(std::distance(fs::directory_iterator(fDir), fs::directory_iterator())); }

  ScratchFolder fScratch{"glmixfit-atomic"};
  const fs::path& fDir = fScratch.Path();
};

}  // namespace

TEST_F(AtomicFileWriterTest, TheFileAppearsOnlyWhenCommitted) {
  const fs::path path = fDir / "data.csv";
  {
    AtomicFileWriter writer(path.string());
    ASSERT_TRUE(writer.IsOpen()) << writer.GetError();
    writer.Stream() << "a,b\n1,2\n";
    writer.Stream().flush();
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(Entries(), 1);  // the temporary file, beside it
    ASSERT_TRUE(writer.Commit()) << writer.GetError();
  }
  EXPECT_EQ(Read(path), "a,b\n1,2\n");
  EXPECT_EQ(Entries(), 1);
  // Readable as a file made the ordinary way.
  struct stat info {};
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  EXPECT_NE(info.st_mode & S_IRUSR, 0u);
  EXPECT_NE(info.st_mode & S_IWUSR, 0u);
}

TEST_F(AtomicFileWriterTest, AnAbandonedWriteLeavesTheOldFile) {
  const fs::path path = fDir / "data.csv";
  std::ofstream(path) << "old";
  {
    AtomicFileWriter writer(path.string());
    ASSERT_TRUE(writer.IsOpen());
    writer.Stream() << "new";
  }
  EXPECT_EQ(Read(path), "old");
  EXPECT_EQ(Entries(), 1);
}

TEST_F(AtomicFileWriterTest, ACommitReplacesTheOldFile) {
  const fs::path path = fDir / "data.csv";
  std::ofstream(path) << "old and longer";
  AtomicFileWriter writer(path.string());
  writer.Stream() << "new";
  ASSERT_TRUE(writer.Commit());
  EXPECT_EQ(Read(path), "new");
  EXPECT_FALSE(writer.Commit());
}

TEST_F(AtomicFileWriterTest, AFolderThatDoesNotExistIsAnErrorNamingTheFile) {
  const fs::path path = fDir / "missing" / "data.csv";
  AtomicFileWriter writer(path.string());
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_EQ(writer.GetError(), "cannot write '" + path.string() + "': No such file or directory");
  EXPECT_FALSE(writer.Commit());
}

TEST_F(AtomicFileWriterTest, AFolderIsRefusedAndLeavesNoTemporaryFile) {
  const fs::path path = fDir / "folder";
  fs::create_directories(path / "inside");
  AtomicFileWriter writer(path.string());
  EXPECT_FALSE(writer.IsOpen());
  EXPECT_FALSE(writer.Commit());
  EXPECT_EQ(writer.GetError(), "cannot write '" + path.string() + "': it is not a regular file");
  EXPECT_EQ(writer.GetReason(), "it is not a regular file");
  EXPECT_TRUE(fs::is_directory(path / "inside"));
  EXPECT_EQ(Entries(), 1);
}

TEST_F(AtomicFileWriterTest, ADeviceIsRefusedAndLeftAsItWas) {
  for (const char* path : {"/dev/null", "/dev/full"}) {
    AtomicFileWriter writer(path);
    EXPECT_FALSE(writer.IsOpen()) << path;
    EXPECT_EQ(writer.GetError(), "cannot write '" + std::string(path) + "': it is not a regular file");
    EXPECT_FALSE(writer.Commit());
  }
  struct stat info {};
  ASSERT_EQ(::stat("/dev/null", &info), 0);
  EXPECT_TRUE(S_ISCHR(info.st_mode));
  EXPECT_EQ(Entries(), 0);
}
