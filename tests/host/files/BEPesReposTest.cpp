#include "host/files/BEPesRepos.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "host/data/HostDataTestSource.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"

using hostdata_test::ScratchDir;
using hostdata_test::WriteFile;

namespace {

std::vector<std::string> Names(const std::vector<const BEPesRepos::FileData*>& files) {
  std::vector<std::string> names;
  for (const auto* file : files) names.push_back(file->fName);
  return names;
}

}  // namespace

class BEPesReposTest : public ::testing::Test {
 protected:
  void SetUp() override { BEPesRepos::BEPesClear(); }
  void TearDown() override { BEPesRepos::BEPesClear(); }
};

TEST_F(BEPesReposTest, StoresWrittenFilesInOrder) {
  ScratchDir dir("pes_order");
  WriteFile(dir.File("model.xml"), "<PMML/>");
  WriteFile(dir.File("stats.xml"), "<doc/>");
  WriteFile(dir.File("stats.json"), "{}");
  EXPECT_TRUE(TestAndStoreToPes(dir.File("model.xml").c_str(), 6, 1));
  EXPECT_TRUE(TestAndStoreToPes(dir.File("stats.xml").c_str(), 6, 1));
  EXPECT_TRUE(TestAndStoreToPes(dir.File("stats.json").c_str(), 99, 1));

  const auto& files = BEPesRepos::GetFiles();
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0].fName, dir.File("model.xml"));
  EXPECT_EQ(files[2].fKind, BEPesRepos::KIND_JSON);
  EXPECT_TRUE(files[1].fbDeliver);
  EXPECT_EQ(Names(BEPesRepos::GetDeliveries(BEPesRepos::KIND_XML)),
            (std::vector<std::string>{dir.File("model.xml"), dir.File("stats.xml")}));
  EXPECT_EQ(Names(BEPesRepos::GetDeliveries(BEPesRepos::KIND_JSON)), std::vector<std::string>{dir.File("stats.json")});
  EXPECT_EQ(BEPesRepos::GetDeliveries(BEPesRepos::KIND_JSON)[0]->fContent, "{}");
  EXPECT_EQ(BEPesRepos::BEPesCheckError(), 0);
}

// Each hand-over remembers the split that was current, so that the viewer
// can show a split's documents under its title.
TEST_F(BEPesReposTest, EachHandOverKeepsTheSplitOfItsMoment) {
  ScratchDir dir("pes_split");
  WriteFile(dir.File("stats.xml"), "<doc/>");
  ZORV_Variable variable;
  ZORV_Session::SplitValue split;
  split.fpVariable = &variable;
  split.fvValue.resize(1);
  split.fvValue[0].fNum = 2.0;
  ZORV_Session::Current().SetCurrentSplit({split});
  TestAndStoreToPes(dir.File("stats.xml").c_str(), 6, 1);
  ZORV_Session::Current().ClearCurrentSplit();
  TestAndStoreToPes(dir.File("stats.xml").c_str(), 6, 1);
  const auto& files = BEPesRepos::GetFiles();
  ASSERT_EQ(files.size(), 2u);
  ASSERT_EQ(files[0].fvSplit.size(), 1u);
  EXPECT_EQ(files[0].fvSplit[0].fpVariable, &variable);
  EXPECT_EQ(files[0].fvSplit[0].fvValue[0].fNum, 2.0);
  EXPECT_TRUE(files[1].fvSplit.empty());
}

TEST_F(BEPesReposTest, EachHandOverKeepsTheContentOfItsMoment) {
  ScratchDir dir("pes_again");
  WriteFile(dir.File("stats.json"), "{\"split\": 1}");
  TestAndStoreToPes(dir.File("stats.json").c_str(), 99, 1);
  WriteFile(dir.File("stats.json"), "{\"split\": 2}");
  TestAndStoreToPes(dir.File("stats.json").c_str(), 99, 1);
  WriteFile(dir.File("keep.xml"), "k");
  TestAndStoreToPes(dir.File("keep.xml").c_str(), 6, 0);

  const auto& files = BEPesRepos::GetFiles();
  ASSERT_EQ(files.size(), 3u);
  EXPECT_EQ(files[0].fContent, "{\"split\": 1}");
  EXPECT_EQ(files[1].fContent, "{\"split\": 2}");
  EXPECT_FALSE(files[2].fbDeliver);
  auto json = BEPesRepos::GetDeliveries(99);
  ASSERT_EQ(json.size(), 2u);
  EXPECT_EQ(json[0]->fContent, "{\"split\": 1}");
  EXPECT_EQ(json[1]->fContent, "{\"split\": 2}");
  EXPECT_TRUE(BEPesRepos::GetDeliveries(6).empty());
}

