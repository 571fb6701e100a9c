#include "host/viz/XChartStatistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kPi = 3.14159265358979323846;

bool Positive(double v) { return std::isfinite(v) && v > 0.0; }

}  // namespace

std::vector<XChartStatistics::Bin> XChartStatistics::Binned(const std::vector<double>& values,
                                                            const std::vector<double>& weights, int count) {
  std::vector<Bin> bins;
  double low = 0.0;
  double high = 0.0;
  std::size_t n = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double weight = i < weights.size() ? weights[i] : 1.0;
    if (!std::isfinite(values[i]) || !(weight > 0.0)) continue;
    low = n == 0 ? values[i] : std::min(low, values[i]);
    high = n == 0 ? values[i] : std::max(high, values[i]);
    ++n;
  }
  if (n == 0) return bins;
  if (count < 1) count = std::min(50, static_cast<int>(std::ceil(std::log2(static_cast<double>(n)))) + 1);
  count = std::clamp(count, 1, 1000);
  if (high == low) count = 1;
  const double width =
      count == 1 ? (high == low ? (low == 0.0 ? 1.0 : std::fabs(low) * 0.1) : high - low) : (high - low) / (count - 1);
  const double start = count == 1 ? (low + high) / 2.0 - width / 2.0 : low - width / 2.0;
  bins.resize(static_cast<std::size_t>(count));
  for (int b = 0; b < count; ++b) {
    bins[static_cast<std::size_t>(b)].fLow = start + b * width;
    bins[static_cast<std::size_t>(b)].fHigh = start + (b + 1) * width;
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double weight = i < weights.size() ? weights[i] : 1.0;
    if (!std::isfinite(values[i]) || !(weight > 0.0)) continue;
    int b = static_cast<int>(std::floor((values[i] - start) / width));
    b = std::clamp(b, 0, count - 1);
    bins[static_cast<std::size_t>(b)].fTotal += weight;
  }
  return bins;
}

bool XChartStatistics::IsDiscrete(const std::string& distribution) {
  return distribution == "poisson" || distribution == "binomialnegative";
}

double XChartStatistics::Density(const std::string& distribution, double a, double b, double x) {
  if (!std::isfinite(x)) return kNaN;
  if (distribution == "normal") {
    if (!std::isfinite(a) || !Positive(b)) return kNaN;
    const double z = (x - a) / b;
    return std::exp(-0.5 * z * z) / (b * std::sqrt(2.0 * kPi));
  }
  if (distribution == "poisson") {
    if (!Positive(a) || x < 0 || x != std::floor(x)) return Positive(a) ? 0.0 : kNaN;
    return std::exp(x * std::log(a) - a - std::lgamma(x + 1.0));
  }
  if (distribution == "gamma") {
    if (!Positive(a) || !Positive(b)) return kNaN;
    if (x <= 0.0) return 0.0;
    return std::exp(a * std::log(b) + (a - 1.0) * std::log(x) - b * x - std::lgamma(a));
  }
  if (distribution == "binomialnegative") {
    if (!Positive(a) || !(b > 0.0 && b < 1.0)) return kNaN;
    if (x < 0 || x != std::floor(x)) return 0.0;
    return std::exp(std::lgamma(x + a) - std::lgamma(a) - std::lgamma(x + 1.0) + a * std::log(b) + x * std::log1p(-b));
  }
  if (distribution == "gaussianinverse") {
    if (!Positive(a) || !Positive(b)) return kNaN;
    if (x <= 0.0) return 0.0;
    return std::sqrt(b / (2.0 * kPi * x * x * x)) * std::exp(-b * (x - a) * (x - a) / (2.0 * a * a * x));
  }
  return kNaN;
}

void XChartStatistics::Moments(const std::vector<double>& values, const std::vector<double>& weights, double& mean,
                               double& deviation) {
  double total = 0.0;
  double sum = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double weight = i < weights.size() ? weights[i] : 1.0;
    if (!std::isfinite(values[i]) || !(weight > 0.0)) continue;
    total += weight;
    sum += weight * values[i];
  }
  mean = total > 0.0 ? sum / total : kNaN;
  double squares = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double weight = i < weights.size() ? weights[i] : 1.0;
    if (!std::isfinite(values[i]) || !(weight > 0.0)) continue;
    squares += weight * (values[i] - mean) * (values[i] - mean);
  }
  deviation = total > 1.0 ? std::sqrt(squares / (total - 1.0)) : kNaN;
}
