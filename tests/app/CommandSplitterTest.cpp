#include "app/CommandText.h"

#include <gtest/gtest.h>

TEST(CommandSplitter, SplitsOnPeriodsFollowedByWhiteSpace) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  ASSERT_TRUE(CommandSplitter::Split("LOAD 'a.csv'.\n  set display=labels.\nGLMIXFIT y WITH x\n /FIXED x.", commands,
                                     errors));
  ASSERT_EQ(commands.size(), 3u);
  EXPECT_EQ(commands[0].fName, "LOAD");
  EXPECT_EQ(commands[0].fText, "LOAD 'a.csv'");
  EXPECT_EQ(commands[1].fName, "SET");
  EXPECT_EQ(commands[1].fLine, 2);
  EXPECT_EQ(commands[1].fColumn, 3);
  EXPECT_EQ(commands[2].fText, "GLMIXFIT y WITH x\n /FIXED x");
  EXPECT_TRUE(errors.empty());
}

TEST(CommandSplitter, KeepsPeriodsInsideNumbersAndQuotes) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  ASSERT_TRUE(CommandSplitter::Split("X CONVERGE=1.5E-6 'a. b' \"c. d\".", commands, errors));
  ASSERT_EQ(commands.size(), 1u);
  EXPECT_EQ(commands[0].fText, "X CONVERGE=1.5E-6 'a. b' \"c. d\"");
}

TEST(CommandSplitter, SkipsCommentsAndTakesALastCommandWithoutPeriod) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  ASSERT_TRUE(CommandSplitter::Split("# a comment. with periods.\nSPLIT OFF. # trailing\nWEIGHT OFF", commands, errors));
  ASSERT_EQ(commands.size(), 2u);
  EXPECT_EQ(commands[0].fName, "SPLIT");
  EXPECT_EQ(commands[1].fText, "WEIGHT OFF");
}

TEST(CommandSplitter, ReportsAnUnclosedQuoteWithLineAndColumn) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  EXPECT_FALSE(CommandSplitter::Split("LOAD 'a.csv.\nSET x.", commands, errors));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].fLine, 1);
  EXPECT_EQ(errors[0].fColumn, 6);
}

TEST(CommandSplitter, EmptyInputHasNoCommands) {
  std::vector<CommandText> commands;
  std::vector<CommandTextError> errors;
  EXPECT_TRUE(CommandSplitter::Split("  \n\t # nothing\n . ", commands, errors));
  EXPECT_TRUE(commands.empty());
}
