#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"

namespace MCEngine_850 {

// Evaluates the likelihood through Henderson's mixed-model equations, for
// designs whose V does not split into small groups (crossed random effects).
// G = Lambda Lambda' enters as Lambda, so a singular G is allowed. Dense for
// now: the work grows with the cube of the number of random-effect columns.
// Frequency weights must all be 1 on this path.
class MCEngineMMEEvaluator : public MCEngineEvaluator {
 public:
  MCEngineMMEEvaluator(const MCEngineData& data, const MCEngineModel& model);

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;

  // Columns of the random-effect design over all blocks and subjects.
  int GetNRandomColumns() const { return fNZ; }

 private:
  const MCEngineData& fData;
  const MCEngineModel& fModel;
  bool fbResidualDiagonal = true;
  int fNZ = 0;
  std::vector<int> fvBlockOffset;
  std::vector<int> fvZStart;
  std::vector<int> fvZIndex;
  std::vector<double> fvZValue;
  std::vector<std::vector<int>> fvResGroups;
};

}  // namespace MCEngine_850
