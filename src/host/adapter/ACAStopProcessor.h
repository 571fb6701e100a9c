#pragma once

#include "numeric/common/MCQueryCancel.h"

// The numeric component's stop query on the host's stop flag. The argument
// is a time limit in seconds, counted from construction, after which the
// query answers yes as well; 0 (or less) sets no limit.
class ACAStopProcessor : public MCCommon_850::MCQueryCancel {
 public:
  explicit ACAStopProcessor(double timeLimit);

  bool IsCancelled() const override;

  double GetTimeLimit() const { return fTimeLimit; }

 private:
  double fTimeLimit;
  double fStartSeconds;  // on the steady clock
};
