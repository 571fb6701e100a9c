#include "host/adapter/ACAStopProcessor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"

TEST(ACAStopProcessor, FollowsTheHostStopFlag) {
  ZORV_StopFlag::Clear();
  std::unique_ptr<MCCommon_850::MCQueryCancel> query(new ACAStopProcessor(0.0));
  EXPECT_FALSE(query->IsCancelled());
  std::thread user([] { ZORV_StopFlag::Raise(); });
  user.join();
  EXPECT_TRUE(query->IsCancelled());
  ZORV_StopFlag::Clear();
  EXPECT_FALSE(query->IsCancelled());
}

TEST(ACAStopProcessor, ATimeLimitEndsTheRun) {
  ZORV_StopFlag::Clear();
  ACAStopProcessor limited(0.2);
  EXPECT_EQ(limited.GetTimeLimit(), 0.2);
  EXPECT_FALSE(limited.IsCancelled());
  std::this_thread::sleep_for(std::chrono::milliseconds(250));
  EXPECT_TRUE(limited.IsCancelled());
  ACAStopProcessor unlimited(-1.0);
  EXPECT_FALSE(unlimited.IsCancelled());
}

namespace {

class LastState : public ZORV_Progress::Observer {
 public:
  void Update(const ZORV_Progress::State& state) override { fState = state; }
  void Finish() override {}
  ZORV_Progress::State fState;
};

}  // namespace

TEST(ACAStopProcessor, PassesTheIterationsOnToTheHostsProgress) {
  LastState observer;
  ZORV_Progress::SetObserver(&observer);
  ZORV_Progress::Begin("Mixed Model");
  const ACAStopProcessor query(0.0);
  const MCCommon_850::MCProgressObserver& watcher = query;
  watcher.Iteration(3, 123.5);
  ZORV_Progress::SetObserver(nullptr);
  EXPECT_EQ(observer.fState.fTask, "Mixed Model");
  EXPECT_EQ(observer.fState.fIteration, 3);
  EXPECT_EQ(observer.fState.fCriterion, 123.5);
}
