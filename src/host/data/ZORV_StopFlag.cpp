#include "host/data/ZORV_StopFlag.h"

#include <atomic>

namespace {

// Raised from a signal handler, where only a lock-free atomic may be touched.
static_assert(std::atomic<bool>::is_always_lock_free, "the stop flag must be lock-free");
std::atomic<bool> gStopRequested{false};

}  // namespace

void ZORV_StopFlag::Raise() { gStopRequested.store(true, std::memory_order_relaxed); }

void ZORV_StopFlag::Clear() { gStopRequested.store(false, std::memory_order_relaxed); }

bool ZORV_StopFlag::IsRaised() { return gStopRequested.load(std::memory_order_relaxed); }
