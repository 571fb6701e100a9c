#include "host/files/ExtNameStr.h"

#include <gtest/gtest.h>

#include "host/data/HostDataTestSource.h"
#include "host/data/ZORV_Session.h"

using hostdata_test::ScratchDir;

TEST(ExtNameStr, KeepsTheNameWithoutSurroundingBlanks) {
  ExtNameStr name;
  EXPECT_TRUE(name.IsEmpty());
  name.SetGeneric("  results/model.xml  ");
  EXPECT_EQ(name.GetGeneric(), "results/model.xml");
  name.SetGeneric(static_cast<const char*>(nullptr));
  EXPECT_TRUE(name.IsEmpty());
}

TEST(ExtNameStr, OpensWritesAndRemovesAFile) {
  ScratchDir dir("extname");
  ExtNameStr name;
  name.SetGeneric(dir.File("out.xml"));
  EXPECT_EQ(name.Access(ExtNameStr::MODE_EXISTS), ExtNameStr::ACCESS_ABSENT);

  std::ofstream stream;
  ASSERT_TRUE(name.Open(stream, std::ios::binary | std::ios::out | std::ios::trunc));
  stream << "<doc/>";
  stream.close();
  EXPECT_EQ(name.Access(0), ExtNameStr::ACCESS_OK);
  EXPECT_EQ(name.Access(ExtNameStr::MODE_READ | ExtNameStr::MODE_WRITE), ExtNameStr::ACCESS_OK);

  // Truncating on a second open.
  ASSERT_TRUE(name.Open(stream, std::ios::binary | std::ios::trunc));
  stream << "x";
  stream.close();
  std::ifstream in(name.GetGeneric());
  std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(content, "x");

  EXPECT_TRUE(name.remove());
  EXPECT_EQ(name.Access(0), ExtNameStr::ACCESS_ABSENT);
  EXPECT_FALSE(name.remove());
}

TEST(ExtNameStr, FailsQuietlyOnBadNames) {
  ScratchDir dir("extname_bad");
  ExtNameStr empty;
  std::ofstream stream;
  EXPECT_FALSE(empty.Open(stream, std::ios::out));
  EXPECT_EQ(empty.Access(0), ExtNameStr::ACCESS_ABSENT);
  EXPECT_FALSE(empty.remove());

  ExtNameStr missingDir(dir.File("no/such/dir/file.xml"));
  EXPECT_FALSE(missingDir.Open(stream, std::ios::out | std::ios::trunc));
  EXPECT_FALSE(stream.is_open());
}

TEST(ExtNameStr, RelativeNamesAreTakenFromTheCommandFilesFolder) {
  ScratchDir dir("extname_base");
  ZORV_Session& session = ZORV_Session::Current();
  session.SetCommandDir(dir.Path());
  ExtNameStr name("out.json");
  EXPECT_EQ(name.GetPath(), dir.File("out.json"));
  std::ofstream stream;
  ASSERT_TRUE(name.Open(stream, std::ios::out | std::ios::trunc));
  stream << "{}";
  stream.close();
  EXPECT_EQ(name.Access(ExtNameStr::MODE_READ), ExtNameStr::ACCESS_OK);

  ExtNameStr absolute(dir.File("out.json"));
  EXPECT_EQ(absolute.GetPath(), dir.File("out.json"));
  EXPECT_TRUE(name.remove());

  session.SetCommandDir("");
  EXPECT_EQ(name.GetPath(), "out.json");
}
