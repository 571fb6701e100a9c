// The analytic gradient and observed Hessian of -2 log L against finite
// differences of the gradient, for the heterogeneous, Toeplitz,
// autoregressive-moving-average, factor-analytic and spatial structures on
// the random and the residual side, under REML and ML, on both evaluation
// paths.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <functional>
#include <string>
#include <tuple>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

struct Config {
  std::string fName;
  std::function<void(const MCEngineTestSimulation&, MCEngineInput&)> fSetup;
};

// The covariate x of the base design (its column 1: a position plus a random
// fraction), times a factor, as the records' coordinate; with `second`, three
// times the fraction as a second one.
MCEngineResidualBlock Spatial(const MCEngineTestSimulation& s, const MCEngineInput& in, MCEngineCovType type,
                              double factor, bool second) {
  MCEngineResidualBlock r = s.Residual(type);
  std::vector<double> coords;
  for (int i = 0; i < in.GetNRecords(); ++i) {
    const double x = in.GetX()[U(i) * 4 + 1];
    coords.push_back(factor * x);
    if (second) coords.push_back(3.0 * (x - std::floor(x)));
  }
  r.SetCoordinates(second ? 2 : 1, coords);
  return r;
}

std::vector<Config> Configs() {
  using S = MCEngineTestSimulation;
  std::vector<Config> out;
  const std::pair<const char*, MCEngineCovType> shared[] = {
      {"ARH1", MCEngineCovType::ARH1}, {"AD1", MCEngineCovType::AD1}, {"TP", MCEngineCovType::TP},
      {"ARMA11", MCEngineCovType::ARMA11}, {"CSH", MCEngineCovType::CSH}, {"CSR", MCEngineCovType::CSR},
      {"FA1", MCEngineCovType::FA1}, {"HF", MCEngineCovType::HF}, {"TPH", MCEngineCovType::TPH},
      {"UNR", MCEngineCovType::UNR}, {"FAH1", MCEngineCovType::FAH1}};
  for (const auto& entry : shared) {
    const MCEngineCovType type = entry.second;
    out.push_back({std::string("residual ") + entry.first,
                   [type](const S& s, MCEngineInput& in) { in.SetResidualBlock(s.Residual(type)); }});
    out.push_back({std::string("random ") + entry.first,
                   [type](const S& s, MCEngineInput& in) { in.AddRandomBlock(s.Positions(type)); }});
  }
  const std::pair<const char*, MCEngineCovType> spatial[] = {
      {"SP_POW", MCEngineCovType::SP_POW}, {"SP_EXP", MCEngineCovType::SP_EXP}, {"SP_GAU", MCEngineCovType::SP_GAU},
      {"SP_LIN", MCEngineCovType::SP_LIN}, {"SP_SPH", MCEngineCovType::SP_SPH}};
  for (const auto& entry : spatial) {
    const MCEngineCovType type = entry.second;
    out.push_back({std::string("residual ") + entry.first, [type](const S& s, MCEngineInput& in) {
                     in.SetResidualBlock(Spatial(s, in, type, 1.0, false));
                   }});
  }
  out.push_back({"residual SP_LINL", [](const S& s, MCEngineInput& in) {
                   in.SetResidualBlock(Spatial(s, in, MCEngineCovType::SP_LINL, 3.0, false));
                 }});
  out.push_back({"residual SP_EXP in two coordinates", [](const S& s, MCEngineInput& in) {
                   in.SetResidualBlock(Spatial(s, in, MCEngineCovType::SP_EXP, 1.0, true));
                 }});
  out.push_back({"random intercept and residual SP_GAU", [](const S& s, MCEngineInput& in) {
                   in.AddRandomBlock(s.Intercept());
                   in.SetResidualBlock(Spatial(s, in, MCEngineCovType::SP_GAU, 1.0, false));
                 }});
  out.push_back({"random FA1 and residual ARMA11", [](const S& s, MCEngineInput& in) {
                   in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::FA1));
                   in.SetResidualBlock(s.Residual(MCEngineCovType::ARMA11));
                 }});
  out.push_back({"random TP and residual CSH", [](const S& s, MCEngineInput& in) {
                   in.AddRandomBlock(s.InterceptSlope(MCEngineCovType::TP));
                   in.SetResidualBlock(s.Residual(MCEngineCovType::CSH));
                 }});
  return out;
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
        v = 0.9 * v + 0.1;
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

