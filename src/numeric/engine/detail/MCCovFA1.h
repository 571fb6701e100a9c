#pragma once

#include "numeric/engine/detail/MCCovFactorAnalytic.h"

namespace MCEngine_850 {

// First-order factor analytic with one common diagonal variance.
class MCCovFA1 : public MCCovFactorAnalytic {
 public:
  explicit MCCovFA1(int dimension) : MCCovFactorAnalytic(dimension, false) {}

  MCEngineCovType GetType() const override { return MCEngineCovType::FA1; }
};

}  // namespace MCEngine_850
