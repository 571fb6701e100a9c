#include "host/text/NumericText.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>

TEST(NumericText, ReadsIntegers) {
  bool ok = false;
  EXPECT_EQ(String2Integer("42", &ok), 42);
  EXPECT_TRUE(ok);
  EXPECT_EQ(String2Integer("  -17 \t", &ok), -17);
  EXPECT_TRUE(ok);
  EXPECT_EQ(String2Integer(std::string("+8"), &ok), 8);
  EXPECT_TRUE(ok);
  EXPECT_EQ(String2Integer("2147483647", &ok), 2147483647);
  EXPECT_TRUE(ok);
  EXPECT_EQ(String2Integer("0"), 0);
}

TEST(NumericText, RefusesWhatIsNotAnInteger) {
  const char* bad[] = {"", "   ", "12a", "1.0", "1e3", "+", "-", "+-3", "--3", "2147483648", "0x10", "1 2"};
  for (const char* text : bad) {
    bool ok = true;
    EXPECT_EQ(String2Integer(text, &ok), 0) << text;
    EXPECT_FALSE(ok) << text;
  }
  bool ok = true;
  EXPECT_EQ(String2Integer(static_cast<const char*>(nullptr), &ok), 0);
  EXPECT_FALSE(ok);
}

TEST(NumericText, ReadsDoubles) {
  bool ok = false;
  EXPECT_DOUBLE_EQ(String2Double("2.5", &ok), 2.5);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(String2Double(" -1e-8 ", &ok), -1e-8);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(String2Double("+.5", &ok), 0.5);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(String2Double(std::string("3"), &ok), 3.0);
  EXPECT_TRUE(ok);
  EXPECT_EQ(String2Double("-1.7976931348623157e308", &ok), -1.7976931348623157e308);
  EXPECT_TRUE(ok);
  EXPECT_TRUE(std::isinf(String2Double("inf", &ok)));
  EXPECT_TRUE(ok);
  EXPECT_TRUE(std::isnan(String2Double("NaN", &ok)));
  EXPECT_TRUE(ok);
}

TEST(NumericText, RefusesWhatIsNotADouble) {
  const char* bad[] = {"", "abc", "1,5", "2.5x", "1e999", "+-1", "++1", "1 2", "."};
  for (const char* text : bad) {
    bool ok = true;
    EXPECT_EQ(String2Double(text, &ok), 0.0) << text;
    EXPECT_FALSE(ok) << text;
  }
}

TEST(NumericText, DoublesIgnoreTheProcessLocale) {
  const char* previous = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = previous ? previous : "C";
  // Where a comma locale exists, the point must still be the decimal mark.
  if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr) {
    bool ok = false;
    EXPECT_DOUBLE_EQ(String2Double("1.25", &ok), 1.25);
    EXPECT_TRUE(ok);
  }
  std::setlocale(LC_NUMERIC, saved.c_str());
  EXPECT_DOUBLE_EQ(String2Double("1.25"), 1.25);
}

TEST(NumericText, ReadsRomanNumerals) {
  struct Case {
    const char* text;
    int value;
  } cases[] = {{"I", 1},   {"II", 2},   {"III", 3},     {"IV", 4},          {"V", 5},
               {"ix", 9},  {"XLII", 42}, {" XC ", 90}, {"MCMXCIV", 1994}, {"MMMCMXCIX", 3999}};
  for (const auto& c : cases) {
    bool ok = false;
    EXPECT_EQ(Roman2Integer(c.text, &ok), c.value) << c.text;
    EXPECT_TRUE(ok) << c.text;
  }
}

TEST(NumericText, RefusesMalformedRomanNumerals) {
  const char* bad[] = {"", "IIII", "VX", "IC", "IL", "VV", "MMMM", "ABC", "I I", "3"};
  for (const char* text : bad) {
    bool ok = true;
    EXPECT_EQ(Roman2Integer(text, &ok), 0) << text;
    EXPECT_FALSE(ok) << text;
  }
  EXPECT_EQ(Roman2Integer(std::string("")), 0);
}

TEST(NumericText, WritesIntegers) {
  EXPECT_EQ(Integer2String(0), "0");
  EXPECT_EQ(Integer2String(12), "12");
  EXPECT_EQ(Integer2String(-305), "-305");
  EXPECT_EQ(Integer2String(2147483647L * 4), "8589934588");
}
