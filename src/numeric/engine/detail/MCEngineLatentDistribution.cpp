#include "numeric/engine/detail/MCEngineLatentDistribution.h"

#include <algorithm>
#include <cmath>

#include "numeric/engine/MCEngineProbability.h"

namespace MCEngine_850 {

namespace {

const double kPi = std::acos(-1.0);

double NormalDensity(double x) { return std::exp(-0.5 * x * x) / std::sqrt(2.0 * kPi); }

}  // namespace

MCEngineLatentDistribution::MCEngineLatentDistribution(GLMMConst_850::LinkType link) : fLink(link) {}

bool MCEngineLatentDistribution::Takes(GLMMConst_850::LinkType link) {
  using namespace GLMMConst_850;
  return link == LINK_LOGIT || link == LINK_PROBIT || link == LINK_CLOGLOG || link == LINK_NLOGLOG ||
         link == LINK_CAUCHIT;
}

double MCEngineLatentDistribution::Cdf(double x) const {
  using namespace GLMMConst_850;
  if (std::isinf(x)) return x > 0.0 ? 1.0 : 0.0;
  switch (fLink) {
    case LINK_PROBIT: return MCEngineProbability::NormalCdf(x);
    case LINK_CLOGLOG: return -std::expm1(-std::exp(x));
    case LINK_NLOGLOG: return std::exp(-std::exp(-x));
    case LINK_CAUCHIT: return 0.5 + std::atan(x) / kPi;
    default: return x >= 0.0 ? 1.0 / (1.0 + std::exp(-x)) : std::exp(x) / (1.0 + std::exp(x));
  }
}

double MCEngineLatentDistribution::Density(double x) const {
  using namespace GLMMConst_850;
  if (std::isinf(x)) return 0.0;
  switch (fLink) {
    case LINK_PROBIT: return NormalDensity(x);
    case LINK_CLOGLOG: return x > 700.0 ? 0.0 : std::exp(x - std::exp(x));
    case LINK_NLOGLOG: return x < -700.0 ? 0.0 : std::exp(-x - std::exp(-x));
    case LINK_CAUCHIT: return 1.0 / (kPi * (1.0 + x * x));
    default: {
      const double e = std::exp(-std::fabs(x));
      return e / ((1.0 + e) * (1.0 + e));
    }
  }
}

double MCEngineLatentDistribution::DensityDerivative(double x) const {
  using namespace GLMMConst_850;
  if (std::isinf(x)) return 0.0;
  const double f = Density(x);
  switch (fLink) {
    case LINK_PROBIT: return -x * f;
    case LINK_CLOGLOG: return f * (1.0 - std::exp(std::min(x, 700.0)));
    case LINK_NLOGLOG: return f * (std::exp(std::min(-x, 700.0)) - 1.0);
    case LINK_CAUCHIT: return -2.0 * x * kPi * f * f;
    default: return f * (1.0 - 2.0 * Cdf(x));
  }
}

}  // namespace MCEngine_850
