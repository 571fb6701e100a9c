#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/math/MCConst.h"
#include "numeric/math/MCModelEffect.h"

namespace MCCommon_850 {
class MCQueryCancel;
}

namespace MCMath_850 {

// Settings of a regression: the variables (as positions in the engine's
// record), the model effects, and the numeric controls shared by every
// regression of the engine. Variable positions of -1 mean "none".
class MCRegSettings {
 public:
  MCRegSettings();
  virtual ~MCRegSettings();

  // The target variable.
  int GetDependent() const { return fDependent; }
  void SetDependent(int index) { fDependent = index; }

  // A factor and its number of categories in the current data.
  void AddFactor(int index, int nCategories);
  const std::vector<int>& GetFactors() const { return fvFactors; }
  const std::vector<int>& GetFactorNCategories() const { return fvFactorNCategories; }
  // Categories of a factor; 0 for a variable that is no factor.
  int GetFactorNCategoriesOf(int index) const;

  virtual void AddCovariate(int index);
  const std::vector<int>& GetCovariates() const { return fvCovariates; }

  virtual void AddModelEffect(const MCModelEffect& effect);
  const std::vector<MCModelEffect>& GetModelEffects() const { return fvModelEffects; }

  bool GetInterceptUse() const { return fbInterceptUse; }
  void SetInterceptUse(bool use) { fbInterceptUse = use; }
  int GetFrequencyWeightVar() const { return fFrequencyWeightVar; }
  void SetFrequencyWeightVar(int index) { fFrequencyWeightVar = index; }
  int GetRegrWeightVar() const { return fRegrWeightVar; }
  void SetRegrWeightVar(int index) { fRegrWeightVar = index; }

  // Confidence level as a fraction, 0.95 by default.
  double GetConfidenceLevel() const { return fConfidenceLevel; }
  void SetConfidenceLevel(double level) { fConfidenceLevel = level; }
  MCConst::MCCovbType GetCovbType() const { return fCovbType; }
  void SetCovbType(MCConst::MCCovbType type) { fCovbType = type; }
  // Tolerance of the tests for singularity, 1e-12 by default.
  double GetTolerance() const { return fTolerance; }
  void SetTolerance(double tolerance) { fTolerance = tolerance; }
  // Whether effects are re-expressed before fitting; off by default.
  bool GetTransformEffects() const { return fbTransformEffects; }
  void SetTransformEffects(bool transform) { fbTransformEffects = transform; }

  // Polled by long computations; not owned, may be null.
  MCCommon_850::MCQueryCancel* GetCancelPointer() const { return fpCancel; }
  void SetCancelPointer(MCCommon_850::MCQueryCancel* pCancel) { fpCancel = pCancel; }

  void Display() const;
  virtual void Display(std::ostream& os) const;

 private:
  int fDependent;
  std::vector<int> fvFactors;
  std::vector<int> fvFactorNCategories;
  std::vector<int> fvCovariates;
  std::vector<MCModelEffect> fvModelEffects;
  bool fbInterceptUse;
  int fFrequencyWeightVar;
  int fRegrWeightVar;
  double fConfidenceLevel;
  MCConst::MCCovbType fCovbType;
  double fTolerance;
  bool fbTransformEffects;
  MCCommon_850::MCQueryCancel* fpCancel;
};

}  // namespace MCMath_850
