#include "host/io/CsvReader.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/io/DataDictionary.h"
#include "host/io/DataFileError.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"

namespace {

void Read(const std::string& text, ZORV_Dataset& ds, char delimiter = 0) {
  CsvReader reader;
  reader.SetDelimiter(delimiter);
  reader.ReadText(text, "test.csv", ds);
}

// The error a text gives; fails the test when it reads.
DataFileError ErrorOf(const std::string& text) {
  ZORV_Dataset ds;
  try {
    Read(text, ds);
  } catch (const DataFileError& e) {
    return e;
  }
  ADD_FAILURE() << "no error for: " << text;
  return DataFileError("", 0, 0, "");
}

}  // namespace

TEST(CsvReader, ReadsAHeaderAndRecords) {
  ZORV_Dataset ds;
  Read("name,age,score\nann,31,2.5\nbob,4,10\n", ds);
  ASSERT_EQ(ds.ColumnCount(), 3);
  ASSERT_EQ(ds.GetCaseCount(), 2);
  EXPECT_STREQ(ds.GetVariable(0)->GetName(), "name");
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 3);
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 0);
  EXPECT_EQ(ds.GetString(1, 0), "bob");
  EXPECT_EQ(ds.GetNum(0, 1), 31);
  EXPECT_EQ(ds.GetNum(1, 2), 10);
}

TEST(CsvReader, FollowsTheQuotingRules) {
  ZORV_Dataset ds;
  Read("id,text\n1,\"a, b\"\n2,\"say \"\"hi\"\"\"\n3,\"two\nlines\"\n4,\"\"\n5,plain\n", ds);
  ASSERT_EQ(ds.GetCaseCount(), 5);
  EXPECT_EQ(ds.GetString(0, 1), "a, b");
  EXPECT_EQ(ds.GetString(1, 1), "say \"hi\"");
  EXPECT_EQ(ds.GetString(2, 1), "two\nlines");
  EXPECT_EQ(ds.GetString(3, 1), "");
  EXPECT_EQ(ds.GetString(4, 1), "plain");
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 9);
}

TEST(CsvReader, QuotedNamesAndBlanksAfterAClosingQuote) {
  ZORV_Dataset ds;
  Read("\"first name\" ,\"b\"\r\n\"x\"  ,1\r\n", ds);
  EXPECT_STREQ(ds.GetVariable(0)->GetName(), "first name");
  EXPECT_EQ(ds.GetString(0, 0), "x");
  EXPECT_EQ(ds.GetNum(0, 1), 1);
}

TEST(CsvReader, DetectsTheDelimiterFromTheHeader) {
  CsvReader reader;
  {
    ZORV_Dataset ds;
    reader.ReadText("a;b;c\n1,5;2;x\n", "semi.csv", ds);
    EXPECT_EQ(reader.GetUsedDelimiter(), ';');
    ASSERT_EQ(ds.ColumnCount(), 3);
    EXPECT_EQ(ds.GetString(0, 0), "1,5");
  }
  {
    ZORV_Dataset ds;
    reader.ReadText("a\tb\n1\t2\n", "tab.csv", ds);
    EXPECT_EQ(reader.GetUsedDelimiter(), '\t');
    EXPECT_EQ(ds.GetNum(0, 1), 2);
  }
  {
    ZORV_Dataset ds;
    reader.ReadText("\"a;b\",c\n1,2\n", "quoted.csv", ds);
    EXPECT_EQ(reader.GetUsedDelimiter(), ',');
    EXPECT_STREQ(ds.GetVariable(0)->GetName(), "a;b");
  }
  {
    ZORV_Dataset ds;
    reader.ReadText("only\n3\n", "one.csv", ds);
    EXPECT_EQ(reader.GetUsedDelimiter(), ',');
    EXPECT_EQ(ds.GetNum(0, 0), 3);
  }
}

TEST(CsvReader, AGivenDelimiterWins) {
  ZORV_Dataset ds;
  Read("a,b;c\n1,2;3\n", ds, ';');
  ASSERT_EQ(ds.ColumnCount(), 2);
  EXPECT_STREQ(ds.GetVariable(0)->GetName(), "a,b");
}

