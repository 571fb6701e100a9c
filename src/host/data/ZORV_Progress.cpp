#include "host/data/ZORV_Progress.h"

namespace {

ZORV_Progress::Observer* gObserver = nullptr;
ZORV_Progress::State gState;

void Tell() {
  if (gObserver != nullptr) gObserver->Update(gState);
}

}  // namespace

void ZORV_Progress::SetObserver(Observer* observer) { gObserver = observer; }

void ZORV_Progress::Begin(const std::string& task) {
  gState = State();
  gState.fTask = task;
  Tell();
}

void ZORV_Progress::Fraction(double fraction) {
  gState.fFraction = fraction;
  Tell();
}

void ZORV_Progress::Split(int split, int splits) {
  gState.fSplit = split;
  gState.fSplits = splits;
  gState.fIteration = -1;
  Tell();
}

void ZORV_Progress::Iteration(int iteration, double criterion) {
  gState.fIteration = iteration;
  gState.fCriterion = criterion;
  Tell();
}

void ZORV_Progress::End() {
  if (gObserver != nullptr) gObserver->Finish();
}

const ZORV_Progress::State& ZORV_Progress::Current() { return gState; }
