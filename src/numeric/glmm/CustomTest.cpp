#include "numeric/glmm/CustomTest.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

void CustomTest::Reset() { *this = CustomTest(); }

void CustomTest::AddFixedRow(const LMatrixRow& fixedRow) {
  LMatrixRow noRandom;
  noRandom.Setup(GLMMConst_850::LROW_RANDOM, 0);
  fvFixedRows.push_back(fixedRow);
  fvRandomRows.push_back(noRandom);
  fvbRandomPart.push_back(false);
}

void CustomTest::AddMixedRow(const LMatrixRow& fixedRow, const LMatrixRow& randomRow) {
  fvFixedRows.push_back(fixedRow);
  fvRandomRows.push_back(randomRow);
  fvbRandomPart.push_back(true);
}

bool CustomTest::HasRandomPart(int i) const {
  return i >= 0 && i < GetNRows() && fvbRandomPart[static_cast<std::size_t>(i)];
}

void CustomTest::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void CustomTest::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin CustomTest display.");
  DisplayS(os, "Label:", fLabel);
  DisplayI(os, "Rows:", GetNRows());
  for (int i = 0; i < GetNRows(); ++i) {
    DisplayI(os, "Row:", i);
    fvFixedRows[static_cast<std::size_t>(i)].Display(os);
    if (HasRandomPart(i)) fvRandomRows[static_cast<std::size_t>(i)].Display(os);
  }
  DisplayDV(os, "K values:", fvKValues);
  DisplayText(os, "End CustomTest display.");
}

}  // namespace MCGLMM_850
