#include <gtest/gtest.h>
#include <readstat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/io/DataFileError.h"
#include "host/io/DataFileLoader.h"
#include "host/io/StatFileReader.h"
#include "host/io/StatFileWriter.h"

namespace fs = std::filesystem;

namespace {

// A folder of its own for the files one test writes.
class StatFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fDir = fs::temp_directory_path() /
           ("glmix_statfile_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(fDir);
    fs::create_directories(fDir);
  }
  void TearDown() override { fs::remove_all(fDir); }
  std::string Path(const std::string& name) const { return (fDir / name).string(); }

  // Three variables: a labelled code with a missing value, a measurement
  // with decimals, and a name.
  static void MakeSample(ZORV_Dataset& ds) {
    ds.AddVariable("treat", 0);
    ds.AddVariable("weight", 0);
    ds.AddVariable("name", 6);
    ds.AppendCases(3);
    double treat[] = {1, 2, 1};
    double weight[] = {61.25, ZORV_Dataset::SysMiss(), 70.5};
    const char* names[] = {"Ann", "Bo", "Cecile"};
    for (long r = 0; r < 3; ++r) {
      ds.SetNum(r, 0, treat[r]);
      ds.SetNum(r, 1, weight[r]);
      ds.SetString(r, 2, names[r]);
    }
    ZORV_Variable& t = *ds.GetVariable(0);
    t.SetLabel("Treatment group");
    t.SetFormat(ZORV_Format(ZORV_Format::F, 1, 0));
    t.ValueLabels().Add(1.0, "placebo");
    t.ValueLabels().Add(2.0, "drug");
    ds.GetVariable(1)->SetFormat(ZORV_Format(ZORV_Format::F, 8, 2));
    ds.GetVariable(2)->SetLabel("Given name");
  }

  fs::path fDir;
};

}  // namespace

TEST(StatFileReaderKind, ComesFromTheExtension) {
  StatFileReader::Kind kind = StatFileReader::SAS7BDAT;
  EXPECT_TRUE(StatFileReader::KindFromPath("a/b.DTA", kind));
  EXPECT_EQ(kind, StatFileReader::DTA);
  EXPECT_TRUE(StatFileReader::KindFromPath("x.sas7bdat", kind));
  EXPECT_EQ(kind, StatFileReader::SAS7BDAT);
  EXPECT_FALSE(StatFileReader::KindFromPath("x.csv", kind));
  EXPECT_FALSE(StatFileReader::KindFromPath("dir.dta/file", kind));
}

TEST_F(StatFileTest, StataFilesKeepLabelsFormatsAndMissingValues) {
  ZORV_Dataset out;
  MakeSample(out);
  StatFileWriter().Write(out, Path("sample.dta"), StatFileWriter::DTA);

  ZORV_Dataset ds;
  StatFileReader().Read(Path("sample.dta"), ds);
  ASSERT_EQ(ds.ColumnCount(), 3);
  ASSERT_EQ(ds.GetCaseCount(), 3);
  const ZORV_Variable& treat = *ds.GetVariable(0);
  EXPECT_STREQ(treat.GetName(), "treat");
  EXPECT_STREQ(treat.GetLabel(), "Treatment group");
  EXPECT_STREQ(treat.GetValueLabels().GetLabel(2.0), "drug");
  EXPECT_EQ(treat.GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(treat.GetFormat(), ZORV_Format(ZORV_Format::F, 1, 0));
  const ZORV_Variable& weight = *ds.GetVariable(1);
  EXPECT_EQ(weight.GetLabel(), nullptr);
  EXPECT_EQ(weight.GetFormat(), ZORV_Format(ZORV_Format::F, 8, 2));
  EXPECT_EQ(weight.GetMeasurementLevel(), ZORV_Variable::SCALE);
  EXPECT_EQ(ds.GetNum(0, 1), 61.25);
  EXPECT_TRUE(ds.IsSysMissing(1, 1));
  const ZORV_Variable& name = *ds.GetVariable(2);
  EXPECT_EQ(name.GetType(), 6);
  EXPECT_EQ(name.GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(ds.GetString(2, 2), "Cecile");
  EXPECT_EQ(ds.GetString(1, 2), "Bo");
}

TEST_F(StatFileTest, SasFilesKeepNamesLabelsFormatsAndValues) {
  ZORV_Dataset out;
  MakeSample(out);
  out.GetVariable(1)->SetFormat(ZORV_Format(ZORV_Format::COMMA, 10, 1));
  StatFileWriter().Write(out, Path("sample.sas7bdat"), StatFileWriter::SAS7BDAT);

  ZORV_Dataset ds;
  StatFileReader().Read(Path("sample.sas7bdat"), ds);
  ASSERT_EQ(ds.ColumnCount(), 3);
  ASSERT_EQ(ds.GetCaseCount(), 3);
  EXPECT_STREQ(ds.GetVariable(0)->GetLabel(), "Treatment group");
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 1, 0));
  EXPECT_EQ(ds.GetVariable(1)->GetFormat(), ZORV_Format(ZORV_Format::COMMA, 10, 1));
  EXPECT_EQ(ds.GetNum(2, 1), 70.5);
  EXPECT_TRUE(ds.IsSysMissing(1, 1));
  EXPECT_EQ(ds.GetString(0, 2), "Ann");
  EXPECT_EQ(ds.GetVariable(2)->GetType(), 6);
}

