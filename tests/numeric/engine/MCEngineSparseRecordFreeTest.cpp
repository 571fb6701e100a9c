// The sparse equations under a residual of one variance shared by the
// records: the evaluation from the cross products formed once per fit
// against the general evaluation, which visits the records each time, on
// crossed designs with scale weights and frequency weights; and that an
// evaluation then visits no record at all.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestCrossed.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/detail/MCEngineRecordFree.h"

using namespace MCEngine_850;

namespace {

using MCEngineTestCrossed::Crossed;

// The same settings with the records visited in every evaluation.
MCEngineSettings General(MCEngineSettings s) {
  s.SetCrossProducts(false);
  return s;
}

struct Evaluation {
  double fValue = 0.0;
  std::vector<double> fGrad, fObserved, fAverage;
};

Evaluation At(const MCEngineFitter& fitter, const std::vector<double>& theta) {
  Evaluation e;
  EXPECT_TRUE(fitter.EvaluateAt(theta, e.fValue, e.fGrad, e.fObserved, e.fAverage));
  return e;
}

void ExpectNear(const std::vector<double>& a, const std::vector<double>& b, double tol, const char* what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  double scale = 0.0;
  for (double v : b) scale = std::max(scale, std::fabs(v));
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tol * std::max(scale, 1.0)) << what << " " << i;
}

// The fit and an evaluation away from the estimates (value, gradient,
// observed Hessian, average information) are the same on both paths, and
// the record-free evaluation visits no record.
void ExpectSameAsGeneral(const MCEngineInput& input, bool reml) {
  const MCEngineSettings s = MCEngineTestFixture::Tight(reml, MCEngineSettings::kSparseEquations);
  MCEngineFitter recordFree, general;
  ASSERT_FALSE(recordFree.Fit(input, s).IsError());
  ASSERT_FALSE(general.Fit(input, General(s)).IsError());
  EXPECT_EQ(recordFree.GetResult().GetSolverPath(), MCEngineSettings::kSparseEquations);
  MCEngineTestCopies::ExpectSameFit(recordFree.GetResult(), general.GetResult(), 1e-8);
  std::vector<double> theta;
  for (const MCEngineCovParam& cp : general.GetResult().GetCovParams()) theta.push_back(1.3 * cp.GetEstimate() + 0.05);
  const long before = MCEngineRecordFree::GetRecordPasses();
  const Evaluation a = At(recordFree, theta);
  EXPECT_EQ(MCEngineRecordFree::GetRecordPasses(), before);
  const Evaluation b = At(general, theta);
  EXPECT_NEAR(a.fValue, b.fValue, 1e-10 * std::fabs(b.fValue));
  ExpectNear(a.fGrad, b.fGrad, 1e-9, "gradient");
  ExpectNear(a.fObserved, b.fObserved, 1e-7, "observed Hessian");
  ExpectNear(a.fAverage, b.fAverage, 1e-9, "average information");
}

// A large mean beside small residuals: y - X b0 keeps y'R^-1 y from
// cancelling.
MCEngineInput Shifted(const MCEngineInput& input, double shift) {
  MCEngineInput out = input;
  std::vector<double> y = input.GetY();
  for (double& v : y) v += shift;
  out.SetY(y);
  return out;
}

// Scale weights first, first + step, ... repeating after period records.
MCEngineInput WithScaleWeights(MCEngineInput input, double first, double step, int period) {
  std::vector<double> w;
  for (int r = 0; r < input.GetNRecords(); ++r) w.push_back(first + (r % period) * step);
  input.SetScaleWeights(w);
  return input;
}

}  // namespace

TEST(MCEngineSparseRecordFree, EqualsTheGeneralEvaluation) {
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  ExpectSameAsGeneral(input, true);
  ExpectSameAsGeneral(input, false);
}

TEST(MCEngineSparseRecordFree, ScaleWeights) {
  const MCEngineInput input = WithScaleWeights(Crossed(240, 30, 12, 1.0, 11u), 0.5, 0.5, 4);
  ExpectSameAsGeneral(input, true);
  ExpectSameAsGeneral(input, false);
}

TEST(MCEngineSparseRecordFree, FrequencyWeights) {
  const MCEngineInput input = Crossed(180, 25, 10, 1.0, 13u);
  const MCEngineInput weighted =
      MCEngineTestCopies::Weighted(input, MCEngineTestCopies::ByRecord(input.GetNRecords()));
  ExpectSameAsGeneral(weighted, true);
  ExpectSameAsGeneral(WithScaleWeights(weighted, 1.0, 0.25, 3), true);
}

TEST(MCEngineSparseRecordFree, ALargeMean) {
  // A mean of 1e6 against residuals of 1 changes only the intercept: the
  // record-free fit of the shifted response gives the unshifted fit's
  // likelihood and estimates to 1e-9.
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 23u);
  const MCEngineSettings s = MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations);
  MCEngineFitter plain, shifted;
  ASSERT_FALSE(plain.Fit(input, s).IsError());
  ASSERT_FALSE(shifted.Fit(Shifted(input, 1e6), s).IsError());
  const MCEngineResult& a = shifted.GetResult();
  const MCEngineResult& b = plain.GetResult();
  EXPECT_NEAR(a.GetMinus2LogLik(), b.GetMinus2LogLik(), 1e-9 * std::fabs(b.GetMinus2LogLik()));
  ASSERT_EQ(a.GetCovParams().size(), b.GetCovParams().size());
  for (std::size_t k = 0; k < b.GetCovParams().size(); ++k) {
    const double e = b.GetCovParams()[k].GetEstimate();
    EXPECT_NEAR(a.GetCovParams()[k].GetEstimate(), e, 1e-9 * std::fabs(e)) << "covariance parameter " << k;
  }
  ASSERT_EQ(a.GetBeta().size(), 2u);
  ASSERT_EQ(b.GetBeta().size(), 2u);
  EXPECT_NEAR(a.GetBeta()[0].GetEstimate() - 1e6, b.GetBeta()[0].GetEstimate(), 1e-9 * 1e6);
  const double slope = b.GetBeta()[1].GetEstimate();
  EXPECT_NEAR(a.GetBeta()[1].GetEstimate(), slope, 1e-9 * std::fabs(slope));
}

TEST(MCEngineSparseRecordFree, AnEvaluationVisitsNoRecord) {
  // The fit reduces the records once (the products with y, then with
  // y - X b0, which takes one product of X with b0): three passes however
  // many evaluations it makes; an evaluation with the observed Hessian
  // (eight gradients for its difference quotients) makes none. The general
  // evaluation passes over the records many times in each.
  const MCEngineInput input = Crossed(600, 40, 30, 1.0, 29u);
  const MCEngineSettings s = MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations);
  MCEngineFitter recordFree, general;
  long before = MCEngineRecordFree::GetRecordPasses();
  ASSERT_FALSE(recordFree.Fit(input, s).IsError());
  EXPECT_EQ(MCEngineRecordFree::GetRecordPasses() - before, 3);
  std::vector<double> theta;
  for (const MCEngineCovParam& cp : recordFree.GetResult().GetCovParams()) theta.push_back(1.2 * cp.GetEstimate());
  before = MCEngineRecordFree::GetRecordPasses();
  At(recordFree, theta);
  EXPECT_EQ(MCEngineRecordFree::GetRecordPasses() - before, 0);

  ASSERT_FALSE(general.Fit(input, General(s)).IsError());
  before = MCEngineRecordFree::GetRecordPasses();
  At(general, theta);
  EXPECT_GT(MCEngineRecordFree::GetRecordPasses() - before, 9);
}
