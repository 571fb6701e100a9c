// Predictions from a fitted model: estimability, the engine's splitting of
// blocks, frequency weights, columns that no record reaches, and requests
// that cannot be answered.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

::testing::AssertionResult Close(double a, double b, double tol) {
  if (MCEngineMissing::Is(a) || MCEngineMissing::Is(b)) return ::testing::AssertionFailure() << "missing";
  if (std::fabs(a - b) <= tol * std::max(1.0, std::fabs(b))) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

::testing::AssertionResult Same(const MCEnginePrediction& a, const MCEnginePrediction& b, double tol) {
  ::testing::AssertionResult r = Close(a.GetEstimate(), b.GetEstimate(), tol);
  if (r) r = Close(a.GetStdError(), b.GetStdError(), tol);
  if (r) r = Close(a.GetDF(), b.GetDF(), 100.0 * tol);
  return r;
}

bool Missing(const MCEnginePrediction& p) {
  return MCEngineMissing::Is(p.GetEstimate()) && MCEngineMissing::Is(p.GetStdError()) &&
         MCEngineMissing::Is(p.GetDF());
}

// A fit and its predictor.
struct Fitted {
  MCEngineFitter fFitter;
  MCEnginePredictor fPredictor;
  bool fbOK = false;
};

std::unique_ptr<Fitted> Fit(const MCEngineInput& input) {
  auto f = std::make_unique<Fitted>();
  MCEngineSettings settings;
  settings.SetParamTolerance(1e-10);
  settings.SetMaxIterations(200);
  f->fbOK = !f->fFitter.Fit(input, settings).IsError() && f->fPredictor.Setup(f->fFitter, input);
  return f;
}

// The slope in x as a block of its own by subject.
MCEngineRandomBlock Slope(const MCEngineInput& base, const std::vector<int>& subjects) {
  std::vector<double> z;
  for (int r = 0; r < base.GetNRecords(); ++r) z.push_back(base.GetX()[U(r) * 4 + 1]);
  MCEngineRandomBlock b;
  b.SetCovType(MCEngineCovType::VC);
  b.SetDenseColumns(1, z);
  b.SetSubjects(subjects);
  return b;
}

std::vector<double> Row(const MCEngineInput& input, int r) {
  const int P = input.GetNColumns();
  return std::vector<double>(input.GetX().begin() + r * P, input.GetX().begin() + (r + 1) * P);
}

}  // namespace

TEST(MCEnginePredictor, EstimabilityAndFixedStandardErrors) {
  const MCEngineTestSimulation sim(12);
  MCEngineInput input = sim.BaseInput();
  input.AddRandomBlock(sim.Intercept());
  const auto f = Fit(input);
  ASSERT_TRUE(f->fbOK);
  // The last level of A is aliased: it alone is not estimable, with the intercept it is.
  EXPECT_TRUE(Missing(f->fPredictor.Predict({0.0, 0.0, 0.0, 1.0}, {})));
  const MCEnginePrediction level2 = f->fPredictor.Predict({1.0, 0.0, 0.0, 1.0}, {});
  const MCEngineResult& result = f->fFitter.GetResult();
  EXPECT_TRUE(Close(level2.GetEstimate(), result.GetBeta()[0].GetEstimate(), 1e-10));
  EXPECT_TRUE(Close(level2.GetStdError(), result.GetBeta()[0].GetStdError(), 1e-10));
  EXPECT_TRUE(Close(level2.GetDF(), result.GetBeta()[0].GetDF(), 1e-8));
  // x'C x with the fit's covariance of the estimates.
  const std::vector<double> x = {1.0, 2.0, 1.0, 0.0};
  const std::vector<double>& covBeta = result.GetCovBeta();
  double v = 0.0;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) v += x[U(i)] * covBeta[U(i) * 4 + U(j)] * x[U(j)];
  }
  EXPECT_TRUE(Close(f->fPredictor.Predict(x, {}).GetStdError(), std::sqrt(v), 1e-10));
}

