#pragma once

#include <iosfwd>
#include <vector>

namespace MCMath_850 {

// A symmetric matrix partitioned into blocks of rows and columns. Block a has
// GetBlockSize(a) rows and as many columns; an element is addressed by its
// block row a, block column b, and its row i within block a and column j
// within block b. Element (a, b, i, j) is element (b, a, j, i). Elements
// start at 0.
class MCSymMatrix {
 public:
  MCSymMatrix() = default;
  explicit MCSymMatrix(const std::vector<int>& blockSizes);

  // New block sizes; every element becomes 0. A negative size counts as 0.
  void Resize(const std::vector<int>& blockSizes);

  int GetNBlocks() const { return static_cast<int>(fvBlockSizes.size()); }
  // Rows of block a; 0 for a block that does not exist.
  int GetBlockSize(int a) const;
  // Rows of the whole matrix.
  int GetDimension() const { return fDimension; }

  // The element; the system-missing value when the address is outside the
  // matrix.
  double GetElem(int a, int b, int i, int j) const;
  // Sets the element and its mirror; false when the address is outside.
  bool SetElem(int a, int b, int i, int j, double value);

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  // Place of the element in the packed lower triangle, or -1.
  long Index(int a, int b, int i, int j) const;

  std::vector<int> fvBlockSizes;
  std::vector<int> fvBlockStarts;
  int fDimension = 0;
  std::vector<double> fvElements;
};

}  // namespace MCMath_850
