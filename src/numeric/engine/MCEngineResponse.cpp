#include "numeric/engine/MCEngineResponse.h"

#include <cmath>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/engine/detail/MCEngineFamily.h"
#include "numeric/engine/detail/MCEngineLatentDistribution.h"
#include "numeric/engine/detail/MCEngineLink.h"

namespace MCEngine_850 {

MCEngineResponse::MCEngineResponse(const MCEngineTarget& target, const MCEngineResult& result) : fTarget(target) {
  if (!MCEngineMissing::Is(result.GetShape()) && result.GetShape() > 0.0) fShape = result.GetShape();
  if (result.GetThresholds().empty()) return;
  fvCategories = result.GetTargetCategories();
  for (const MCEngineBetaStat& threshold : result.GetThresholds()) fvThresholds.push_back(threshold.GetEstimate());
}

bool MCEngineResponse::HasCategories() const {
  return IsOrdinal() || fTarget.GetDistribution() == GLMMConst_850::DIST_BINOMIAL;
}

double MCEngineResponse::Mean(double eta) const {
  if (MCEngineMissing::Is(eta) || IsOrdinal()) return MCEngineMissing::Value();
  if (IsLinear()) return eta;
  return MCEngineLink(fTarget.GetLink(), fTarget.GetLinkPower()).Mu(eta);
}

double MCEngineResponse::MeanStdError(double eta, double etaStdError) const {
  if (MCEngineMissing::Is(eta) || MCEngineMissing::Is(etaStdError) || IsOrdinal()) return MCEngineMissing::Value();
  if (IsLinear()) return etaStdError;
  return std::fabs(MCEngineLink(fTarget.GetLink(), fTarget.GetLinkPower()).DMuDEta(eta)) * etaStdError;
}

double MCEngineResponse::PearsonResidual(double y, double mu, double weight) const {
  if (MCEngineMissing::Is(mu) || IsOrdinal() || !std::isfinite(y) || !(weight > 0.0)) return MCEngineMissing::Value();
  const double variance = MCEngineFamily(fTarget.GetDistribution(), fShape).Variance(mu);
  if (!(variance > 0.0)) return MCEngineMissing::Value();
  return (y - mu) * std::sqrt(weight / variance);
}

double MCEngineResponse::PredictedCategory(double eta) const {
  if (MCEngineMissing::Is(eta) || !HasCategories()) return MCEngineMissing::Value();
  if (!IsOrdinal()) return Mean(eta) > 0.5 ? 1.0 : 0.0;
  if (fvCategories.size() != fvThresholds.size() + 1) return MCEngineMissing::Value();
  const MCEngineLatentDistribution latent(fTarget.GetLink());
  double below = 0.0, best = -1.0;
  std::size_t chosen = 0;
  for (std::size_t j = 0; j < fvCategories.size(); ++j) {
    const double upTo = j < fvThresholds.size() ? latent.Cdf(fvThresholds[j] - eta) : 1.0;
    if (upTo - below > best) {
      best = upTo - below;
      chosen = j;
    }
    below = upTo;
  }
  return fvCategories[chosen];
}

}  // namespace MCEngine_850
