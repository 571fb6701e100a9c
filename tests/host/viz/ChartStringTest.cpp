#include "host/viz/ChartString.h"

#include <gtest/gtest.h>

#include <string>

#include "host/viz/XUtility.h"

TEST(ChartString, RoundTripsUTF8) {
  const std::string texts[] = {"", "plain", "caf\xc3\xa9", "\xe2\x82\xac 5", "smile \xf0\x9f\x98\x80", "a\nb"};
  for (const std::string& text : texts) {
    ChartString s = ChartString::fromUTF8(text);
    EXPECT_EQ(s.toUTF8(), text);
  }
  ChartString s = ChartString::fromUTF8("\xf0\x9f\x98\x80");
  EXPECT_EQ(s.length(), 2u);  // one surrogate pair
  EXPECT_EQ(s.str(), std::u16string(u"\U0001F600"));
  EXPECT_EQ(ChartString::fromUTF8("caf\xc3\xa9").str(), u"caf\u00e9");
}

TEST(ChartString, ReplacesBytesThatAreNotUTF8) {
  EXPECT_EQ(ChartString::fromUTF8("a\xff" "b").str(), u"a\uFFFDb");
  EXPECT_EQ(ChartString::fromUTF8("\xc3").str(), u"\uFFFD");                // cut short
  EXPECT_EQ(ChartString::fromUTF8("\xc0\xaf").str(), u"\uFFFD\uFFFD");      // overlong
  EXPECT_EQ(ChartString::fromUTF8("\xed\xa0\x80").str(), u"\uFFFD\uFFFD\uFFFD");  // a surrogate
  EXPECT_EQ(ChartString::fromUTF8("\xf4\x90\x80\x80").str(), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // too large
  EXPECT_EQ(ChartString::fromUTF8("\x80x").str(), u"\uFFFDx");
}

TEST(ChartString, WritesUnpairedSurrogatesAsReplacementCharacters) {
  std::u16string lone;
  lone += static_cast<char16_t>(0xD800);
  lone += u'x';
  lone += static_cast<char16_t>(0xDC00);
  EXPECT_EQ(ChartString(lone).toUTF8(), "\xef\xbf\xbdx\xef\xbf\xbd");
}

TEST(ChartString, GivesItsWideText) {
  ChartString s(u"wide");
  EXPECT_EQ(std::u16string(s.xc_str()), u"wide");
  EXPECT_TRUE(ChartString().empty());
  EXPECT_EQ(ChartString().xc_str()[0], u'\0');
  const char16_t* none = nullptr;
  EXPECT_TRUE(ChartString(none).empty());
}

TEST(ChartString, ReplacesSubstrings) {
  ChartString s = ChartString::fromUTF8("Continuous predictors fixed at 999; 999");
  EXPECT_TRUE(s.replaceSubstring(ChartString(u"999"), ChartString::fromUTF8("x = 1, y = 2")));
  EXPECT_EQ(s.toUTF8(), "Continuous predictors fixed at x = 1, y = 2; 999");
  EXPECT_FALSE(s.replaceSubstring(ChartString(u"zzz"), ChartString(u"q")));
  EXPECT_FALSE(s.replaceSubstring(ChartString(), ChartString(u"q")));

  ChartString all(u"aXbXc");
  EXPECT_TRUE(all.replaceSubstring(ChartString(u"X"), ChartString(u"XX"), true));
  EXPECT_EQ(all.str(), u"aXXbXXc");
}

TEST(ChartString, JoinsAndCompares) {
  ChartString a(u"Group");
  ChartString b = a + ChartString(u" = ");
  EXPECT_EQ(b.str(), u"Group = ");
  b += ChartString(u"1");
  EXPECT_EQ(b.toUTF8(), "Group = 1");
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(a == ChartString::fromUTF8("Group"));
  EXPECT_TRUE(a < b);
}

TEST(XUtility, TakesTheHostTextsAsUTF8) {
  EXPECT_EQ(XUtility::ChartStringFromLocalCodePage("caf\xc3\xa9").str(), u"caf\u00e9");
  EXPECT_EQ(XUtility::ChartStringFromLocalCodePage(std::string("x\xe2\x82\xac")).str(), u"x\u20ac");
  EXPECT_EQ(XUtility::ChartStringFromOLANG("Signifikanz \xc3\xbc").toUTF8(), "Signifikanz \xc3\xbc");
  EXPECT_EQ(XUtility::ChartStringFromOLANG(std::string("t")).str(), u"t");
  // All three encodings are UTF-8, checked on the way in.
  EXPECT_EQ(XUtility::ChartStringFromUTF8("a\xff").str(), u"a\uFFFD");
  EXPECT_EQ(XUtility::LocalCodePageFromChartString(ChartString(u"caf\u00e9")), "caf\xc3\xa9");
  EXPECT_EQ(XUtility::OLANGFromChartString(ChartString(u"\u20ac")), "\xe2\x82\xac");
  EXPECT_STREQ(XUtility::OutputLanguage(), "en");
  const char* none = nullptr;
  EXPECT_TRUE(XUtility::ChartStringFromLocalCodePage(none).empty());
  EXPECT_TRUE(XUtility::ChartStringFromOLANG(none).empty());
}
