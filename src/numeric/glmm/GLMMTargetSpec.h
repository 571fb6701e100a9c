#pragma once

#include <iosfwd>
#include <string>

#include "numeric/glmm/GLMMConst.h"

namespace MCGLMM_850 {

// The target's distribution and link, and how a generalized model is
// fitted (an extension of the mixed model settings). The default, a normal
// target with the identity link, is the linear mixed model: nothing else
// in the settings changes meaning with it. The offset and the robust
// covariance of the fixed effects stay where the generalized linear
// settings keep them.
class GLMMTargetSpec {
 public:
  GLMMTargetSpec();

  GLMMConst_850::TargetDistType GetDistribution() const { return fDistribution; }
  void SetDistribution(GLMMConst_850::TargetDistType dist) { fDistribution = dist; }
  // The link as given; LINK_DEFAULT until one is given.
  GLMMConst_850::LinkType GetLinkGiven() const { return fLink; }
  void SetLink(GLMMConst_850::LinkType link) { fLink = link; }
  // The link in force: the given one, else the distribution's default.
  GLMMConst_850::LinkType GetLink() const;
  // The exponent of the POWER link: the given one, else the default.
  double GetLinkPower() const;
  void SetLinkPower(double power);
  bool IsLinkPowerGiven() const { return fbLinkPowerGiven; }
  // A normal target with the identity link: the linear mixed model.
  bool IsLinear() const;

  // Events/trials form of a binomial target: the trials are a variable
  // (its index in the variable list) or a fixed count.
  GLMMConst_850::TrialsType GetTrialsType() const { return fTrialsType; }
  int GetTrialsVariable() const { return fTrialsVariable; }
  double GetTrialsValue() const { return fTrialsValue; }
  void SetTrialsVariable(int index);
  void SetTrialsValue(double trials);

  // The reference category of a categorical target; the value, when given,
  // as the data's formatted value.
  GLMMConst_850::ReferenceCategoryType GetReferenceType() const { return fReferenceType; }
  const std::string& GetReferenceValue() const { return fReferenceValue; }
  void SetReference(GLMMConst_850::ReferenceCategoryType type, const std::string& value = std::string());
  // A multinomial target whose categories are ordered (ordinal measurement
  // level): cumulative links with thresholds. Otherwise nominal.
  bool GetOrdered() const { return fbOrdered; }
  void SetOrdered(bool ordered) { fbOrdered = ordered; }

  // Pseudo-likelihood by default; quadrature points only for FIT_QUADRATURE.
  GLMMConst_850::GeneralizedFitMethod GetFitMethod() const { return fFitMethod; }
  void SetFitMethod(GLMMConst_850::GeneralizedFitMethod method) { fFitMethod = method; }
  int GetQuadraturePoints() const { return fQuadraturePoints; }
  void SetQuadraturePoints(int points) { fQuadraturePoints = points; }

  void Display(std::ostream& os) const;

 private:
  GLMMConst_850::TargetDistType fDistribution;
  GLMMConst_850::LinkType fLink;
  double fLinkPower;
  bool fbLinkPowerGiven;
  GLMMConst_850::TrialsType fTrialsType;
  int fTrialsVariable;
  double fTrialsValue;
  GLMMConst_850::ReferenceCategoryType fReferenceType;
  std::string fReferenceValue;
  bool fbOrdered;
  GLMMConst_850::GeneralizedFitMethod fFitMethod;
  int fQuadraturePoints;
};

}  // namespace MCGLMM_850
