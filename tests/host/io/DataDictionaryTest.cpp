#include "host/io/DataDictionary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/io/CsvReader.h"
#include "host/io/DataFileError.h"
#include "host/io/DataFileLoader.h"

namespace {

const std::string kData = std::string(GLMIX_TEST_DATA_DIR) + "/io/";

// Reads CSV text with a dictionary text; returns the error, or fails.
DataFileError ErrorOf(const std::string& dictionaryText, const std::string& csv = "a,b\n1,x\n") {
  try {
    DataDictionary dictionary;
    dictionary.LoadText(dictionaryText, "d.json");
    ZORV_Dataset ds;
    CsvReader reader;
    reader.SetDictionary(&dictionary);
    reader.ReadText(csv, "d.csv", ds);
    dictionary.Apply(ds, false, "d.csv");
  } catch (const DataFileError& e) {
    return e;
  }
  ADD_FAILURE() << "no error for: " << dictionaryText;
  return DataFileError("", 0, 0, "");
}

}  // namespace

TEST(DataDictionary, ReadsEveryPartOfAnEntry) {
  DataDictionary d;
  d.Load(kData + "people.dictionary.json");
  ASSERT_EQ(d.GetEntries().size(), 5u);
  const DictionaryEntry* sex = d.Find("SEX");
  ASSERT_NE(sex, nullptr);
  EXPECT_TRUE(sex->fbHasLabel);
  EXPECT_EQ(sex->fLabel, "Sex of the respondent");
  EXPECT_EQ(sex->fvValueLabels.size(), 2u);
  ASSERT_EQ(sex->fvMissingValues.size(), 1u);
  EXPECT_TRUE(sex->fvMissingValues[0].fbNumber);
  EXPECT_EQ(sex->fPath, "/variables/sex");
  const DictionaryEntry* age = d.Find("age");
  ASSERT_NE(age, nullptr);
  EXPECT_TRUE(age->fbHasMissingRange);
  EXPECT_TRUE(std::isinf(age->fMissingLow));
  EXPECT_EQ(age->fMissingHigh, -1);
  EXPECT_EQ(d.Find("code")->fType, DictionaryEntry::TYPE_STRING_FROM_DATA);
  EXPECT_EQ(d.Find("code")->fLevel, 2);
  EXPECT_EQ(d.Find("city")->fType, 12);
  EXPECT_EQ(d.Find("income")->fFormat, ZORV_Format(ZORV_Format::DOLLAR, 12, 2));
  EXPECT_EQ(d.Find("nothing"), nullptr);
  EXPECT_EQ(d.GetCsvDelimiter(), 0);
  EXPECT_EQ(d.GetCsvDecimalPoint(), 0);
}

TEST(DataDictionary, AppliesToACsvFileBesideIt) {
  ZORV_Dataset ds;
  DataFileLoader::Load(kData + "people.csv", ds);
  ASSERT_EQ(ds.ColumnCount(), 6);
  ASSERT_EQ(ds.GetCaseCount(), 4);

  const ZORV_Variable& sex = *ds.GetVariable(1);
  EXPECT_STREQ(sex.GetLabel(), "Sex of the respondent");
  EXPECT_STREQ(sex.GetValueLabels().GetLabel(2.0), "female");
  EXPECT_EQ(sex.GetMeasurementLevel(), ZORV_Variable::NOMINAL);  // labelled values
  EXPECT_TRUE(ds.IsUserMissing(2, 1));

  const ZORV_Variable& age = *ds.GetVariable(2);
  EXPECT_EQ(age.GetFormat(), ZORV_Format(ZORV_Format::F, 3, 0));
  EXPECT_EQ(age.GetWriteFormat(), ZORV_Format(ZORV_Format::F, 3, 0));
  EXPECT_TRUE(ds.IsUserMissing(3, 2));
  EXPECT_FALSE(ds.IsUserMissing(0, 2));
  EXPECT_EQ(age.GetMeasurementLevel(), ZORV_Variable::SCALE);

  const ZORV_Variable& code = *ds.GetVariable(3);
  EXPECT_EQ(code.GetType(), 3);  // kept as text: leading zeros survive
  EXPECT_EQ(ds.GetString(0, 3), "007");
  EXPECT_EQ(code.GetMeasurementLevel(), ZORV_Variable::ORDINAL);

  const ZORV_Variable& income = *ds.GetVariable(4);
  EXPECT_EQ(income.GetFormat(), ZORV_Format(ZORV_Format::DOLLAR, 12, 2));
  EXPECT_EQ(income.GetWriteFormat(), ZORV_Format(ZORV_Format::F, 10, 2));
  EXPECT_TRUE(ds.IsSysMissing(1, 4));

  const ZORV_Variable& city = *ds.GetVariable(5);
  EXPECT_EQ(city.GetType(), 12);
  EXPECT_STREQ(city.GetValueLabels().GetLabel("Basel"), "Basel-Stadt");
  ASSERT_EQ(city.GetMissingStrings().size(), 1u);
}

