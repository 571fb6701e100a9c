#include "host/data/ZORV_StopFlag.h"

#include <gtest/gtest.h>

#include <thread>

TEST(ZORV_StopFlag, RaisedFromAnotherThread) {
  ZORV_StopFlag::Clear();
  EXPECT_FALSE(ZORV_StopFlag::IsRaised());
  std::thread user([] { ZORV_StopFlag::Raise(); });
  user.join();
  EXPECT_TRUE(ZORV_StopFlag::IsRaised());
  ZORV_StopFlag::Clear();
  EXPECT_FALSE(ZORV_StopFlag::IsRaised());
}
