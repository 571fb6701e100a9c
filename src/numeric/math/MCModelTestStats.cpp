#include "numeric/math/MCModelTestStats.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

int MCModelTestStats::AddTest(const MCTestStats& stats, const MCCommon_850::MCStatus& status,
                              const LMatrix& lMatrix, const std::vector<int>& rowIndices) {
  fvTests.push_back(Test{stats, status, lMatrix, rowIndices});
  return static_cast<int>(fvTests.size()) - 1;
}

void MCModelTestStats::Clear() { fvTests.clear(); }

const MCModelTestStats::Test& MCModelTestStats::TestAt(int i) const {
  static const Test kEmpty{};
  if (i < 0 || i >= static_cast<int>(fvTests.size())) return kEmpty;
  return fvTests[static_cast<std::size_t>(i)];
}

MCCommon_850::MCStatus MCModelTestStats::GetStatus(int i) const { return TestAt(i).fStatus; }

const MCTestStats& MCModelTestStats::GetTestStats(int i) const { return TestAt(i).fStats; }

const MCModelTestStats::LMatrix& MCModelTestStats::GetLMatrix(int i) const { return TestAt(i).fLMatrix; }

const std::vector<int>& MCModelTestStats::GetRowIndices(int i) const { return TestAt(i).fvRowIndices; }

void MCModelTestStats::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCModelTestStats::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayI(os, "Number of tests:", GetNTests());
  for (int i = 0; i < GetNTests(); ++i) {
    const Test& test = fvTests[static_cast<std::size_t>(i)];
    DisplayI(os, "Test:", i);
    test.fStatus.Display(os);
    test.fStats.Display(os);
    DisplayI(os, "Contrast rows:", static_cast<long>(test.fLMatrix.size()));
    for (const std::vector<double>& row : test.fLMatrix) DisplayDV(os, "Contrast row:", row);
    DisplayIV(os, "Row indices:", test.fvRowIndices);
  }
}

}  // namespace MCMath_850