TEST(DataDictionary, CsvSettingsComeFromTheDictionary) {
  ZORV_Dataset ds;
  DataFileLoader::Load(kData + "semi.csv", ds);
  ASSERT_EQ(ds.ColumnCount(), 2);
  EXPECT_EQ(ds.GetNum(0, 0), 1.5);
  DataDictionary d;
  d.Load(kData + "semi.dictionary.json");
  EXPECT_EQ(d.GetCsvDelimiter(), ';');
  EXPECT_EQ(d.GetCsvDecimalPoint(), ',');
  ASSERT_EQ(d.GetCsvMissingTexts().size(), 1u);
}

TEST(DataDictionary, DictionaryPathIsBesideTheData) {
  EXPECT_EQ(DataFileLoader::DictionaryPathFor("data/sleep.csv"), "data/sleep.dictionary.json");
  EXPECT_EQ(DataFileLoader::DictionaryPathFor("a.b/sleep"), "a.b/sleep.dictionary.json");
  EXPECT_EQ(DataFileLoader::DictionaryPathFor("x.tar.dta"), "x.tar.dictionary.json");
}

TEST(DataDictionary, ForcesTypes) {
  DataDictionary d;
  d.LoadText(R"({"variables": {"a": {"type": "string"}, "b": {"type": "numeric"}}})", "d.json");
  ZORV_Dataset ds;
  CsvReader reader;
  reader.SetDictionary(&d);
  reader.ReadText("a,b\n01,\n2,3\n", "d.csv", ds);
  EXPECT_EQ(ds.GetVariable(0)->GetType(), 2);
  EXPECT_EQ(ds.GetString(0, 0), "01");
  EXPECT_EQ(ds.GetVariable(1)->GetType(), 0);
}

