#pragma once

#include <memory>
#include <vector>

#include "numeric/engine/MCEngineCovType.h"
#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Makes the structure object of a type; null for a type not available.
class MCCovStructureFactory {
 public:
  static std::unique_ptr<MCCovStructure> Create(MCEngineCovType type, int dimension,
                                                const std::vector<int>& columnEffects);
};

}  // namespace MCEngine_850