TEST(CsvReader, DecimalCommaWithSemicolons) {
  ZORV_Dataset ds;
  CsvReader reader;
  reader.SetDecimalPoint(',');
  reader.ReadText("x;y\n1,25;3\n-0,5;4\n", "comma.csv", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 0);
  EXPECT_EQ(ds.GetNum(0, 0), 1.25);
  EXPECT_EQ(ds.GetNum(1, 0), -0.5);
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 5, 2));
}

TEST(CsvReader, SkipsAByteOrderMarkAndReadsUtf8) {
  ZORV_Dataset ds;
  Read("\xEF\xBB\xBFnom,ville\n1,Z\xC3\xBCrich\n", ds);
  EXPECT_STREQ(ds.GetVariable(0)->GetName(), "nom");
  EXPECT_EQ(ds.GetString(0, 1), "Z\xC3\xBCrich");
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 7);  // bytes, not characters
}

TEST(CsvReader, SkipsEveryLeadingByteOrderMark) {
  ZORV_Dataset ds;
  Read("\xEF\xBB\xBF\xEF\xBB\xBF" "a,b\n1,2\n", ds);
  ASSERT_EQ(ds.ColumnCount(), 2);
  EXPECT_STREQ(ds.GetVariable(0)->GetName(), "a");
  EXPECT_EQ(ds.GetNum(0, 0), 1);
}

TEST(CsvReader, LineEndingsEmptyLinesAndNoFinalBreak) {
  ZORV_Dataset ds;
  Read("a,b\r\n\r\n1,2\r3,4\n\n5,6", ds);
  ASSERT_EQ(ds.GetCaseCount(), 3);
  EXPECT_EQ(ds.GetNum(1, 0), 3);
  EXPECT_EQ(ds.GetNum(2, 1), 6);
}

TEST(CsvReader, EmptyCellsAreMissing) {
  ZORV_Dataset ds;
  Read("n,s\n,x\n  ,\n3,\"\"\n", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 0);
  EXPECT_TRUE(ds.IsSysMissing(0, 0));
  EXPECT_TRUE(ds.IsSysMissing(1, 0));
  EXPECT_EQ(ds.GetNum(2, 0), 3);
  EXPECT_EQ(ds.GetString(1, 1), "");
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 1);
}

TEST(CsvReader, MissingTextsOnlyWhenUnquoted) {
  ZORV_Dataset ds;
  CsvReader reader;
  reader.SetMissingTexts({"NA", "."});
  reader.ReadText("n,s\nNA,NA\n2,\"NA\"\n.,x\n", "na.csv", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 0);
  EXPECT_TRUE(ds.IsSysMissing(0, 0));
  EXPECT_TRUE(ds.IsSysMissing(2, 0));
  EXPECT_EQ(ds.GetString(0, 1), "");
  EXPECT_EQ(ds.GetString(1, 1), "NA");
}

TEST(CsvReader, NumericOnlyWhenEveryValueIsANumber) {
  ZORV_Dataset ds;
  Read("a,b,c,d,e\n1,1,+3,1e3,0x10\n2.5,x,-.5, 7 ,1\n", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 0);
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 1);
  EXPECT_EQ(ds.GetVariable(2)->GetType(), 0);
  EXPECT_EQ(ds.GetNum(0, 2), 3);
  EXPECT_EQ(ds.GetNum(1, 2), -0.5);
  EXPECT_EQ(ds.GetNum(0, 3), 1000);
  EXPECT_EQ(ds.GetNum(1, 3), 7);
  EXPECT_EQ(ds.GetVariable(4)->GetType(), 4);  // hexadecimal is text
  EXPECT_EQ(ds.GetString(0, 1), "1");
}

TEST(CsvReader, NanInfinityAndHugeValuesAreText) {
  ZORV_Dataset ds;
  Read("a,b,c\nnan,inf,1e999\n", ds);
  for (int c = 0; c < 3; ++c) EXPECT_NE(ds.GetVariable(c)->GetType(), 0);
}

