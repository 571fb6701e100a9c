#pragma once

#include <vector>

#include "host/data/OBS.h"

class ACAInputAdapter;
namespace MCMath_850 {
class MCModelEffect;
class MCRegrParameter;
}  // namespace MCMath_850
namespace MCGLMM_850 {
class GLMMSettings;
}

// One regression parameter: the effect it belongs to and, for each factor of
// that effect, the category it stands for. The category is held as a data
// value (an OBS cell), not as the component's code, so that parameters of
// different splits can be compared.
//
// The OBS cells are not owned; they live in an ObsVecMap of the aggregator
// or in the adapter. Factors are kept in ascending order of nesting level,
// ties in order of insertion; a factor or a covariate stands at most once.
// Copies share the cells.
class MIXRegrParameter {
 public:
  MIXRegrParameter();

  const std::vector<int>& GetFactors() const { return fFactors; }
  const std::vector<int>& GetFactorNestLevels() const { return fFactorNestLevels; }
  const std::vector<const OBS*>& GetCategories() const { return fCategories; }
  std::vector<const OBS*>& GetCategories() { return fCategories; }
  const std::vector<int>& GetCovariates() const { return fCovariates; }
  const std::vector<int>& GetCovariateMultiplicities() const { return fCovariateMultiplicities; }
  int GetNFactors() const { return static_cast<int>(fFactors.size()); }
  int GetNCovariates() const { return static_cast<int>(fCovariates.size()); }

  // The category of that factor; null when the factor is absent, and also
  // when it is present without a category.
  const OBS* ContainsFactor(int factor) const;
  // The covariate's multiplicity, 0 when absent.
  int GetCovariateMult(int covariate) const;
  // Sum of all multiplicities.
  int GetNCovariateMult() const;
  bool IsIntercept() const { return fFactors.empty() && fCovariates.empty(); }

  // Position of the parameter's effect in the effect list in use; -1 for the
  // intercept.
  int GetEffectIndex() const { return fEffectIndex; }
  void SetEffectIndex(int effectIndex) { fEffectIndex = effectIndex; }
  // Category of the target for a multinomial target; null when none.
  const OBS* GetTargetCategory() const { return fTargetCategory; }
  void SetTargetCategory(const OBS* category) { fTargetCategory = category; }

  // Raises the multiplicity of a covariate, adding it when new, and returns
  // the new multiplicity; 0 (and no change) for a negative covariate or a
  // multiplicity below 1.
  int AddCovariate(int covariate, int multiplicity);
  // Adds a factor after all factors of its own or a lower level. False (and
  // no change) for a negative factor or level, or a factor already present.
  bool AddFactor(int factor, const OBS* category, int nestLevel);
  // Takes the effect's factors (without categories), levels and covariates.
  // False, with the parameter unchanged, for an intercept effect or a
  // negative index.
  bool SetupFromEffect(const MCMath_850::MCModelEffect& effect, int effectIndex);

  // Values to component codes, in the current split of the adapter. The
  // effect lies in random block `randomIndex` of the settings, or among the
  // model effects when it is negative. False when a value (or the target
  // category) does not occur in the split.
  bool EncodeCategories(MCMath_850::MCRegrParameter& compParam, const MCGLMM_850::GLMMSettings& settings,
                        const ACAInputAdapter* pInpAdapt, int randomIndex) const;
  // Component codes to values: the parameter is rebuilt from its effect (when
  // it has one) and takes the values of the component's codes. False when a
  // code has no value in the split.
  bool DecodeCategories(const MCMath_850::MCRegrParameter& compParam, const MCGLMM_850::GLMMSettings& settings,
                        const ACAInputAdapter* pInpAdapt, int randomIndex);

  // Categories compare as pointers: within one ObsVecMap equal values share
  // one cell, so equal values have equal pointers there.
  bool operator==(const MIXRegrParameter& other) const;
  bool operator!=(const MIXRegrParameter& other) const { return !(*this == other); }

  void Display() const;

 private:
  std::vector<int> fFactors;
  std::vector<const OBS*> fCategories;
  std::vector<int> fFactorNestLevels;
  std::vector<int> fCovariates;
  std::vector<int> fCovariateMultiplicities;
  int fEffectIndex;
  const OBS* fTargetCategory;
};
