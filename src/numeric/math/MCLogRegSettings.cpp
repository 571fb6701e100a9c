#include "numeric/math/MCLogRegSettings.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCMath_850 {

MCLogRegSettings::MCLogRegSettings()
    : fDependentRefCateg(-1),
      fIterationFrequency(1),
      fLLConCriterion(0.0),
      fMaxIterations(100),
      fMaxStepHalving(5),
      fParamEstConCriterion(1e-6) {}

MCLogRegSettings::~MCLogRegSettings() = default;

void MCLogRegSettings::Display(std::ostream& os) const {
  MCRegSettings::Display(os);
  using namespace MCDisplay_850;
  DisplayI(os, "Target reference category:", fDependentRefCateg);
  DisplayI(os, "Iteration history frequency:", fIterationFrequency);
  DisplayD(os, "Log-likelihood convergence:", fLLConCriterion);
  DisplayI(os, "Maximum iterations:", fMaxIterations);
  DisplayI(os, "Maximum step-halving:", fMaxStepHalving);
  DisplayD(os, "Parameter convergence:", fParamEstConCriterion);
}

}  // namespace MCMath_850
