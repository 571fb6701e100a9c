#include "numeric/common/MCMV.h"

#include <gtest/gtest.h>

using MCCommon_850::MCMV;

TEST(MCMV, MissingIsMostNegativeDouble) {
  EXPECT_EQ(MCMV::Missing(), -1.7976931348623157e308);
  EXPECT_EQ(MCCommon_850::MCMV_Missing(), MCMV::Missing());
}

TEST(MCMV, IsMissingByEquality) {
  EXPECT_TRUE(MCMV::IsMissing(MCMV::Missing()));
  EXPECT_FALSE(MCMV::IsMissing(0.0));
  EXPECT_FALSE(MCMV::IsMissing(-1.7976931348623155e308));
  EXPECT_FALSE(MCMV::IsMissing(1.7976931348623157e308));
}
