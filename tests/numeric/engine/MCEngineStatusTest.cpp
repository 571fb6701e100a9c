// Every condition the engine reports, provoked by an input.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

MCEngineInput RandomIntercept(const MCEngineTestSimulation& sim) {
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.Intercept());
  return in;
}

bool HasWarning(const MCEngineResult& r, long code) {
  for (const MCEngineStatus& w : r.GetWarnings()) {
    if (w.GetCode() == code && w.IsWarning()) return true;
  }
  return false;
}

}  // namespace

TEST(MCEngineStatus, ConstructedStatusHasCodeAndKind) {
  const MCEngineStatus ok;
  EXPECT_TRUE(ok.IsOK());
  EXPECT_EQ(ok.GetCode(), 0);
  const MCEngineStatus e(MCEngineStatus::kNoValidCases, MCEngineStatus::kError);
  EXPECT_TRUE(e.IsError());
  EXPECT_FALSE(e.IsWarning());
  EXPECT_EQ(e.GetCode(), 230024);
}

TEST(MCEngineStatus, NoValidCases) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = RandomIntercept(sim);
  in.SetY(std::vector<double>(static_cast<std::size_t>(sim.GetNRecords()), std::numeric_limits<double>::quiet_NaN()));
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_TRUE(st.IsError());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kNoValidCases);
  EXPECT_EQ(fitter.GetResult().GetStatus().GetCode(), MCEngineStatus::kNoValidCases);
}

TEST(MCEngineStatus, RecordsWithUnusableValuesAreLeftOut) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = RandomIntercept(sim);
  std::vector<double> y = in.GetY();
  y[0] = std::numeric_limits<double>::infinity();
  in.SetY(y);
  std::vector<double> w(y.size(), 1.0);
  w[1] = 0.0;
  in.SetFrequencyWeights(w);
  std::vector<double> sw(y.size(), 1.0);
  sw[2] = -1.0;
  in.SetScaleWeights(sw);
  MCEngineFitter fitter;
  EXPECT_FALSE(fitter.Fit(in, MCEngineSettings()).IsError());
  EXPECT_EQ(fitter.GetResult().GetNRecordsUsed(), sim.GetNRecords() - 3);
}

TEST(MCEngineStatus, InvalidInput) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = RandomIntercept(sim);
  in.SetX(3, in.GetX());  // size no longer n x P
  MCEngineFitter fitter;
  EXPECT_EQ(fitter.Fit(in, MCEngineSettings()).GetCode(), MCEngineStatus::kInvalidSettings);

  MCEngineInput in2 = RandomIntercept(sim);
  MCEngineSettings settings;
  settings.SetConfidenceLevel(100.0);
  EXPECT_EQ(fitter.Fit(in2, settings).GetCode(), MCEngineStatus::kInvalidSettings);

  MCEngineInput in3 = RandomIntercept(sim);
  std::vector<MCEngineRandomBlock> blocks = in3.GetRandomBlocks();
  blocks[0].SetSubjects({1, 2, 3});
  in3.SetRandomBlocks(blocks);
  EXPECT_EQ(fitter.Fit(in3, MCEngineSettings()).GetCode(), MCEngineStatus::kInvalidSettings);

  MCEngineInput in4 = RandomIntercept(sim);
  in4.AddTerm(MCEngineTerm(3, 5, {}, {}));  // beyond the design
  EXPECT_EQ(fitter.Fit(in4, MCEngineSettings()).GetCode(), MCEngineStatus::kInvalidSettings);
}

TEST(MCEngineStatus, StructureNotAvailable) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = sim.BaseInput();
  // Spatial structures are for the residual block only.
  in.AddRandomBlock(sim.Positions(MCEngineCovType::SP_EXP));
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kBuildModel);
  EXPECT_TRUE(st.IsError());
}

TEST(MCEngineStatus, DuplicateRepeatedPosition) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = sim.BaseInput();
  MCEngineResidualBlock res = sim.Residual(MCEngineCovType::AR1);
  std::vector<int> pos = res.GetPositions();
  pos[1] = pos[0];  // same subject, same position
  res.SetPositions(pos);
  in.SetResidualBlock(res);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kDuplicateRepeated);
  EXPECT_TRUE(st.IsError());
}

TEST(MCEngineStatus, PerfectFit) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = RandomIntercept(sim);
  std::vector<double> y(static_cast<std::size_t>(sim.GetNRecords()));
  for (std::size_t r = 0; r < y.size(); ++r) y[r] = 2.0 + 3.0 * in.GetX()[r * 4 + 1];
  in.SetY(y);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kPerfectFit);
  EXPECT_TRUE(st.IsError());

  // No residual degrees of freedom is a perfect fit as well.
  MCEngineInput small;
  small.SetY({1.0, 2.0});
  small.SetX(2, {1.0, 0.0, 1.0, 1.0});
  EXPECT_EQ(fitter.Fit(small, MCEngineSettings()).GetCode(), MCEngineStatus::kPerfectFit);
}

TEST(MCEngineStatus, ZeroScale) {
  // The response is the fixed part plus exact subject effects: the residual
  // variance goes to 0 as the subject variance grows.
  const MCEngineTestSimulation sim(12, 1);
  MCEngineInput in = RandomIntercept(sim);
  std::vector<double> y(static_cast<std::size_t>(sim.GetNRecords()));
  for (std::size_t r = 0; r < y.size(); ++r) y[r] = 3.0 + 2.0 * in.GetX()[r * 4 + 1] + (sim.GetSubjects()[r] % 5) * 1.7;
  in.SetY(y);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kScaleZero);
  EXPECT_TRUE(st.IsError());
}

