#include "params/MIXRegrParameter.h"

#include <cstddef>

#include "base/MIXAssert.h"
#include "host/adapter/ACAInputAdapter.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMRandomSpec.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"

namespace {

// The effects of random block `randomIndex` of the settings, or the model
// effects for a negative index; null for a block the settings lack.
const std::vector<MCMath_850::MCModelEffect>* EffectsOf(const MCGLMM_850::GLMMSettings& settings, int randomIndex) {
  if (randomIndex < 0) return &settings.GetModelEffects();
  if (randomIndex >= settings.GetNRandomSpecs()) return nullptr;
  return &settings.GetRandomSpecs()[static_cast<std::size_t>(randomIndex)].GetEffects();
}

}  // namespace

MIXRegrParameter::MIXRegrParameter() : fEffectIndex(-1), fTargetCategory(nullptr) {}

const OBS* MIXRegrParameter::ContainsFactor(int factor) const {
  for (std::size_t i = 0; i < fFactors.size(); ++i) {
    if (fFactors[i] == factor) return fCategories[i];
  }
  return nullptr;
}

int MIXRegrParameter::GetCovariateMult(int covariate) const {
  for (std::size_t i = 0; i < fCovariates.size(); ++i) {
    if (fCovariates[i] == covariate) return fCovariateMultiplicities[i];
  }
  return 0;
}

int MIXRegrParameter::GetNCovariateMult() const {
  int sum = 0;
  for (int multiplicity : fCovariateMultiplicities) sum += multiplicity;
  return sum;
}

int MIXRegrParameter::AddCovariate(int covariate, int multiplicity) {
  if (covariate < 0 || multiplicity < 1) return 0;
  for (std::size_t i = 0; i < fCovariates.size(); ++i) {
    if (fCovariates[i] == covariate) {
      fCovariateMultiplicities[i] += multiplicity;
      return fCovariateMultiplicities[i];
    }
  }
  fCovariates.push_back(covariate);
  fCovariateMultiplicities.push_back(multiplicity);
  return multiplicity;
}

bool MIXRegrParameter::AddFactor(int factor, const OBS* category, int nestLevel) {
  if (factor < 0 || nestLevel < 0) return false;
  for (int present : fFactors) {
    if (present == factor) return false;
  }
  std::size_t place = 0;
  while (place < fFactorNestLevels.size() && fFactorNestLevels[place] <= nestLevel) ++place;
  const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(place);
  fFactors.insert(fFactors.begin() + offset, factor);
  fCategories.insert(fCategories.begin() + offset, category);
  fFactorNestLevels.insert(fFactorNestLevels.begin() + offset, nestLevel);
  return true;
}

bool MIXRegrParameter::SetupFromEffect(const MCMath_850::MCModelEffect& effect, int effectIndex) {
  if (effect.IsIntercept() || effectIndex < 0) return false;
  fEffectIndex = effectIndex;
  const std::vector<int> factors = effect.GetFactors();
  const std::vector<int>& levels = effect.GetFactorLevels();
  fFactors.clear();
  fCategories.clear();
  fFactorNestLevels.clear();
  fFactors.reserve(factors.size());
  fCategories.reserve(factors.size());
  fFactorNestLevels.reserve(factors.size());
  for (std::size_t i = 0; i < factors.size(); ++i) {
    AddFactor(factors[i], nullptr, i < levels.size() ? levels[i] : 0);
  }
  fCovariates = effect.GetCovariates();
  fCovariateMultiplicities = effect.GetCovMultiplicities();
  return true;
}

