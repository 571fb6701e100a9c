// A dataset written as CSV with its dictionary reads back to the same
// dictionary and the same values.
#include "host/io/CsvWriter.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/data/ZORV_Dataset.h"
#include "host/files/ScratchFolder.h"
#include "host/io/DataDictionary.h"
#include "host/io/DataFileLoader.h"

namespace fs = std::filesystem;

namespace {

class CsvWriterTest : public ::testing::Test {
 protected:

  // Writes the data and its dictionary and loads them back.
  void RoundTrip(const ZORV_Dataset& data, ZORV_Dataset& back) {
    const fs::path csv = fDir / "data.csv";
    {
      std::ofstream out(csv, std::ios::binary);
      ASSERT_TRUE(CsvWriter::Write(data, out));
    }
    std::ofstream(fDir / "data.dictionary.json", std::ios::binary) << DataDictionary::Describe(data);
    DataFileLoader::Load(csv.string(), back);
  }

  static void ExpectSameValues(const ZORV_Dataset& a, const ZORV_Dataset& b) {
    ASSERT_EQ(a.ColumnCount(), b.ColumnCount());
    ASSERT_EQ(a.GetCaseCount(), b.GetCaseCount());
    for (int c = 0; c < a.ColumnCount(); ++c) {
      EXPECT_STREQ(a.GetVariable(c)->GetName(), b.GetVariable(c)->GetName());
      ASSERT_EQ(a.GetVariable(c)->GetType(), b.GetVariable(c)->GetType()) << c;
      for (long row = 0; row < a.GetCaseCount(); ++row) {
        EXPECT_EQ(std::memcmp(a.GetCell(row, c), b.GetCell(row, c), sizeof(OBS) * a.GetColumnWords(c)), 0)
            << a.GetVariable(c)->GetName() << " " << row;
      }
    }
  }

  ScratchFolder fScratch{"glmixfit-csvwriter"};
  const fs::path& fDir = fScratch.Path();
};

}  // namespace

TEST_F(CsvWriterTest, NumbersReadBackToTheSameDouble) {
  ZORV_Dataset data;
  data.AddVariable("x", 0);
  const double values[] = {0.1, 1.0 / 3.0, 1e-300, -1e300, 123456789012345678.0, -0.5, 0.0, ZORV_Dataset::SysMiss(),
                           4.9e-324, DBL_MAX / 2};
  data.AppendCases(10);
  for (long row = 0; row < 10; ++row) data.SetNum(row, 0, values[row]);
  ZORV_Dataset back;
  RoundTrip(data, back);
  ExpectSameValues(data, back);
}

TEST_F(CsvWriterTest, TextsKeepTheirQuotesDelimitersLineBreaksAndLeadingBlanks) {
  ZORV_Dataset data;
  data.AddVariable("text", 24);
  data.AddVariable("code", 3);
  const char* texts[] = {"plain", "with, comma", "say \"hi\"", "two\nlines", "  leading", "", "caf\xC3\xA9;tab\t"};
  const char* codes[] = {"007", "1", "", "NA", "x", "0", "1e3"};
  data.AppendCases(7);
  for (long row = 0; row < 7; ++row) {
    data.SetString(row, 0, texts[row]);
    data.SetString(row, 1, codes[row]);
  }
  ZORV_Dataset back;
  RoundTrip(data, back);
  ExpectSameValues(data, back);
  EXPECT_EQ(back.GetString(0, 1), "007");
}

TEST_F(CsvWriterTest, AFileOfOneColumnKeepsItsEmptyCases) {
  ZORV_Dataset data;
  data.AddVariable("x", 0);
  data.AppendCases(3);
  data.SetNum(0, 0, 1.0);
  std::ostringstream out;
  ASSERT_TRUE(CsvWriter::Write(data, out));
  EXPECT_EQ(out.str(), "x\n1\n\"\"\n\"\"\n");
  ZORV_Dataset back;
  RoundTrip(data, back);
  ExpectSameValues(data, back);
}

TEST_F(CsvWriterTest, NamesThatNeedQuotesGetThem) {
  ZORV_Dataset data;
  data.AddVariable("a b", 0);
  data.AddVariable("c,d", 0);
  data.AddVariable("plain", 0);
  std::ostringstream out;
  ASSERT_TRUE(CsvWriter::Write(data, out));
  EXPECT_EQ(out.str(), "\"a b\",\"c,d\",plain\n");
}

TEST_F(CsvWriterTest, TheWriterStopsWhenAskedTo) {
  ZORV_Dataset data;
  data.AddVariable("x", 0);
  data.AppendCases(200000);
  std::ostringstream out;
  std::vector<long> asked;
  EXPECT_FALSE(CsvWriter::Write(data, out, [&asked](long written) {
    asked.push_back(written);
    return written < 65536;
  }));
  EXPECT_EQ(asked, (std::vector<long>{0, 65536}));
}

TEST(DataDictionaryDescribe, SaysEverythingTheReaderTakesBack) {
  ZORV_Dataset data;
  data.AddVariable("n", 0);
  data.AddVariable("s", 5);
  ZORV_Variable& n = *data.GetVariable(0);
  n.SetLabel("A number");
  n.SetMeasurementLevel(ZORV_Variable::ORDINAL);
  n.SetFormat(ZORV_Format(ZORV_Format::F, 6, 2));
  n.SetWriteFormat(ZORV_Format(ZORV_Format::E, 10, 3));
  n.ValueLabels().Add(1.0, "one");
  n.ValueLabels().Add(-0.25, "minus a quarter");
  n.AddMissingValue(-9);
  n.SetMissingRange(-HUGE_VAL, -100);
  ZORV_Variable& s = *data.GetVariable(1);
  s.ValueLabels().Add("a", "Alpha");
  s.AddMissingString("none");
  EXPECT_EQ(DataDictionary::Describe(data),
            "{\n"
            "  \"csv\": {\n    \"delimiter\": \",\",\n    \"decimal\": \".\"\n  },\n"
            "  \"variables\": {\n"
            "    \"n\": {\n"
            "      \"type\": \"numeric\",\n      \"label\": \"A number\",\n      \"level\": \"ordinal\",\n"
            "      \"format\": \"F6.2\",\n      \"write_format\": \"E10.3\",\n"
            "      \"value_labels\": {\n        \"-0.25\": \"minus a quarter\",\n        \"1\": \"one\"\n      },\n"
            "      \"missing\": {\n        \"values\": [\n          -9.0\n        ],\n"
            "        \"range\": [\n          \"lowest\",\n          -100.0\n        ]\n      }\n"
            "    },\n"
            "    \"s\": {\n"
            "      \"type\": \"string\",\n      \"width\": 5,\n      \"level\": \"nominal\",\n"
            "      \"format\": \"A5\",\n      \"write_format\": \"A5\",\n"
            "      \"value_labels\": {\n        \"a\": \"Alpha\"\n      },\n"
            "      \"missing\": {\n        \"values\": [\n          \"none\"\n        ]\n      }\n"
            "    }\n"
            "  }\n"
            "}\n");
  DataDictionary read;
  read.LoadText(DataDictionary::Describe(data), "d.json");
  EXPECT_EQ(read.GetEntries().size(), 2u);
  EXPECT_EQ(read.GetCsvDelimiter(), ',');
}
