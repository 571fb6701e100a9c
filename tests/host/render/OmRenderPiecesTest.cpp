#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/render/OmFootnoteMarkers.h"
#include "host/render/OmTextWrap.h"
#include "host/render/OmUtf8.h"

using Lines = std::vector<std::string>;

TEST(OmRenderUtf8Test, CountsCodePointsNotBytes) {
  EXPECT_EQ(OmUtf8::Width("abc"), 3);
  EXPECT_EQ(OmUtf8::Width("\xce\xbc = \xce\xb7"), 5);          // mu = eta
  EXPECT_EQ(OmUtf8::Width("\xe2\x82\xac" "5"), 2);              // euro sign
  EXPECT_EQ(OmUtf8::Width("\xf0\x9f\x98\x80"), 1);              // four-byte sequence
  EXPECT_EQ(OmUtf8::Width(""), 0);
}

TEST(OmRenderUtf8Test, MalformedBytesCountOneEach) {
  EXPECT_EQ(OmUtf8::Width("\xff\xfe"), 2);
  EXPECT_EQ(OmUtf8::Width("a\xce"), 2);      // sequence cut short
  EXPECT_EQ(OmUtf8::Width("\xc0\xaf"), 2);   // overlong form
  EXPECT_EQ(OmUtf8::Width("\xed\xa0\x80"), 3);  // surrogate
}

TEST(OmRenderUtf8Test, SplitsIntoCharacters) {
  EXPECT_EQ(OmUtf8::Characters("a\xce\xbc" "b"), (Lines{"a", "\xce\xbc", "b"}));
  EXPECT_EQ(OmUtf8::Characters("\xff" "a"), (Lines{"\xff", "a"}));
}

TEST(OmRenderWrapTest, BreaksBetweenWords) {
  EXPECT_EQ(OmTextWrap::Wrap("the quick brown fox", 10), (Lines{"the quick", "brown fox"}));
  EXPECT_EQ(OmTextWrap::Wrap("the quick brown fox", 19), (Lines{"the quick brown fox"}));
  EXPECT_EQ(OmTextWrap::Wrap("a   b", 10), (Lines{"a b"}));
}

TEST(OmRenderWrapTest, CutsWordsLongerThanTheWidth) {
  EXPECT_EQ(OmTextWrap::Wrap("abcdefghij", 4), (Lines{"abcd", "efgh", "ij"}));
  EXPECT_EQ(OmTextWrap::Wrap("ab abcdefg", 4), (Lines{"ab", "abcd", "efg"}));
}

TEST(OmRenderWrapTest, KeepsLineBreaksAndDropsBlankEnds) {
  EXPECT_EQ(OmTextWrap::Wrap("one\ntwo", 20), (Lines{"one", "two"}));
  EXPECT_EQ(OmTextWrap::Wrap("one\n\ntwo\n", 20), (Lines{"one", "", "two"}));
  EXPECT_TRUE(OmTextWrap::Wrap("", 10).empty());
  EXPECT_TRUE(OmTextWrap::Wrap("   ", 10).empty());
}

TEST(OmRenderWrapTest, MeasuresInCharacters) {
  // Six two-byte characters per word: the words fit a width of 6 exactly.
  const std::string word = "\xce\xbc\xce\xbc\xce\xbc\xce\xbc\xce\xbc\xce\xbc";
  EXPECT_EQ(OmTextWrap::Wrap(word + " " + word, 6), (Lines{word, word}));
  EXPECT_EQ(OmTextWrap::Wrap(word + " " + word, 13), (Lines{word + " " + word}));
  EXPECT_EQ(OmTextWrap::LongestWord("ab " + word + " abc"), 6);
  EXPECT_EQ(OmTextWrap::PadLeft("\xce\xbc", 3), "  \xce\xbc");
  EXPECT_EQ(OmTextWrap::PadRight("\xce\xbc", 3), "\xce\xbc  ");
  EXPECT_EQ(OmTextWrap::Centre("\xce\xbc", 4), " \xce\xbc  ");
}

TEST(OmRenderWrapTest, NonPositiveWidthStillProgresses) {
  EXPECT_EQ(OmTextWrap::Wrap("ab", 0), (Lines{"a", "b"}));
  EXPECT_EQ(OmTextWrap::Wrap("ab", -5), (Lines{"a", "b"}));
}

TEST(OmRenderMarkersTest, LettersCountOnPastZ) {
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(0), "a");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(25), "z");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(26), "aa");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(27), "ab");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(701), "zz");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(702), "aaa");
  EXPECT_EQ(OmFootnoteMarkers::MarkerFor(-1), "");
}

TEST(OmRenderMarkersTest, OrderOfFirstReference) {
  OmFootnoteMarkers markers(4);
  OmText first;
  first.fvFootnotes = {2};
  OmText second;
  second.fvFootnotes = {0, 2, 7, -1};  // out-of-range references are ignored
  markers.Reference(first);
  markers.Reference(second);
  markers.Complete();
  EXPECT_EQ(markers.GetMarker(2), "a");
  EXPECT_EQ(markers.GetMarker(0), "b");
  // Footnotes nobody refers to come last, in their own order.
  EXPECT_EQ(markers.GetMarker(1), "c");
  EXPECT_EQ(markers.GetMarker(3), "d");
  EXPECT_EQ(markers.GetMarker(9), "");
  EXPECT_EQ(markers.GetOrder(), (std::vector<int>{2, 0, 1, 3}));
  EXPECT_EQ(markers.MarkersOf(second), (Lines{"a", "b"}));
}
