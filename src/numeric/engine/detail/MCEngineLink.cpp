#include "numeric/engine/detail/MCEngineLink.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace MCEngine_850 {

namespace {

constexpr double kPi = 3.14159265358979323846;
// Smallest probability and derivative kept, so that eta and the working
// weights stay finite.
constexpr double kTiny = std::numeric_limits<double>::epsilon();

double NormalCdf(double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); }
double NormalDensity(double x) { return std::exp(-0.5 * x * x) / std::sqrt(2.0 * kPi); }

// The standard normal quantile: a rational start refined by Newton steps.
double NormalQuantile(double p) {
  double x = std::sqrt(-2.0 * std::log(std::min(p, 1.0 - p)));
  x = x - (2.515517 + 0.802853 * x + 0.010328 * x * x) / (1.0 + 1.432788 * x + 0.189269 * x * x + 0.001308 * x * x * x);
  if (p < 0.5) x = -x;
  for (int i = 0; i < 4; ++i) x -= (NormalCdf(x) - p) / std::max(NormalDensity(x), 1e-300);
  return x;
}

double ClampProbability(double mu) { return std::min(std::max(mu, kTiny), 1.0 - kTiny); }

}  // namespace

MCEngineLink::MCEngineLink(GLMMConst_850::LinkType link, double power) : fLink(link), fPower(power) {}

double MCEngineLink::Eta(double mu) const {
  using namespace GLMMConst_850;
  switch (fLink) {
    case LINK_LOG: return std::log(mu);
    case LINK_LOGIT: return std::log(mu / (1.0 - mu));
    case LINK_PROBIT: return NormalQuantile(mu);
    case LINK_CLOGLOG: return std::log(-std::log1p(-mu));
    case LINK_NLOGLOG: return -std::log(-std::log(mu));
    case LINK_LOGC: return std::log1p(-mu);
    case LINK_POWER: return fPower == 0.0 ? std::log(mu) : std::pow(mu, fPower);
    case LINK_CAUCHIT: return std::tan(kPi * (mu - 0.5));
    case LINK_IDENTITY:
    case LINK_DEFAULT: break;
  }
  return mu;
}

double MCEngineLink::Mu(double eta) const {
  using namespace GLMMConst_850;
  switch (fLink) {
    case LINK_LOG: return std::max(std::exp(eta), kTiny);
    case LINK_LOGIT: return ClampProbability(1.0 / (1.0 + std::exp(-eta)));
    case LINK_PROBIT: return ClampProbability(NormalCdf(eta));
    case LINK_CLOGLOG: return ClampProbability(-std::expm1(-std::exp(eta)));
    case LINK_NLOGLOG: return ClampProbability(std::exp(-std::exp(-eta)));
    case LINK_LOGC: return ClampProbability(-std::expm1(eta));
    case LINK_POWER: return fPower == 0.0 ? std::max(std::exp(eta), kTiny) : std::pow(eta, 1.0 / fPower);
    case LINK_CAUCHIT: return ClampProbability(0.5 + std::atan(eta) / kPi);
    case LINK_IDENTITY:
    case LINK_DEFAULT: break;
  }
  return eta;
}

double MCEngineLink::DMuDEta(double eta) const {
  using namespace GLMMConst_850;
  switch (fLink) {
    case LINK_LOG: return std::max(std::exp(eta), kTiny);
    case LINK_LOGIT: {
      const double e = std::exp(-std::fabs(eta));
      return std::max(e / ((1.0 + e) * (1.0 + e)), kTiny);
    }
    case LINK_PROBIT: return std::max(NormalDensity(eta), kTiny);
    case LINK_CLOGLOG: return std::max(std::exp(eta - std::exp(eta)), kTiny);
    case LINK_NLOGLOG: return std::max(std::exp(-eta - std::exp(-eta)), kTiny);
    case LINK_LOGC: return -std::max(std::exp(eta), kTiny);
    case LINK_POWER:
      return fPower == 0.0 ? std::max(std::exp(eta), kTiny) : std::pow(eta, 1.0 / fPower - 1.0) / fPower;
    case LINK_CAUCHIT: return std::max(1.0 / (kPi * (1.0 + eta * eta)), kTiny);
    case LINK_IDENTITY:
    case LINK_DEFAULT: break;
  }
  return 1.0;
}

double MCEngineLink::D2MuDEta2(double eta) const {
  using namespace GLMMConst_850;
  switch (fLink) {
    case LINK_LOG: return std::max(std::exp(eta), kTiny);
    case LINK_IDENTITY:
    case LINK_DEFAULT: return 0.0;
    case LINK_POWER:
      // A power's linear predictor may be far below 1 (1e-5 for
      // POWER(-2) of reaction times in milliseconds): no difference step
      // fits every scale.
      if (fPower == 0.0) return std::max(std::exp(eta), kTiny);
      return (1.0 / fPower) * (1.0 / fPower - 1.0) * std::pow(eta, 1.0 / fPower - 2.0);
    case LINK_LOGIT:
    case LINK_PROBIT:
    case LINK_CLOGLOG:
    case LINK_NLOGLOG:
    case LINK_LOGC:
    case LINK_CAUCHIT: break;
  }
  const double h = 1e-5 * std::max(1.0, std::fabs(eta));
  return (DMuDEta(eta + h) - DMuDEta(eta - h)) / (2.0 * h);
}

bool MCEngineLink::IsValidMu(double mu) const {
  using namespace GLMMConst_850;
  switch (fLink) {
    case LINK_LOG: return mu > 0.0;
    case LINK_LOGIT:
    case LINK_PROBIT:
    case LINK_CLOGLOG:
    case LINK_NLOGLOG:
    case LINK_LOGC:
    case LINK_CAUCHIT: return mu > 0.0 && mu < 1.0;
    case LINK_POWER: return fPower == 1.0 || mu > 0.0;
    case LINK_IDENTITY:
    case LINK_DEFAULT: break;
  }
  return std::isfinite(mu);
}

}  // namespace MCEngine_850
