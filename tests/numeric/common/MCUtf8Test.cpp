#include "numeric/common/MCUtf8.h"

#include <gtest/gtest.h>

#include <string>

using MCCommon_850::MCUtf8;

namespace {

const std::string kFFFD = "\xEF\xBF\xBD";

int Length(const std::string& text) { return MCUtf8::SequenceLength(text, 0); }

}  // namespace

TEST(MCUtf8, WellFormedCharactersOfEachLength) {
  char32_t code = 0;
  EXPECT_EQ(MCUtf8::SequenceLength("a", 0, &code), 1);
  EXPECT_EQ(code, U'a');
  EXPECT_EQ(MCUtf8::SequenceLength(std::string("\0", 1), 0, &code), 1);
  EXPECT_EQ(code, U'\0');
  EXPECT_EQ(MCUtf8::SequenceLength("\xC3\xBC", 0, &code), 2);
  EXPECT_EQ(code, U'\u00FC');
  EXPECT_EQ(MCUtf8::SequenceLength("\xE2\x82\xAC", 0, &code), 3);
  EXPECT_EQ(code, U'\u20AC');
  EXPECT_EQ(MCUtf8::SequenceLength("\xF0\x9F\x98\x80", 0, &code), 4);
  EXPECT_EQ(code, U'\U0001F600');
  EXPECT_EQ(MCUtf8::SequenceLength("\xF4\x8F\xBF\xBF", 0, &code), 4);
  EXPECT_EQ(code, U'\U0010FFFF');
}

TEST(MCUtf8, MalformedBytesAreNoCharacter) {
  EXPECT_EQ(Length("\x80"), 0);              // a continuation byte alone
  EXPECT_EQ(Length("\xFF"), 0);              // never used
  EXPECT_EQ(Length("\xC0\xAF"), 0);          // overlong
  EXPECT_EQ(Length("\xE0\x80\xAF"), 0);      // overlong
  EXPECT_EQ(Length("\xED\xA0\x80"), 0);      // a surrogate
  EXPECT_EQ(Length("\xF4\x90\x80\x80"), 0);  // past U+10FFFF
  EXPECT_EQ(Length("\xC3"), 0);              // cut short
  EXPECT_EQ(Length("\xE2\x82" "a"), 0);      // interrupted
  EXPECT_EQ(MCUtf8::SequenceLength("\xC3\xBC", 2), 0);
  EXPECT_EQ(MCUtf8::SequenceLength(nullptr, 0, 0), 0);
}

TEST(MCUtf8, ValidateGivesTheFirstMalformedByte) {
  std::size_t bad = 99;
  const std::string good = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80";
  EXPECT_TRUE(MCUtf8::Validate(good.data(), good.size(), bad));
  EXPECT_EQ(bad, 99u);
  const std::string text = "ab\xC3\xBC\xED\xA0\x80z";
  EXPECT_FALSE(MCUtf8::Validate(text.data(), text.size(), bad));
  EXPECT_EQ(bad, 4u);
  EXPECT_TRUE(MCUtf8::Validate("", 0, bad));
}

TEST(MCUtf8, SanitizeReplacesEachMalformedByte) {
  EXPECT_EQ(MCUtf8::Sanitize("a\xFFz"), "a" + kFFFD + "z");
  EXPECT_EQ(MCUtf8::Sanitize("\xCE\xBC"), "\xCE\xBC");
  EXPECT_EQ(MCUtf8::Sanitize("\xC0\xAF"), kFFFD + kFFFD);
  EXPECT_EQ(MCUtf8::Sanitize("\xED\xA0\x80"), kFFFD + kFFFD + kFFFD);
  EXPECT_EQ(MCUtf8::Sanitize("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");
  EXPECT_EQ(MCUtf8::Sanitize("x\xE2\x82"), "x" + kFFFD + kFFFD);
}

TEST(MCUtf8, AppendEncodesWhatSequenceLengthDecodes) {
  for (char32_t code : {U'\0', U'A', U'\u007F', U'\u0080', U'\u07FF', U'\u0800', U'\uFFFD', U'\U00010000',
                        U'\U0010FFFF'}) {
    std::string text;
    MCUtf8::Append(text, code);
    char32_t back = 0;
    EXPECT_EQ(MCUtf8::SequenceLength(text, 0, &back), static_cast<int>(text.size())) << static_cast<long>(code);
    EXPECT_EQ(back, code);
  }
  std::string text;
  MCUtf8::Append(text, 0xFC);
  EXPECT_EQ(text, "\xC3\xBC");
}

TEST(MCUtf8, AppendWritesWhatIsNoCharacterAsTheReplacement) {
  std::string text;
  MCUtf8::Append(text, 0xD800);
  MCUtf8::Append(text, 0xDFFF);
  MCUtf8::Append(text, 0x110000);
  EXPECT_EQ(text, kFFFD + kFFFD + kFFFD);
}

TEST(MCUtf8, CodePointGivesTheReplacementForAMalformedByte) {
  EXPECT_EQ(MCUtf8::CodePoint("a\xE2\x82\xAC", 0), U'a');
  EXPECT_EQ(MCUtf8::CodePoint("a\xE2\x82\xAC", 1), U'\u20AC');
  EXPECT_EQ(MCUtf8::CodePoint("a\xE2\x82\xAC", 2), U'\uFFFD');
  EXPECT_EQ(MCUtf8::CodePoint("\xC0\xAF", 0), U'\uFFFD');
  EXPECT_EQ(MCUtf8::CodePoint("a", 1), U'\uFFFD');
}

TEST(MCUtf8, OnlyContinuationBytesContinueACharacter) {
  EXPECT_FALSE(MCUtf8::IsContinuation('a'));
  EXPECT_FALSE(MCUtf8::IsContinuation('\xC3'));
  EXPECT_FALSE(MCUtf8::IsContinuation('\xF0'));
  EXPECT_TRUE(MCUtf8::IsContinuation('\x80'));
  EXPECT_TRUE(MCUtf8::IsContinuation('\xBF'));
}