TEST(CsvReader, InfersFormatsFromTheData) {
  ZORV_Dataset ds;
  Read("int,dec,neg,wide,tiny,sci,none,s\n"
       "1,1.5,-12.25,123456,0.001,1.5e-3,,abc\n"
       "20,2.125,3,1,0.5,2e2,,abcdef\n",
       ds);
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 2, 0));
  EXPECT_EQ(ds.GetVariable(1)->GetFormat(), ZORV_Format(ZORV_Format::F, 5, 3));
  EXPECT_EQ(ds.GetVariable(2)->GetFormat(), ZORV_Format(ZORV_Format::F, 6, 2));
  EXPECT_EQ(ds.GetVariable(3)->GetFormat(), ZORV_Format(ZORV_Format::F, 6, 0));
  EXPECT_EQ(ds.GetVariable(4)->GetFormat(), ZORV_Format(ZORV_Format::F, 5, 3));
  EXPECT_EQ(ds.GetVariable(5)->GetFormat(), ZORV_Format(ZORV_Format::F, 8, 4));
  EXPECT_EQ(ds.GetVariable(6)->GetFormat(), ZORV_Format(ZORV_Format::F, 8, 2));
  EXPECT_EQ(ds.GetVariable(7)->GetFormat(), ZORV_Format(ZORV_Format::A, 6, 0));
  EXPECT_EQ(ds.GetVariable(1)->GetWriteFormat(), ds.GetVariable(1)->GetFormat());
}

TEST(CsvReader, CapsDecimalsAndWidth) {
  ZORV_Dataset ds;
  Read("many,huge,big\n0.123456789012345,1e50,12345678901234567890123456789012345678.55\n", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 12, 10));
  EXPECT_EQ(ds.GetVariable(1)->GetFormat(), ZORV_Format(ZORV_Format::E, 12, 4));
  EXPECT_EQ(ds.GetVariable(2)->GetFormat(), ZORV_Format(ZORV_Format::F, 40, 1));
}

