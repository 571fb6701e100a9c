#pragma once

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

// The distribution of the latent variable behind a cumulative link: the
// inverse link F of P(Y <= j) = F(theta_j - eta), with its density f and
// the density's derivative, exact in the tails (F(-inf) = 0, F(inf) = 1).
// Links of a probability only: logit, probit, complementary log-log,
// negative log-log and Cauchy.
class MCEngineLatentDistribution {
 public:
  explicit MCEngineLatentDistribution(GLMMConst_850::LinkType link);

  static bool Takes(GLMMConst_850::LinkType link);

  double Cdf(double x) const;
  double Density(double x) const;
  double DensityDerivative(double x) const;

 private:
  GLMMConst_850::LinkType fLink;
};

}  // namespace MCEngine_850
