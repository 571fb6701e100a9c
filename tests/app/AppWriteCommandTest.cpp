#include "app/AppWriteCommand.h"

#include <gtest/gtest.h>

#include <cstring>

#include "AppDataFixture.h"
#include "AppPeopleData.h"
#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppDataContext.h"
#include "app/AppLexer.h"

using namespace peopledata;
namespace fs = std::filesystem;

namespace {

class AppWriteCommandTest : public AppDataFixture {
 protected:
  void SetUp() override {
    AppDataFixture::SetUp();
    Write("people.csv", kCsv);
    Write("people.dictionary.json", kDictionary);
  }

  // Files of the folder whose names mark them as temporary.
  int TemporaryFiles() const {
    int count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(fDir)) {
      if (entry.path().filename().string().find(".tmp-") != std::string::npos) ++count;
    }
    return count;
  }

  // Everything LOAD reads back: the dictionary and every value.
  static void ExpectSameData(const ZORV_Dataset& a, const ZORV_Dataset& b) {
    ASSERT_EQ(a.ColumnCount(), b.ColumnCount());
    ASSERT_EQ(a.GetCaseCount(), b.GetCaseCount());
    for (int c = 0; c < a.ColumnCount(); ++c) {
      const ZORV_Variable& x = *a.GetVariable(c);
      const ZORV_Variable& y = *b.GetVariable(c);
      SCOPED_TRACE(x.GetName());
      EXPECT_STREQ(x.GetName(), y.GetName());
      EXPECT_EQ(x.GetType(), y.GetType());
      EXPECT_EQ(x.GetLabel() ? std::string(x.GetLabel()) : "", y.GetLabel() ? std::string(y.GetLabel()) : "");
      EXPECT_EQ(x.GetMeasurementLevel(), y.GetMeasurementLevel());
      EXPECT_EQ(x.GetFormat(), y.GetFormat());
      EXPECT_EQ(x.GetWriteFormat(), y.GetWriteFormat());
      EXPECT_EQ(x.GetValueLabels().NumericLabels(), y.GetValueLabels().NumericLabels());
      EXPECT_EQ(x.GetValueLabels().StringLabels(), y.GetValueLabels().StringLabels());
      EXPECT_EQ(x.GetMissingValues(), y.GetMissingValues());
      EXPECT_EQ(x.GetMissingStrings(), y.GetMissingStrings());
      EXPECT_EQ(x.HasMissingRange(), y.HasMissingRange());
      EXPECT_EQ(x.GetMissingRangeLow(), y.GetMissingRangeLow());
      EXPECT_EQ(x.GetMissingRangeHigh(), y.GetMissingRangeHigh());
      for (long row = 0; row < a.GetCaseCount(); ++row) {
        if (x.IsString()) {
          EXPECT_EQ(a.GetString(row, c, false), b.GetString(row, c, false)) << row;
        } else {
          EXPECT_EQ(std::memcmp(a.GetCell(row, c), b.GetCell(row, c), sizeof(OBS)), 0) << row;
        }
      }
    }
  }
};

}  // namespace

