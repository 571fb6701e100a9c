#include "numeric/math/MCRegSettings.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

MCRegSettings::MCRegSettings()
    : fDependent(-1),
      fbInterceptUse(true),
      fFrequencyWeightVar(-1),
      fRegrWeightVar(-1),
      fConfidenceLevel(0.95),
      fCovbType(MCConst::COVB_MODEL_BASED),
      fTolerance(1e-12),
      fbTransformEffects(false),
      fpCancel(nullptr) {}

MCRegSettings::~MCRegSettings() = default;

void MCRegSettings::AddFactor(int index, int nCategories) {
  fvFactors.push_back(index);
  fvFactorNCategories.push_back(nCategories);
}

int MCRegSettings::GetFactorNCategoriesOf(int index) const {
  for (std::size_t i = 0; i < fvFactors.size(); ++i) {
    if (fvFactors[i] == index) return fvFactorNCategories[i];
  }
  return 0;
}

void MCRegSettings::AddCovariate(int index) { fvCovariates.push_back(index); }

void MCRegSettings::AddModelEffect(const MCModelEffect& effect) { fvModelEffects.push_back(effect); }

void MCRegSettings::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCRegSettings::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayI(os, "Dependent variable:", fDependent);
  DisplayIV(os, "Factors:", fvFactors);
  DisplayIV(os, "Factor categories:", fvFactorNCategories);
  DisplayIV(os, "Covariates:", fvCovariates);
  DisplayI(os, "Model effects:", static_cast<long>(fvModelEffects.size()));
  for (const MCModelEffect& effect : fvModelEffects) effect.Display(os);
  DisplayB(os, "Intercept:", fbInterceptUse);
  DisplayI(os, "Frequency weight variable:", fFrequencyWeightVar);
  DisplayI(os, "Regression weight variable:", fRegrWeightVar);
  DisplayD(os, "Confidence level:", fConfidenceLevel);
  DisplayC(os, "Covariance of estimates:", fCovbType);
  DisplayD(os, "Singularity tolerance:", fTolerance);
  DisplayB(os, "Transform effects:", fbTransformEffects);
  DisplayB(os, "Cancel query set:", fpCancel != nullptr);
}

}  // namespace MCMath_850
