// The analytic gradient and observed Hessian of -2 log L against finite
// differences of the gradient, for the heterogeneous, Toeplitz,
// autoregressive-moving-average, factor-analytic and spatial structures on
// the random and the residual side, under REML and ML, on both evaluation
// paths.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <tuple>

#include "numeric/engine/MCEngineDerivativeCheck.h"
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
    candidates.push_back(MCEngineDerivativeCheck::EvaluationPoint(fitter.GetResult(), 0.1));
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
    MCEngineDerivativeCheck::ExpectFiniteDifferences(fitters[i], theta);
    // Both paths evaluate the same function.
    MCEngineDerivativeCheck::ExpectSameEvaluation(fitters[i], theta, expected);
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
                           return MCEngineDerivativeCheck::TestName(Configs()[U(std::get<0>(info.param))].fName,
                                                                    std::get<1>(info.param));
                         });
