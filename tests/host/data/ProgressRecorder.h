#pragma once

#include <vector>

#include "host/data/ZORV_Progress.h"

// Keeps every state the host's progress tells, and counts the steps ended.
class ProgressRecorder : public ZORV_Progress::Observer {
 public:
  void Update(const ZORV_Progress::State& state) override { fvStates.push_back(state); }
  void Finish() override { ++fFinished; }

  std::vector<ZORV_Progress::State> fvStates;
  int fFinished = 0;
};
