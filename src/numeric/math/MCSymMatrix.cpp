#include "numeric/math/MCSymMatrix.h"

#include <algorithm>
#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

MCSymMatrix::MCSymMatrix(const std::vector<int>& blockSizes) { Resize(blockSizes); }

void MCSymMatrix::Resize(const std::vector<int>& blockSizes) {
  fvBlockSizes.clear();
  fvBlockStarts.clear();
  fDimension = 0;
  for (int size : blockSizes) {
    fvBlockStarts.push_back(fDimension);
    fvBlockSizes.push_back(std::max(size, 0));
    fDimension += std::max(size, 0);
  }
  const std::size_t n = static_cast<std::size_t>(fDimension);
  fvElements.assign(n * (n + 1) / 2, 0.0);
}

int MCSymMatrix::GetBlockSize(int a) const {
  if (a < 0 || a >= GetNBlocks()) return 0;
  return fvBlockSizes[static_cast<std::size_t>(a)];
}

long MCSymMatrix::Index(int a, int b, int i, int j) const {
  if (i < 0 || j < 0 || i >= GetBlockSize(a) || j >= GetBlockSize(b)) return -1;
  long row = fvBlockStarts[static_cast<std::size_t>(a)] + i;
  long col = fvBlockStarts[static_cast<std::size_t>(b)] + j;
  if (row < col) std::swap(row, col);
  return row * (row + 1) / 2 + col;
}

double MCSymMatrix::GetElem(int a, int b, int i, int j) const {
  const long index = Index(a, b, i, j);
  return index < 0 ? MCCommon_850::MCMV::Missing() : fvElements[static_cast<std::size_t>(index)];
}

bool MCSymMatrix::SetElem(int a, int b, int i, int j, double value) {
  const long index = Index(a, b, i, j);
  if (index < 0) return false;
  fvElements[static_cast<std::size_t>(index)] = value;
  return true;
}

void MCSymMatrix::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCSymMatrix::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayIV(os, "Block sizes:", fvBlockSizes);
  for (int a = 0; a < GetNBlocks(); ++a) {
    for (int i = 0; i < GetBlockSize(a); ++i) {
      std::vector<double> row;
      for (int b = 0; b < GetNBlocks(); ++b) {
        for (int j = 0; j < GetBlockSize(b); ++j) row.push_back(GetElem(a, b, i, j));
      }
      DisplayDV(os, "Row:", row);
    }
  }
}

}  // namespace MCMath_850