TEST(MCEnginePredictor, SplitBlockPredictsAsSeparateBlocks) {
  // Data whose slope variance is not at its bound.
  const MCEngineTestSimulation sim(12, 5u);
  // One VC block of intercept and slope, which the engine splits by effect,
  // and the same as two blocks; and the same as one DIAG block, not split.
  MCEngineInput together = sim.BaseInput();
  together.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::VC));
  MCEngineInput apart = sim.BaseInput();
  apart.AddRandomBlock(sim.Intercept());
  apart.AddRandomBlock(Slope(apart, sim.GetSubjects()));
  MCEngineInput diagonal = sim.BaseInput();
  diagonal.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::DIAG));
  const auto a = Fit(together);
  const auto b = Fit(apart);
  const auto c = Fit(diagonal);
  ASSERT_TRUE(a->fbOK && b->fbOK && c->fbOK);
  const std::vector<double> zero(4, 0.0);
  for (int s : {0, 5, 11}) {
    SCOPED_TRACE(s);
    EXPECT_TRUE(a->fPredictor.HasSubject(0, s));
    const MCEnginePrediction intercept = b->fPredictor.Predict(zero, {MCEngineRandomEntry(0, s, 0, 1.0)});
    const MCEnginePrediction slope = b->fPredictor.Predict(zero, {MCEngineRandomEntry(1, s, 0, 1.0)});
    EXPECT_TRUE(Same(a->fPredictor.Predict(zero, {MCEngineRandomEntry(0, s, 0, 1.0)}), intercept, 1e-6));
    EXPECT_TRUE(Same(a->fPredictor.Predict(zero, {MCEngineRandomEntry(0, s, 1, 1.0)}), slope, 1e-6));
    EXPECT_TRUE(Same(c->fPredictor.Predict(zero, {MCEngineRandomEntry(0, s, 1, 1.0)}), slope, 1e-6));
  }
  // A record's prediction with its subject's effects.
  const int r = 7;
  const std::vector<double> x = Row(together, r);
  const int s = sim.GetSubjects()[U(r)];
  const MCEnginePrediction both = b->fPredictor.Predict(
      x, {MCEngineRandomEntry(0, s, 0, 1.0), MCEngineRandomEntry(1, s, 0, x[1])});
  EXPECT_TRUE(Same(a->fPredictor.Predict(
                       x, {MCEngineRandomEntry(0, s, 0, 1.0), MCEngineRandomEntry(0, s, 1, x[1])}),
                   both, 1e-6));
  EXPECT_TRUE(Same(c->fPredictor.Predict(
                       x, {MCEngineRandomEntry(0, s, 0, 1.0), MCEngineRandomEntry(0, s, 1, x[1])}),
                   both, 1e-6));
}

TEST(MCEnginePredictor, ColumnWithoutDataIsPredictedAsZero) {
  // Subject 0 has no slope data in the random block: its slope is 0, and its
  // prediction error is the slope's variance, in the DIAG block (a subject
  // the fit has, a column it does not reach) as in the split VC block (a
  // subject the split block does not have).
  const MCEngineTestSimulation sim(12, 5u);
  for (MCEngineCovType type : {MCEngineCovType::DIAG, MCEngineCovType::VC}) {
    SCOPED_TRACE(static_cast<int>(type));
    MCEngineInput input = sim.BaseInput();
    MCEngineRandomBlock block = sim.InterceptSlope(type);
    std::vector<double> Z;
    for (int r = 0; r < input.GetNRecords(); ++r) {
      Z.insert(Z.end(), {1.0, sim.GetSubjects()[U(r)] == 0 ? 0.0 : input.GetX()[U(r) * 4 + 1]});
    }
    block.SetDenseColumns(2, Z);
    input.AddRandomBlock(block);
    const auto f = Fit(input);
    ASSERT_TRUE(f->fbOK);
    const double slopeVariance = f->fFitter.GetResult().GetCovParams()[1].GetEstimate();
    ASSERT_GT(slopeVariance, 0.0);
    const MCEnginePrediction p = f->fPredictor.Predict(std::vector<double>(4, 0.0), {MCEngineRandomEntry(0, 0, 1, 1.0)});
    EXPECT_EQ(p.GetEstimate(), 0.0);
    EXPECT_TRUE(Close(p.GetStdError(), std::sqrt(slopeVariance), 1e-10));
    // A subject that the fit does not have at all: the same.
    const MCEnginePrediction q = f->fPredictor.Predict(std::vector<double>(4, 0.0), {MCEngineRandomEntry(0, 77, 1, 1.0)});
    EXPECT_FALSE(f->fPredictor.HasSubject(0, 77));
    EXPECT_EQ(q.GetEstimate(), 0.0);
    EXPECT_TRUE(Close(q.GetStdError(), std::sqrt(slopeVariance), 1e-10));
  }
}

