#pragma once

#include <vector>

#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// One random block over the records in engine order: subjects renumbered
// 0..fNSubjects-1 and the design columns as sparse rows.
struct MCEngineBlockData {
  MCEngineCovType fType = MCEngineCovType::VC;
  // The input block this one comes from, and for a block split off a VC
  // block the effect it holds (else -1).
  int fOrigin = 0;
  int fEffect = -1;
  int fNColumns = 0;
  int fNSubjects = 1;
  std::vector<int> fvColumnEffects;
  std::vector<int> fvSubject;
  std::vector<int> fvRowStart;
  std::vector<int> fvColIndex;
  std::vector<double> fvValues;
};

}  // namespace MCEngine_850