TEST_F(BEPesReposTest, FindsMissingAndVanishedFiles) {
  ScratchDir dir("pes_missing");
  WriteFile(dir.File("kept.xml"), "k");
  WriteFile(dir.File("gone.xml"), "g");
  EXPECT_TRUE(TestAndStoreToPes(dir.File("kept.xml").c_str(), 6, 1));
  EXPECT_TRUE(TestAndStoreToPes(dir.File("gone.xml").c_str(), 6, 1));
  EXPECT_FALSE(TestAndStoreToPes(dir.File("never.json").c_str(), 99, 1));
  std::remove(dir.File("gone.xml").c_str());

  std::vector<std::string> bad = BEPesRepos::FindUnreadable();
  ASSERT_EQ(bad.size(), 2u);
  EXPECT_EQ(bad[0], dir.File("gone.xml"));
  EXPECT_EQ(bad[1], dir.File("never.json"));
  // The snapshot of a file that vanished later still reaches the viewer.
  EXPECT_EQ(Names(BEPesRepos::GetDeliveries(6)), (std::vector<std::string>{dir.File("kept.xml"), dir.File("gone.xml")}));
}

TEST_F(BEPesReposTest, ClearForgetsEverythingAndNamelessFilesAreRefused) {
  EXPECT_FALSE(TestAndStoreToPes(nullptr, 6, 1));
  EXPECT_FALSE(TestAndStoreToPes("", 6, 1));
  EXPECT_TRUE(BEPesRepos::GetFiles().empty());
  TestAndStoreToPes("/no/such/file.xml", 6, 1);
  EXPECT_EQ(BEPesRepos::GetFiles().size(), 1u);
  BEPesRepos::BEPesClear();
  EXPECT_TRUE(BEPesRepos::GetFiles().empty());
  EXPECT_EQ(BEPesRepos::BEPesCheckError(), 0);
}

TEST_F(BEPesReposTest, CheckErrorReportsEachBadFile) {
  ZORV_Session::Current().BeginCommand();
  ScratchDir dir("pes_check");
  WriteFile(dir.File("kept.xml"), "k");
  TestAndStoreToPes(dir.File("kept.xml").c_str(), 6, 1);
  TestAndStoreToPes(dir.File("lost.json").c_str(), 99, 1);
  auto& items = BpProcedure::HostDocument().fRoot.fvItems;
  std::size_t before = items.size();
  EXPECT_EQ(BEPesRepos::BEPesCheckError(), 1);
  ASSERT_EQ(items.size(), before + 1);
  ASSERT_EQ(items.back().fKind, OmItem::MESSAGE);
  EXPECT_EQ(items.back().fpMessage->fLevel, OmMessage::ERROR);
  EXPECT_EQ(items.back().fpMessage->fText,
            "The output file " + dir.File("lost.json") + " is missing or cannot be read.");
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
  ZORV_Session::Current().BeginCommand();
}

// A device is never read back: reading /dev/zero would not end.
TEST_F(BEPesReposTest, OnlyRegularFilesAreReadBack) {
  ScratchDir dir("pes_device");
  EXPECT_FALSE(TestAndStoreToPes("/dev/zero", 6, 1));
  EXPECT_FALSE(TestAndStoreToPes("/dev/full", 6, 1));
  EXPECT_FALSE(TestAndStoreToPes(dir.Path().c_str(), 99, 1));
  ASSERT_EQ(BEPesRepos::GetFiles().size(), 3u);
  for (const auto& file : BEPesRepos::GetFiles()) {
    EXPECT_FALSE(file.fbReadable) << file.fName;
    EXPECT_TRUE(file.fContent.empty()) << file.fName;
  }
  EXPECT_EQ(BEPesRepos::FindUnreadable().size(), 3u);
}

TEST_F(BEPesReposTest, CheckErrorReportsEachFileNotWrittenWithItsReason) {
  ZORV_Session::Current().BeginCommand();
  BEPesRepos::NoteFailedWrite("nofolder/m.xml", "No such file or directory");
  auto& items = BpProcedure::HostDocument().fRoot.fvItems;
  std::size_t before = items.size();
  EXPECT_EQ(BEPesRepos::BEPesCheckError(), 1);
  ASSERT_EQ(items.size(), before + 1);
  EXPECT_EQ(items.back().fpMessage->fLevel, OmMessage::ERROR);
  EXPECT_EQ(items.back().fpMessage->fText,
            "The output file nofolder/m.xml was not written: No such file or directory.");
  EXPECT_TRUE(ZORV_Session::Current().IsFatal());
  BEPesRepos::BEPesClear();
  EXPECT_EQ(BEPesRepos::BEPesCheckError(), 0);
  ZORV_Session::Current().BeginCommand();
}
