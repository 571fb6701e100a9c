#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/AppSession.h"
#include "base/MixExports.h"

namespace {

const std::string kSwitches =
    "display_settings, display_metadata, display_component, display_output, write_text_data or aggreg_random";

class AppDebugCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    AppOptions options;
    options.fOutputDir = "";
    fpSession.reset(new AppSession(options));
  }
  void TearDown() override { fpSession.reset(); }

  void Run(const std::string& text) { fpSession->RunText(text, "t.gmx", ""); }

  // The error of the i-th command, or "" when it has none.
  std::string Error(std::size_t i) const {
    const OmHeading& heading = *fpSession->GetDocument().fRoot.fvItems.at(i).fpHeading;
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::MESSAGE && item.fpMessage->fLevel == OmMessage::ERROR) return item.fpMessage->fText;
    }
    return std::string();
  }
  // The last front-end line of the i-th command.
  std::string Said(std::size_t i) const {
    const OmHeading& heading = *fpSession->GetDocument().fRoot.fvItems.at(i).fpHeading;
    std::string last;
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::TEXT && !item.fpText->fvLines.empty()) last = item.fpText->fvLines.back();
    }
    return last;
  }

  std::unique_ptr<AppSession> fpSession;
};

TEST_F(AppDebugCommandTest, SwitchesAreSetAndClearedByName) {
  Run("DEBUG display_settings WRITE_TEXT_DATA ON.\n");
  EXPECT_TRUE(display_settings);
  EXPECT_TRUE(write_text_data);
  EXPECT_FALSE(display_metadata);
  EXPECT_FALSE(aggreg_random);
  EXPECT_EQ(Said(0), "Debug switches on: display_settings, write_text_data.");
  EXPECT_EQ(fpSession->GetDocument().fRoot.fvItems[0].fpHeading->fText, "Debug");

  Run("debug display_settings off.\n");
  EXPECT_FALSE(display_settings);
  EXPECT_TRUE(write_text_data);
  EXPECT_EQ(Said(1), "Debug switches on: write_text_data.");

  Run("DEBUG ALL ON.\n");
  for (bool value : {display_settings, aggreg_random, display_component, display_output, write_text_data,
                     display_metadata}) {
    EXPECT_TRUE(value);
  }
  Run("DEBUG ALL OFF.\n");
  for (bool value : {display_settings, aggreg_random, display_component, display_output, write_text_data,
                     display_metadata}) {
    EXPECT_FALSE(value);
  }
  EXPECT_EQ(Said(3), "All debug switches are off.");
  EXPECT_EQ(fpSession->ExitStatus(), 0);
}

TEST_F(AppDebugCommandTest, MistakesAreReportedWhereTheyStandAndChangeNothing) {
  Run("DEBUG.\n"
      "DEBUG display_settings.\n"
      "DEBUG display_setting ON.\n"
      "DEBUG display_output display_output ON.\n"
      "DEBUG ALL display_output ON.\n"
      "DEBUG ON.\n"
      "DEBUG write_text_data ON x.\n"
      "DEBUG write_text_data 5 ON.\n"
      "DEBUG aggreg_random ALL ON.\n");
  EXPECT_EQ(Error(0), "t.gmx:1:6: expected a debug switch (" + kSwitches + ") or ALL, found the end of the command.");
  EXPECT_EQ(Error(1), "t.gmx:2:23: expected a debug switch (" + kSwitches + "), ON or OFF, found the end of the command.");
  EXPECT_EQ(Error(2), "t.gmx:3:7: expected a debug switch (" + kSwitches + ") or ALL, found 'display_setting'.");
  EXPECT_EQ(Error(3), "t.gmx:4:22: expected each debug switch once, found 'display_output' again.");
  EXPECT_EQ(Error(4), "t.gmx:5:11: expected ON or OFF, found 'display_output'.");
  EXPECT_EQ(Error(5), "t.gmx:6:7: expected a debug switch (" + kSwitches + ") or ALL, found 'ON'.");
  EXPECT_EQ(Error(6), "t.gmx:7:26: expected the end of the command, found 'x'.");
  EXPECT_EQ(Error(7), "t.gmx:8:23: expected a debug switch (" + kSwitches + "), ON or OFF, found 5.");
  EXPECT_EQ(Error(8), "t.gmx:9:21: expected a debug switch (" + kSwitches + "), ON or OFF, found 'ALL'.");
  for (bool value : {display_settings, aggreg_random, display_component, display_output, write_text_data,
                     display_metadata}) {
    EXPECT_FALSE(value);
  }
  EXPECT_EQ(fpSession->ExitStatus(), 1);
}

// The switches belong to the process; a run starts and ends with all off.
TEST_F(AppDebugCommandTest, ARunStartsAndEndsWithTheSwitchesOff) {
  Run("DEBUG display_metadata ON.\n");
  EXPECT_TRUE(display_metadata);
  fpSession.reset();
  EXPECT_FALSE(display_metadata);
  display_output = true;
  AppOptions options;
  AppSession session(options);
  EXPECT_FALSE(display_output);
}

}  // namespace
