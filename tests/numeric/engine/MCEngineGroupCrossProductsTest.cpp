// The evaluation by groups from each group's cross products, formed once,
// against the general evaluation that forms and factors each group's V:
// the value, the gradient, both Hessians and the products the statistics
// read, on the reference models and on simulated models with scale and
// frequency weights, several blocks, a non-linear structure and singular G;
// and that the evaluations after the set-up read no records.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

constexpr double kTol = 1e-10;

MCEngineSettings BySubject(bool reml, bool crossProducts) {
  MCEngineSettings s = MCEngineTestFixture::Tight(reml, MCEngineSettings::kBySubject);
  s.SetCrossProducts(crossProducts);
  return s;
}

void ExpectNear(const std::vector<double>& a, const std::vector<double>& b, double scale, const char* what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], kTol * scale) << what << " " << i;
}

// -2 log L, its gradient and both Hessians of the two evaluations at theta
// (natural parameters, or the estimates when empty).
void ExpectSameAt(const MCEngineFitter& cross, const MCEngineFitter& general, std::vector<double> theta) {
  if (theta.empty()) {
    for (const MCEngineCovParam& cp : general.GetResult().GetCovParams()) theta.push_back(cp.GetEstimate());
  }
  double fa = 0.0, fb = 0.0;
  std::vector<double> ga, gb, ha, hb, ea, eb;
  ASSERT_TRUE(cross.EvaluateAt(theta, fa, ga, ha, ea));
  ASSERT_TRUE(general.EvaluateAt(theta, fb, gb, hb, eb));
  EXPECT_NEAR(fa, fb, kTol * std::fabs(fb));
  double scale = 0.0;
  for (double h : eb) scale = std::max(scale, std::fabs(h));
  ExpectNear(ga, gb, scale, "gradient");
  ExpectNear(ha, hb, scale, "observed Hessian");
  ExpectNear(ea, eb, scale, "expected Hessian");
  // The cross products spare the evaluation records the general one reads.
  EXPECT_LT(cross.GetRecordsPerEvaluation(), general.GetRecordsPerEvaluation());
}

// Both evaluations fit the same model, and agree at the estimates and at
// theta, for REML and ML.
void ExpectSameEvaluations(const MCEngineInput& input, const std::vector<double>& theta) {
  for (bool reml : {true, false}) {
    SCOPED_TRACE(reml ? "REML" : "ML");
    MCEngineFitter cross, general;
    ASSERT_FALSE(cross.Fit(input, BySubject(reml, true)).IsError());
    ASSERT_FALSE(general.Fit(input, BySubject(reml, false)).IsError());
    const MCEngineResult& a = cross.GetResult();
    const MCEngineResult& b = general.GetResult();
    EXPECT_NEAR(a.GetMinus2LogLik(), b.GetMinus2LogLik(), 1e-8 * std::fabs(b.GetMinus2LogLik()));
    ASSERT_EQ(a.GetCovParams().size(), b.GetCovParams().size());
    for (std::size_t k = 0; k < a.GetCovParams().size(); ++k) {
      const double e = b.GetCovParams()[k].GetEstimate();
      EXPECT_NEAR(a.GetCovParams()[k].GetEstimate(), e, 1e-8 * std::max(std::fabs(e), 1e-3)) << "parameter " << k;
    }
    ASSERT_EQ(a.GetBeta().size(), b.GetBeta().size());
    for (std::size_t j = 0; j < a.GetBeta().size(); ++j) {
      const double e = b.GetBeta()[j].GetEstimate();
      EXPECT_NEAR(a.GetBeta()[j].GetEstimate(), e, 1e-8 * std::max(std::fabs(e), 1.0)) << "beta " << j;
      const double se = b.GetBeta()[j].GetStdError();
      EXPECT_NEAR(a.GetBeta()[j].GetStdError(), se, 1e-8 * std::fabs(se)) << "std error " << j;
    }
    ExpectSameAt(cross, general, {});
    if (!theta.empty()) ExpectSameAt(cross, general, theta);
  }
}

