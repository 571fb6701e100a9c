#pragma once

#include "numeric/common/MCQueryCancel.h"

// Test-only cancel query: says "stop" from the given question on (0 = the
// first), and counts the questions.
class MCEngineTestCancelAfter : public MCCommon_850::MCQueryCancel {
 public:
  explicit MCEngineTestCancelAfter(int polls) : fPolls(polls) {}
  bool IsCancelled() const override { return fCount++ >= fPolls; }
  int GetCount() const { return fCount; }

 private:
  int fPolls;
  mutable int fCount = 0;
};
