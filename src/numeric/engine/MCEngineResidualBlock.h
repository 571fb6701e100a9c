#pragma once

#include <vector>

#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// The residual block: the subject of every record, its position (the level of
// the repeated-measures index, 0-based) within the subject, and the structure
// of the residual covariance over positions. Without subjects all records are
// one subject; without positions a record's position is its order within its
// subject. The default is independent residuals with a common variance.
// A spatial structure places the records by their coordinates instead: its
// covariance depends on the Euclidean distances between the records of a
// subject, and positions are not used.
class MCEngineResidualBlock {
 public:
  MCEngineResidualBlock() = default;

  MCEngineCovType GetCovType() const { return fCovType; }
  void SetCovType(MCEngineCovType type) { fCovType = type; }
  const std::vector<int>& GetSubjects() const { return fvSubjects; }
  void SetSubjects(const std::vector<int>& subjects) { fvSubjects = subjects; }
  const std::vector<int>& GetPositions() const { return fvPositions; }
  void SetPositions(const std::vector<int>& positions) { fvPositions = positions; }
  // Number of positions; 0 takes the largest position found plus one.
  int GetDimension() const { return fDimension; }
  void SetDimension(int dimension) { fDimension = dimension; }
  // Coordinates of every record, row-major with GetNCoordinates() values per
  // record; read by the spatial structures only.
  int GetNCoordinates() const { return fNCoordinates; }
  const std::vector<double>& GetCoordinates() const { return fvCoordinates; }
  void SetCoordinates(int nCoordinates, const std::vector<double>& rowMajor) {
    fNCoordinates = nCoordinates;
    fvCoordinates = rowMajor;
  }

 private:
  MCEngineCovType fCovType = MCEngineCovType::ID;
  std::vector<int> fvSubjects;
  std::vector<int> fvPositions;
  int fDimension = 0;
  int fNCoordinates = 0;
  std::vector<double> fvCoordinates;
};

}  // namespace MCEngine_850
