#pragma once

#include <iosfwd>

#include "numeric/math/MCRegSettings.h"

namespace MCMath_850 {

// Iteration controls of a likelihood-based regression.
class MCLogRegSettings : public MCRegSettings {
 public:
  MCLogRegSettings();
  ~MCLogRegSettings() override;

  // Code of the target's reference category; -1 is the last.
  int GetDependentRefCateg() const { return fDependentRefCateg; }
  void SetDependentRefCateg(int category) { fDependentRefCateg = category; }
  // Every n-th iteration goes into the history; 1 by default.
  int GetIterationFrequency() const { return fIterationFrequency; }
  void SetIterationFrequency(int n) { fIterationFrequency = n; }
  // Log-likelihood convergence criterion; 0 (not used) by default.
  double GetLLConCriterion() const { return fLLConCriterion; }
  void SetLLConCriterion(double criterion) { fLLConCriterion = criterion; }
  // 100 by default.
  int GetMaxIterations() const { return fMaxIterations; }
  void SetMaxIterations(int n) { fMaxIterations = n; }
  // 5 by default.
  int GetMaxStepHalvingValue() const { return fMaxStepHalving; }
  void SetMaxStepHalvingValue(int n) { fMaxStepHalving = n; }
  // Parameter convergence criterion; 1e-6 by default.
  double GetParamEstConCriterion() const { return fParamEstConCriterion; }
  void SetParamEstConCriterion(double criterion) { fParamEstConCriterion = criterion; }

  using MCRegSettings::Display;
  void Display(std::ostream& os) const override;

 private:
  int fDependentRefCateg;
  int fIterationFrequency;
  double fLLConCriterion;
  int fMaxIterations;
  int fMaxStepHalving;
  double fParamEstConCriterion;
};

}  // namespace MCMath_850
