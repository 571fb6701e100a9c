#pragma once

#include <vector>

#include "numeric/engine/MCEngineTarget.h"

namespace MCEngine_850 {

class MCEngineResult;

// A fitted model's target on the data's scale, for scoring single records:
// the mean a linear predictor gives, the delta-method standard error of
// that mean, the Pearson residual, and the category a binomial or ordinal
// target most probably takes. A linear model's mean is its linear
// predictor. Values that cannot be computed are MCEngineMissing::Value().
class MCEngineResponse {
 public:
  MCEngineResponse() = default;
  // Takes the link, the distribution's shape and, of an ordinal target, its
  // categories and thresholds from the fit.
  MCEngineResponse(const MCEngineTarget& target, const MCEngineResult& result);

  bool IsLinear() const { return fTarget.IsLinear(); }
  // An ordinal target: the predictor is x'beta + offset + u of
  // P(Y <= j) = F(theta_j - eta), and there is no single mean.
  bool IsOrdinal() const { return !fvThresholds.empty(); }
  // Whether the target has categories to predict: a binomial target or an
  // ordinal one.
  bool HasCategories() const;

  // mu = g^-1(eta), a proportion of the trials for a binomial target.
  double Mean(double eta) const;
  // |d mu / d eta| times the linear predictor's standard error.
  double MeanStdError(double eta, double etaStdError) const;
  // (y - mu) sqrt(w / V(mu)) for y on the scale of the mean and the prior
  // weight w (the trials times a scale weight): its square, weighted by the
  // frequency weights and summed over the records, is the fit's Pearson
  // statistic.
  double PearsonResidual(double y, double mu, double weight) const;
  // The most probable category: for a binomial target 1 (the event) where
  // the mean exceeds one half, else 0; for an ordinal target the value of
  // the category of the highest probability given eta.
  double PredictedCategory(double eta) const;

 private:
  MCEngineTarget fTarget;
  double fShape = 1.0;
  std::vector<double> fvCategories;
  std::vector<double> fvThresholds;
};

}  // namespace MCEngine_850
