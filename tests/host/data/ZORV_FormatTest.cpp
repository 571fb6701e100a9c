#include "host/data/ZORV_Format.h"

#include <gtest/gtest.h>

TEST(ZORV_Format, PacksDecimalsWidthAndType) {
  ZORV_Format f(ZORV_Format::F, 12, 3);
  EXPECT_EQ(f.Packed(), 3u | (12u << 8) | (5u << 16));
  EXPECT_EQ(ZORV_Format::FromPacked(f.Packed()), f);
}

TEST(ZORV_Format, ReadsAndWritesText) {
  ZORV_Format f;
  ASSERT_TRUE(ZORV_Format::Parse("f8.2", f));
  EXPECT_EQ(f, ZORV_Format(ZORV_Format::F, 8, 2));
  ASSERT_TRUE(ZORV_Format::Parse("DOLLAR10.2", f));
  EXPECT_EQ(f.fType, ZORV_Format::DOLLAR);
  ASSERT_TRUE(ZORV_Format::Parse("A20", f));
  EXPECT_EQ(f.ToText(), "A20");
  EXPECT_EQ(ZORV_Format(ZORV_Format::E, 10, 3).ToText(), "E10.3");
}

TEST(ZORV_Format, RejectsMalformedText) {
  ZORV_Format f;
  EXPECT_FALSE(ZORV_Format::Parse("", f));
  EXPECT_FALSE(ZORV_Format::Parse("F", f));
  EXPECT_FALSE(ZORV_Format::Parse("F8.", f));
  EXPECT_FALSE(ZORV_Format::Parse("F8.2x", f));
  EXPECT_FALSE(ZORV_Format::Parse("Q8.2", f));
  EXPECT_FALSE(ZORV_Format::Parse("F0.0", f));
  EXPECT_FALSE(ZORV_Format::Parse("F99.2", f));
  EXPECT_FALSE(ZORV_Format::Parse("F4.4", f));
}
