#include "host/files/PathFactory.h"

#include <gtest/gtest.h>

#include "host/data/ZORV_Session.h"

namespace {

// Restores the session's directories when a test ends.
class SessionDirs {
 public:
  SessionDirs()
      : fResource(ZORV_Session::Current().GetResourceDir()), fWritable(ZORV_Session::Current().GetWritableDir()) {}
  ~SessionDirs() {
    ZORV_Session::Current().SetResourceDir(fResource);
    ZORV_Session::Current().SetWritableDir(fWritable);
  }

 private:
  std::string fResource;
  std::string fWritable;
};

}  // namespace

TEST(PathFactory, PathsComeFromTheSession) {
  SessionDirs restore;
  ZORV_Session::Current().SetResourceDir("/opt/glmix/res");
  ZORV_Session::Current().SetWritableDir("/tmp/work/");
  PathFactory* paths = PathFactory::getPathInstance();
  ASSERT_NE(paths, nullptr);
  EXPECT_EQ(paths->GetWritablePath(), "/tmp/work/");
  EXPECT_EQ(paths->GetResourcePath(), "/opt/glmix/res/");
  EXPECT_EQ(paths->GetStringTablePath(), "/opt/glmix/res/strings/");
  EXPECT_EQ(paths->GetWritablePath() + "mixed_sorted_encoded_records.txt", "/tmp/work/mixed_sorted_encoded_records.txt");
}

TEST(PathFactory, KindsHaveTheirOwnInstance) {
  PathFactory* procedure = PathFactory::getPathInstance();
  PathFactory* presentation = PathFactory::getPathInstance(3);
  EXPECT_EQ(procedure->GetKind(), PathFactory::PROCEDURE);
  EXPECT_EQ(presentation->GetKind(), PathFactory::PRESENTATION);
  EXPECT_NE(procedure, presentation);
  EXPECT_EQ(PathFactory::getPathInstance(0), procedure);
  EXPECT_EQ(PathFactory::getPathInstance(3), presentation);
  EXPECT_EQ(PathFactory::getPathInstance(42), procedure);
}

TEST(PathFactory, EmptyDirectoryMeansTheWorkingDirectory) {
  SessionDirs restore;
  ZORV_Session::Current().SetWritableDir("");
  EXPECT_EQ(PathFactory::getPathInstance()->GetWritablePath(), "./");
}

TEST(PathFactory, DefaultResourcesHoldTheStringTables) {
  std::string expected = std::string(GLMIX_SOURCE_DIR) + "/resources/strings/";
  EXPECT_EQ(PathFactory::getPathInstance(3)->GetStringTablePath(), expected);
}
