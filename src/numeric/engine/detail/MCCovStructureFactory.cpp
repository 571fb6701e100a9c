#include "numeric/engine/detail/MCCovStructureFactory.h"

#include "numeric/engine/detail/MCCovAR1.h"
#include "numeric/engine/detail/MCCovCS.h"
#include "numeric/engine/detail/MCCovDIAG.h"
#include "numeric/engine/detail/MCCovID.h"
#include "numeric/engine/detail/MCCovUN.h"
#include "numeric/engine/detail/MCCovVC.h"

namespace MCEngine_850 {

std::unique_ptr<MCCovStructure> MCCovStructureFactory::Create(MCEngineCovType type, int dimension,
                                                              const std::vector<int>& columnEffects) {
  if (dimension < 1) return nullptr;
  switch (type) {
    case MCEngineCovType::ID:
      return std::make_unique<MCCovID>(dimension);
    case MCEngineCovType::VC:
      return std::make_unique<MCCovVC>(dimension, columnEffects);
    case MCEngineCovType::DIAG:
      return std::make_unique<MCCovDIAG>(dimension);
    case MCEngineCovType::CS:
      return std::make_unique<MCCovCS>(dimension);
    case MCEngineCovType::UN:
      return std::make_unique<MCCovUN>(dimension);
    case MCEngineCovType::AR1:
      return std::make_unique<MCCovAR1>(dimension);
    default:
      return nullptr;
  }
}

}  // namespace MCEngine_850