TEST(MCEngineStatus, InitialValueFailed) {
  // A random-effect design so large that V overflows at every starting point.
  const MCEngineTestSimulation sim(12, 1);
  MCEngineInput in = sim.BaseInput();
  MCEngineRandomBlock b;
  b.SetDenseColumns(1, std::vector<double>(static_cast<std::size_t>(sim.GetNRecords()), 1e200));
  b.SetSubjects(sim.GetSubjects());
  in.AddRandomBlock(b);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kInitialValueFailed);
  EXPECT_TRUE(st.IsError());
}

TEST(MCEngineStatus, IterationLimit) {
  MCEngineTestCsv csv;
  ASSERT_TRUE(csv.Read(MCEngineTestFixture::DataPath("machines.csv")));
  MCEngineTestDesign design(csv, {"Worker", "Machine"});
  design.SetResponse("score");
  design.AddFixedTerm("Intercept");
  design.AddFixedTerm("Machine");
  design.AddRandomBlock({"Worker", "Worker*Machine"}, "", MCEngineCovType::VC);
  MCEngineSettings settings;
  settings.SetMaxIterations(1);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(design.Build(), settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kIterationLimit);
  EXPECT_TRUE(st.IsWarning());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_FALSE(r.IsConverged());
  EXPECT_EQ(r.GetIterations(), 1);
  EXPECT_TRUE(HasWarning(r, MCEngineStatus::kIterationLimit));
  // The estimates at the last iterate are still reported.
  EXPECT_FALSE(MCEngineMissing::Is(r.GetMinus2LogLik()));
  EXPECT_FALSE(MCEngineMissing::Is(r.GetBeta()[0].GetStdError()));
}

TEST(MCEngineStatus, StepHalvingExhausted) {
  // Without step halving, a full Newton step from the start that increases
  // the objective ends the iterations.
  const MCEngineTestSimulation sim(12, 7);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::UN));
  MCEngineSettings settings;
  settings.SetMaxStepHalvings(0);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kStepHalvingExhausted);
  EXPECT_TRUE(st.IsWarning());
  EXPECT_FALSE(fitter.GetResult().IsConverged());
  // With step halving the same fit converges.
  settings.SetMaxStepHalvings(5);
  // Its G ends indefinite, which is the fit's one warning.
  EXPECT_EQ(fitter.Fit(in, settings).GetCode(), MCEngineStatus::kGMatrixNotPD);
  EXPECT_TRUE(fitter.GetResult().IsConverged());
}

TEST(MCEngineStatus, ConvergedWithSingularHessian) {
  // A random block that touches no record: its variance does not change the
  // likelihood, so the Hessian has a zero row.
  const MCEngineTestSimulation sim(12, 1);
  MCEngineInput in = RandomIntercept(sim);
  MCEngineRandomBlock b;
  b.SetDenseColumns(1, std::vector<double>(static_cast<std::size_t>(sim.GetNRecords()), 0.0));
  b.SetSubjects(sim.GetSubjects());
  in.AddRandomBlock(b);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kConvergedSingularHessian);
  EXPECT_TRUE(st.IsWarning());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_TRUE(r.IsConverged());
  // Without an asymptotic covariance there are no standard errors or df.
  EXPECT_TRUE(MCEngineMissing::Is(r.GetCovParams()[0].GetStdError()));
  EXPECT_TRUE(MCEngineMissing::Is(r.GetBeta()[0].GetDF()));
  EXPECT_FALSE(MCEngineMissing::Is(r.GetBeta()[0].GetStdError()));
}

TEST(MCEngineStatus, HessianSingularityWhileIterating) {
  // The same block, with only the parameter criterion in use: the Hessian is
  // zero and no step can be computed.
  const MCEngineTestSimulation sim(12, 1);
  MCEngineInput in = sim.BaseInput();
  MCEngineRandomBlock b;
  b.SetDenseColumns(1, std::vector<double>(static_cast<std::size_t>(sim.GetNRecords()), 0.0));
  b.SetSubjects(sim.GetSubjects());
  in.AddRandomBlock(b);
  MCEngineSettings settings;
  settings.SetHessianTolerance(0.0);
  settings.SetParamTolerance(1e-8);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kHessianSingularity);
  EXPECT_TRUE(st.IsWarning());
}

TEST(MCEngineStatus, ConvergedWithIndefiniteHessian) {
  // A loose parameter criterion and scoring steps stop at a point where the
  // observed Hessian is indefinite.
  const MCEngineTestSimulation sim(12, 3);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::UN));
  MCEngineSettings settings;
  settings.SetHessianTolerance(0.0);
  settings.SetParamTolerance(100.0);
  settings.SetFisherSteps(100);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kFinalHessianNotPD);
  EXPECT_TRUE(st.IsWarning());
  EXPECT_TRUE(fitter.GetResult().IsConverged());
  EXPECT_TRUE(HasWarning(fitter.GetResult(), MCEngineStatus::kFinalHessianNotPD));
}

TEST(MCEngineStatus, PostEstimationFailed) {
  // Scale weights so far apart that the residual variance, estimated from
  // the heavy records, overflows the variance of the light ones at the
  // estimates: every evaluation while fitting is on a scale-free V, the one
  // after it on V in the response's units, which is not finite.
  const MCEngineTestSimulation sim(6, 2);
  MCEngineInput in = sim.BaseInput();
  std::vector<double> w(static_cast<std::size_t>(sim.GetNRecords()));
  for (std::size_t r = 0; r < w.size(); ++r) w[r] = r % 2 == 0 ? 1e300 : 1e-300;
  in.SetScaleWeights(w);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kPostEstimationFailed);
  EXPECT_TRUE(st.IsError());
  EXPECT_EQ(fitter.GetResult().GetStatus().GetCode(), 130090);
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
}
