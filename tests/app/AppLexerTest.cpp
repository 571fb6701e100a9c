#include "app/AppLexer.h"

#include <gtest/gtest.h>

namespace {

std::vector<AppCommandText> Split(const std::string& text) { return AppLexer::Split(text); }

}  // namespace

TEST(AppLexer, SplitsOnPeriodsFollowedByWhiteSpace) {
  std::vector<AppCommandText> commands = Split("LOAD 'a.csv'.\n  set VARIABLES=labels.\nGLMIXFIT y WITH x\n /FIXED x.");
  ASSERT_EQ(commands.size(), 3u);
  EXPECT_EQ(commands[0].fName, "LOAD");
  EXPECT_EQ(commands[0].fText, "LOAD 'a.csv'");
  EXPECT_EQ(commands[1].fName, "SET");
  EXPECT_EQ(commands[1].fLine, 2);
  EXPECT_EQ(commands[1].fColumn, 3);
  EXPECT_EQ(commands[2].fText, "GLMIXFIT y WITH x\n /FIXED x");
  const AppToken& end = commands[2].fvTokens.back();
  EXPECT_EQ(end.fKind, AppToken::END);
  EXPECT_EQ(end.fLine, 4);
  EXPECT_EQ(end.fColumn, 10);
}

TEST(AppLexer, MakesTokensWithTheirPlaces) {
  std::vector<AppCommandText> commands = Split("GLMIXFIT y BY a\n  /FIXED a(b)*c ; | = 'it''s' -1.5E2 F10.3.");
  ASSERT_EQ(commands.size(), 1u);
  const std::vector<AppToken>& t = commands[0].fvTokens;
  ASSERT_EQ(t.size(), 19u);
  EXPECT_EQ(t[0].fKind, AppToken::WORD);
  EXPECT_EQ(t[0].fText, "GLMIXFIT");
  EXPECT_EQ(t[4].fKind, AppToken::SYMBOL);
  EXPECT_EQ(t[4].fText, "/");
  EXPECT_EQ(t[4].fLine, 2);
  EXPECT_EQ(t[4].fColumn, 3);
  EXPECT_TRUE(t[7].IsSymbol('('));
  EXPECT_TRUE(t[9].IsSymbol(')'));
  EXPECT_TRUE(t[10].IsSymbol('*'));
  EXPECT_TRUE(t[12].IsSymbol(';'));
  EXPECT_TRUE(t[13].IsSymbol('|'));
  EXPECT_TRUE(t[14].IsSymbol('='));
  EXPECT_EQ(t[15].fKind, AppToken::STRING);
  EXPECT_EQ(t[15].fText, "it's");
  EXPECT_EQ(t[16].fKind, AppToken::NUMBER);
  EXPECT_EQ(t[16].fNumber, -150.0);
  EXPECT_EQ(t[16].fText, "-1.5E2");
  EXPECT_EQ(t[17].fKind, AppToken::WORD);
  EXPECT_EQ(t[17].fText, "F10.3");
}

TEST(AppLexer, KeepsPeriodsInsideNumbersNamesAndQuotes) {
  std::vector<AppCommandText> commands = Split("X 1.5E-6 .5 v.1 'a. b' \"c. d\" 7.");
  ASSERT_EQ(commands.size(), 1u);
  const std::vector<AppToken>& t = commands[0].fvTokens;
  ASSERT_EQ(t.size(), 8u);
  EXPECT_EQ(t[1].fNumber, 1.5e-6);
  EXPECT_EQ(t[2].fNumber, 0.5);
  EXPECT_EQ(t[3].fText, "v.1");
  EXPECT_EQ(t[4].fText, "a. b");
  EXPECT_EQ(t[5].fText, "c. d");
  EXPECT_EQ(t[6].fKind, AppToken::NUMBER);
  EXPECT_EQ(t[6].fNumber, 7.0);
  EXPECT_EQ(t[7].fKind, AppToken::END);
}

TEST(AppLexer, SkipsCommentsAndTakesALastCommandWithoutPeriod) {
  std::vector<AppCommandText> commands = Split("# a comment. with periods.\nSPLIT OFF. # trailing\nWEIGHT OFF");
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].fName, "SPLIT");
  EXPECT_EQ(commands[1].fText, "WEIGHT OFF");
  EXPECT_EQ(commands[1].fvTokens.back().fKind, AppToken::END);
  EXPECT_EQ(commands[1].fvTokens.back().fColumn, 11);
}