TEST(CsvReader, DefaultMeasurementLevels) {
  ZORV_Dataset ds;
  Read("s,n,q,mixed\nx,1,\"1\",\"1\"\ny,2,\"2\",2\n", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(ds.GetVariable(1)->GetMeasurementLevel(), ZORV_Variable::SCALE);
  EXPECT_EQ(ds.GetVariable(2)->GetType(), 0);
  EXPECT_EQ(ds.GetVariable(2)->GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(ds.GetVariable(3)->GetMeasurementLevel(), ZORV_Variable::SCALE);
}

TEST(CsvReader, HeaderOnlyGivesColumnsWithoutCases) {
  ZORV_Dataset ds;
  Read("a,b\n", ds);
  EXPECT_EQ(ds.ColumnCount(), 2);
  EXPECT_EQ(ds.GetCaseCount(), 0);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 0);
}

TEST(CsvReader, RefusesAFilledDataset) {
  ZORV_Dataset ds;
  ds.AddVariable("x", 0);
  EXPECT_THROW(Read("a\n1\n", ds), std::logic_error);
}

TEST(CsvReaderErrors, UnbalancedQuoteNamesWhereItOpened) {
  DataFileError e = ErrorOf("a,b\n1,2\n3,\"open\n4,5\n");
  EXPECT_EQ(e.GetFile(), "test.csv");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_EQ(e.GetColumn(), 3);
  EXPECT_NE(std::string(e.what()).find("test.csv, line 3, column 3: the quoted field"), std::string::npos) << e.what();
}

TEST(CsvReaderErrors, RaggedRows) {
  DataFileError e = ErrorOf("a,b,c\n1,2,3\n1,2\n");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_NE(e.GetMessage().find("2 fields, but the header has 3"), std::string::npos) << e.what();
  e = ErrorOf("a,b\n1,2,3\n");
  EXPECT_EQ(e.GetLine(), 2);
  // A quoted line break does not hide the line of the next record.
  e = ErrorOf("a,b\n1,\"x\ny\"\n5\n");
  EXPECT_EQ(e.GetLine(), 4);
}

TEST(CsvReaderErrors, InvalidUtf8AndNul) {
  DataFileError e = ErrorOf("a,b\n1,ok\n2,caf\xE9\n");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_EQ(e.GetColumn(), 6);
  EXPECT_NE(e.GetMessage().find("UTF-8"), std::string::npos);
  e = ErrorOf(std::string("a\n1\0\n", 5));
  EXPECT_EQ(e.GetLine(), 2);
  EXPECT_NE(e.GetMessage().find("NUL"), std::string::npos);
  e = ErrorOf("\xFF\xFE" "a\0,\0");
  EXPECT_NE(e.GetMessage().find("UTF-16"), std::string::npos);
  e = ErrorOf("a\n\xED\xA0\x80\n");  // an encoded surrogate
  EXPECT_EQ(e.GetLine(), 2);
  e = ErrorOf("a\n\xC0\xAF\n");  // an overlong form
  EXPECT_EQ(e.GetLine(), 2);
}

TEST(CsvReaderErrors, DuplicateAndEmptyNames) {
  DataFileError e = ErrorOf("id,x,ID\n1,2,3\n");
  EXPECT_EQ(e.GetLine(), 1);
  EXPECT_EQ(e.GetColumn(), 6);
  EXPECT_NE(e.GetMessage().find("\"ID\" is used by columns 1 and 3"), std::string::npos) << e.what();
  e = ErrorOf("a,,c\n1,2,3\n");
  EXPECT_NE(e.GetMessage().find("column 2 of the header has no name"), std::string::npos) << e.what();
  e = ErrorOf("a,b,\n1,2,\n");
  EXPECT_NE(e.GetMessage().find("column 3"), std::string::npos) << e.what();
}

TEST(CsvReaderErrors, StrayQuotesAndEmptyFiles) {
  DataFileError e = ErrorOf("a,b\n1,ab\"c\n");
  EXPECT_EQ(e.GetLine(), 2);
  EXPECT_EQ(e.GetColumn(), 5);
  e = ErrorOf("a,b\n1,\"ab\"c\n");
  EXPECT_NE(e.GetMessage().find("after the closing quote"), std::string::npos);
  e = ErrorOf("");
  EXPECT_NE(e.GetMessage().find("empty"), std::string::npos);
  e = ErrorOf("\n\r\n");
  EXPECT_NE(e.GetMessage().find("empty"), std::string::npos);
}

TEST(CsvReaderErrors, ACommaCannotBeDelimiterAndDecimalPoint) {
  ZORV_Dataset ds;
  CsvReader reader;
  reader.SetDecimalPoint(',');
  EXPECT_THROW(reader.ReadText("a,b\n1,2\n", "x.csv", ds), DataFileError);
}

TEST(CsvReaderErrors, AMissingFile) {
  ZORV_Dataset ds;
  CsvReader reader;
  try {
    reader.Read("/nonexistent/folder/data.csv", ds);
    ADD_FAILURE();
  } catch (const DataFileError& e) {
    EXPECT_EQ(e.GetFile(), "/nonexistent/folder/data.csv");
    EXPECT_NE(e.GetMessage().find("cannot open"), std::string::npos);
  }
}

// Damaged variants of a valid file either read or fail with a DataFileError
// that names the file; nothing else may happen.
TEST(CsvReaderFuzz, DamagedFilesReadOrFailCleanly) {
  const std::string base =
      "id,name,score,when\n1,\"Smith, J\",2.5,\"a\"\"b\"\n2,Lee,,x\r\n3,\"multi\nline\",1e3,y\n";
  const std::string alphabet = std::string(",;\t\"\n\r 0.e-+a\xC3\xA9\xFF\0", 17);
  std::mt19937 rng(12345);
  int failures = 0;
  int successes = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string text = base;
    int edits = 1 + static_cast<int>(rng() % 4);
    for (int k = 0; k < edits; ++k) {
      std::size_t at = rng() % (text.size() + 1);
      switch (rng() % 3) {
        case 0: text.insert(at, 1, alphabet[rng() % alphabet.size()]); break;
        case 1:
          if (at < text.size()) text.erase(at, 1);
          break;
        default:
          if (at < text.size()) text[at] = alphabet[rng() % alphabet.size()];
          break;
      }
    }
    if (round % 10 == 0) text = text.substr(0, rng() % (text.size() + 1));
    ZORV_Dataset ds;
    try {
      Read(text, ds);
      ++successes;
      for (int c = 0; c < ds.ColumnCount(); ++c) {
        for (long r = 0; r < ds.GetCaseCount(); ++r) {
          if (ds.GetVariable(c)->IsString())
            (void)ds.GetString(r, c);
          else
            (void)ds.GetNum(r, c);
        }
      }
    } catch (const DataFileError& e) {
      ++failures;
      EXPECT_EQ(e.GetFile(), "test.csv");
      EXPECT_FALSE(e.GetMessage().empty());
    }
  }
  EXPECT_GT(failures, 100);
  EXPECT_GT(successes, 100);
}

