#pragma once

#include <memory>
#include <vector>

#include "numeric/engine/MCEngineCovType.h"
#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// Makes the structure object of a type; null for a type not available.
class MCCovStructureFactory {
 public:
  // columnEffects is read by VC only; points, the coordinates of the
  // dimension points (row-major, at least one coordinate each), by the
  // spatial structures only, which need them.
  static std::unique_ptr<MCCovStructure> Create(MCEngineCovType type, int dimension,
                                                const std::vector<int>& columnEffects,
                                                const std::vector<double>& points = {});
};

}  // namespace MCEngine_850
