#pragma once

#include <vector>

#include "numeric/engine/MCEngineCovType.h"
#include "numeric/engine/detail/MCEngineBlockData.h"

namespace MCEngine_850 {

// The usable records of one fit, read once and laid out by independent group
// ("component": records whose covariance couples them) so that each group is
// contiguous. Only the non-aliased fixed columns are kept.
struct MCEngineData {
  int fNRecords = 0;
  int fNColumns = 0;  // columns of the overparameterized design
  int fRank = 0;      // non-aliased columns kept in fvXr
  std::vector<bool> fvAliased;
  std::vector<int> fvKept;
  // Weighted X'X of all columns (row-major), from which aliasing and the
  // hypothesis matrices are derived.
  std::vector<double> fvXtX;

  std::vector<int> fvOriginalIndex;  // engine order -> input record
  // The response is held divided by fYScale, a power of two, so that the
  // likelihood's magnitudes stay moderate whatever the response's units.
  double fYScale = 1.0;
  std::vector<double> fvY;
  std::vector<double> fvXr;  // row-major, fNRecords x fRank
  // What divides a record's residual variance: its scale weight times its
  // own frequency weight (fvRecordWeight).
  std::vector<double> fvScaleWeight;
  // Frequency weights, each standing for that many copies. A record's own
  // weight copies the record within its group (the copies share its random
  // effects); a group's weight copies the whole group. A record carries at
  // most one of the two, the other being 1.
  std::vector<double> fvRecordWeight;

  std::vector<int> fvComponentStart;  // size = components + 1
  std::vector<double> fvComponentWeight;
  double fTotalWeight = 0.0;  // the records with all their copies

  std::vector<MCEngineBlockData> fvBlocks;

  MCEngineCovType fResidualType = MCEngineCovType::ID;
  int fNResSubjects = 1;
  int fResDimension = 1;
  std::vector<int> fvResSubject;
  std::vector<int> fvResPosition;
  // A spatial residual structure's positions are the distinct points of the
  // records' coordinates, in ascending order: fResDimension rows of
  // coordinates, row-major. Empty for other structures.
  std::vector<double> fvResPoints;

  int GetNComponents() const { return static_cast<int>(fvComponentStart.size()) - 1; }
};

}  // namespace MCEngine_850
