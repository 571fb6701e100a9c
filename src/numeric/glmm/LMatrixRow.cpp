#include "numeric/glmm/LMatrixRow.h"

#include <algorithm>
#include <ostream>

#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"

namespace MCGLMM_850 {

using namespace GLMMConst_850;

LMatrixRow::LMatrixRow() : fType(LROW_FIXED), fCount(0), fFirstValue(0.0) {}

void LMatrixRow::Setup(LMatrixRowType type, int count) {
  *this = LMatrixRow();
  fType = type;
  fCount = std::max(count, 0);
}

bool LMatrixRow::AddNewPair(int effect, const std::vector<double>& values) {
  if (fType == LROW_ALL_VALUES || effect < 0 || effect >= fCount) return false;
  if (std::find(fvPairEffects.begin(), fvPairEffects.end(), effect) != fvPairEffects.end()) return false;
  fvPairEffects.push_back(effect);
  fvvPairValues.push_back(values);
  return true;
}

std::vector<double> LMatrixRow::GetEffectValues(int effect) const {
  for (std::size_t i = 0; i < fvPairEffects.size(); ++i) {
    if (fvPairEffects[i] == effect) return fvvPairValues[i];
  }
  return {};
}

bool LMatrixRow::SetAllValues(const std::vector<double>& values) {
  if (fType != LROW_ALL_VALUES) return false;
  fvAllValues = values;
  return true;
}

bool LMatrixRow::SetFirstValue(double value) {
  if (fType != LROW_FIXED_WITH_INTERCEPT) return false;
  fFirstValue = value;
  return true;
}

void LMatrixRow::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void LMatrixRow::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  GLMMComponentDisplay_850::DisplayC(os, "Row type:", fType);
  DisplayI(os, "Count:", fCount);
  if (fType == LROW_ALL_VALUES) {
    DisplayDV(os, "Values:", fvAllValues);
    return;
  }
  if (fType == LROW_FIXED_WITH_INTERCEPT) DisplayD(os, "Intercept value:", fFirstValue);
  for (std::size_t i = 0; i < fvPairEffects.size(); ++i) {
    DisplayI(os, "Effect:", fvPairEffects[i]);
    DisplayDV(os, "Values:", fvvPairValues[i]);
  }
}

}  // namespace MCGLMM_850