TEST(DataDictionaryErrors, ANonNumberInAForcedNumericColumn) {
  DataFileError e = ErrorOf(R"({"variables": {"b": {"type": "numeric"}}})", "a,b\n1,2\n3,x y\n");
  EXPECT_EQ(e.GetFile(), "d.csv");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_EQ(e.GetColumn(), 3);
  EXPECT_NE(e.GetMessage().find("\"x y\" is not a number"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, AValueWiderThanTheGivenWidth) {
  DataFileError e = ErrorOf(R"({"variables": {"b": {"width": 2}}})", "a,b\n1,ab\n2,abc\n");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_NE(e.GetMessage().find("width 2"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, AnUnknownVariable) {
  DataFileError e = ErrorOf(R"({"variables": {"zz": {"label": "?"}}})");
  EXPECT_EQ(e.GetFile(), "d.json");
  EXPECT_NE(e.GetMessage().find("variable \"zz\": there is no such variable in d.csv (at /variables/zz)"),
            std::string::npos)
      << e.what();
}

TEST(DataDictionaryErrors, ABadFormat) {
  DataFileError e = ErrorOf(R"({"variables": {"a": {"format": "F99.x"}}})");
  EXPECT_NE(e.GetMessage().find("variable \"a\": \"F99.x\" is not a format"), std::string::npos) << e.what();
  EXPECT_NE(e.GetMessage().find("/variables/a/format"), std::string::npos);
  e = ErrorOf(R"({"variables": {"a": {"format": "A8"}}})");
  EXPECT_NE(e.GetMessage().find("A8 does not suit a numeric variable"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"b": {"write_format": "F8.2"}}})");
  EXPECT_NE(e.GetMessage().find("does not suit a string variable"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, WrongJsonTypes) {
  DataFileError e = ErrorOf(R"({"variables": {"a": {"label": 5}}})");
  EXPECT_NE(e.GetMessage().find("\"label\" must be a string, found a number"), std::string::npos) << e.what();
  EXPECT_NE(e.GetMessage().find("(at /variables/a/label)"), std::string::npos);
  e = ErrorOf(R"({"variables": []})");
  EXPECT_NE(e.GetMessage().find("found an array (at /variables)"), std::string::npos) << e.what();
  e = ErrorOf(R"([1])");
  EXPECT_NE(e.GetMessage().find("found an array (at /)"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"missing": {"values": [true]}}}})");
  EXPECT_NE(e.GetMessage().find("/variables/a/missing/values/0"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"value_labels": {"1": 2}}}})");
  EXPECT_NE(e.GetMessage().find("/variables/a/value_labels/1"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"width": "8"}}})");
  EXPECT_NE(e.GetMessage().find("\"width\" must be a whole number"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": "numeric"}})");
  EXPECT_NE(e.GetMessage().find("variable \"a\": expected an object, found a string"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, UnknownKeysAndWords) {
  DataFileError e = ErrorOf(R"({"variables": {"a": {"lable": "x"}}})");
  EXPECT_NE(e.GetMessage().find("unknown key \"lable\""), std::string::npos) << e.what();
  e = ErrorOf(R"({"varaibles": {}})");
  EXPECT_NE(e.GetMessage().find("unknown key \"varaibles\""), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"level": "interval"}}})");
  EXPECT_NE(e.GetMessage().find("\"level\" must be"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"type": "date"}}})");
  EXPECT_NE(e.GetMessage().find("\"type\" must be"), std::string::npos) << e.what();
  e = ErrorOf(R"({"csv": {"delimiter": "|"}})");
  EXPECT_NE(e.GetMessage().find("\"delimiter\" must be"), std::string::npos) << e.what();
  e = ErrorOf(R"({"csv": {"delimiter": ",", "decimal": ","}})");
  EXPECT_NE(e.GetMessage().find("both the delimiter and the decimal point"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, ValuesThatDoNotSuitTheVariable) {
  DataFileError e = ErrorOf(R"({"variables": {"a": {"value_labels": {"one": "x"}}}})");
  EXPECT_NE(e.GetMessage().find("\"one\" is not a number"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"missing": {"values": ["n/a"]}}}})");
  EXPECT_NE(e.GetMessage().find("\"n/a\" is not a number"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"b": {"missing": {"values": [1]}}}})");
  EXPECT_NE(e.GetMessage().find("missing values as strings"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"b": {"missing": {"range": [1, 2]}}}})");
  EXPECT_NE(e.GetMessage().find("cannot have a missing range"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"missing": {"range": [5, 2]}}}})");
  EXPECT_NE(e.GetMessage().find("low end"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"missing": {"range": [1]}}}})");
  EXPECT_NE(e.GetMessage().find("two ends"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"type": "numeric", "width": 3}}})");
  EXPECT_NE(e.GetMessage().find("a numeric variable has no width"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {}, "A": {}}})");
  EXPECT_NE(e.GetMessage().find("described twice"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"label": "x"}, "a": {"label": "y"}}})");
  EXPECT_NE(e.GetMessage().find("the key \"a\" is given twice"), std::string::npos) << e.what();
  e = ErrorOf(R"({"variables": {"a": {"label": "x", "label": "y"}}})");
  EXPECT_NE(e.GetMessage().find("the key \"label\" is given twice"), std::string::npos) << e.what();
}

TEST(DataDictionaryErrors, SyntaxErrorsGiveLineAndColumn) {
  DataFileError e = ErrorOf("{\n  \"variables\": {\n    \"a\": {\"label\": \"x\",}\n  }\n}\n");
  EXPECT_EQ(e.GetFile(), "d.json");
  EXPECT_EQ(e.GetLine(), 3);
  EXPECT_GT(e.GetColumn(), 20);
  EXPECT_NE(e.GetMessage().find("not valid JSON"), std::string::npos) << e.what();
  e = ErrorOf("{\"variables\": {\"a\": {\"label\": \"caf\xE9\"}}}");
  EXPECT_EQ(e.GetLine(), 1);
  EXPECT_NE(e.GetMessage().find("UTF-8"), std::string::npos) << e.what();
  e = ErrorOf("");
  EXPECT_NE(e.GetMessage().find("not valid JSON"), std::string::npos) << e.what();
  // A number too large for a double is named, with its place in the
  // dictionary, not the data file.
  e = ErrorOf("{\"variables\": {\n \"a\": {\"missing\": {\"values\": [1e999]}}}}");
  EXPECT_EQ(e.GetFile(), "d.json");
  EXPECT_EQ(e.GetLine(), 2);
  EXPECT_EQ(e.GetColumn(), 31);
  EXPECT_EQ(e.GetMessage(), "the number 1e999 is too large");
}

TEST(DataDictionaryErrors, AMissingDictionaryFile) {
  ZORV_Dataset ds;
  try {
    DataFileLoader::Load(kData + "people.csv", kData + "absent.dictionary.json", ds);
    ADD_FAILURE();
  } catch (const DataFileError& e) {
    EXPECT_NE(e.GetFile().find("absent.dictionary.json"), std::string::npos);
  }
}