TEST(MCEnginePredictor, RequestsThatCannotBeAnswered) {
  const MCEngineTestSimulation sim(8);
  MCEngineInput input = sim.BaseInput();
  input.AddRandomBlock(sim.Intercept());
  MCEnginePredictor unset;
  EXPECT_FALSE(unset.IsReady());
  EXPECT_TRUE(Missing(unset.Predict({1.0, 0.0, 1.0, 0.0}, {})));
  EXPECT_FALSE(unset.HasSubject(0, 0));

  const auto f = Fit(input);
  ASSERT_TRUE(f->fbOK);
  const std::vector<double> x = {1.0, 0.0, 1.0, 0.0};
  EXPECT_FALSE(Missing(f->fPredictor.Predict(x, {MCEngineRandomEntry(0, 1, 0, 1.0)})));
  EXPECT_TRUE(Missing(f->fPredictor.Predict({1.0, 0.0}, {})));
  EXPECT_TRUE(Missing(f->fPredictor.Predict({1.0, std::numeric_limits<double>::infinity(), 1.0, 0.0}, {})));
  EXPECT_TRUE(Missing(f->fPredictor.Predict(x, {MCEngineRandomEntry(1, 1, 0, 1.0)})));
  EXPECT_TRUE(Missing(f->fPredictor.Predict(x, {MCEngineRandomEntry(0, 1, 1, 1.0)})));
  EXPECT_TRUE(Missing(f->fPredictor.Predict(x, {MCEngineRandomEntry(-1, 1, 0, 1.0)})));
  EXPECT_TRUE(
      Missing(f->fPredictor.Predict(x, {MCEngineRandomEntry(0, 1, 0, std::numeric_limits<double>::quiet_NaN())})));
  EXPECT_FALSE(f->fPredictor.HasSubject(1, 0));

  // A fit that failed gives nothing to predict from.
  MCEngineFitter failed;
  MCEngineInput empty;
  failed.Fit(empty, MCEngineSettings());
  MCEnginePredictor none;
  EXPECT_FALSE(none.Setup(failed, empty));
  EXPECT_FALSE(none.IsReady());
}

TEST(MCEnginePredictor, GroupsLargerThanTheLimitAreNotSetUp) {
  // The simulation's subjects have at most four records: a limit of three
  // refuses the fit, one of four takes it.
  const MCEngineTestSimulation sim(8);
  MCEngineInput input = sim.BaseInput();
  input.AddRandomBlock(sim.Intercept());
  const auto f = Fit(input);
  ASSERT_TRUE(f->fbOK);
  MCEnginePredictor limited;
  limited.SetMaxGroupRecords(3);
  EXPECT_FALSE(limited.Setup(f->fFitter, input));
  EXPECT_FALSE(limited.IsReady());
  limited.SetMaxGroupRecords(4);
  EXPECT_TRUE(limited.Setup(f->fFitter, input));
}