// Written straight through the library, as another program would write it:
// a general format, a 4-byte float, a lettered missing value, 1-byte codes.
TEST_F(StatFileTest, GeneralFormatsFloatsAndLetteredMissingValues) {
  std::FILE* file = std::fopen(Path("raw.dta").c_str(), "wb");
  ASSERT_NE(file, nullptr);
  readstat_writer_t* writer = readstat_writer_init();
  readstat_set_data_writer(writer, [](const void* data, size_t length, void* ctx) -> ssize_t {
    return static_cast<ssize_t>(std::fwrite(data, 1, length, static_cast<std::FILE*>(ctx)));
  });
  readstat_label_set_t* labels = readstat_add_label_set(writer, READSTAT_TYPE_INT8, "yesno");
  readstat_label_int32_value(labels, 0, "no");
  readstat_label_int32_value(labels, 1, "yes");
  readstat_variable_t* g = readstat_add_variable(writer, "g", READSTAT_TYPE_DOUBLE, 0);
  readstat_variable_set_format(g, "%9.0g");
  readstat_variable_t* f = readstat_add_variable(writer, "f", READSTAT_TYPE_FLOAT, 0);
  readstat_variable_t* b = readstat_add_variable(writer, "b", READSTAT_TYPE_INT8, 0);
  readstat_variable_set_label_set(b, labels);
  readstat_variable_set_format(b, "%8.0g");
  ASSERT_EQ(readstat_begin_writing_dta(writer, file, 2), READSTAT_OK);
  readstat_begin_row(writer);
  readstat_insert_double_value(writer, g, 12.375);
  readstat_insert_float_value(writer, f, 0.1f);
  readstat_insert_int8_value(writer, b, 1);
  readstat_end_row(writer);
  readstat_begin_row(writer);
  readstat_insert_double_value(writer, g, -3);
  readstat_insert_tagged_missing_value(writer, f, 'a');
  readstat_insert_int8_value(writer, b, 0);
  readstat_end_row(writer);
  ASSERT_EQ(readstat_end_writing(writer), READSTAT_OK);
  readstat_writer_free(writer);
  std::fclose(file);

  ZORV_Dataset ds;
  StatFileReader().Read(Path("raw.dta"), ds);
  ASSERT_EQ(ds.ColumnCount(), 3);
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 7, 3));
  EXPECT_EQ(ds.GetNum(1, 0), -3);
  EXPECT_EQ(ds.GetNum(0, 1), 0.1);
  EXPECT_TRUE(ds.IsSysMissing(1, 1));
  EXPECT_EQ(ds.GetVariable(1)->GetFormat(), ZORV_Format(ZORV_Format::F, 3, 1));
  EXPECT_EQ(ds.GetNum(0, 2), 1);
  EXPECT_STREQ(ds.GetVariable(2)->GetValueLabels().GetLabel(0.0), "no");
  EXPECT_EQ(ds.GetVariable(2)->GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(ds.GetVariable(2)->GetFormat(), ZORV_Format(ZORV_Format::F, 1, 0));
}

