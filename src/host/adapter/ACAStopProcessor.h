#pragma once

#include "numeric/common/MCProgressObserver.h"
#include "numeric/common/MCQueryCancel.h"

// The numeric component's stop query on the host's stop flag. The argument
// is a time limit in seconds, counted from construction, after which the
// query answers yes as well; 0 (or less) sets no limit. It also passes the
// fit's iterations on to the host's progress (ZORV_Progress).
class ACAStopProcessor : public MCCommon_850::MCQueryCancel, public MCCommon_850::MCProgressObserver {
 public:
  explicit ACAStopProcessor(double timeLimit);

  bool IsCancelled() const override;
  void Iteration(int iteration, double criterion) const override;

  double GetTimeLimit() const { return fTimeLimit; }

 private:
  double fTimeLimit;
  double fStartSeconds;  // on the steady clock
};
