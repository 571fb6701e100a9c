#pragma once

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

// A link function g: eta = g(mu), its inverse and the derivative of the
// inverse. Means are kept inside the link's open domain so that eta stays
// finite: (0, 1) for the links of a probability, (0, inf) for LOG and for
// powers that need a positive mean.
class MCEngineLink {
 public:
  MCEngineLink(GLMMConst_850::LinkType link, double power);

  GLMMConst_850::LinkType GetType() const { return fLink; }
  double Eta(double mu) const;
  double Mu(double eta) const;
  // d mu / d eta at eta.
  double DMuDEta(double eta) const;
  // d^2 mu / d eta^2 at eta: exact for the log, identity and power links,
  // a central difference for the others.
  double D2MuDEta2(double eta) const;
  // Whether mu lies where the link is defined.
  bool IsValidMu(double mu) const;

 private:
  GLMMConst_850::LinkType fLink;
  double fPower;
};

}  // namespace MCEngine_850
