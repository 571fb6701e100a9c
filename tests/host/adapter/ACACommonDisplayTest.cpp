#include "host/adapter/ACACommonDisplay.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <iostream>
#include <sstream>

namespace {

class Capture {
 public:
  Capture() : fpSaved(ACACommonDisplay::GetOutStream()) { ACACommonDisplay::SetOutStream(fText); }
  ~Capture() { ACACommonDisplay::SetOutStream(*fpSaved); }
  std::string Text() const { return fText.str(); }

 private:
  std::ostream* fpSaved;
  std::ostringstream fText;
};

}  // namespace

TEST(ACACommonDisplay, StartsOnStandardOutput) { EXPECT_EQ(ACACommonDisplay::GetOutStream(), &std::cout); }

TEST(ACACommonDisplay, WritesLabelledLines) {
  Capture capture;
  ACACommonDisplay::DisplayB("listwise", true);
  ACACommonDisplay::DisplayBV("valid", {true, false});
  ACACommonDisplay::DisplayD("tolerance", 1e-12);
  ACACommonDisplay::DisplayD("mean", 2.5);
  ACACommonDisplay::DisplayD("value", -DBL_MAX);
  ACACommonDisplay::DisplayI("records", 120);
  ACACommonDisplay::DisplayIV("sort", {2, 0});
  ACACommonDisplay::DisplayIV("none", {});
  ACACommonDisplay::DisplayS("name", "age group");
  ACACommonDisplay::DisplaySV("names", {"a", "b c"});
  ACACommonDisplay::DisplayText("-- split 1 --");
  EXPECT_EQ(capture.Text(),
            "listwise true\n"
            "valid true false\n"
            "tolerance 1e-12\n"
            "mean 2.5\n"
            "value missing\n"
            "records 120\n"
            "sort 2 0\n"
            "none (none)\n"
            "name age group\n"
            "names \"a\", \"b c\"\n"
            "-- split 1 --\n");
}

TEST(ACACommonDisplay, WritesDataValues) {
  Capture capture;
  OBS number;
  number.fNum = 3.0;
  OBS text[2];
  std::memcpy(text, "north  east  ", 13);
  ACACommonDisplay::DisplayObs("number", &number);
  ACACommonDisplay::DisplayObs("text", text, 13);
  ACACommonDisplay::DisplayObs("nothing", nullptr, 0);
  EXPECT_EQ(capture.Text(), "number 3\ntext \"north  east\"\nnothing (null)\n");
}

TEST(ACACommonDisplay, NumbersKeepFifteenDigits) {
  EXPECT_EQ(ACACommonDisplay::NumberText(1.0 / 3.0), "0.333333333333333");
  EXPECT_EQ(ACACommonDisplay::NumberText(-DBL_MAX), "missing");
  EXPECT_EQ(ACACommonDisplay::NumberText(100), "100");
}
