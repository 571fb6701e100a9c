#include "app/AppOptions.h"

#include <gtest/gtest.h>

namespace {

bool ParseArgs(std::vector<const char*> args, AppOptions& out, std::string& error) {
  args.insert(args.begin(), "glmixfit");
  return AppOptions::Parse(static_cast<int>(args.size()), args.data(), out, error);
}

}  // namespace

TEST(AppOptions, DefaultsToTerminalTextOnly) {
  AppOptions o;
  std::string error;
  ASSERT_TRUE(ParseArgs({"run.gmx"}, o, error));
  EXPECT_EQ(o.fCommandFile, "run.gmx");
  EXPECT_TRUE(o.fbText);
  EXPECT_FALSE(o.fbHtml);
  EXPECT_FALSE(o.fbJson);
  EXPECT_EQ(o.fWidth, 80);
}

TEST(AppOptions, ReadsEveryOption) {
  AppOptions o;
  std::string error;
  ASSERT_TRUE(ParseArgs({"--html", "--json", "--no-text", "-o", "out", "--width", "120", "-"}, o, error));
  EXPECT_TRUE(o.fbHtml);
  EXPECT_TRUE(o.fbJson);
  EXPECT_FALSE(o.fbText);
  EXPECT_EQ(o.fOutputDir, "out");
  EXPECT_EQ(o.fWidth, 120);
  EXPECT_EQ(o.fCommandFile, "-");
}

TEST(AppOptions, HelpAndVersionNeedNoFile) {
  AppOptions o;
  std::string error;
  ASSERT_TRUE(ParseArgs({"--help"}, o, error));
  EXPECT_TRUE(o.fbHelp);
  ASSERT_TRUE(ParseArgs({"--version"}, o, error));
  EXPECT_TRUE(o.fbVersion);
}

TEST(AppOptions, RejectsBadArgumentsWithAReason) {
  AppOptions o;
  std::string error;
  EXPECT_FALSE(ParseArgs({}, o, error));
  EXPECT_EQ(error, "no command file given");
  EXPECT_FALSE(ParseArgs({"--width", "7", "a.gmx"}, o, error));
  EXPECT_NE(error.find("'7' is not a width"), std::string::npos);
  EXPECT_FALSE(ParseArgs({"--width", "12x", "a.gmx"}, o, error));
  EXPECT_FALSE(ParseArgs({"a.gmx", "--width"}, o, error));
  EXPECT_EQ(error, "option --width needs a value");
  EXPECT_FALSE(ParseArgs({"--frobnicate", "a.gmx"}, o, error));
  EXPECT_EQ(error, "unknown option '--frobnicate'");
  EXPECT_FALSE(ParseArgs({"a.gmx", "b.gmx"}, o, error));
}
