// Spatial residual structures in fits: their agreement with AR1 where they
// coincide, their invariance to moving the coordinates, and the input they
// refuse. Also the reported sign of factor-analytic loadings.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// The simulation's positions (0 to 3 within a subject) as one coordinate.
MCEngineResidualBlock AtPositions(const MCEngineTestSimulation& sim, MCEngineCovType type) {
  MCEngineResidualBlock r = sim.Residual(type);
  std::vector<double> coords(r.GetPositions().begin(), r.GetPositions().end());
  r.SetPositions({});
  r.SetCoordinates(1, coords);
  return r;
}

// Two coordinates: the covariate x (a position plus a random fraction) and
// three times its fraction, moved by a rotation and a translation.
MCEngineResidualBlock InThePlane(const MCEngineTestSimulation& sim, const MCEngineInput& in, double angle) {
  MCEngineResidualBlock r = sim.Residual(MCEngineCovType::SP_EXP);
  r.SetPositions({});
  std::vector<double> coords;
  for (int i = 0; i < in.GetNRecords(); ++i) {
    const double x = in.GetX()[U(i) * 4 + 1];
    const double a = x, b = 3.0 * (x - std::floor(x));
    coords.push_back(std::cos(angle) * a - std::sin(angle) * b + 10.0);
    coords.push_back(std::sin(angle) * a + std::cos(angle) * b - 4.0);
  }
  r.SetCoordinates(2, coords);
  return r;
}

std::unique_ptr<MCEngineFitter> Fit(const MCEngineInput& in) {
  auto fitter = std::make_unique<MCEngineFitter>();
  fitter->Fit(in, MCEngineSettings());
  return fitter;
}

double Estimate(const MCEngineFitter& f, int k) { return f.GetResult().GetCovParams()[U(k)].GetEstimate(); }

}  // namespace

TEST(MCEngineSpatial, PowerOnEquallySpacedPositionsIsAR1) {
  const MCEngineTestSimulation sim(30);
  MCEngineInput ar1 = sim.BaseInput();
  ar1.SetResidualBlock(sim.Residual(MCEngineCovType::AR1));
  MCEngineInput pow = sim.BaseInput();
  pow.SetResidualBlock(AtPositions(sim, MCEngineCovType::SP_POW));
  MCEngineInput exp = sim.BaseInput();
  exp.SetResidualBlock(AtPositions(sim, MCEngineCovType::SP_EXP));
  const auto pa = Fit(ar1), pp = Fit(pow), pe = Fit(exp);
  const MCEngineFitter &a = *pa, &p = *pp, &e = *pe;
  for (const MCEngineFitter* f : {&a, &p, &e}) {
    ASSERT_TRUE(f->GetResult().GetStatus().IsOK()) << f->GetResult().GetStatus().GetCode();
    EXPECT_TRUE(f->GetResult().IsScaleProfiled());
  }
  EXPECT_NEAR(p.GetResult().GetMinus2LogLik(), a.GetResult().GetMinus2LogLik(), 1e-7 * a.GetResult().GetMinus2LogLik());
  EXPECT_NEAR(e.GetResult().GetMinus2LogLik(), a.GetResult().GetMinus2LogLik(), 1e-7 * a.GetResult().GetMinus2LogLik());
  const double rho = Estimate(a, 0);
  ASSERT_GT(rho, 0.0);
  EXPECT_NEAR(Estimate(p, 0), rho, 1e-5);
  EXPECT_NEAR(std::exp(-1.0 / Estimate(e, 0)), rho, 1e-5);
  EXPECT_NEAR(Estimate(p, 1), Estimate(a, 1), 1e-5 * Estimate(a, 1));
  EXPECT_EQ(p.GetResult().GetCovParams()[0].GetLabel(), "SP(POW)");
  EXPECT_EQ(e.GetResult().GetCovParams()[0].GetKind(), MCEngineCovParam::kRange);
  EXPECT_EQ(e.GetResult().GetCovParams()[1].GetLabel(), "Residual");
}

