#pragma once

#include <cmath>

// Test-only deterministic draws, the same on every build: uniform on (0, 1)
// and standard normal.
class MCEngineTestDraws {
 public:
  explicit MCEngineTestDraws(unsigned seed) : fState(seed) {}
  double Uniform() {
    fState = fState * 6364136223846793005ULL + 1442695040888963407ULL;
    return (static_cast<double>(fState >> 11) + 0.5) / 9007199254740992.0;
  }
  double Normal() {
    const double u = Uniform(), v = Uniform();
    return std::sqrt(-2.0 * std::log(u)) * std::cos(6.283185307179586 * v);
  }

 private:
  unsigned long long fState;
};
