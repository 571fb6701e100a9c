#pragma once

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCEngineData.h"

namespace MCEngine_850 {

// Checks the input, drops unusable records, decides aliasing once from X'X,
// finds the independent groups of records and lays the data out by group.
class MCEngineDataBuilder {
 public:
  static MCEngineStatus Build(const MCEngineInput& input, double singularTolerance, MCEngineData& data);

  // Sweeps the P x P matrix (row-major) in column order; a column is aliased
  // when its pivot falls to tol times its original diagonal, or the diagonal
  // is 0.
  static std::vector<bool> FindAliased(const std::vector<double>& xtx, int P, double tol);

  // True for structures whose matrix is diagonal whatever the parameters.
  static bool IsDiagonalType(MCEngineCovType type);

 private:
  // Frequency weights, on records laid out by group with their blocks and
  // residual positions. Where the residual structure couples no records, a
  // record's weight copies the record within its subjects; where it couples
  // them, two copies of a record would share its position, so the weight
  // copies the whole independent group and must be equal within it.
  static MCEngineStatus AssignFrequencyWeights(const std::vector<double>& fw, MCEngineData& data);
};

}  // namespace MCEngine_850
