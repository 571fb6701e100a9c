#pragma once

#include <vector>

#include "numeric/engine/MCEngineInput.h"

// Test-only simulated repeated-measures data: subjects with up to four
// positions (some missing), a covariate, a two-level group factor, and a
// response with subject effects and correlated errors. Deterministic.
class MCEngineTestSimulation {
 public:
  explicit MCEngineTestSimulation(int nSubjects, unsigned seed = 12345u);

  // Fixed design: intercept, x, A=1, A=2 (A=2 aliased), with its terms.
  MCEngine_850::MCEngineInput BaseInput() const;
  // A random intercept and slope in x by subject.
  MCEngine_850::MCEngineRandomBlock InterceptSlope(MCEngine_850::MCEngineCovType type) const;
  // Position indicators (four columns) by subject.
  MCEngine_850::MCEngineRandomBlock Positions(MCEngine_850::MCEngineCovType type) const;
  // A random intercept by subject.
  MCEngine_850::MCEngineRandomBlock Intercept() const;
  // A random intercept by position, crossing the subjects.
  MCEngine_850::MCEngineRandomBlock ByPosition() const;
  MCEngine_850::MCEngineResidualBlock Residual(MCEngine_850::MCEngineCovType type) const;

  int GetNRecords() const { return static_cast<int>(fvY.size()); }
  const std::vector<int>& GetSubjects() const { return fvSubject; }

 private:
  std::vector<double> fvY;
  std::vector<double> fvX;
  std::vector<int> fvSubject;
  std::vector<int> fvPosition;
  std::vector<int> fvGroup;
};