TEST_F(AppWriteCommandTest, WhatIsWrittenLoadsBackAsItWas) {
  Run(std::string(kLoad) +
      "COMPUTE third = id / 3.\n"
      "COMPUTE tiny = id * 1E-300.\n"
      "COMPUTE quote = CONCAT(' lead \"quoted\", ', sex, ';').\n"
      "COMPUTE code = CONCAT('00', STRING(id)).\n"
      "COMPUTE word = IF(id = 2, 'caf\xC3\xA9', '').\n"
      "LABEL third 'A third of the id'.\n"
      "VALUES grp 1 'one' 2.5 'two and a half' / quote ' lead \"quoted\", m;' 'male'.\n"
      "MISSING age LOWEST THRU 0 99 / code '003'.\n"
      "LEVEL third ORDINAL.\nFORMAT tiny E10.3.\n"
      "WRITE 'copy.csv'.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  EXPECT_EQ(Command(11).fText, "Write Data");
  EXPECT_EQ(Said(11), "5 cases and 11 variables written to " + (fDir / "copy.csv").string() +
                          ", their dictionary to " + (fDir / "copy.dictionary.json").string() + ".");
  std::unique_ptr<AppSession> written = std::move(fpSession);
  Run("LOAD 'copy.csv'.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  ExpectSameData(*written->GetData(), Data());
  EXPECT_EQ(Text(0, "code"), "001");
  EXPECT_EQ(TemporaryFiles(), 0);
}

TEST_F(AppWriteCommandTest, WithoutANameTheFilesGoToTheOutputFolderNumbered) {
  Run(std::string(kLoad) + "WRITE.\nCOMPUTE z = 1.\nWRITE.");
  ASSERT_EQ(fpSession->ExitStatus(), 0);
  const fs::path out(fOptions.fOutputDir);
  EXPECT_TRUE(fs::is_regular_file(out / "data-1.csv"));
  EXPECT_TRUE(fs::is_regular_file(out / "data-1.dictionary.json"));
  EXPECT_TRUE(fs::is_regular_file(out / "data-2.csv"));
  EXPECT_EQ(Read("out/data-1.csv").substr(0, 24), "id,age,sex,score,grp,w\n1");
  EXPECT_EQ(Read("out/data-2.csv").substr(0, 25), "id,age,sex,score,grp,w,z\n");
}

TEST_F(AppWriteCommandTest, AFileIsReplacedWhole) {
  Write("copy.csv", std::string(100000, 'x'));
  Run(std::string(kLoad) + "WRITE 'copy.csv' DICTIONARY='meta/copy.json'.");
  EXPECT_EQ(Error(1), "t.gmx:2:29: the dictionary cannot be written: cannot write '" + (fDir / "meta/copy.json").string() +
                          "': No such file or directory.");
  EXPECT_EQ(Read("copy.csv"), std::string(100000, 'x'));
  fs::create_directories(fDir / "meta");
  Run(std::string(kLoad) + "WRITE 'copy.csv' DICTIONARY='meta/copy.json'.");
  EXPECT_TRUE(Messages(1).empty());
  // Numbers as they read back exactly, texts quoted, missing values empty.
  EXPECT_EQ(Read("copy.csv"),
            "id,age,sex,score,grp,w\n"
            "1,23,\"m\",5.5,1,1\n"
            "2,35,\"f\",,2,2\n"
            "3,47,\"f\",7.25,1,1\n"
            "4,,\"m\",3,2,0\n"
            "5,61,\"f\",9,9,1\n");
  Run("LOAD 'copy.csv' DICTIONARY='meta/copy.json'.");
  EXPECT_STREQ(Data().GetVariable(Column("sex"))->GetLabel(), "Sex");
  EXPECT_EQ(TemporaryFiles(), 0);
}

TEST_F(AppWriteCommandTest, NeverOverAFileTheRunReads) {
  fs::create_directories(fDir / "folder");
  const std::string commands = std::string(kLoad) +
                               "WRITE 'people.csv'.\n"
                               "WRITE 'x.csv' DICTIONARY='people.dictionary.json'.\n"
                               "WRITE './run.gmx'.\n"
                               "WRITE 'x.dta'.\n"
                               "WRITE 'folder'.\n"
                               "WRITE 'x.csv' DICTIONARY='x.csv'.\n"
                               "WRITE 'x.csv' 'y.csv'.\n"
                               "WRITE ''.";
  const std::string path = Write("run.gmx", commands);
  fpSession.reset(new AppSession(fOptions));
  ASSERT_TRUE(fpSession->RunFile(path));
  const std::string at = path + ":";
  EXPECT_EQ(Error(1), at + "2:7: expected a file that this run does not read, found " + (fDir / "people.csv").string() +
                          ", which is the command file or a loaded file.");
  EXPECT_EQ(Error(2), at + "3:26: expected a file that this run does not read, found " +
                          (fDir / "people.dictionary.json").string() + ", which is the command file or a loaded file.");
  EXPECT_EQ(Error(3), at + "4:7: expected a file that this run does not read, found " + (fDir / "run.gmx").string() +
                          ", which is the command file or a loaded file.");
  EXPECT_EQ(Error(4), at + "5:7: expected the name of a CSV file, found " + (fDir / "x.dta").string() +
                          " (WRITE writes CSV files).");
  EXPECT_EQ(Error(5), at + "6:7: expected a file to write, found " + (fDir / "folder").string() + ", which is a folder.");
  EXPECT_EQ(Error(6), at + "7:26: expected a dictionary file apart from the data file, found " +
                          (fDir / "x.csv").string() + ".");
  EXPECT_EQ(Error(7), at + "8:15: expected DICTIONARY= or the end of the command, found the text 'y.csv'.");
  EXPECT_EQ(Error(8), at + "9:7: expected the data file's name in quotes, found the text ''.");
  EXPECT_EQ(Read("people.csv"), kCsv);
  EXPECT_EQ(Read("run.gmx"), commands);
  EXPECT_FALSE(fs::exists(fDir / "x.csv"));
  EXPECT_FALSE(fs::exists(fDir / "x.dictionary.json"));
  EXPECT_EQ(TemporaryFiles(), 0);
}

TEST_F(AppWriteCommandTest, WithoutDataThereIsNothingToWrite) {
  Run("WRITE 'x.csv'.");
  EXPECT_EQ(Error(0), "t.gmx:1:1: expected data to work on, found none: LOAD a data file before WRITE.");
}

TEST_F(AppWriteCommandTest, AnInterruptedWriteLeavesTheOldFileAndNoTemporaryOne) {
  Write("copy.csv", "old");
  ZORV_Dataset data;
  data.AddVariable("x", 0);
  data.AppendCases(3);
  AppDataContext context;
  context.fpData = &data;
  context.fBaseDir = fDir.string();
  std::vector<AppCommandText> commands = AppLexer::Split("WRITE 'copy.csv'.");
  AppCommandReader reader(commands[0], "t.gmx");
  ZORV_StopFlag::Raise();
  try {
    AppWriteCommand::Run(reader, context);
    ADD_FAILURE() << "the command ran";
  } catch (const AppCommandError& e) {
    EXPECT_EQ(std::string(e.what()), "t.gmx:1:1: the command was interrupted before it changed anything.");
  }
  ZORV_StopFlag::Clear();
  EXPECT_EQ(Read("copy.csv"), "old");
  EXPECT_EQ(TemporaryFiles(), 0);
}
