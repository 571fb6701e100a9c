#pragma once

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

// The distribution of the target, its link and the way a generalized model
// is fitted. The default, a normal target with the identity link, is the
// linear mixed model, fitted exactly as without a target description.
class MCEngineTarget {
 public:
  MCEngineTarget() = default;

  GLMMConst_850::TargetDistType GetDistribution() const { return fDistribution; }
  void SetDistribution(GLMMConst_850::TargetDistType dist) { fDistribution = dist; }
  // The link in force (never LINK_DEFAULT) and the exponent of LINK_POWER.
  GLMMConst_850::LinkType GetLink() const { return fLink; }
  void SetLink(GLMMConst_850::LinkType link) { fLink = link; }
  double GetLinkPower() const { return fLinkPower; }
  void SetLinkPower(double power) { fLinkPower = power; }
  GLMMConst_850::GeneralizedFitMethod GetFitMethod() const { return fFitMethod; }
  void SetFitMethod(GLMMConst_850::GeneralizedFitMethod method) { fFitMethod = method; }
  int GetQuadraturePoints() const { return fQuadraturePoints; }
  void SetQuadraturePoints(int points) { fQuadraturePoints = points; }
  // A multinomial target whose categories are ordered (cumulative links)
  // rather than nominal.
  bool GetOrdered() const { return fbOrdered; }
  void SetOrdered(bool ordered) { fbOrdered = ordered; }
  // The target's position in the caller's variable list, for messages about
  // its values; -1 when unknown.
  int GetVariable() const { return fVariable; }
  void SetVariable(int index) { fVariable = index; }

  // The pseudo-likelihood's limit of working models, and the largest
  // change of a fixed or covariance parameter (relative where it exceeds
  // 1) at which the iterations stop.
  int GetMaxPseudoIterations() const { return fMaxPseudoIterations; }
  void SetMaxPseudoIterations(int n) { fMaxPseudoIterations = n; }
  double GetPseudoTolerance() const { return fPseudoTolerance; }
  void SetPseudoTolerance(double tol) { fPseudoTolerance = tol; }

  bool IsLinear() const {
    return fDistribution == GLMMConst_850::DIST_NORMAL && fLink == GLMMConst_850::LINK_IDENTITY;
  }

 private:
  GLMMConst_850::TargetDistType fDistribution = GLMMConst_850::DIST_NORMAL;
  GLMMConst_850::LinkType fLink = GLMMConst_850::LINK_IDENTITY;
  double fLinkPower = 1.0;
  GLMMConst_850::GeneralizedFitMethod fFitMethod = GLMMConst_850::FIT_PSEUDO_LIKELIHOOD;
  int fQuadraturePoints = 1;
  bool fbOrdered = false;
  int fVariable = -1;
  int fMaxPseudoIterations = 100;
  double fPseudoTolerance = 1e-8;
};

}  // namespace MCEngine_850