bool MIXRegrParameter::EncodeCategories(MCMath_850::MCRegrParameter& compParam,
                                        const MCGLMM_850::GLMMSettings& settings, const ACAInputAdapter* pInpAdapt,
                                        int randomIndex) const {
  MIX_ASSERT(pInpAdapt != nullptr, "pInpAdapt != 0");
  bool result = true;
  if (fTargetCategory != nullptr) {
    bool notFound = false;
    const int code = pInpAdapt->EncodeRecordCatValue(settings.GetDependent(), fTargetCategory, notFound, false);
    if (notFound) {
      result = false;
    } else {
      compParam.SetTargetCategory(code);
    }
  }
  // Without its effect the component parameter cannot take the categories.
  if (!result) return false;
  const std::vector<MCMath_850::MCModelEffect>* pEffects = EffectsOf(settings, randomIndex);
  if (pEffects == nullptr || fEffectIndex < 0 || fEffectIndex >= static_cast<int>(pEffects->size())) return false;
  result = compParam.SetupFromEffect((*pEffects)[static_cast<std::size_t>(fEffectIndex)], fEffectIndex, 0);
  if (!result) return false;

  std::vector<int>& compCategs = compParam.GetCategories();
  MIX_ASSERT(compCategs.size() == fCategories.size(), "compCategs.size() == fCategories.size()");
  MIX_ASSERT(fCategories.size() == fFactors.size(), "fCategories.size() == fFactors.size()");
  for (std::size_t i = 0; i < fFactors.size(); ++i) {
    if (fCategories[i] == nullptr) return false;
    bool notFound = false;
    const int code = pInpAdapt->EncodeRecordCatValue(fFactors[i], fCategories[i], notFound, false);
    if (notFound) return false;
    compCategs[i] = code;
  }
  return true;
}

bool MIXRegrParameter::DecodeCategories(const MCMath_850::MCRegrParameter& compParam,
                                        const MCGLMM_850::GLMMSettings& settings, const ACAInputAdapter* pInpAdapt,
                                        int randomIndex) {
  MIX_ASSERT(pInpAdapt != nullptr, "pInpAdapt != 0");
  bool result = true;
  if (fEffectIndex >= 0) {
    const std::vector<MCMath_850::MCModelEffect>* pEffects = EffectsOf(settings, randomIndex);
    if (pEffects == nullptr || fEffectIndex >= static_cast<int>(pEffects->size())) return false;
    result = SetupFromEffect((*pEffects)[static_cast<std::size_t>(fEffectIndex)], fEffectIndex);
  }
  // A failed rebuild leaves the parameter as it was, and then its lists need
  // not match the component's.
  if (!result) return false;

  const std::vector<int>& compCategs = compParam.GetCategories();
  MIX_ASSERT(compCategs.size() == fCategories.size(), "compCategs.size() == fCategories.size()");
  MIX_ASSERT(fCategories.size() == fFactors.size(), "fCategories.size() == fFactors.size()");
  for (std::size_t i = 0; i < fFactors.size(); ++i) {
    int type = 0;
    const OBS* value = pInpAdapt->DecodeCatValue(fFactors[i], compCategs[i], type);
    if (value == nullptr) return false;
    fCategories[i] = value;
  }
  return true;
}

bool MIXRegrParameter::operator==(const MIXRegrParameter& other) const {
  return fEffectIndex == other.fEffectIndex && fFactors == other.fFactors && fCategories == other.fCategories &&
         fFactorNestLevels == other.fFactorNestLevels && fCovariates == other.fCovariates &&
         fCovariateMultiplicities == other.fCovariateMultiplicities && fTargetCategory == other.fTargetCategory;
}

void MIXRegrParameter::Display() const {
  MCDisplay_850::DisplayText("Begin MIXRegrParameter object display.");
  if (!fFactors.empty()) {
    MCDisplay_850::DisplayIV("The factors:", fFactors);
    MCDisplay_850::DisplayIV("Factor nesting levels:", fFactorNestLevels);
  } else {
    MCDisplay_850::DisplayText("No factors are present.");
  }
  if (!fCovariates.empty()) {
    MCDisplay_850::DisplayIV("Covariates:", fCovariates);
    MCDisplay_850::DisplayIV("Covariate multiplicities:", fCovariateMultiplicities);
  } else {
    MCDisplay_850::DisplayText("No covariates are present.");
  }
  MCDisplay_850::DisplayI("Index of the effect", fEffectIndex);
  MCDisplay_850::DisplayText("End MIXRegrParameter object display.\n");
}
