#pragma once

#include <iosfwd>
#include <vector>

namespace MCMath_850 {

class MCModelEffect;

// One regression parameter of a fitted model: the effect it belongs to, and
// for each factor of that effect the category it stands for, as the
// category's code in the engine's record (valid within one split only).
// Factors are kept in ascending order of nesting level, ties in the order of
// insertion; a factor or a covariate stands at most once.
class MCRegrParameter {
 public:
  MCRegrParameter();

  const std::vector<int>& GetFactors() const { return fvFactors; }
  const std::vector<int>& GetFactorNestLevels() const { return fvFactorNestLevels; }
  // Per factor, the category code; -1 while unset.
  const std::vector<int>& GetCategories() const { return fvCategories; }
  std::vector<int>& GetCategories() { return fvCategories; }
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  const std::vector<int>& GetCovMultiplicities() const { return fvCovariateMult; }
  int GetNFactors() const { return static_cast<int>(fvFactors.size()); }
  int GetNCovariates() const { return static_cast<int>(fvCovariates.size()); }
  // Multiplicity of that covariate; 0 when absent.
  int GetCovariateMult(int covariate) const;
  bool IsIntercept() const { return fvFactors.empty() && fvCovariates.empty(); }

  // Position of the parameter's effect in the effect list in use; -1 for the
  // intercept.
  int GetEffectIndex() const { return fEffectIndex; }
  void SetEffectIndex(int effectIndex) { fEffectIndex = effectIndex; }
  // Category code of the target for a multinomial target; -1 when none.
  int GetTargetCategory() const { return fTargetCategory; }
  void SetTargetCategory(int category) { fTargetCategory = category; }

  // Adds a factor after all factors of its own or a lower level. False (and
  // no change) for a negative factor or level, or a factor already present.
  bool AddFactor(int factor, int category, int nestLevel);
  // Raises the multiplicity of a covariate, adding it when new; returns the
  // new multiplicity, or 0 (and no change) for a negative covariate or a
  // multiplicity below 1.
  int AddCovariate(int covariate, int multiplicity);

  // Takes the effect's factors, levels and covariates, with effectIndex as
  // the effect index and every category set to initialCategory. False, with
  // the parameter unchanged, for an intercept effect or a negative index.
  bool SetupFromEffect(const MCModelEffect& effect, int effectIndex, int initialCategory = -1);

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<int> fvFactors;
  std::vector<int> fvCategories;
  std::vector<int> fvFactorNestLevels;
  std::vector<int> fvCovariates;
  std::vector<int> fvCovariateMult;
  int fEffectIndex;
  int fTargetCategory;
};

}  // namespace MCMath_850
