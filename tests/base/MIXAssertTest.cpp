#include "base/MIXAssert.h"

#include <gtest/gtest.h>

#include "base/AssertText.h"

using base_test::AssertText;

TEST(MIXAssert, PassingCheckDoesNothing) {
  int evaluated = 0;
  MIX_ASSERT(++evaluated == 1, "evaluated == 1");
  EXPECT_EQ(evaluated, 1);
}

TEST(MIXAssertDeathTest, FailedCheckWritesItsTextAndAborts) {
  EXPECT_DEATH(MIX_ASSERT(1 + 1 == 3, "(a >= 0) && (a < b)"), AssertText("(a >= 0) && (a < b)"));
  EXPECT_DEATH(MIX_ASSERT(false, "text"), "glmixfit: assertion failed: text \\(.*MIXAssertTest\\.cpp:[0-9]+\\)");
}
