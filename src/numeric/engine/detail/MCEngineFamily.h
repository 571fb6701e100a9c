#pragma once

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

// A distribution of the exponential family for one record's target y on the
// scale of its mean mu (a proportion of trials for the binomial), with a
// prior weight w (the trials for the binomial, else 1 or a scale weight) and
// a scale phi (the dispersion: 1 where the distribution fixes it). The
// negative binomial carries its shape k, with variance mu + mu^2 / k.
// Multinomial targets are not single-mean families and are not described here.
class MCEngineFamily {
 public:
  // The interval the negative binomial's shape is estimated in (a shape at
  // the top is a Poisson target).
  static constexpr double kMinShape = 1e-4;
  static constexpr double kMaxShape = 1e8;

  explicit MCEngineFamily(GLMMConst_850::TargetDistType dist, double shape = 1.0);

  GLMMConst_850::TargetDistType GetType() const { return fDist; }
  // Distributions this class describes: all but the multinomial.
  static bool IsSingleMean(GLMMConst_850::TargetDistType dist);
  // Binomial, Poisson and negative binomial fix the scale at 1.
  bool IsScaleFixed() const;
  double GetShape() const { return fShape; }
  void SetShape(double shape) { fShape = shape; }

  // V(mu): Var(y) = phi V(mu) / w.
  double Variance(double mu) const;
  // The record's deviance, w times the unit deviance.
  double Deviance(double y, double mu, double w) const;
  // The record's log likelihood with all constants.
  double LogLikelihood(double y, double mu, double w, double scale) const;
  // Whether y can come from the distribution (for the binomial a proportion
  // in [0, 1]; counts at least 0; gamma and inverse Gaussian above 0).
  bool InSupport(double y) const;
  // Whether mu can be the distribution's mean: inside (0, 1) for the
  // binomial, above 0 for the others but the normal.
  bool IsValidMean(double mu) const;
  // A mean to start the iterations from: y moved inside the open support.
  double StartMu(double y, double w) const;

 private:
  GLMMConst_850::TargetDistType fDist;
  double fShape;
};

}  // namespace MCEngine_850
