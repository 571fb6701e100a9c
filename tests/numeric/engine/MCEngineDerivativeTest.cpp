// The analytic gradient and observed Hessian of -2 log L against finite
// differences, for every structure on the random and the residual side, under
// REML and ML, on every evaluation path, and with frequency weights (copies
// of records under independent residuals, of subjects under correlated ones).
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <tuple>

#include "numeric/engine/MCEngineDerivativeCheck.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCopies.h"
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

bool CouplesNoRecords(MCEngineCovType type) {
  return type == MCEngineCovType::ID || type == MCEngineCovType::VC || type == MCEngineCovType::DIAG;
}

void RunConfig(int configIndex, bool reml, bool weighted) {
  const MCEngineTestSimulation sim(10);
  const Config c = Configs()[static_cast<std::size_t>(configIndex)];
  SCOPED_TRACE(c.fName);
  {
    MCEngineInput input = sim.BaseInput();
    c.fSetup(sim, input);
    const bool recordCopies = CouplesNoRecords(input.GetResidualBlock().GetCovType());
    if (weighted) {
      input.SetFrequencyWeights(MCEngineTestCopies::AsWeights(
          recordCopies ? MCEngineTestCopies::ByRecord(sim.GetNRecords()) : MCEngineTestCopies::BySubject(sim.GetSubjects())));
    }
    std::vector<MCEngineSettings::SolverPath> paths = {MCEngineSettings::kBySubject};
    // Copies of whole groups go group by group only.
    if (!input.GetRandomBlocks().empty() && (!weighted || recordCopies)) {
      paths.push_back(MCEngineSettings::kMixedModelEquations);
      paths.push_back(MCEngineSettings::kSparseEquations);
    }
    std::vector<double> theta;
    std::vector<double> expected;
    for (MCEngineSettings::SolverPath path : paths) {
      SCOPED_TRACE(path == MCEngineSettings::kBySubject ? "by subject"
                   : path == MCEngineSettings::kSparseEquations ? "sparse equations"
                                                                 : "mixed-model equations");
      MCEngineSettings settings;
      settings.SetREML(reml);
      settings.SetSolverPath(path);
      // The fit only lays out the data and gives a plausible point.
      settings.SetMaxIterations(8);
      MCEngineFitter fitter;
      fitter.Fit(input, settings);
      EXPECT_EQ(fitter.GetResult().GetSolverPath(), path);
      // The point comes from the first path's fit; on some of these data the
      // optimum has no residual variance, which a path that iterates faster
      // reaches within the few iterations.
      if (theta.empty()) {
        ASSERT_FALSE(fitter.GetResult().GetStatus().IsError()) << fitter.GetResult().GetStatus().GetCode();
        theta = MCEngineDerivativeCheck::EvaluationPoint(fitter.GetResult(), 0.0);
      }
      // With weights the dense equations path's -2 log L carries more rounding
      // error (some 1e-10 here) than differences over steps of 1e-5 bear;
      // its derivatives are held to the group-by-group path's instead.
      if (!weighted || path != MCEngineSettings::kMixedModelEquations) {
        MCEngineDerivativeCheck::ExpectFiniteDifferences(fitter, theta);
      }
      // Both paths evaluate the same function.
      MCEngineDerivativeCheck::ExpectSameEvaluation(fitter, theta, expected);
    }
  }
}

class MCEngineDerivatives : public ::testing::TestWithParam<std::tuple<int, bool, bool>> {};

}  // namespace

TEST_P(MCEngineDerivatives, MatchFiniteDifferences) {
  RunConfig(std::get<0>(GetParam()), std::get<1>(GetParam()), std::get<2>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(AllStructures, MCEngineDerivatives,
                         ::testing::Combine(::testing::Range(0, static_cast<int>(Configs().size())), ::testing::Bool(),
                                            ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<int, bool, bool>>& info) {
                           const std::size_t index = static_cast<std::size_t>(std::get<0>(info.param));
                           return MCEngineDerivativeCheck::TestName(Configs()[index].fName, std::get<1>(info.param)) +
                                  (std::get<2>(info.param) ? "_weighted" : "");
                         });
