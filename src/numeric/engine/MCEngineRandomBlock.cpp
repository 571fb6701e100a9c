#include "numeric/engine/MCEngineRandomBlock.h"

namespace MCEngine_850 {

void MCEngineRandomBlock::SetColumns(int nColumns, const std::vector<int>& rowStart,
                                     const std::vector<int>& colIndex,
                                     const std::vector<double>& values) {
  fNColumns = nColumns;
  fvRowStart = rowStart;
  fvColIndex = colIndex;
  fvValues = values;
}

void MCEngineRandomBlock::SetDenseColumns(int nColumns, const std::vector<double>& rowMajor) {
  fNColumns = nColumns;
  fvRowStart.assign(1, 0);
  fvColIndex.clear();
  fvValues.clear();
  if (nColumns <= 0) {
    fNColumns = 0;
    return;
  }
  const std::size_t nRows = rowMajor.size() / static_cast<std::size_t>(nColumns);
  for (std::size_t r = 0; r < nRows; ++r) {
    for (int c = 0; c < nColumns; ++c) {
      const double v = rowMajor[r * static_cast<std::size_t>(nColumns) + static_cast<std::size_t>(c)];
      if (v != 0.0) {
        fvColIndex.push_back(c);
        fvValues.push_back(v);
      }
    }
    fvRowStart.push_back(static_cast<int>(fvColIndex.size()));
  }
}

}  // namespace MCEngine_850