TEST(CsvReaderExamples, TheBundledExampleDataRead) {
  const char* files[] = {"bodyweight", "cbpp", "dyestuff", "machines", "oats",
                         "orthodont", "pastes", "penicillin", "sleepstudy"};
  for (const char* name : files) {
    ZORV_Dataset ds;
    CsvReader reader;
    std::string path = std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + name + ".csv";
    ASSERT_NO_THROW(reader.Read(path, ds)) << path;
    EXPECT_GT(ds.GetCaseCount(), 10) << path;
  }
  ZORV_Dataset ds;
  CsvReader().Read(std::string(GLMIX_SOURCE_DIR) + "/examples/data/sleepstudy.csv", ds);
  ASSERT_EQ(ds.ColumnCount(), 3);
  EXPECT_EQ(ds.GetCaseCount(), 180);
  EXPECT_EQ(ds.GetVariable(0)->GetFormat(), ZORV_Format(ZORV_Format::F, 8, 4));
  EXPECT_EQ(ds.GetVariable(1)->GetMeasurementLevel(), ZORV_Variable::SCALE);
  EXPECT_EQ(ds.GetVariable(2)->GetType(), 0);
  EXPECT_EQ(ds.GetVariable(2)->GetMeasurementLevel(), ZORV_Variable::NOMINAL);
  EXPECT_EQ(ds.GetNum(0, 0), 249.56);
}

namespace {

// A file of many records, to see the reader's progress.
std::string ManyRecords(long records) {
  std::string text = "x,y\n";
  for (long i = 0; i < records; ++i) text += std::to_string(i) + "," + std::to_string(i % 7) + "\n";
  return text;
}

class Fractions : public ZORV_Progress::Observer {
 public:
  void Update(const ZORV_Progress::State& state) override {
    if (state.fFraction >= 0.0) fvFractions.push_back(state.fFraction);
  }
  void Finish() override {}
  std::vector<double> fvFractions;
};

}  // namespace

TEST(CsvReader, TellsHowFarItHasReadOverItsTwoPasses) {
  Fractions fractions;
  ZORV_Progress::SetObserver(&fractions);
  ZORV_Dataset data;
  CsvReader().ReadText(ManyRecords(40000), "many.csv", data);
  ZORV_Progress::SetObserver(nullptr);
  EXPECT_EQ(data.GetCaseCount(), 40000);
  // Every 8192 records of each pass: 5 in the first and 5 in the second.
  ASSERT_EQ(fractions.fvFractions.size(), 10u);
  for (std::size_t i = 1; i < fractions.fvFractions.size(); ++i)
    EXPECT_GT(fractions.fvFractions[i], fractions.fvFractions[i - 1]);
  EXPECT_LT(fractions.fvFractions.front(), 0.01);
  EXPECT_GT(fractions.fvFractions.back(), 0.9);
  EXPECT_LT(fractions.fvFractions.back(), 1.0);
}

TEST(CsvReader, StopsWhenTheUserAsksTo) {
  ZORV_StopFlag::Raise();
  ZORV_Dataset data;
  try {
    CsvReader().ReadText(ManyRecords(10), "many.csv", data);
    ADD_FAILURE() << "the file was read";
  } catch (const DataFileError& e) {
    EXPECT_NE(std::string(e.what()).find("many.csv"), std::string::npos);
    EXPECT_NE(std::string(e.what()).find("reading was interrupted"), std::string::npos);
  }
  ZORV_StopFlag::Clear();
}