// A random intercept and slope in x, ten records per subject, y simulated.
MCEngineInput TenRecordsPerSubject(int nSubjects) {
  std::vector<double> y, X, Z;
  std::vector<int> subjects;
  for (int s = 0; s < nSubjects; ++s) {
    const double b0 = std::sin(1.7 * s) * 3.0, b1 = std::cos(2.3 * s);
    for (int t = 0; t < 10; ++t) {
      const double x = t;
      y.push_back(20.0 + 2.0 * x + b0 + b1 * x + std::sin(0.37 * (10 * s + t) * (10 * s + t)));
      X.insert(X.end(), {1.0, x});
      Z.insert(Z.end(), {1.0, x});
      subjects.push_back(s);
    }
  }
  MCEngineInput in;
  in.SetY(y);
  in.SetX(2, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  MCEngineRandomBlock b;
  b.SetCovType(MCEngineCovType::UN);
  b.SetDenseColumns(2, Z);
  b.SetColumnEffects({0, 1});
  b.SetSubjects(subjects);
  in.SetRandomBlocks({b});
  return in;
}

// Scale weights from 0.5 to 2 and frequency weights from 1 to 3.
void Weigh(MCEngineInput& input) {
  std::vector<double> scale, freq;
  for (int r = 0; r < input.GetNRecords(); ++r) {
    scale.push_back(0.5 + 0.25 * (r % 7));
    freq.push_back(1.0 + (r * 5 % 3));
  }
  input.SetScaleWeights(scale);
  input.SetFrequencyWeights(freq);
}

}  // namespace

TEST(MCEngineGroupCrossProducts, ReferenceModelsEvaluateAsBefore) {
  {
    SCOPED_TRACE("sleepstudy, unstructured");
    auto m = MCEngineTestFixture::Sleepstudy(MCEngineCovType::UN);
    m->fInput = m->fpDesign->Build();
    ExpectSameEvaluations(m->fInput, {});
  }
  {
    SCOPED_TRACE("sleepstudy, variance components");
    auto m = MCEngineTestFixture::Sleepstudy(MCEngineCovType::VC);
    m->fInput = m->fpDesign->Build();
    ExpectSameEvaluations(m->fInput, {});
  }
  {
    SCOPED_TRACE("orthodont, intercept and slope");
    auto m = MCEngineTestFixture::Orthodont();
    m->fpDesign->AddRandomBlock({"Intercept", "age"}, "Subject", MCEngineCovType::UN);
    m->fInput = m->fpDesign->Build();
    ExpectSameEvaluations(m->fInput, {});
  }
  {
    SCOPED_TRACE("orthodont, scale weights");
    auto m = MCEngineTestFixture::Orthodont();
    m->fpDesign->AddRandomBlock({"Intercept"}, "Subject", MCEngineCovType::VC);
    m->fInput = m->fpDesign->Build();
    std::vector<double> w;
    const int col = m->fCsv.FindColumn("age");
    for (int r = 0; r < m->fCsv.GetNRows(); ++r) w.push_back(m->fCsv.GetNumber(r, col) / 10.0);
    m->fInput.SetScaleWeights(w);
    ExpectSameEvaluations(m->fInput, {});
  }
}

TEST(MCEngineGroupCrossProducts, ScaleAndFrequencyWeights) {
  MCEngineInput input = TenRecordsPerSubject(30);
  Weigh(input);
  ExpectSameEvaluations(input, {2.0, 0.3, 0.5, 1.5});
}

TEST(MCEngineGroupCrossProducts, SingularCovarianceOfTheRandomEffects) {
  MCEngineInput input = TenRecordsPerSubject(20);
  Weigh(input);
  ExpectSameEvaluations(input, {1.0, 1.0, 1.0, 1.5});  // intercept and slope perfectly correlated
  ExpectSameEvaluations(input, {0.0, 0.0, 0.5, 1.5});  // no random intercept
}

