#pragma once

#include <vector>

#include "numeric/engine/MCEngineInput.h"

// Test-only simulated crossed designs.
namespace MCEngineTestCrossed {

// A variance-components block of one intercept by those subjects.
MCEngine_850::MCEngineRandomBlock InterceptBy(const std::vector<int>& subjects);

// y = 10 + x + a_i + b_j + e over n records with levels drawn at random
// from two crossed factors; sdB scales the second factor's effects.
MCEngine_850::MCEngineInput Crossed(int n, int levelsA, int levelsB, double sdB, unsigned seed);

}  // namespace MCEngineTestCrossed