TEST_F(StatFileTest, ExponentFormatsCarryOver) {
  ZORV_Dataset out;
  out.AddVariable("x", 0);
  out.AppendCases(1);
  out.SetNum(0, 0, 12.375);
  out.GetVariable(0)->SetFormat(ZORV_Format(ZORV_Format::E, 10, 3));
  StatFileWriter().Write(out, Path("e.dta"), StatFileWriter::DTA);
  ZORV_Dataset de;
  StatFileReader().Read(Path("e.dta"), de);
  EXPECT_EQ(de.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::E, 10, 3));
}

TEST_F(StatFileTest, TheDictionaryAddsToATypedFileButCannotRetypeIt) {
  ZORV_Dataset out;
  MakeSample(out);
  StatFileWriter().Write(out, Path("s.dta"), StatFileWriter::DTA);
  {
    std::ofstream d(Path("s.dictionary.json"));
    d << R"({"variables": {"weight": {"label": "Body weight", "missing": {"values": [70.5]}}}})";
  }
  ZORV_Dataset ds;
  DataFileLoader::Load(Path("s.dta"), ds);
  EXPECT_STREQ(ds.GetVariable(1)->GetLabel(), "Body weight");
  EXPECT_TRUE(ds.IsUserMissing(2, 1));
  {
    std::ofstream d(Path("s.dictionary.json"));
    d << R"({"variables": {"name": {"type": "numeric"}}})";
  }
  ZORV_Dataset again;
  try {
    DataFileLoader::Load(Path("s.dta"), again);
    ADD_FAILURE();
  } catch (const DataFileError& e) {
    EXPECT_NE(e.GetMessage().find("variable \"name\""), std::string::npos) << e.what();
    EXPECT_NE(e.GetMessage().find("cannot be changed"), std::string::npos) << e.what();
  }
}

