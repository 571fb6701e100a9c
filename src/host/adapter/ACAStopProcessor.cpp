#include "host/adapter/ACAStopProcessor.h"

#include <chrono>

#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"

namespace {

double SteadySeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

ACAStopProcessor::ACAStopProcessor(double timeLimit) : fTimeLimit(timeLimit), fStartSeconds(SteadySeconds()) {}

bool ACAStopProcessor::IsCancelled() const {
  if (ZORV_StopFlag::IsRaised()) return true;
  if (fTimeLimit <= 0.0) return false;
  return SteadySeconds() - fStartSeconds >= fTimeLimit;
}

void ACAStopProcessor::Iteration(int iteration, double criterion) const { ZORV_Progress::Iteration(iteration, criterion); }
