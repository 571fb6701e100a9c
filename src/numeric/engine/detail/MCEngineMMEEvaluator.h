#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"
#include "numeric/engine/detail/MCEngineRecordCopies.h"

namespace MCEngine_850 {

// Evaluates the likelihood through Henderson's mixed-model equations, for
// designs whose V does not split into small groups (crossed random effects).
// G = Lambda Lambda' enters as Lambda, so a singular G is allowed. Dense for
// now: the work grows with the cube of the number of random-effect columns.
// A group's frequency weight counts its residual blocks that many times,
// which copies the group only when no random effect reaches it; the fitter
// sends weighted groups that random effects reach to the group-by-group path.
class MCEngineMMEEvaluator : public MCEngineEvaluator {
 public:
  MCEngineMMEEvaluator(const MCEngineData& data, const MCEngineModel& model);

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;

  // Columns of the random-effect design over all blocks and subjects.
  int GetNRandomColumns() const { return fNZ; }

 private:
  const MCEngineData& fData;
  const MCEngineModel& fModel;
  MCEngineRecordCopies fCopies;
  bool fbResidualDiagonal = true;
  int fNZ = 0;
  std::vector<int> fvBlockOffset;
  std::vector<int> fvZStart;
  std::vector<int> fvZIndex;
  std::vector<double> fvZValue;
  std::vector<std::vector<int>> fvResGroups;
  std::vector<double> fvResGroupWeight;
};

}  // namespace MCEngine_850
