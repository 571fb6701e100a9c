#include "base/MixExports.h"

#include <gtest/gtest.h>

TEST(MixExports, SwitchesStartAtZero) {
  EXPECT_FALSE(display_settings);
  EXPECT_FALSE(aggreg_random);
  EXPECT_FALSE(display_component);
  EXPECT_FALSE(display_output);
  EXPECT_FALSE(write_text_data);
  EXPECT_FALSE(display_metadata);
}

TEST(MixExports, ExposeStoresBothWordsAndReturnsTheSecondsAddress) {
  std::intptr_t* p = exposemix_(11, 22);
  EXPECT_EQ(CmnMix, 11);
  EXPECT_EQ(CmaMix, 22);
  EXPECT_EQ(p, &CmaMix);
  exposemix_(0, 0);
}
