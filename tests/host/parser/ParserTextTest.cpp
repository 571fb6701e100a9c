#include "host/parser/ParserText.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(ParserText, TrimsBlanksAtBothEnds) {
  char text[] = "  model.xml \t ";
  char* trimmed = ZORVMBstrtrim_A(text);
  EXPECT_STREQ(trimmed, "model.xml");
  EXPECT_EQ(trimmed, text + 2);
}

TEST(ParserText, TrimsFixedWidthBuffers) {
  char buffer[256];
  std::memset(buffer, ' ', sizeof buffer);
  std::memcpy(buffer + 3, "out \xC3\xA9.json", 11);
  buffer[255] = '\0';
  EXPECT_STREQ(ZORVMBstrtrim_A(buffer), "out \xC3\xA9.json");
}

TEST(ParserText, TrimsToEmpty) {
  char blanks[] = "    ";
  EXPECT_STREQ(ZORVMBstrtrim_A(blanks), "");
  char empty[] = "";
  EXPECT_STREQ(ZORVMBstrtrim_A(empty), "");
  EXPECT_EQ(ZORVMBstrtrim_A(nullptr), nullptr);
}

TEST(ParserText, UpperCasesAsciiOnly) {
  EXPECT_EQ(GetUpperString("Model.xml"), "MODEL.XML");
  EXPECT_EQ(GetUpperString(std::string("stat\xC3\xA9json")), "STAT\xC3\xA9JSON");
  EXPECT_EQ(GetUpperString(static_cast<const char*>(nullptr)), "");
  EXPECT_EQ(GetUpperString(""), "");
}
