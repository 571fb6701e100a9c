#include "numeric/glmm/GLMMTargetSpec.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using namespace GLMMConst_850;

GLMMTargetSpec::GLMMTargetSpec()
    : fDistribution(DIST_NORMAL),
      fLink(LINK_DEFAULT),
      fLinkPower(1.0),
      fbLinkPowerGiven(false),
      fTrialsType(TRIALS_NONE),
      fTrialsVariable(-1),
      fTrialsValue(0.0),
      fReferenceType(REFERENCE_LAST),
      fbOrdered(false),
      fFitMethod(FIT_PSEUDO_LIKELIHOOD),
      fQuadraturePoints(1) {}

LinkType GLMMTargetSpec::GetLink() const { return fLink == LINK_DEFAULT ? DefaultLink(fDistribution) : fLink; }

double GLMMTargetSpec::GetLinkPower() const { return fbLinkPowerGiven ? fLinkPower : DefaultLinkPower(fDistribution); }

void GLMMTargetSpec::SetLinkPower(double power) {
  fLinkPower = power;
  fbLinkPowerGiven = true;
}

bool GLMMTargetSpec::IsLinear() const { return fDistribution == DIST_NORMAL && GetLink() == LINK_IDENTITY; }

void GLMMTargetSpec::SetTrialsVariable(int index) {
  fTrialsType = TRIALS_VARIABLE;
  fTrialsVariable = index;
}

void GLMMTargetSpec::SetTrialsValue(double trials) {
  fTrialsType = TRIALS_VALUE;
  fTrialsValue = trials;
}

void GLMMTargetSpec::SetReference(ReferenceCategoryType type, const std::string& value) {
  fReferenceType = type;
  fReferenceValue = value;
}

void GLMMTargetSpec::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayS(os, "Distribution:", GetName(fDistribution));
  DisplayS(os, "Link:", GetName(GetLink()));
  if (GetLink() == LINK_POWER) DisplayD(os, "Link power:", GetLinkPower());
  if (fTrialsType == TRIALS_VARIABLE) DisplayI(os, "Trials variable:", fTrialsVariable);
  if (fTrialsType == TRIALS_VALUE) DisplayD(os, "Trials:", fTrialsValue);
  if (fDistribution == DIST_MULTINOMIAL) {
    DisplayB(os, "Ordered categories:", fbOrdered);
    DisplayS(os, "Reference category:", std::string(GetName(fReferenceType)) + " " + fReferenceValue);
  }
  DisplayS(os, "Fit method:", GetName(fFitMethod));
  if (fFitMethod == FIT_QUADRATURE) DisplayI(os, "Quadrature points:", fQuadraturePoints);
}

}  // namespace MCGLMM_850
