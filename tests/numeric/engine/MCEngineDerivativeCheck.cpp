#include "numeric/engine/MCEngineDerivativeCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

std::vector<double> MCEngineDerivativeCheck::EvaluationPoint(const MCEngineResult& result, double loadingShift) {
  std::vector<double> theta;
  int k = 0;
  for (const MCEngineCovParam& cp : result.GetCovParams()) {
    double v = cp.GetEstimate();
    switch (cp.GetKind()) {
      case MCEngineCovParam::kVariance:
        v = std::max(v, 0.2) * (1.0 + 0.05 * (k % 3));
        break;
      case MCEngineCovParam::kCovariance:
        v *= 0.5;
        break;
      case MCEngineCovParam::kCorrelation:
        v = 0.8 * v + 0.05;
        break;
      case MCEngineCovParam::kLoading:
        v = 0.9 * v + loadingShift;
        break;
      case MCEngineCovParam::kRange:
        v *= 1.1;
        break;
    }
    theta.push_back(v);
    ++k;
  }
  return theta;
}

void MCEngineDerivativeCheck::ExpectFiniteDifferences(const MCEngineFitter& fitter, const std::vector<double>& theta) {
  const int K = static_cast<int>(theta.size());
  double f = 0.0;
  std::vector<double> g, Ho, He;
  ASSERT_TRUE(fitter.EvaluateAt(theta, f, g, Ho, He));
  double hmax = 0.0;
  for (double h : Ho) hmax = std::max(hmax, std::fabs(h));
  for (int k = 0; k < K; ++k) {
    SCOPED_TRACE("parameter " + std::to_string(k));
    const double h = 1e-5 * std::max(std::fabs(theta[U(k)]), 0.1);
    std::vector<double> up = theta, down = theta;
    up[U(k)] += h;
    down[U(k)] -= h;
    double fu = 0.0, fd = 0.0;
    std::vector<double> gu, gd, tmp1, tmp2;
    ASSERT_TRUE(fitter.EvaluateAt(up, fu, gu, tmp1, tmp2));
    ASSERT_TRUE(fitter.EvaluateAt(down, fd, gd, tmp1, tmp2));
    const double fdGrad = (fu - fd) / (2.0 * h);
    EXPECT_NEAR(g[U(k)], fdGrad, 1e-5 * (1.0 + std::fabs(fdGrad))) << "gradient";
    for (int l = 0; l < K; ++l) {
      const double fdHess = (gu[U(l)] - gd[U(l)]) / (2.0 * h);
      EXPECT_NEAR(Ho[U(l * K + k)], fdHess, 1e-5 * (1.0 + hmax)) << "Hessian column " << l;
      EXPECT_DOUBLE_EQ(Ho[U(l * K + k)], Ho[U(k * K + l)]);
      EXPECT_DOUBLE_EQ(He[U(l * K + k)], He[U(k * K + l)]);
    }
  }
}

void MCEngineDerivativeCheck::ExpectSameEvaluation(const MCEngineFitter& fitter, const std::vector<double>& theta,
                                                   std::vector<double>& expected) {
  double f = 0.0;
  std::vector<double> g, Ho, He;
  ASSERT_TRUE(fitter.EvaluateAt(theta, f, g, Ho, He));
  std::vector<double> all = {f};
  all.insert(all.end(), g.begin(), g.end());
  all.insert(all.end(), Ho.begin(), Ho.end());
  all.insert(all.end(), He.begin(), He.end());
  if (expected.empty()) {
    expected = all;
    return;
  }
  ASSERT_EQ(all.size(), expected.size());
  const bool sparse = fitter.GetResult().GetSolverPath() == MCEngineSettings::kSparseEquations;
  const std::size_t compared = sparse ? all.size() - He.size() : all.size();
  for (std::size_t j = 0; j < compared; ++j) EXPECT_NEAR(all[j], expected[j], 1e-8 * (1.0 + std::fabs(expected[j])));
}

std::string MCEngineDerivativeCheck::TestName(std::string description, bool reml) {
  for (char& ch : description) {
    if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
  }
  return description + (reml ? "_REML" : "_ML");
}
