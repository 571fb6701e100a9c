#include "numeric/glmm/GLMMClassification.h"

#include <cmath>

#include "numeric/common/MCMV.h"
#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineResponse.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/glmm/GLMMSettings.h"

namespace MCGLMM_850 {

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

bool Usable(const std::vector<double>& weights, std::size_t r) {
  return weights.empty() || (std::isfinite(weights[r]) && weights[r] > 0.0);
}

int IndexOf(const std::vector<double>& categories, double value) {
  for (std::size_t j = 0; j < categories.size(); ++j) {
    if (categories[j] == value) return static_cast<int>(j);
  }
  return -1;
}

}  // namespace

GLMMClassification GLMMClassification::Ordinal(const MCEngine_850::MCEngineInput& input,
                                               const MCEngine_850::MCEngineResult& result,
                                               const MCEngine_850::MCEngineTarget& target) {
  GLMMClassification table;
  const std::vector<double>& y = input.GetY();
  const std::vector<double>& eta = result.GetLinearPredictor();
  const std::vector<double>& categories = result.GetTargetCategories();
  const std::vector<double>& frequency = input.GetFrequencyWeights();
  if (eta.size() != y.size() || categories.size() < 2) return table;
  const MCEngine_850::MCEngineResponse response(target, result);
  const std::size_t k = categories.size();
  std::vector<double> counts(k * k, 0.0);
  for (std::size_t r = 0; r < y.size(); ++r) {
    if (!Usable(frequency, r) || !Usable(input.GetScaleWeights(), r)) continue;
    const int observed = IndexOf(categories, y[r]);
    const int predicted = IndexOf(categories, response.PredictedCategory(eta[r]));
    if (observed < 0 || predicted < 0) continue;
    counts[U(observed) * k + U(predicted)] += frequency.empty() ? 1.0 : frequency[r];
  }
  table.fvCategories = categories;
  table.fvCounts = counts;
  return table;
}

GLMMClassification GLMMClassification::Compute(const GLMMSettings& settings, const MCEngine_850::MCEngineInput& input,
                                               const MCEngine_850::MCEngineResult& result,
                                               const MCEngine_850::MCEngineTarget& target) {
  GLMMClassification table;
  if (!result.GetThresholds().empty()) return Ordinal(input, result, target);
  if (settings.GetTargetSpec().GetDistribution() != GLMMConst_850::DIST_BINOMIAL) return table;
  const std::vector<double>& y = input.GetY();
  const std::vector<double>& mu = result.GetFittedMean();
  const std::vector<double>& trials = input.GetTrials();
  const std::vector<double>& frequency = input.GetFrequencyWeights();
  if (mu.size() != y.size() || (!trials.empty() && trials.size() != y.size())) return table;
  table.fbTrials = !trials.empty();
  std::vector<double> counts(4, 0.0);
  for (std::size_t r = 0; r < y.size(); ++r) {
    if (!std::isfinite(y[r]) || MCEngine_850::MCEngineMissing::Is(mu[r]) || !std::isfinite(mu[r])) continue;
    if (!Usable(frequency, r) || !Usable(input.GetScaleWeights(), r)) continue;
    const double n = table.fbTrials ? trials[r] : 1.0;
    if (!table.fbTrials && y[r] != 0.0 && y[r] != 1.0) return GLMMClassification();
    const double w = frequency.empty() ? 1.0 : frequency[r];
    const std::size_t predicted = mu[r] > 0.5 ? 1 : 0;
    counts[predicted] += w * (n - y[r]);
    counts[2 + predicted] += w * y[r];
  }
  table.fvCategories = {0.0, 1.0};
  table.fvCounts = counts;
  return table;
}

double GLMMClassification::GetCount(int observed, int predicted) const {
  return fvCounts[U(observed) * fvCategories.size() + U(predicted)];
}

double GLMMClassification::GetAccuracy() const {
  double total = 0.0, correct = 0.0;
  const int k = GetNCategories();
  for (int i = 0; i < k; ++i) {
    for (int j = 0; j < k; ++j) {
      total += GetCount(i, j);
      if (i == j) correct += GetCount(i, j);
    }
  }
  return total > 0.0 ? correct / total : MCCommon_850::MCMV::Missing();
}

}  // namespace MCGLMM_850