TEST(AppLexer, EmptyInputHasNoCommands) {
  EXPECT_TRUE(Split("").empty());
  EXPECT_TRUE(Split("  \n\t # nothing\n . ").empty());
}

TEST(AppLexer, NamesTheCommandOnlyByAWord) {
  std::vector<AppCommandText> commands = Split("glmixfit y. 5 x.");
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].fName, "GLMIXFIT");
  EXPECT_EQ(commands[1].fName, "");
}

TEST(AppLexer, TurnsBadTextIntoErrorTokens) {
  std::vector<AppCommandText> commands = Split("LOAD 'a.csv.\nSET x ! 2x 1e999 ? y.");
  ASSERT_EQ(commands.size(), 1u);  // the unclosed quote keeps the period from ending LOAD
  const std::vector<AppToken>& t = commands[0].fvTokens;
  ASSERT_EQ(t[1].fKind, AppToken::ERROR);
  EXPECT_EQ(t[1].fText, "the quoted text is not closed before the end of the line");
  EXPECT_EQ(t[1].fLine, 1);
  EXPECT_EQ(t[1].fColumn, 6);
  EXPECT_EQ(t[4].fKind, AppToken::ERROR);
  EXPECT_EQ(t[4].fText, "the character '!' has no meaning here");
  EXPECT_EQ(t[5].fKind, AppToken::ERROR);
  EXPECT_EQ(t[5].fText, "'2x' is not a number");
  EXPECT_EQ(t[6].fKind, AppToken::ERROR);
  EXPECT_EQ(t[6].fText, "'1e999' is not a number that fits the range of a double");
  EXPECT_EQ(t[7].fKind, AppToken::ERROR);
  EXPECT_EQ(t[7].fText, "the character '?' has no meaning here");
  EXPECT_EQ(t[8].fText, "y");
}

TEST(AppLexer, CountsColumnsInCharacters) {
  std::vector<AppCommandText> commands = Split("SET '\xC3\xA9t\xC3\xA9' x.");
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].fvTokens[2].fColumn, 11);
  EXPECT_EQ(commands[0].fvTokens[1].fText, "\xC3\xA9t\xC3\xA9");
}

TEST(AppLexer, ReadsNonAsciiNames) {
  std::vector<AppCommandText> commands = Split("GLMIXFIT gr\xC3\xB6\xC3\x9F" "e BY _a@b$c.");
  ASSERT_EQ(commands.size(), 1u);
  const std::vector<AppToken>& t = commands[0].fvTokens;
  EXPECT_EQ(t[1].fKind, AppToken::WORD);
  EXPECT_EQ(t[1].fText, "gr\xC3\xB6\xC3\x9F" "e");
  EXPECT_EQ(t[3].fText, "_a@b$c");
}

TEST(AppLexer, SkipsAByteOrderMark) {
  std::vector<AppCommandText> commands = Split("\xEF\xBB\xBFLOAD 'a.csv'.");
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].fName, "LOAD");
  EXPECT_EQ(commands[0].fColumn, 1);
}

TEST(AppLexer, ReadsThePunctuationOfExpressions) {
  std::vector<AppCommandText> commands = Split("COMPUTE y = a+b, c<=d ~e & f - 2 -x.");
  ASSERT_EQ(commands.size(), 1u);
  const std::vector<AppToken>& t = commands[0].fvTokens;
  EXPECT_TRUE(t[4].IsSymbol('+'));
  EXPECT_TRUE(t[6].IsSymbol(','));
  EXPECT_TRUE(t[8].IsSymbol('<'));
  EXPECT_TRUE(t[9].IsSymbol('='));
  EXPECT_EQ(t[9].fOffset, t[8].fOffset + 1);
  EXPECT_TRUE(t[11].IsSymbol('~'));
  EXPECT_TRUE(t[13].IsSymbol('&'));
  // A sign before a digit stays with its number; before a name it stands alone.
  EXPECT_TRUE(t[15].IsSymbol('-'));
  ASSERT_EQ(t[16].fKind, AppToken::NUMBER);
  EXPECT_EQ(t[16].fNumber, 2.0);
  EXPECT_TRUE(t[17].IsSymbol('-'));
  EXPECT_EQ(t[18].fText, "x");
}
