#pragma once

#include <vector>

#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// One random block: its design columns for every record (the intercept, if
// any, is a column of ones), the subject of every record, and the covariance
// structure shared by the subjects. Without subjects the block is one subject
// over all records. The columns are held as sparse rows.
class MCEngineRandomBlock {
 public:
  MCEngineRandomBlock() = default;

  MCEngineCovType GetCovType() const { return fCovType; }
  void SetCovType(MCEngineCovType type) { fCovType = type; }

  int GetNColumns() const { return fNColumns; }
  // Row r holds the entries fvColIndex[fvRowStart[r] .. fvRowStart[r+1]).
  const std::vector<int>& GetRowStart() const { return fvRowStart; }
  const std::vector<int>& GetColIndex() const { return fvColIndex; }
  const std::vector<double>& GetValues() const { return fvValues; }
  void SetColumns(int nColumns, const std::vector<int>& rowStart, const std::vector<int>& colIndex,
                  const std::vector<double>& values);
  // The same from a dense row-major matrix of nRecords x nColumns; zeros are dropped.
  void SetDenseColumns(int nColumns, const std::vector<double>& rowMajor);

  // For VC, the effect each column belongs to (0, 1, ...): one variance per
  // effect. Empty means every column is its own effect.
  const std::vector<int>& GetColumnEffects() const { return fvColumnEffects; }
  void SetColumnEffects(const std::vector<int>& effects) { fvColumnEffects = effects; }

  // Subject codes (any non-negative integers), one per record; empty means one subject.
  const std::vector<int>& GetSubjects() const { return fvSubjects; }
  void SetSubjects(const std::vector<int>& subjects) { fvSubjects = subjects; }

 private:
  MCEngineCovType fCovType = MCEngineCovType::VC;
  int fNColumns = 0;
  std::vector<int> fvRowStart;
  std::vector<int> fvColIndex;
  std::vector<double> fvValues;
  std::vector<int> fvColumnEffects;
  std::vector<int> fvSubjects;
};

}  // namespace MCEngine_850
