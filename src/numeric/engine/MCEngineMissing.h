#pragma once

#include <limits>

namespace MCEngine_850 {

// The value the engine stores where a statistic could not be computed.
class MCEngineMissing {
 public:
  static constexpr double Value() { return -std::numeric_limits<double>::max(); }
  static constexpr bool Is(double x) { return x == Value(); }
};

}  // namespace MCEngine_850
