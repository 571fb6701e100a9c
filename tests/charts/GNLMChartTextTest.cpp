#include "charts/GNLMChartText.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <string>

#include "host/data/ZORV_Variable.h"

using namespace GNLMChartText;

namespace {

std::string Escaped(std::string text) {
  escapeChartText(text);
  return text;
}

}  // namespace

TEST(GNLMChartText, EachLineEndIsOneBreak) {
  EXPECT_EQ(Escaped("a\r\nb"), "a<BR/>b");
  EXPECT_EQ(Escaped("a\rb"), "a<BR/>b");
  EXPECT_EQ(Escaped("a\nb"), "a<BR/>b");
  EXPECT_EQ(Escaped("a\fb"), "a<BR/>b");
  // Two line feeds behind a carriage return: the second is a break of its own.
  EXPECT_EQ(Escaped("a\r\n\nb"), "a<BR/><BR/>b");
  EXPECT_EQ(Escaped("\r"), "<BR/>");
}

TEST(GNLMChartText, MarkupCharactersAndLineDrawingCodesBecomeReferences) {
  EXPECT_EQ(Escaped("\"A\" & <B>"), "&quot;A&quot; &amp; &lt;B&gt;");
  const char codes[] = {14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 0};
  EXPECT_EQ(Escaped(codes),
            "&#9472;&#9474;&#9532;&#9492;&#9484;&#9496;&#9488;&#9500;&#9508;&#9516;&#9524;");
  EXPECT_EQ(Escaped(std::string("\x0b\x19\t'", 4)), std::string("\x0b\x19\t'", 4));
}

TEST(GNLMChartText, CharactersOfSeveralBytesStayWhole) {
  // U+00E9 and U+2500 as they stand; a lone continuation byte is one byte.
  EXPECT_EQ(Escaped("caf\xC3\xA9 \xE2\x94\x80<"), "caf\xC3\xA9 \xE2\x94\x80&lt;");
  EXPECT_EQ(Escaped("\x80&"), "\x80&amp;");
}

TEST(GNLMChartText, TheCaptionOfAVariableIsItsEscapedLabelOrName) {
  ZORV_Variable named("Dose", 0);
  EXPECT_EQ(variableCaption(named).toUTF8(), "Dose");
  ZORV_Variable labelled("Dose", 0);
  labelled.SetLabel("Dose <mg>\nper day");
  EXPECT_EQ(variableCaption(labelled).toUTF8(), "Dose &lt;mg&gt;<BR/>per day");
}

TEST(GNLMChartText, ANumberIsTheWholeTextLeadingBlanksAllowed) {
  bool ok = false;
  EXPECT_DOUBLE_EQ(parseNumber("2.5", ok), 2.5);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(parseNumber("  -1e3", ok), -1000.0);
  EXPECT_TRUE(ok);
  EXPECT_DOUBLE_EQ(parseNumber("007", ok), 7.0);
  EXPECT_TRUE(ok);
  parseNumber("3abc", ok);
  EXPECT_FALSE(ok);
  parseNumber("3 ", ok);
  EXPECT_FALSE(ok);
  EXPECT_DOUBLE_EQ(parseNumber("__MISSING__", ok), 0.0);
  EXPECT_FALSE(ok);
  parseNumber("", ok);
  EXPECT_FALSE(ok);
}

TEST(GNLMChartText, NumbersHaveSixSignificantDigits) {
  EXPECT_EQ(formatNumber(2.0), "2");
  EXPECT_EQ(formatNumber(16.0 / 3.0), "5.33333");
  EXPECT_EQ(formatNumber(1e6), "1e+06");
  EXPECT_EQ(formatNumber(-DBL_MAX), "-1.79769e+308");
  EXPECT_EQ(formatValue(0.0456, ZORV_Format(ZORV_Format::F, 40, 3)), "0.046");
  EXPECT_EQ(formatValue(-DBL_MAX, ZORV_Format(ZORV_Format::F, 40, 3)), ".");
}

TEST(GNLMChartText, TemplateEdits) {
  std::string text = "a <x> b <x> c";
  EXPECT_EQ(replaceFirst(text, "<x>", "1"), 2u);
  EXPECT_EQ(text, "a 1 b <x> c");
  EXPECT_EQ(replaceFirst(text, "<y>", "2"), std::string::npos);
  replaceAll(text, "<x>", "<x><x>");
  EXPECT_EQ(text, "a 1 b <x><x> c");
  EXPECT_TRUE(eraseThrough(text, "b", "c"));
  EXPECT_EQ(text, "a 1 ");
  EXPECT_FALSE(eraseThrough(text, "1", "z"));
  EXPECT_EQ(text, "a 1 ");
}

TEST(GNLMChartText, BackslashesGoOnlyWhereOneStandsBeforeAColon) {
  std::string escaped = "Target\\: a\\b";
  removeEscapes(escaped);
  EXPECT_EQ(escaped, "Target: ab");
  std::string plain = "a\\b\\n";
  removeEscapes(plain);
  EXPECT_EQ(plain, "a\\b\\n");
}
