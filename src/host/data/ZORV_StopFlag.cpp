#include "host/data/ZORV_StopFlag.h"

#include <atomic>

namespace {

std::atomic<bool> gStopRequested{false};

}  // namespace

void ZORV_StopFlag::Raise() { gStopRequested.store(true, std::memory_order_relaxed); }

void ZORV_StopFlag::Clear() { gStopRequested.store(false, std::memory_order_relaxed); }

bool ZORV_StopFlag::IsRaised() { return gStopRequested.load(std::memory_order_relaxed); }
