#pragma once

#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"

// Test-only checks of the engine's analytic derivatives of -2 log L.
class MCEngineDerivativeCheck {
 public:
  // A point near the estimates of a fit, away from any bound; a loading l
  // becomes 0.9 l + loadingShift.
  static std::vector<double> EvaluationPoint(const MCEngine_850::MCEngineResult& result, double loadingShift);
  // The gradient and the observed Hessian at theta against central
  // differences, and both Hessians symmetric.
  static void ExpectFiniteDifferences(const MCEngine_850::MCEngineFitter& fitter, const std::vector<double>& theta);
  // The value, gradient and both Hessians at theta: stored into `expected`
  // when it is empty, otherwise compared with it. The sparse equations
  // iterate with the average information in place of the expected Hessian,
  // which is then left out of the comparison.
  static void ExpectSameEvaluation(const MCEngine_850::MCEngineFitter& fitter, const std::vector<double>& theta,
                                   std::vector<double>& expected);
  // A test name from a structure's description and the method.
  static std::string TestName(std::string description, bool reml);
};