// Groups of four records or fewer with an intercept and slope and four
// fixed columns: those of four are reduced from rows padded with zeros, the
// others keep the general evaluation; a block nested in the subject gives a
// group several blocks; AR1 has second derivatives.
TEST(MCEngineGroupCrossProducts, PaddedGroupsSeveralBlocksAndSecondDerivatives) {
  const MCEngineTestSimulation sim(40);
  MCEngineInput input = sim.BaseInput();
  Weigh(input);
  input.SetResidualBlock(sim.Residual(MCEngineCovType::ID));
  {
    SCOPED_TRACE("unstructured");
    input.SetRandomBlocks({sim.InterceptSlope(MCEngineCovType::UN)});
    ExpectSameEvaluations(input, {2.0, 0.3, 0.5, 1.5});
  }
  {
    SCOPED_TRACE("first-order autoregressive");
    input.SetRandomBlocks({sim.InterceptSlope(MCEngineCovType::AR1)});
    ExpectSameEvaluations(input, {0.4, 2.0, 1.5});
  }
  {
    SCOPED_TRACE("two blocks");
    MCEngineRandomBlock halves = sim.Intercept();
    std::vector<int> subjects;
    for (int r = 0; r < sim.GetNRecords(); ++r) subjects.push_back(2 * sim.GetSubjects()[U(r)] + r % 2);
    halves.SetSubjects(subjects);
    input.SetRandomBlocks({sim.InterceptSlope(MCEngineCovType::UN), halves});
    ExpectSameEvaluations(input, {2.0, 0.3, 0.5, 0.7, 1.5});
    // The non-linear block's second derivatives over some of the group's
    // columns only.
    SCOPED_TRACE("two blocks, the second autoregressive");
    input.SetRandomBlocks({halves, sim.InterceptSlope(MCEngineCovType::AR1)});
    ExpectSameEvaluations(input, {0.7, 0.4, 2.0, 1.5});
  }
}

// Work count: after the set-up an evaluation reads no records of a reduced
// group, where the general evaluation reads every record each time.
TEST(MCEngineGroupCrossProducts, EvaluationsReadNoRecords) {
  const MCEngineInput input = TenRecordsPerSubject(50);
  MCEngineFitter cross, general;
  ASSERT_FALSE(cross.Fit(input, BySubject(true, true)).IsError());
  ASSERT_FALSE(general.Fit(input, BySubject(true, false)).IsError());
  EXPECT_EQ(cross.GetRecordsPerEvaluation(), 0.0);
  EXPECT_EQ(general.GetRecordsPerEvaluation(), 500.0);
  double value = 0.0;
  std::vector<double> g, h, e;
  ASSERT_TRUE(cross.EvaluateAt({2.0, 0.3, 0.5, 1.5}, value, g, h, e));
  EXPECT_EQ(cross.GetRecordsPerEvaluation(), 0.0);
  // Another path reads no groups.
  MCEngineFitter equations;
  ASSERT_FALSE(equations.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kMixedModelEquations)).IsError());
  EXPECT_EQ(equations.GetRecordsPerEvaluation(), -1.0);
}

// A residual variance of zero makes V singular on either path.
TEST(MCEngineGroupCrossProducts, NoResidualVarianceIsRefused) {
  const MCEngineInput input = TenRecordsPerSubject(5);
  for (bool crossProducts : {true, false}) {
    MCEngineFitter fitter;
    ASSERT_FALSE(fitter.Fit(input, BySubject(true, crossProducts)).IsError());
    double value = 0.0;
    std::vector<double> g, h, e;
    EXPECT_FALSE(fitter.EvaluateAt({2.0, 0.3, 0.5, 0.0}, value, g, h, e)) << crossProducts;
  }
}
