#pragma once

#include <cfloat>

namespace MCCommon_850 {

// The engine's system-missing value: the most negative finite double. It is
// recognised by equality only, so any computed value other than this exact
// bit pattern counts as present.
class MCMV {
 public:
  static constexpr double Missing() { return -DBL_MAX; }
  static constexpr bool IsMissing(double value) { return value == -DBL_MAX; }
};

inline constexpr double MCMV_Missing() { return MCMV::Missing(); }

}  // namespace MCCommon_850
