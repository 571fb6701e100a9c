#include <gtest/gtest.h>

#include <string>

#include "host/io/ColumnProfile.h"
#include "host/io/NumberText.h"
#include "host/io/Utf8Text.h"

namespace {

bool Number(const std::string& text, double& value, int& intDigits, int& decimals, char point = '.') {
  return NumberText::Parse(text.data(), text.size(), point, value, intDigits, decimals);
}

}  // namespace

TEST(NumberText, ReadsDecimalNumbersAndTheirDigits) {
  double v = 0;
  int i = 0;
  int d = 0;
  ASSERT_TRUE(Number(" -12.50 ", v, i, d));
  EXPECT_EQ(v, -12.5);
  EXPECT_EQ(i, 2);
  EXPECT_EQ(d, 2);
  ASSERT_TRUE(Number("+.5", v, i, d));
  EXPECT_EQ(v, 0.5);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(d, 1);
  ASSERT_TRUE(Number("7.", v, i, d));
  EXPECT_EQ(v, 7);
  EXPECT_EQ(d, 0);
  ASSERT_TRUE(Number("2.5E+3", v, i, d));
  EXPECT_EQ(v, 2500);
  EXPECT_EQ(i, 4);
  EXPECT_EQ(d, 0);
  ASSERT_TRUE(Number("125e-4", v, i, d));
  EXPECT_EQ(v, 0.0125);
  EXPECT_EQ(i, 1);
  EXPECT_EQ(d, 4);
  ASSERT_TRUE(Number("3,25", v, i, d, ','));
  EXPECT_EQ(v, 3.25);
  ASSERT_TRUE(Number("0007", v, i, d));
  EXPECT_EQ(i, 1);
}

TEST(NumberText, RefusesWhatIsNotADecimalNumber) {
  double v = 0;
  int i = 0;
  int d = 0;
  for (const char* text : {"", " ", ".", "-", "+-1", "1.2.3", "1e", "1e+", "e5", "0x1F", "inf", "nan", "1 2",
                           "1,5", "1e400", "12abc", "--1"}) {
    EXPECT_FALSE(Number(text, v, i, d)) << text;
  }
  EXPECT_FALSE(Number("1.5", v, i, d, ','));
  EXPECT_FALSE(Number(std::string(200, '1'), v, i, d));
}

TEST(NumberText, ShortestRoundTrips) {
  EXPECT_EQ(NumberText::Shortest(0.1), "0.1");
  EXPECT_EQ(NumberText::Shortest(-2.0), "-2");
  double back = 0;
  ASSERT_TRUE(NumberText::Parse(NumberText::Shortest(1.0 / 3.0), back));
  EXPECT_EQ(back, 1.0 / 3.0);
  EXPECT_TRUE(NumberText::IsBlank(" \t ", 3));
  EXPECT_FALSE(NumberText::IsBlank(" x", 2));
}

TEST(Utf8Text, ValidatesAndCounts) {
  std::size_t bad = 99;
  std::string good = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";
  EXPECT_TRUE(Utf8Text::Validate(good.data(), good.size(), bad));
  EXPECT_EQ(Utf8Text::CharCount(good.data(), good.size()), 4u);
  struct Case {
    std::string text;
    std::size_t offset;
  } cases[] = {
      {"ab\x80", 2},          {"a\xC3", 1},           {"\xE2\x82", 0},         {"x\xF5\x80\x80\x80", 1},
      {"\xC1\xBF", 0},        {"\xE0\x80\x80", 0},    {"\xED\xBF\xBF", 0},     {"\xF4\x90\x80\x80", 0},
      {std::string("ok\0", 3), 2},
  };
  for (const Case& c : cases) {
    EXPECT_FALSE(Utf8Text::Validate(c.text.data(), c.text.size(), bad)) << c.text;
    EXPECT_EQ(bad, c.offset) << c.text;
  }
  EXPECT_EQ(Utf8Text::Excerpt("abcdef", 6, 3), "abc...");
  EXPECT_EQ(Utf8Text::Excerpt("\xC3\xA9\xC3\xA9", 4, 1), "\xC3\xA9...");
  EXPECT_EQ(Utf8Text::Excerpt("ab", 2, 3), "ab");
}

TEST(ColumnProfile, ChoosesTypeFormatAndLevel) {
  ColumnProfile numbers;
  numbers.AddText("1.25", 4, false, '.');
  numbers.AddEmpty();
  numbers.AddText("-100", 4, false, '.');
  EXPECT_TRUE(numbers.IsNumeric());
  EXPECT_EQ(numbers.GetValueCount(), 2);
  EXPECT_EQ(numbers.GetEmptyCount(), 1);
  EXPECT_EQ(numbers.NumericFormat(), ZORV_Format(ZORV_Format::F, 7, 2));
  EXPECT_EQ(numbers.DefaultLevel(), 3);

  ColumnProfile codes;
  codes.AddText("01", 2, true, '.');
  codes.AddText("02", 2, true, '.');
  EXPECT_TRUE(codes.IsNumeric());
  EXPECT_TRUE(codes.AllQuoted());
  EXPECT_EQ(codes.DefaultLevel(), 1);

  ColumnProfile text;
  text.AddText("12", 2, false, '.');
  text.AddText("twelve", 6, false, '.');
  EXPECT_FALSE(text.IsNumeric());
  EXPECT_EQ(text.StringWidth(), 6);
  EXPECT_EQ(text.DefaultLevel(), 1);

  ColumnProfile typed;
  typed.AddNumber(0.1);
  typed.AddNumber(12345.0);
  EXPECT_EQ(typed.NumericFormat(), ZORV_Format(ZORV_Format::F, 7, 1));

  ColumnProfile empty;
  EXPECT_EQ(empty.NumericFormat(), ZORV_Format(ZORV_Format::F, 8, 2));
  EXPECT_EQ(empty.StringWidth(), 1);
  EXPECT_FALSE(empty.AllQuoted());
}
