#include "numeric/engine/detail/MCCovStructureFactory.h"

#include "numeric/engine/detail/MCCovAD1.h"
#include "numeric/engine/detail/MCCovAR1.h"
#include "numeric/engine/detail/MCCovARH1.h"
#include "numeric/engine/detail/MCCovARMA11.h"
#include "numeric/engine/detail/MCCovCS.h"
#include "numeric/engine/detail/MCCovCSH.h"
#include "numeric/engine/detail/MCCovCSR.h"
#include "numeric/engine/detail/MCCovDIAG.h"
#include "numeric/engine/detail/MCCovFA1.h"
#include "numeric/engine/detail/MCCovFAH1.h"
#include "numeric/engine/detail/MCCovHF.h"
#include "numeric/engine/detail/MCCovID.h"
#include "numeric/engine/detail/MCCovSpatial.h"
#include "numeric/engine/detail/MCCovTP.h"
#include "numeric/engine/detail/MCCovTPH.h"
#include "numeric/engine/detail/MCCovUN.h"
#include "numeric/engine/detail/MCCovUNR.h"
#include "numeric/engine/detail/MCCovVC.h"

namespace MCEngine_850 {

std::unique_ptr<MCCovStructure> MCCovStructureFactory::Create(MCEngineCovType type, int dimension,
                                                              const std::vector<int>& columnEffects,
                                                              const std::vector<double>& points) {
  if (dimension < 1) return nullptr;
  const bool pointsGiven = !points.empty() && points.size() % static_cast<std::size_t>(dimension) == 0;
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
    case MCEngineCovType::ARH1:
      return std::make_unique<MCCovARH1>(dimension);
    case MCEngineCovType::AD1:
      return std::make_unique<MCCovAD1>(dimension);
    case MCEngineCovType::TP:
      return std::make_unique<MCCovTP>(dimension);
    case MCEngineCovType::ARMA11:
      return std::make_unique<MCCovARMA11>(dimension);
    case MCEngineCovType::CSH:
      return std::make_unique<MCCovCSH>(dimension);
    case MCEngineCovType::CSR:
      return std::make_unique<MCCovCSR>(dimension);
    case MCEngineCovType::FA1:
      return std::make_unique<MCCovFA1>(dimension);
    case MCEngineCovType::HF:
      return std::make_unique<MCCovHF>(dimension);
    case MCEngineCovType::TPH:
      return std::make_unique<MCCovTPH>(dimension);
    case MCEngineCovType::UNR:
      return std::make_unique<MCCovUNR>(dimension);
    case MCEngineCovType::FAH1:
      return std::make_unique<MCCovFAH1>(dimension);
    case MCEngineCovType::SP_POW:
    case MCEngineCovType::SP_EXP:
    case MCEngineCovType::SP_GAU:
    case MCEngineCovType::SP_LIN:
    case MCEngineCovType::SP_LINL:
    case MCEngineCovType::SP_SPH:
      return pointsGiven ? std::make_unique<MCCovSpatial>(dimension, points, *MCCovSpatialKernel::Find(type)) : nullptr;
    case MCEngineCovType::COVAR_RESERVED:
      break;
  }
  return nullptr;
}

}  // namespace MCEngine_850
