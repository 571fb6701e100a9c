#include "numeric/math/MCEmmeansSpec.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

namespace {

int AppendUnique(std::vector<int>& list, int index) {
  if (index < 0) return -1;
  if (std::find(list.begin(), list.end(), index) != list.end()) return -1;
  list.push_back(index);
  return static_cast<int>(list.size()) - 1;
}

}  // namespace

MCEmmeansSpec::MCEmmeansSpec()
    : fContrastType(MCConst::CONTRAST_NONE),
      fReferenceType(MCConst::REFERENCE_CATEGORY),
      fRefCateg(-1),
      fPAdjust(MCConst::PADJUST_LSD),
      fEmmScaleType(MCConst::EMM_SCALE_ORIGINAL) {}

void MCEmmeansSpec::Reset() { *this = MCEmmeansSpec(); }

int MCEmmeansSpec::AddFactor(int index, int nestLevel) {
  const int place = AppendUnique(fvFactors, index);
  if (place >= 0) fvFactorsNestLevel.push_back(nestLevel);
  return place;
}

int MCEmmeansSpec::AddCovariate(int index, double value) {
  const int place = AppendUnique(fvCovariates, index);
  if (place >= 0) fvCovariateValues.push_back(value);
  return place;
}

int MCEmmeansSpec::AddCompareFactor(int index) { return AppendUnique(fvCompareFactors, index); }

bool MCEmmeansSpec::SetMetricValueList(const std::vector<double>& values) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (MCCommon_850::MCMV::IsMissing(values[i]) || !std::isfinite(values[i])) return false;
    for (std::size_t j = 0; j < i; ++j) {
      if (values[j] == values[i]) return false;
    }
  }
  fvMetricValues = values;
  return true;
}

void MCEmmeansSpec::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCEmmeansSpec::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin MCEmmeansSpec display.");
  DisplayIV(os, "Factors:", fvFactors);
  DisplayIV(os, "Factor nesting levels:", fvFactorsNestLevel);
  DisplayIV(os, "Covariates:", fvCovariates);
  DisplayDV(os, "Covariate values:", fvCovariateValues);
  DisplayIV(os, "Compare factors:", fvCompareFactors);
  DisplayC(os, "Contrast type:", fContrastType);
  DisplayC(os, "Reference type:", fReferenceType);
  DisplayI(os, "Reference category:", fRefCateg);
  DisplayC(os, "Significance adjustment:", fPAdjust);
  DisplayC(os, "Scale:", fEmmScaleType);
  DisplayDV(os, "Metric values:", fvMetricValues);
  DisplayText(os, "End MCEmmeansSpec display.");
}

}  // namespace MCMath_850
