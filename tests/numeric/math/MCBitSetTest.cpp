#include "numeric/math/MCBitSet.h"

#include <gtest/gtest.h>

#include <sstream>

using MCMath_850::MCBitSet;

TEST(MCBitSet, EmptyByDefault) {
  MCBitSet set;
  EXPECT_EQ(set.Size(), 0);
  EXPECT_TRUE(set.InSet().empty());
  EXPECT_FALSE(set.IsMember(0));
}

TEST(MCBitSet, MembersInAscendingOrder) {
  MCBitSet set(6);
  EXPECT_TRUE(set.Set(4));
  EXPECT_TRUE(set.Set(1));
  EXPECT_TRUE(set.Set(5));
  EXPECT_TRUE(set.Set(5, false));
  EXPECT_EQ(set.InSet(), (std::vector<int>{1, 4}));
  EXPECT_EQ(set.Count(), 2);
  EXPECT_TRUE(set.IsMember(4));
  EXPECT_FALSE(set.IsMember(5));
}

TEST(MCBitSet, OutsideIsRefused) {
  MCBitSet set(2);
  EXPECT_FALSE(set.Set(2));
  EXPECT_FALSE(set.Set(-1));
  EXPECT_FALSE(set.IsMember(7));
  EXPECT_EQ(MCBitSet(-3).Size(), 0);
}

TEST(MCBitSet, ResizeDropsAndAdds) {
  MCBitSet set(4);
  set.Set(0);
  set.Set(3);
  set.Resize(2);
  EXPECT_EQ(set.InSet(), (std::vector<int>{0}));
  set.Resize(5);
  EXPECT_EQ(set.Size(), 5);
  EXPECT_EQ(set.InSet(), (std::vector<int>{0}));
}

TEST(MCBitSet, Display) {
  MCBitSet set(3);
  set.Set(2);
  std::ostringstream os;
  set.Display(os);
  EXPECT_EQ(os.str(), "Set size: 3\nMembers: 2\n");
}
