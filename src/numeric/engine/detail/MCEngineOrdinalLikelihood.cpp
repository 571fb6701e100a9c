#include "numeric/engine/detail/MCEngineOrdinalLikelihood.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

constexpr double kModeTolerance = 1e-11;
constexpr int kMaxModeIterations = 100;
const double kMinusInf = -std::numeric_limits<double>::infinity();

}  // namespace

MCEngineOrdinalLikelihood::MCEngineOrdinalLikelihood(GLMMConst_850::LinkType link, int nCategories,
                                                     const std::vector<int>& category, const Eigen::MatrixXd& x,
                                                     const std::vector<double>& offset,
                                                     const std::vector<double>& weight,
                                                     const std::vector<int>& subject, int nSubjects,
                                                     int quadraturePoints)
    : fLatent(link),
      fNCategories(nCategories),
      fvCategory(category),
      fX(x),
      fvOffset(offset),
      fvWeight(weight),
      fRule(quadraturePoints) {
  if (subject.empty()) return;
  fvGroups.resize(U(nSubjects));
  for (int r = 0; r < static_cast<int>(subject.size()); ++r) fvGroups[U(subject[U(r)])].push_back(r);
}

Eigen::VectorXd MCEngineOrdinalLikelihood::FixedPredictor(const Eigen::VectorXd& params) const {
  Eigen::VectorXd eta = fX * params.segment(GetNThresholds(), GetNBeta());
  for (Eigen::Index r = 0; r < eta.size(); ++r) eta[r] += fvOffset[U(static_cast<int>(r))];
  return eta;
}

void MCEngineOrdinalLikelihood::RecordTerm(const Eigen::VectorXd& params, int c, double s, double& value,
                                           double& d1, double& d2) const {
  const double inf = std::numeric_limits<double>::infinity();
  const double upper = c < GetNThresholds() ? params[c] - s : inf;
  const double lower = c > 0 ? params[c - 1] - s : -inf;
  const double p = fLatent.Cdf(upper) - fLatent.Cdf(lower);
  if (!(p > 0.0)) {
    value = kMinusInf;
    d1 = d2 = 0.0;
    return;
  }
  // d/ds of F(theta - s) is -f(theta - s).
  const double dp = -(fLatent.Density(upper) - fLatent.Density(lower));
  const double ddp = fLatent.DensityDerivative(upper) - fLatent.DensityDerivative(lower);
  value = std::log(p);
  d1 = dp / p;
  d2 = ddp / p - d1 * d1;
}

void MCEngineOrdinalLikelihood::SubjectTerm(const Eigen::VectorXd& params, const Eigen::VectorXd& eta,
                                            const std::vector<int>& records, double sigma, double b, double& h,
                                            double& h1, double& h2) const {
  h = -0.5 * b * b;
  h1 = -b;
  h2 = -1.0;
  for (int r : records) {
    double v, d1, d2;
    RecordTerm(params, fvCategory[U(r)], eta[r] + sigma * b, v, d1, d2);
    const double w = fvWeight[U(r)];
    h += w * v;
    h1 += w * sigma * d1;
    h2 += w * sigma * sigma * d2;
  }
}

double MCEngineOrdinalLikelihood::SubjectLogIntegral(const Eigen::VectorXd& params, const Eigen::VectorXd& eta,
                                                     const std::vector<int>& records, double sigma,
                                                     double& bMode) const {
  // Newton's method for the mode, halving a step that does not raise h
  // (the Cauchy link's integrand need not be concave).
  double b = 0.0, h, h1, h2;
  SubjectTerm(params, eta, records, sigma, b, h, h1, h2);
  if (!std::isfinite(h)) return kMinusInf;
  for (int it = 0; it < kMaxModeIterations; ++it) {
    double step = h2 < 0.0 ? -h1 / h2 : h1;
    double hn = kMinusInf, h1n = 0.0, h2n = 0.0;
    for (int halving = 0; halving < 60; ++halving) {
      SubjectTerm(params, eta, records, sigma, b + step, hn, h1n, h2n);
      if (std::isfinite(hn) && hn >= h - 1e-14 * std::fabs(h)) break;
      step *= 0.5;
    }
    if (!std::isfinite(hn)) break;
    b += step;
    h = hn;
    h1 = h1n;
    h2 = h2n;
    if (std::fabs(step) < kModeTolerance) break;
  }
  bMode = b;
  if (!(h2 < 0.0)) return kMinusInf;
  // With b = bMode + sqrt(2) s x and s = (-h'')^(-1/2), the integral of
  // exp(h(b)) / sqrt(2 pi) is sqrt(2) s / sqrt(2 pi) sum_k w_k exp(h(b_k) + x_k^2).
  const double s = 1.0 / std::sqrt(-h2);
  const std::vector<double>& x = fRule.GetNodes();
  const std::vector<double>& w = fRule.GetWeights();
  std::vector<double> terms(x.size());
  double largest = kMinusInf;
  for (std::size_t k = 0; k < x.size(); ++k) {
    double hk = h, d1, d2;
    if (x[k] != 0.0) SubjectTerm(params, eta, records, sigma, b + std::sqrt(2.0) * s * x[k], hk, d1, d2);
    terms[k] = std::log(w[k]) + hk + x[k] * x[k];
    largest = std::max(largest, terms[k]);
  }
  if (!std::isfinite(largest)) return kMinusInf;
  double sum = 0.0;
  for (double t : terms) sum += std::exp(t - largest);
  return largest + std::log(sum) + std::log(s) - 0.5 * std::log(std::acos(-1.0));
}

double MCEngineOrdinalLikelihood::LogLik(const Eigen::VectorXd& params, std::vector<double>* pModes) const {
  for (int j = 1; j < GetNThresholds(); ++j) {
    if (!(params[j] > params[j - 1])) return kMinusInf;
  }
  const Eigen::VectorXd eta = FixedPredictor(params);
  if (!HasRandom()) {
    double ll = 0.0;
    for (int r = 0; r < static_cast<int>(fvCategory.size()); ++r) {
      double v, d1, d2;
      RecordTerm(params, fvCategory[U(r)], eta[r], v, d1, d2);
      ll += fvWeight[U(r)] * v;
    }
    return std::isfinite(ll) ? ll : kMinusInf;
  }
  const double sigma = std::exp(params[GetNParameters() - 1]);
  if (pModes) pModes->assign(fvGroups.size(), 0.0);
  double ll = 0.0;
  for (std::size_t g = 0; g < fvGroups.size(); ++g) {
    double bMode = 0.0;
    ll += SubjectLogIntegral(params, eta, fvGroups[g], sigma, bMode);
    if (pModes) (*pModes)[g] = sigma * bMode;
  }
  return std::isfinite(ll) ? ll : kMinusInf;
}

}  // namespace MCEngine_850