void RunConfig(int configIndex, bool reml) {
  const MCEngineTestSimulation sim(10);
  const Config c = Configs()[U(configIndex)];
  SCOPED_TRACE(c.fName);
  MCEngineInput input = sim.BaseInput();
  c.fSetup(sim, input);
  std::vector<MCEngineSettings::SolverPath> paths = {MCEngineSettings::kBySubject};
  if (!input.GetRandomBlocks().empty()) paths.push_back(MCEngineSettings::kMixedModelEquations);
  // The fits only lay out the data and give their starting values, which are
  // admissible.
  std::vector<MCEngineFitter> fitters(paths.size());
  for (std::size_t i = 0; i < paths.size(); ++i) {
    MCEngineSettings settings;
    settings.SetREML(reml);
    settings.SetSolverPath(paths[i]);
    settings.SetMaxIterations(0);
    fitters[i].Fit(input, settings);
    ASSERT_FALSE(fitters[i].GetResult().GetStatus().IsError()) << fitters[i].GetResult().GetStatus().GetCode();
    EXPECT_EQ(fitters[i].GetResult().GetSolverPath(), paths[i]);
  }
  // Off the starting values where every path can evaluate there (the
  // equations path needs G positive semidefinite, the other only V positive
  // definite).
  std::vector<std::vector<double>> candidates;
  for (const MCEngineFitter& fitter : fitters) {
    candidates.push_back(EvaluationPoint(fitter.GetResult()));
    candidates.emplace_back();
    for (const MCEngineCovParam& cp : fitter.GetResult().GetCovParams()) candidates.back().push_back(cp.GetEstimate());
  }
  std::vector<double> theta;
  for (const std::vector<double>& candidate : candidates) {
    bool ok = true;
    for (const MCEngineFitter& fitter : fitters) {
      double f = 0.0;
      std::vector<double> g, Ho, He;
      ok = ok && fitter.EvaluateAt(candidate, f, g, Ho, He);
    }
    if (ok) {
      theta = candidate;
      break;
    }
  }
  ASSERT_FALSE(theta.empty()) << "no admissible point";
  std::vector<double> expected;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    SCOPED_TRACE(paths[i] == MCEngineSettings::kBySubject ? "by subject" : "mixed-model equations");
    CheckDerivatives(fitters[i], theta);
    // Both paths evaluate the same function.
    double f = 0.0;
    std::vector<double> g, Ho, He;
    ASSERT_TRUE(fitters[i].EvaluateAt(theta, f, g, Ho, He));
    std::vector<double> all = {f};
    all.insert(all.end(), g.begin(), g.end());
    all.insert(all.end(), Ho.begin(), Ho.end());
    all.insert(all.end(), He.begin(), He.end());
    if (expected.empty()) {
      expected = all;
    } else {
      ASSERT_EQ(all.size(), expected.size());
      for (std::size_t j = 0; j < all.size(); ++j) EXPECT_NEAR(all[j], expected[j], 1e-8 * (1.0 + std::fabs(expected[j])));
    }
  }
}

class MCEngineCovarianceDerivatives : public ::testing::TestWithParam<std::tuple<int, bool>> {};

}  // namespace

TEST_P(MCEngineCovarianceDerivatives, MatchFiniteDifferences) {
  RunConfig(std::get<0>(GetParam()), std::get<1>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(EveryStructure, MCEngineCovarianceDerivatives,
                         ::testing::Combine(::testing::Range(0, static_cast<int>(Configs().size())), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<int, bool>>& info) {
                           std::string name = Configs()[U(std::get<0>(info.param))].fName;
                           for (char& ch : name) {
                             if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                           }
                           return name + (std::get<1>(info.param) ? "_REML" : "_ML");
                         });
