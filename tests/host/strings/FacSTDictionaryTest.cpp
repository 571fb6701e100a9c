#include "host/strings/FacSTDictionary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "host/data/HostDataTestSource.h"
#include "host/strings/FacSTDirectory.h"
#include "host/strings/FacSTTable.h"

namespace {

const std::string kSample = std::string(GLMIX_TEST_DATA_DIR) + "/strings/sample";
const std::string kMalformed = std::string(GLMIX_TEST_DATA_DIR) + "/strings/malformed";

bool HasProblem(const std::vector<std::string>& problems, const std::string& part) {
  return std::any_of(problems.begin(), problems.end(),
                     [&](const std::string& p) { return p.find(part) != std::string::npos; });
}

}  // namespace

TEST(FacSTDictionary, LooksUpTheProcedureTableFirst) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  EXPECT_EQ(dictionary.LookUp("Hello"), "Bonjour");
  EXPECT_EQ(dictionary.LookUp("Shared"), "Shared text");
  EXPECT_EQ(dictionary.LookUp("Elsewhere"), "Found in another table");
  EXPECT_TRUE(dictionary.GetProblems().empty());
}

TEST(FacSTDictionary, WithoutAProcedureTheGlobalTableComesFirst) {
  FacSTDictionary dictionary(kSample);
  EXPECT_EQ(dictionary.LookUp("Hello"), "Hello from the global table");
  dictionary.SetProcedure("No such procedure");
  EXPECT_EQ(dictionary.LookUp("Hello"), "Hello from the global table");
}

TEST(FacSTDictionary, GlobalTableCanBeChosenByNameOrDirectory) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetGlobalStringTable("other");
  EXPECT_EQ(dictionary.LookUp("Elsewhere"), "Found in another table");
  dictionary.SetGlobalStringTable(kSample);
  EXPECT_EQ(dictionary.LookUp("Notes"), "Remarks");
}

TEST(FacSTDictionary, MissingKeyIsItsOwnTextAndIsRecorded) {
  FacSTDictionary::ClearMissingKeys();
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  unsigned long missing = 0;
  EXPECT_EQ(dictionary.LookUp("Hello", missing), "Bonjour");
  EXPECT_EQ(missing, 0u);
  EXPECT_EQ(dictionary.LookUp("Not in any table", missing), "Not in any table");
  EXPECT_EQ(missing, 1u);
  EXPECT_EQ(FacSTDictionary::GetMissingKeys().count("Not in any table"), 1u);
  EXPECT_FALSE(dictionary.Contains("Not in any table"));
  EXPECT_EQ(dictionary.LookUp(""), "");
  FacSTDictionary::ClearMissingKeys();
  EXPECT_TRUE(FacSTDictionary::GetMissingKeys().empty());
}

TEST(FacSTDictionary, ReadsEscapesAndKeepsBlanks) {
  FacSTDictionary dictionary(kSample);
  dictionary.SetProcedure("Sample");
  EXPECT_EQ(dictionary.LookUp("Two lines"), "first\nsecond\tindented");
  EXPECT_EQ(dictionary.LookUp("#hash key"), "A key that begins with a hash");
  EXPECT_EQ(dictionary.LookUp("Back\\slash"), "kept \\: as is");
  EXPECT_EQ(dictionary.LookUp("Variance "), "Variance with a blank");
  EXPECT_FALSE(dictionary.Contains("Variance"));
}

TEST(FacSTDictionary, ReadsOnlyStringTableFiles) {
  FacSTDictionary dictionary(kSample);
  EXPECT_FALSE(dictionary.Contains("Ignored"));
  auto directory = FacSTDirectory::Get(kSample);
  EXPECT_NE(directory->GetTable("Sample"), nullptr);
  EXPECT_NE(directory->GetTable("Global"), nullptr);
  // A file without "@table" names its table after itself.
  EXPECT_NE(directory->GetTable("other"), nullptr);
}

TEST(FacSTDictionary, ReportsMalformedLinesWithFileAndLine) {
  FacSTDictionary dictionary(kMalformed);
  dictionary.SetProcedure("Broken");
  std::vector<std::string> problems = dictionary.GetProblems();
  const std::string file = kMalformed + "/broken.strings";
  EXPECT_TRUE(HasProblem(problems, file + ":4: no tab")) << problems.size();
  EXPECT_TRUE(HasProblem(problems, file + ":5: the key is empty"));
  EXPECT_TRUE(HasProblem(problems, file + ":6: the key \"Good\" is defined twice"));
  EXPECT_TRUE(HasProblem(problems, file + ":7: the line is not valid UTF-8"));
  EXPECT_TRUE(HasProblem(problems, file + ":8: a second \"@table\""));
  EXPECT_EQ(problems.size(), 5u);
  // What could be read is there; the first definition wins.
  EXPECT_EQ(dictionary.LookUp("Good"), "A good entry");
  EXPECT_EQ(dictionary.LookUp("After"), "still read");
}

TEST(FacSTDictionary, MissingDirectoryIsAProblemNotACrash) {
  FacSTDictionary dictionary(kSample + "/no-such-folder");
  EXPECT_EQ(dictionary.LookUp("Hello"), "Hello");
  ASSERT_EQ(dictionary.GetProblems().size(), 1u);
  EXPECT_NE(dictionary.GetProblems()[0].find("no such directory"), std::string::npos);
}

TEST(FacSTTable, FirstDefinitionWins) {
  FacSTTable table("T");
  EXPECT_TRUE(table.Add("k", "one"));
  EXPECT_FALSE(table.Add("k", "two"));
  ASSERT_NE(table.Find("k"), nullptr);
  EXPECT_EQ(*table.Find("k"), "one");
  EXPECT_EQ(table.Find("x"), nullptr);
  EXPECT_EQ(FacSTTable::Unescape("a\\tb\\nc\\\\d\\#e\\:f\\"), "a\tb\nc\\d#e\\:f\\");
}

TEST(FacSTTable, UnreadableFileIsReported) {
  std::map<std::string, FacSTTable> tables;
  std::vector<std::string> problems;
  EXPECT_FALSE(FacSTTable::LoadFile(kSample + "/absent.strings", tables, problems));
  ASSERT_EQ(problems.size(), 1u);
  EXPECT_TRUE(tables.empty());
}

TEST(FacSTDictionary, EncodedSurrogatesAndOverlongFormsAreNotUtf8) {
  hostdata_test::ScratchDir scratch("strings_utf8");
  const std::string file = scratch.File("odd.strings");
  hostdata_test::WriteFile(file, "@table Odd\nSurrogate\t\xED\xA0\x80\nOverlong\t\xC0\xAF\nGood\tZ\xC3\xBCrich\n");
  std::map<std::string, FacSTTable> tables;
  std::vector<std::string> problems;
  ASSERT_TRUE(FacSTTable::LoadFile(file, tables, problems));
  EXPECT_TRUE(HasProblem(problems, file + ":2: the line is not valid UTF-8"));
  EXPECT_TRUE(HasProblem(problems, file + ":3: the line is not valid UTF-8"));
  EXPECT_EQ(problems.size(), 2u);
  EXPECT_EQ(tables["Odd"].Size(), 1u);
}
