#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/math/MCTestStats.h"

namespace MCMath_850 {

// The tests of a model's effects, one entry per test: its status, its
// statistics, its contrast matrix (one row of coefficients per contrast) and
// the indices of the rows it uses.
class MCModelTestStats {
 public:
  using LMatrix = std::vector<std::vector<double>>;

  MCModelTestStats() = default;

  // Appends a test and returns its number.
  int AddTest(const MCTestStats& stats, const MCCommon_850::MCStatus& status, const LMatrix& lMatrix,
              const std::vector<int>& rowIndices);
  void Clear();

  int GetNTests() const { return static_cast<int>(fvTests.size()); }
  // The entries of test i. An index out of range reads as an empty test with
  // missing statistics and an OK status.
  MCCommon_850::MCStatus GetStatus(int i) const;
  const MCTestStats& GetTestStats(int i) const;
  const LMatrix& GetLMatrix(int i) const;
  const std::vector<int>& GetRowIndices(int i) const;

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  struct Test {
    MCTestStats fStats;
    MCCommon_850::MCStatus fStatus;
    LMatrix fLMatrix;
    std::vector<int> fvRowIndices;
  };

  const Test& TestAt(int i) const;

  std::vector<Test> fvTests;
};

}  // namespace MCMath_850
