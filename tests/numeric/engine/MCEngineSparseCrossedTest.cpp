// Simulated crossed designs on the sparse mixed-model equations: the same
// fit as one dense V over all records (the group-by-group path, whose single
// group holds everything), with scale and frequency weights (frequency
// weights also against the records written out as often as their weight),
// a variance on its bound, a factor with as many levels as records, and the
// automatic choice of path.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestCrossed.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/detail/MCEngineGemm.h"

using namespace MCEngine_850;

namespace {

using MCEngineTestCrossed::Crossed;

void ExpectSameOnBothPaths(const MCEngineInput& input, bool reml) {
  MCEngineFitter sparse, dense;
  ASSERT_FALSE(sparse.Fit(input, MCEngineTestFixture::Tight(reml, MCEngineSettings::kSparseEquations)).IsError());
  ASSERT_FALSE(dense.Fit(input, MCEngineTestFixture::Tight(reml, MCEngineSettings::kBySubject)).IsError());
  EXPECT_EQ(sparse.GetResult().GetSolverPath(), MCEngineSettings::kSparseEquations);
  MCEngineTestCopies::ExpectSameFit(sparse.GetResult(), dense.GetResult(), 1e-8);
}

}  // namespace

TEST(MCEngineSparseCrossed, EqualsOneDenseGroup) {
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  ExpectSameOnBothPaths(input, true);
  ExpectSameOnBothPaths(input, false);
}

TEST(MCEngineSparseCrossed, ScaleWeights) {
  MCEngineInput input = Crossed(240, 30, 12, 1.0, 11u);
  std::vector<double> w;
  for (int r = 0; r < input.GetNRecords(); ++r) w.push_back(0.5 + (r % 4) * 0.5);
  input.SetScaleWeights(w);
  ExpectSameOnBothPaths(input, true);
}

TEST(MCEngineSparseCrossed, FrequencyWeightsAreCopies) {
  const MCEngineInput input = Crossed(180, 25, 10, 1.0, 13u);
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(input.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(input, copies);
  const MCEngineInput written = MCEngineTestCopies::Write(input, copies, false);
  MCEngineFitter byWeight, byCopies;
  ASSERT_FALSE(byWeight.Fit(weighted, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations)).IsError());
  ASSERT_FALSE(byCopies.Fit(written, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations)).IsError());
  MCEngineTestCopies::ExpectSameFit(byWeight.GetResult(), byCopies.GetResult(), 1e-8);
  ExpectSameOnBothPaths(weighted, true);
}

TEST(MCEngineSparseCrossed, VarianceOnItsBound) {
  // The second factor has no effect; its variance estimate goes to 0, where
  // G is singular.
  const MCEngineInput input = Crossed(200, 20, 15, 0.0, 4u);
  MCEngineFitter sparse;
  ASSERT_FALSE(sparse.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations)).IsError());
  ASSERT_EQ(sparse.GetResult().GetCovParams().size(), 3u);
  EXPECT_TRUE(sparse.GetResult().GetCovParams()[1].IsOnBoundary());
  EXPECT_EQ(sparse.GetResult().GetCovParams()[1].GetEstimate(), 0.0);
  ExpectSameOnBothPaths(input, true);
}

TEST(MCEngineSparseCrossed, AsManyLevelsAsRecords) {
  // One level of the first factor per record, more random columns than
  // records: its variance and the residual's are not told apart, and the
  // fit either ends with a status or gives the dense group's likelihood.
  const MCEngineInput input = Crossed(60, 60, 8, 1.0, 5u);
  MCEngineFitter sparse, dense;
  const MCEngineStatus status = sparse.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations));
  dense.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject));
  if (!status.IsError() && !dense.GetResult().GetStatus().IsError()) {
    EXPECT_NEAR(sparse.GetResult().GetMinus2LogLik(), dense.GetResult().GetMinus2LogLik(),
                1e-6 * std::fabs(dense.GetResult().GetMinus2LogLik()));
  }
}

TEST(MCEngineSparseCrossed, ChosenForLargeCrossedDesigns) {
  MCEngineSettings s;
  const MCEngineInput crossed = Crossed(3000, 300, 40, 1.0, 17u);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(crossed, s).IsError());
  EXPECT_EQ(fitter.GetResult().GetSolverPath(), MCEngineSettings::kSparseEquations);
  // Small crossed designs are solved densely.
  const MCEngineInput small = Crossed(120, 10, 6, 1.0, 19u);
  MCEngineFitter smallFitter;
  ASSERT_FALSE(smallFitter.Fit(small, s).IsError());
  EXPECT_EQ(smallFitter.GetResult().GetSolverPath(), MCEngineSettings::kMixedModelEquations);
}

TEST(MCEngineSparseCrossed, ObservedHessianDifferencesAllButTheScale) {
  // Two variances and the profiled residual: the observed Hessian takes
  // four gradients for each variance and none for the residual, whose row
  // and column follow from the others; they equal the dense group's
  // analytic Hessian. Each evaluation asks the stop query once.
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  // Never says "stop"; counts the questions.
  const MCEngineTestCancelAfter polls(1 << 30);
  MCEngineSettings s = MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations);
  s.SetCancel(&polls);
  MCEngineFitter sparse, dense;
  ASSERT_FALSE(sparse.Fit(input, s).IsError());
  ASSERT_FALSE(dense.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  std::vector<double> theta;
  for (const MCEngineCovParam& cp : sparse.GetResult().GetCovParams()) theta.push_back(cp.GetEstimate() * 1.1);
  ASSERT_EQ(theta.size(), 3u);
  double fs = 0.0, fd = 0.0;
  std::vector<double> gs, gd, Hs, Hd, Es, Ed;
  const int before = polls.GetCount();
  ASSERT_TRUE(sparse.EvaluateAt(theta, fs, gs, Hs, Es));
  EXPECT_EQ(polls.GetCount() - before, 1 + 4 * 2);
  ASSERT_TRUE(dense.EvaluateAt(theta, fd, gd, Hd, Ed));
  double hmax = 0.0;
  for (double h : Hd) hmax = std::max(hmax, std::fabs(h));
  for (std::size_t i = 0; i < Hd.size(); ++i) EXPECT_NEAR(Hs[i], Hd[i], 1e-8 * hmax) << "entry " << i;
}

// The dense kernels of the factorisation and the selected inverse on the
// AVX2 product (where the processor has it) and on the portable code give
// the same fit.
TEST(MCEngineSparseCrossed, TheSameFitOnTheBlockedAndThePortableKernels) {
  const MCEngineInput input = Crossed(3000, 300, 40, 1.0, 17u);
  MCEngineFitter blocked, portable;
  ASSERT_FALSE(blocked.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations)).IsError());
  MCEngineGemm::SetPortable(true);
  const bool failed = portable.Fit(input, MCEngineTestFixture::Tight(true, MCEngineSettings::kSparseEquations)).IsError();
  MCEngineGemm::SetPortable(false);
  ASSERT_FALSE(failed);
  MCEngineTestCopies::ExpectSameFit(blocked.GetResult(), portable.GetResult(), 1e-10);
}
