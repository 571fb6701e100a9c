#include "host/data/ZORV_Progress.h"

#include <gtest/gtest.h>

#include "host/data/ProgressRecorder.h"

TEST(ZORV_Progress, AStepTellsItsObserverEachChange) {
  ProgressRecorder recorder;
  ZORV_Progress::SetObserver(&recorder);
  ZORV_Progress::Begin("Load");
  ZORV_Progress::Fraction(0.25);
  ZORV_Progress::End();
  ZORV_Progress::Begin("Mixed Model");
  ZORV_Progress::Split(1, 2);
  ZORV_Progress::Iteration(0, 100.0);
  ZORV_Progress::Iteration(1, 90.0);
  ZORV_Progress::Split(2, 2);
  ZORV_Progress::End();
  ZORV_Progress::SetObserver(nullptr);

  ASSERT_EQ(recorder.fvStates.size(), 7u);
  EXPECT_EQ(recorder.fFinished, 2);
  EXPECT_EQ(recorder.fvStates[1].fTask, "Load");
  EXPECT_EQ(recorder.fvStates[1].fFraction, 0.25);
  // A new step starts afresh.
  EXPECT_EQ(recorder.fvStates[2].fFraction, -1.0);
  EXPECT_EQ(recorder.fvStates[2].fSplits, 0);
  EXPECT_EQ(recorder.fvStates[5].fIteration, 1);
  EXPECT_EQ(recorder.fvStates[5].fCriterion, 90.0);
  EXPECT_EQ(recorder.fvStates[5].fSplit, 1);
  // A new split has no iteration yet.
  EXPECT_EQ(recorder.fvStates[6].fSplit, 2);
  EXPECT_EQ(recorder.fvStates[6].fIteration, -1);
}

TEST(ZORV_Progress, WithoutAnObserverTheStateIsStillKept) {
  ZORV_Progress::SetObserver(nullptr);
  ZORV_Progress::Begin("Write Data");
  ZORV_Progress::Fraction(0.5);
  ZORV_Progress::End();
  EXPECT_EQ(ZORV_Progress::Current().fTask, "Write Data");
  EXPECT_EQ(ZORV_Progress::Current().fFraction, 0.5);
}