TEST(MCEngineSpatial, DistancesDoNotDependOnWhereThePlaneLies) {
  const MCEngineTestSimulation sim(30);
  MCEngineInput in1 = sim.BaseInput();
  in1.SetResidualBlock(InThePlane(sim, in1, 0.0));
  MCEngineInput in2 = sim.BaseInput();
  in2.SetResidualBlock(InThePlane(sim, in2, 0.7));
  const auto p1 = Fit(in1), p2 = Fit(in2);
  const MCEngineFitter &f1 = *p1, &f2 = *p2;
  ASSERT_TRUE(f1.GetResult().GetStatus().IsOK());
  ASSERT_TRUE(f2.GetResult().GetStatus().IsOK());
  EXPECT_NEAR(f1.GetResult().GetMinus2LogLik(), f2.GetResult().GetMinus2LogLik(), 1e-8 * f1.GetResult().GetMinus2LogLik());
  EXPECT_NEAR(Estimate(f1, 0), Estimate(f2, 0), 1e-5 * Estimate(f1, 0));
  EXPECT_NEAR(Estimate(f1, 1), Estimate(f2, 1), 1e-5 * Estimate(f1, 1));
}

TEST(MCEngineSpatial, RefusedInput) {
  const MCEngineTestSimulation sim(8);
  MCEngineFitter fitter;
  // No coordinates, and coordinates that do not match the records.
  MCEngineInput none = sim.BaseInput();
  none.SetResidualBlock(sim.Residual(MCEngineCovType::SP_GAU));
  EXPECT_EQ(fitter.Fit(none, MCEngineSettings()).GetCode(), MCEngineStatus::kInvalidSettings);
  MCEngineInput short1 = sim.BaseInput();
  MCEngineResidualBlock r = AtPositions(sim, MCEngineCovType::SP_GAU);
  std::vector<double> coords = r.GetCoordinates();
  coords.pop_back();
  r.SetCoordinates(1, coords);
  short1.SetResidualBlock(r);
  EXPECT_EQ(fitter.Fit(short1, MCEngineSettings()).GetCode(), MCEngineStatus::kInvalidSettings);
  // Two records of a subject at the same point.
  MCEngineInput twice = sim.BaseInput();
  r = AtPositions(sim, MCEngineCovType::SP_SPH);
  coords = r.GetCoordinates();
  ASSERT_EQ(sim.GetSubjects()[0], sim.GetSubjects()[1]);
  coords[1] = coords[0];
  r.SetCoordinates(1, coords);
  twice.SetResidualBlock(r);
  const MCEngineStatus st = fitter.Fit(twice, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kDuplicateRepeated);
  EXPECT_TRUE(st.IsError());
}

TEST(MCEngineSpatial, RecordsWithoutCoordinatesAreLeftOut) {
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  MCEngineResidualBlock r = AtPositions(sim, MCEngineCovType::SP_EXP);
  std::vector<double> coords = r.GetCoordinates();
  coords[3] = std::nan("");
  r.SetCoordinates(1, coords);
  in.SetResidualBlock(r);
  const auto pf = Fit(in);
  const MCEngineFitter& f = *pf;
  ASSERT_FALSE(f.GetResult().GetStatus().IsError());
  EXPECT_EQ(f.GetResult().GetNRecordsUsed(), sim.GetNRecords() - 1);
}

// Loadings are identified up to their sign; the one reported has a
// non-negative first loading. With the response at the first position
// negated, the first loading is of the other sign than the rest.
TEST(MCEngineSpatial, FactorLoadingsReportedWithThePositiveFirst) {
  const MCEngineTestSimulation sim(40);
  MCEngineInput in = sim.BaseInput();
  const MCEngineResidualBlock res = sim.Residual(MCEngineCovType::FA1);
  std::vector<double> y = in.GetY();
  for (int i = 0; i < in.GetNRecords(); ++i) {
    if (res.GetPositions()[U(i)] == 0) y[U(i)] = -y[U(i)];
  }
  in.SetY(y);
  in.SetResidualBlock(res);
  const auto pf = Fit(in);
  const MCEngineFitter& f = *pf;
  ASSERT_FALSE(f.GetResult().GetStatus().IsError()) << f.GetResult().GetStatus().GetCode();
  EXPECT_EQ(f.GetResult().GetCovParams()[0].GetLabel(), "FA(1,1)");
  EXPECT_GT(Estimate(f, 0), 0.0);
  EXPECT_LT(Estimate(f, 1), 0.0);
  EXPECT_LT(Estimate(f, 2), 0.0);
}