TEST_F(StatFileTest, DamagedFilesGiveErrors) {
  ZORV_Dataset out;
  MakeSample(out);
  StatFileWriter().Write(out, Path("good.dta"), StatFileWriter::DTA);
  std::string bytes;
  {
    std::ifstream in(Path("good.dta"), std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  ASSERT_GT(bytes.size(), 100u);
  // Cut files: the early cuts lose the header and must fail; a late cut may
  // lose only the closing tag. Either way nothing but a DataFileError comes.
  int failed = 0;
  for (std::size_t cut : {std::size_t{0}, std::size_t{10}, bytes.size() / 3, bytes.size() / 2, bytes.size() - 5}) {
    {
      std::ofstream o(Path("cut.dta"), std::ios::binary);
      o.write(bytes.data(), static_cast<std::streamsize>(cut));
    }
    ZORV_Dataset ds;
    try {
      StatFileReader().Read(Path("cut.dta"), ds);
    } catch (const DataFileError& e) {
      EXPECT_NE(e.GetFile().find("cut.dta"), std::string::npos);
      ++failed;
    }
  }
  EXPECT_GE(failed, 4);
  {
    std::ofstream o(Path("text.sas7bdat"), std::ios::binary);
    o << "this is not a data file at all, just some text\n";
  }
  ZORV_Dataset ds;
  try {
    StatFileReader().Read(Path("text.sas7bdat"), ds);
    ADD_FAILURE();
  } catch (const DataFileError& e) {
    EXPECT_NE(e.GetFile().find("text.sas7bdat"), std::string::npos);
    EXPECT_EQ(e.GetMessage(), "the file ends too early: it is cut short or is not a .sas7bdat file") << e.what();
  }
  ZORV_Dataset none;
  EXPECT_THROW(StatFileReader().Read(Path("absent.dta"), none), DataFileError);
}

TEST_F(StatFileTest, AnInterruptStopsTheReading) {
  ZORV_Dataset out;
  MakeSample(out);
  StatFileWriter().Write(out, Path("s.dta"), StatFileWriter::DTA);
  ZORV_StopFlag::Raise();
  ZORV_Dataset in;
  try {
    StatFileReader().Read(Path("s.dta"), in);
    ADD_FAILURE() << "the file was read";
  } catch (const DataFileError& e) {
    EXPECT_EQ(e.GetMessage(), "reading was interrupted");
  }
  ZORV_StopFlag::Clear();
  ZORV_Dataset again;
  StatFileReader().Read(Path("s.dta"), again);
  EXPECT_EQ(again.GetCaseCount(), 3);
}

TEST_F(StatFileTest, AnEmptyOrCutShortFileSaysSo) {
  for (const char* name : {"empty.sas7bdat", "empty.dta"}) {
    std::ofstream(Path(name), std::ios::binary).flush();
    ZORV_Dataset none;
    try {
      StatFileReader().Read(Path(name), none);
      ADD_FAILURE() << name;
    } catch (const DataFileError& e) {
      EXPECT_EQ(e.GetMessage(), "the file is empty") << name;
    }
  }
  std::ofstream(Path("short.sas7bdat"), std::ios::binary) << "abc";
  ZORV_Dataset none;
  try {
    StatFileReader().Read(Path("short.sas7bdat"), none);
    ADD_FAILURE();
  } catch (const DataFileError& e) {
    EXPECT_EQ(e.GetMessage(), "the file ends too early: it is cut short or is not a .sas7bdat file");
  }
}

TEST_F(StatFileTest, WritingNeedsAWritablePlace) {
  ZORV_Dataset out;
  MakeSample(out);
  EXPECT_THROW(StatFileWriter().Write(out, Path("no/such/folder/x.dta"), StatFileWriter::DTA), DataFileError);
}

// Files with random bytes changed read, or fail with a DataFileError.
TEST_F(StatFileTest, FilesWithDamagedBytesReadOrFailCleanly) {
  ZORV_Dataset out;
  out.AddVariable("a", 0);
  out.AddVariable("s", 5);
  out.AppendCases(20);
  for (long r = 0; r < 20; ++r) {
    out.SetNum(r, 0, static_cast<double>(r) * 1.5);
    out.SetString(r, 1, "xy");
  }
  out.GetVariable(0)->ValueLabels().Add(1.0, "one");
  for (StatFileWriter::Kind kind : {StatFileWriter::DTA, StatFileWriter::SAS7BDAT}) {
    std::string ext = kind == StatFileWriter::DTA ? ".dta" : ".sas7bdat";
    StatFileWriter().Write(out, Path("fz" + ext), kind);
    std::string bytes;
    {
      std::ifstream in(Path("fz" + ext), std::ios::binary);
      bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    std::mt19937 rng(7);
    int failed = 0;
    for (int round = 0; round < 150; ++round) {
      std::string damaged = bytes;
      int edits = 1 + static_cast<int>(rng() % 8);
      for (int k = 0; k < edits; ++k) damaged[rng() % damaged.size()] = static_cast<char>(rng());
      {
        std::ofstream o(Path("damaged" + ext), std::ios::binary);
        o << damaged;
      }
      ZORV_Dataset ds;
      try {
        StatFileReader().Read(Path("damaged" + ext), ds);
        for (int c = 0; c < ds.ColumnCount(); ++c)
          for (long r = 0; r < ds.GetCaseCount(); ++r) (void)ds.GetCell(r, c);
      } catch (const DataFileError& e) {
        EXPECT_FALSE(e.GetMessage().empty());
        ++failed;
      }
    }
    EXPECT_GT(failed, 3) << ext;
  }
}
