#pragma once

#include "numeric/engine/detail/MCCovFactorAnalytic.h"

namespace MCEngine_850 {

// First-order factor analytic with a diagonal variance per position.
class MCCovFAH1 : public MCCovFactorAnalytic {
 public:
  explicit MCCovFAH1(int dimension) : MCCovFactorAnalytic(dimension, true) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::FAH1; }
};

}  // namespace MCEngine_850
