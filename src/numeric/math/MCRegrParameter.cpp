#include "numeric/math/MCRegrParameter.h"

#include <algorithm>
#include <ostream>

#include "numeric/display/MCDisplay.h"
#include "numeric/math/MCModelEffect.h"

namespace MCMath_850 {

MCRegrParameter::MCRegrParameter() : fEffectIndex(-1), fTargetCategory(-1) {}

int MCRegrParameter::GetCovariateMult(int covariate) const {
  for (std::size_t i = 0; i < fvCovariates.size(); ++i) {
    if (fvCovariates[i] == covariate) return fvCovariateMult[i];
  }
  return 0;
}

bool MCRegrParameter::AddFactor(int factor, int category, int nestLevel) {
  if (factor < 0 || nestLevel < 0) return false;
  if (std::find(fvFactors.begin(), fvFactors.end(), factor) != fvFactors.end()) return false;
  std::size_t place = 0;
  while (place < fvFactorNestLevels.size() && fvFactorNestLevels[place] <= nestLevel) ++place;
  fvFactors.insert(fvFactors.begin() + static_cast<std::ptrdiff_t>(place), factor);
  fvCategories.insert(fvCategories.begin() + static_cast<std::ptrdiff_t>(place), category);
  fvFactorNestLevels.insert(fvFactorNestLevels.begin() + static_cast<std::ptrdiff_t>(place), nestLevel);
  return true;
}

int MCRegrParameter::AddCovariate(int covariate, int multiplicity) {
  if (covariate < 0 || multiplicity < 1) return 0;
  for (std::size_t i = 0; i < fvCovariates.size(); ++i) {
    if (fvCovariates[i] == covariate) {
      fvCovariateMult[i] += multiplicity;
      return fvCovariateMult[i];
    }
  }
  fvCovariates.push_back(covariate);
  fvCovariateMult.push_back(multiplicity);
  return multiplicity;
}

bool MCRegrParameter::SetupFromEffect(const MCModelEffect& effect, int effectIndex, int initialCategory) {
  if (effect.IsIntercept() || effectIndex < 0) return false;
  fEffectIndex = effectIndex;
  fvFactors.clear();
  fvCategories.clear();
  fvFactorNestLevels.clear();
  const std::vector<int> factors = effect.GetFactors();
  const std::vector<int>& levels = effect.GetFactorLevels();
  fvFactors.reserve(factors.size());
  fvCategories.reserve(factors.size());
  fvFactorNestLevels.reserve(factors.size());
  for (std::size_t i = 0; i < factors.size(); ++i) {
    AddFactor(factors[i], initialCategory, i < levels.size() ? levels[i] : 0);
  }
  fvCovariates = effect.GetCovariates();
  fvCovariateMult = effect.GetCovMultiplicities();
  return true;
}

void MCRegrParameter::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCRegrParameter::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin MCRegrParameter display.");
  if (fvFactors.empty()) {
    DisplayText(os, "No factors are present.");
  } else {
    DisplayIV(os, "Factors:", fvFactors);
    DisplayIV(os, "Factor nesting levels:", fvFactorNestLevels);
    DisplayIV(os, "Categories:", fvCategories);
  }
  if (fvCovariates.empty()) {
    DisplayText(os, "No covariates are present.");
  } else {
    DisplayIV(os, "Covariates:", fvCovariates);
    DisplayIV(os, "Covariate multiplicities:", fvCovariateMult);
  }
  DisplayI(os, "Effect index:", fEffectIndex);
  DisplayI(os, "Target category:", fTargetCategory);
  DisplayText(os, "End MCRegrParameter display.");
}

}  // namespace MCMath_850
