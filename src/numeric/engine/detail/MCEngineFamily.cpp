#include "numeric/engine/detail/MCEngineFamily.h"

#include <cmath>

namespace MCEngine_850 {

namespace {

constexpr double kLog2Pi = 1.8378770664093454836;

// y log(y / mu), with its limit 0 at y = 0.
double YLogYOverMu(double y, double mu) { return y > 0.0 ? y * std::log(y / mu) : 0.0; }

}  // namespace

MCEngineFamily::MCEngineFamily(GLMMConst_850::TargetDistType dist, double shape) : fDist(dist), fShape(shape) {}

bool MCEngineFamily::IsSingleMean(GLMMConst_850::TargetDistType dist) {
  return dist != GLMMConst_850::DIST_MULTINOMIAL;
}

bool MCEngineFamily::IsScaleFixed() const {
  using namespace GLMMConst_850;
  return fDist == DIST_BINOMIAL || fDist == DIST_POISSON || fDist == DIST_NEGBIN || fDist == DIST_MULTINOMIAL;
}

double MCEngineFamily::Variance(double mu) const {
  using namespace GLMMConst_850;
  switch (fDist) {
    case DIST_BINOMIAL: return mu * (1.0 - mu);
    case DIST_POISSON: return mu;
    case DIST_NEGBIN: return mu + mu * mu / fShape;
    case DIST_GAMMA: return mu * mu;
    case DIST_IGAUSS: return mu * mu * mu;
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return 1.0;
}

double MCEngineFamily::Deviance(double y, double mu, double w) const {
  using namespace GLMMConst_850;
  switch (fDist) {
    case DIST_BINOMIAL: return 2.0 * w * (YLogYOverMu(y, mu) + YLogYOverMu(1.0 - y, 1.0 - mu));
    case DIST_POISSON: return 2.0 * w * (YLogYOverMu(y, mu) - (y - mu));
    case DIST_NEGBIN:
      return 2.0 * w * (YLogYOverMu(y, mu) - (y + fShape) * std::log((y + fShape) / (mu + fShape)));
    case DIST_GAMMA: return 2.0 * w * (-std::log(y / mu) + (y - mu) / mu);
    case DIST_IGAUSS: return w * (y - mu) * (y - mu) / (mu * mu * y);
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return w * (y - mu) * (y - mu);
}

double MCEngineFamily::LogLikelihood(double y, double mu, double w, double scale) const {
  using namespace GLMMConst_850;
  switch (fDist) {
    case DIST_BINOMIAL: {
      // w trials with w y events.
      const double events = w * y;
      const double choose = std::lgamma(w + 1.0) - std::lgamma(events + 1.0) - std::lgamma(w - events + 1.0);
      const double ll = (events > 0.0 ? events * std::log(mu) : 0.0) +
                        (w - events > 0.0 ? (w - events) * std::log1p(-mu) : 0.0);
      return choose + ll;
    }
    case DIST_POISSON: return w * ((y > 0.0 ? y * std::log(mu) : 0.0) - mu - std::lgamma(y + 1.0));
    case DIST_NEGBIN: {
      const double k = fShape;
      return w * (std::lgamma(y + k) - std::lgamma(k) - std::lgamma(y + 1.0) + k * std::log(k / (k + mu)) +
                  (y > 0.0 ? y * std::log(mu / (k + mu)) : 0.0));
    }
    case DIST_GAMMA: {
      const double a = w / scale;
      return a * std::log(a * y / mu) - a * y / mu - std::log(y) - std::lgamma(a);
    }
    case DIST_IGAUSS:
      return -0.5 * (kLog2Pi + std::log(scale * y * y * y / w) + w * (y - mu) * (y - mu) / (scale * mu * mu * y));
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return -0.5 * (kLog2Pi + std::log(scale / w) + w * (y - mu) * (y - mu) / scale);
}

bool MCEngineFamily::InSupport(double y) const {
  using namespace GLMMConst_850;
  if (!std::isfinite(y)) return false;
  switch (fDist) {
    case DIST_BINOMIAL: return y >= 0.0 && y <= 1.0;
    case DIST_POISSON:
    case DIST_NEGBIN: return y >= 0.0;
    case DIST_GAMMA:
    case DIST_IGAUSS: return y > 0.0;
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return true;
}

bool MCEngineFamily::IsValidMean(double mu) const {
  using namespace GLMMConst_850;
  if (!std::isfinite(mu)) return false;
  switch (fDist) {
    case DIST_BINOMIAL: return mu > 0.0 && mu < 1.0;
    case DIST_POISSON:
    case DIST_NEGBIN:
    case DIST_GAMMA:
    case DIST_IGAUSS: return mu > 0.0;
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return true;
}

double MCEngineFamily::StartMu(double y, double w) const {
  using namespace GLMMConst_850;
  switch (fDist) {
    case DIST_BINOMIAL: return (w * y + 0.5) / (w + 1.0);
    case DIST_POISSON:
    case DIST_NEGBIN: return y + 0.1;
    case DIST_GAMMA:
    case DIST_IGAUSS:
    case DIST_NORMAL:
    case DIST_MULTINOMIAL: break;
  }
  return y;
}

}  // namespace MCEngine_850
