// The analytic gradient and observed Hessian of -2 log L against finite
// differences, for every structure on the random and the residual side, under
// REML and ML, and on both evaluation paths.
#include <gtest/gtest.h>

#include <cmath>
#include <cctype>
#include <functional>
#include <tuple>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

struct Config {
  const char* fName;
  std::function<void(const MCEngineTestSimulation&, MCEngineInput&)> fSetup;
};

std::vector<Config> Configs() {
  using S = MCEngineTestSimulation;
  return {
      {"random UN", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::UN)); }},
      {"random VC", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::VC)); }},
      {"random ID", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::ID)); }},
      {"random AR1", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.Positions(MCEngineCovType::AR1)); }},
      {"random CS", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.Positions(MCEngineCovType::CS)); }},
      {"random DIAG", [](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.Positions(MCEngineCovType::DIAG)); }},
      {"residual CS", [](const S& s, MCEngineInput& in) { in.SetResidualBlock(s.Residual(MCEngineCovType::CS)); }},
      {"residual UN", [](const S& s, MCEngineInput& in) { in.SetResidualBlock(s.Residual(MCEngineCovType::UN)); }},
      {"residual AR1", [](const S& s, MCEngineInput& in) { in.SetResidualBlock(s.Residual(MCEngineCovType::AR1)); }},
      {"residual DIAG", [](const S& s, MCEngineInput& in) { in.SetResidualBlock(s.Residual(MCEngineCovType::DIAG)); }},
      {"random intercept and residual AR1",
       [](const S& s, MCEngineInput& in) {
         in.AddRandomBlock(s.Intercept());
         in.SetResidualBlock(s.Residual(MCEngineCovType::AR1));
       }},
      {"random intercept and residual DIAG",
       [](const S& s, MCEngineInput& in) {
         in.AddRandomBlock(s.Intercept());
         in.SetResidualBlock(s.Residual(MCEngineCovType::DIAG));
       }},
      {"random UN and residual AR1",
       [](const S& s, MCEngineInput& in) {
         in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::UN));
         in.SetResidualBlock(s.Residual(MCEngineCovType::AR1));
       }},
      {"crossed",
       [](const S& s, MCEngineInput& in) {
         in.AddRandomBlock(s.Intercept());
         in.AddRandomBlock(s.ByPosition());
       }},
  };
}

// A point near the estimates, away from any bound.
std::vector<double> EvaluationPoint(const MCEngineResult& r) {
  std::vector<double> theta;
  int k = 0;
  for (const MCEngineCovParam& cp : r.GetCovParams()) {
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
        v *= 0.9;
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

void CheckDerivatives(const MCEngineFitter& fitter, const std::vector<double>& theta) {
  const int K = static_cast<int>(theta.size());
  double f = 0.0;
  std::vector<double> g, Ho, He;
  ASSERT_TRUE(fitter.EvaluateAt(theta, f, g, Ho, He));
  double hmax = 0.0;
  for (double h : Ho) hmax = std::max(hmax, std::fabs(h));
  for (int k = 0; k < K; ++k) {
    SCOPED_TRACE("parameter " + std::to_string(k));
    const double h = 1e-5 * std::max(std::fabs(theta[static_cast<std::size_t>(k)]), 0.1);
    std::vector<double> up = theta, down = theta;
    up[static_cast<std::size_t>(k)] += h;
    down[static_cast<std::size_t>(k)] -= h;
    double fu = 0.0, fd = 0.0;
    std::vector<double> gu, gd, tmp1, tmp2;
    ASSERT_TRUE(fitter.EvaluateAt(up, fu, gu, tmp1, tmp2));
    ASSERT_TRUE(fitter.EvaluateAt(down, fd, gd, tmp1, tmp2));
    const double fdGrad = (fu - fd) / (2.0 * h);
    EXPECT_NEAR(g[static_cast<std::size_t>(k)], fdGrad, 1e-5 * (1.0 + std::fabs(fdGrad))) << "gradient";
    for (int l = 0; l < K; ++l) {
      const double fdHess = (gu[static_cast<std::size_t>(l)] - gd[static_cast<std::size_t>(l)]) / (2.0 * h);
      EXPECT_NEAR(Ho[static_cast<std::size_t>(l * K + k)], fdHess, 1e-5 * (1.0 + hmax)) << "Hessian column " << l;
      EXPECT_DOUBLE_EQ(Ho[static_cast<std::size_t>(l * K + k)], Ho[static_cast<std::size_t>(k * K + l)]);
      EXPECT_DOUBLE_EQ(He[static_cast<std::size_t>(l * K + k)], He[static_cast<std::size_t>(k * K + l)]);
    }
  }
}

void RunConfig(int configIndex, bool reml) {
  const MCEngineTestSimulation sim(10);
  const Config c = Configs()[static_cast<std::size_t>(configIndex)];
  SCOPED_TRACE(c.fName);
  {
    MCEngineInput input = sim.BaseInput();
    c.fSetup(sim, input);
    std::vector<MCEngineSettings::SolverPath> paths = {MCEngineSettings::kBySubject};
    if (!input.GetRandomBlocks().empty()) paths.push_back(MCEngineSettings::kMixedModelEquations);
    std::vector<double> theta;
    std::vector<double> expected;
    for (MCEngineSettings::SolverPath path : paths) {
      SCOPED_TRACE(path == MCEngineSettings::kBySubject ? "by subject" : "mixed-model equations");
      MCEngineSettings settings;
      settings.SetREML(reml);
      settings.SetSolverPath(path);
      // The fit only lays out the data and gives a plausible point.
      settings.SetMaxIterations(8);
      MCEngineFitter fitter;
      fitter.Fit(input, settings);
      ASSERT_FALSE(fitter.GetResult().GetStatus().IsError()) << fitter.GetResult().GetStatus().GetCode();
      EXPECT_EQ(fitter.GetResult().GetSolverPath(), path);
      if (theta.empty()) theta = EvaluationPoint(fitter.GetResult());
      CheckDerivatives(fitter, theta);
      // Both paths evaluate the same function.
      double f = 0.0;
      std::vector<double> g, Ho, He;
      ASSERT_TRUE(fitter.EvaluateAt(theta, f, g, Ho, He));
      std::vector<double> all = {f};
      all.insert(all.end(), g.begin(), g.end());
      all.insert(all.end(), Ho.begin(), Ho.end());
      all.insert(all.end(), He.begin(), He.end());
      if (expected.empty()) {
        expected = all;
      } else {
        ASSERT_EQ(all.size(), expected.size());
        for (std::size_t i = 0; i < all.size(); ++i) EXPECT_NEAR(all[i], expected[i], 1e-8 * (1.0 + std::fabs(expected[i])));
      }
    }
  }
}

class MCEngineDerivatives : public ::testing::TestWithParam<std::tuple<int, bool>> {};

}  // namespace

TEST_P(MCEngineDerivatives, MatchFiniteDifferences) { RunConfig(std::get<0>(GetParam()), std::get<1>(GetParam())); }

INSTANTIATE_TEST_SUITE_P(AllStructures, MCEngineDerivatives,
                         ::testing::Combine(::testing::Range(0, static_cast<int>(Configs().size())), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<int, bool>>& info) {
                           std::string name = Configs()[static_cast<std::size_t>(std::get<0>(info.param))].fName;
                           for (char& ch : name) {
                             if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                           }
                           return name + (std::get<1>(info.param) ? "_REML" : "_ML");
                         });
