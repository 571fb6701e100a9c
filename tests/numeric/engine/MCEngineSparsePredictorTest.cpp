// Predictions from the sparse factor of the mixed-model equations against
// the set-up group by group over the random columns, an independent
// computation of the same numbers (through V, with analytic derivatives
// for the df rather than differences): every record's prediction,
// every random effect's, with their standard errors and Satterthwaite df,
// on the reference models and on simulated crossed designs with scale and
// frequency weights; and the size of what the set-up forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestCrossed.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/detail/MCEngineSparseFactor.h"

using namespace MCEngine_850;
using MCEngineTestCrossed::Crossed;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// The largest relative differences seen, over predictions.
struct Differences {
  double fEstimate = 0.0, fStdError = 0.0, fDF = 0.0;
  int fCompared = 0;
};

double Relative(double a, double b) { return std::fabs(a - b) / std::max(1.0, std::fabs(b)); }

void Compare(const MCEnginePrediction& sparse, const MCEnginePrediction& dense, Differences& d) {
  ASSERT_FALSE(MCEngineMissing::Is(dense.GetEstimate()));
  ASSERT_FALSE(MCEngineMissing::Is(sparse.GetEstimate()));
  ASSERT_EQ(MCEngineMissing::Is(sparse.GetStdError()), MCEngineMissing::Is(dense.GetStdError()));
  ASSERT_EQ(MCEngineMissing::Is(sparse.GetDF()), MCEngineMissing::Is(dense.GetDF()));
  d.fEstimate = std::max(d.fEstimate, Relative(sparse.GetEstimate(), dense.GetEstimate()));
  if (!MCEngineMissing::Is(dense.GetStdError())) {
    d.fStdError = std::max(d.fStdError, Relative(sparse.GetStdError(), dense.GetStdError()));
  }
  if (!MCEngineMissing::Is(dense.GetDF())) d.fDF = std::max(d.fDF, Relative(sparse.GetDF(), dense.GetDF()));
  ++d.fCompared;
}

std::vector<double> Row(const MCEngineInput& input, int r) {
  const int P = input.GetNColumns();
  return std::vector<double>(input.GetX().begin() + r * P, input.GetX().begin() + (r + 1) * P);
}

// The random part of record r: its entries in every block.
std::vector<MCEngineRandomEntry> RecordEntries(const MCEngineInput& input, int r) {
  std::vector<MCEngineRandomEntry> z;
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    const MCEngineRandomBlock& block = blocks[b];
    const int subject = block.GetSubjects().empty() ? 0 : block.GetSubjects()[U(r)];
    for (int i = block.GetRowStart()[U(r)]; i < block.GetRowStart()[U(r) + 1]; ++i) {
      z.emplace_back(static_cast<int>(b), subject, block.GetColIndex()[U(i)], block.GetValues()[U(i)]);
    }
  }
  return z;
}

// The two set-ups of one fit.
struct Predictors {
  MCEngineFitter fFitter;
  MCEnginePredictor fSparse, fDense;
};

void SetUpBoth(const MCEngineInput& input, const MCEngineSettings& settings, Predictors& p) {
  ASSERT_FALSE(p.fFitter.Fit(input, settings).IsError());
  p.fSparse.SetSetupSpace(MCEnginePredictor::kSparseFactor);
  p.fDense.SetSetupSpace(MCEnginePredictor::kColumnSpace);
  ASSERT_TRUE(p.fSparse.Setup(p.fFitter, input));
  ASSERT_TRUE(p.fDense.Setup(p.fFitter, input));
}

// Every record's prediction and every random effect's (each subject of
// each block, each column), on both set-ups.
Differences CompareAll(const MCEngineInput& input, const Predictors& p) {
  Differences d;
  for (int r = 0; r < input.GetNRecords(); ++r) {
    const std::vector<double> x = Row(input, r);
    const std::vector<MCEngineRandomEntry> z = RecordEntries(input, r);
    Compare(p.fSparse.Predict(x, z), p.fDense.Predict(x, z), d);
  }
  const std::vector<double> zero(U(input.GetNColumns()), 0.0);
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    const std::vector<int>& subjects = blocks[b].GetSubjects();
    const std::set<int> seen = subjects.empty() ? std::set<int>{0} : std::set<int>(subjects.begin(), subjects.end());
    for (int s : seen) {
      for (int c = 0; c < blocks[b].GetNColumns(); ++c) {
        const MCEngineRandomEntry entry(static_cast<int>(b), s, c, 1.0);
        Compare(p.fSparse.Predict(zero, {entry}), p.fDense.Predict(zero, {entry}), d);
      }
    }
  }
  return d;
}

void ExpectSamePredictions(const MCEngineInput& input, const MCEngineSettings& settings) {
  Predictors p;
  SetUpBoth(input, settings, p);
  if (::testing::Test::HasFatalFailure()) return;
  const Differences d = CompareAll(input, p);
  EXPECT_GT(d.fCompared, input.GetNRecords());
  EXPECT_LE(d.fEstimate, 1e-8);
  EXPECT_LE(d.fStdError, 1e-8);
  EXPECT_LE(d.fDF, 1e-8);
}

MCEngineSettings SparseFit(bool reml) { return MCEngineTestFixture::Tight(reml, MCEngineSettings::kSparseEquations); }

}  // namespace

TEST(MCEngineSparsePredictor, PenicillinEqualsTheGroupSetUp) {
  auto m = MCEngineTestFixture::Penicillin();
  m->fInput = m->fpDesign->Build();
  ExpectSamePredictions(m->fInput, SparseFit(true));
  ExpectSamePredictions(m->fInput, SparseFit(false));
}

TEST(MCEngineSparsePredictor, SplitBlocksEqualTheGroupSetUp) {
  // Machines and oats: one block of two effects that the engine splits.
  for (auto make : {MCEngineTestFixture::Machines, MCEngineTestFixture::Oats}) {
    auto m = make();
    m->fInput = m->fpDesign->Build();
    ExpectSamePredictions(m->fInput, SparseFit(true));
  }
}

TEST(MCEngineSparsePredictor, UnstructuredBlockEqualsTheGroupSetUp) {
  auto m = MCEngineTestFixture::Sleepstudy(MCEngineCovType::UN);
  m->fInput = m->fpDesign->Build();
  ExpectSamePredictions(m->fInput, SparseFit(true));
  ExpectSamePredictions(m->fInput, SparseFit(false));
}

TEST(MCEngineSparsePredictor, CrossedWithWeightsEqualsTheGroupSetUp) {
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  ExpectSamePredictions(input, SparseFit(true));
  MCEngineInput scaled = input;
  std::vector<double> w;
  for (int r = 0; r < input.GetNRecords(); ++r) w.push_back(0.5 + (r % 4) * 0.5);
  scaled.SetScaleWeights(w);
  ExpectSamePredictions(scaled, SparseFit(true));
  const MCEngineInput weighted =
      MCEngineTestCopies::Weighted(input, MCEngineTestCopies::ByRecord(input.GetNRecords()));
  ExpectSamePredictions(weighted, SparseFit(true));
}

TEST(MCEngineSparsePredictor, VarianceOnItsBoundEqualsTheGroupSetUp) {
  // The second factor's variance is 0: G is singular, its effects are 0
  // with no prediction error beyond the fixed part's.
  ExpectSamePredictions(Crossed(200, 20, 15, 0.0, 4u), SparseFit(true));
}

TEST(MCEngineSparsePredictor, ResidualDFSparesTheDifferencePoints) {
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, SparseFit(true)).IsError());
  MCEnginePredictor full, residual;
  residual.SetResidualDF(true);
  ASSERT_TRUE(full.Setup(fitter, input));
  ASSERT_TRUE(residual.Setup(fitter, input));
  // One point instead of one and four per free parameter but the profiled
  // scale (two variances).
  EXPECT_NEAR(full.GetSetupWork() / residual.GetSetupWork(), 9.0, 1e-9);
  const MCEnginePrediction a = full.Predict(Row(input, 3), RecordEntries(input, 3));
  const MCEnginePrediction b = residual.Predict(Row(input, 3), RecordEntries(input, 3));
  EXPECT_EQ(a.GetEstimate(), b.GetEstimate());
  EXPECT_EQ(a.GetStdError(), b.GetStdError());
  EXPECT_EQ(b.GetDF(), input.GetNRecords() - 2.0);
}

TEST(MCEngineSparsePredictor, EffectsNoRecordJoinsComeThroughTheFactor) {
  // Levels 0 and 1 of the first factor share no record of this design: a
  // contrast of their effects needs an entry of M^-1 off the factor's
  // pattern, which a factorisation of M at each kept point gives. Estimate,
  // standard error and df equal those of the set-up by groups.
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  Predictors p;
  SetUpBoth(input, SparseFit(true), p);
  const std::vector<double> zero(U(input.GetNColumns()), 0.0);
  for (int other : {1, 2, 3}) {
    const std::vector<MCEngineRandomEntry> z = {MCEngineRandomEntry(0, 0, 0, 1.0),
                                                MCEngineRandomEntry(0, other, 0, -1.0),
                                                MCEngineRandomEntry(1, other, 0, 0.5)};
    Differences d;
    Compare(p.fSparse.Predict(zero, z), p.fDense.Predict(zero, z), d);
    Compare(p.fSparse.Predict(Row(input, 0), z), p.fDense.Predict(Row(input, 0), z), d);
    EXPECT_LT(d.fEstimate, 1e-8);
    EXPECT_LT(d.fStdError, 1e-8);
    EXPECT_LE(d.fDF, 1e-8);
  }
}

TEST(MCEngineSparsePredictor, FormsNoMatrixOverAllRandomColumns) {
  // 340 random columns crossed over 3000 records: the fit goes through the
  // sparse equations, and so does the automatic set-up of its predictions,
  // whose largest dense matrix is the random columns by the fixed ones.
  const MCEngineInput input = Crossed(3000, 300, 40, 1.0, 17u);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, MCEngineSettings()).IsError());
  ASSERT_EQ(fitter.GetResult().GetSolverPath(), MCEngineSettings::kSparseEquations);
  MCEnginePredictor automatic, dense;
  dense.SetSetupSpace(MCEnginePredictor::kColumnSpace);
  ASSERT_TRUE(automatic.Setup(fitter, input));
  ASSERT_TRUE(dense.Setup(fitter, input));
  const double q = 340.0;
  EXPECT_EQ(automatic.GetLargestSetupMatrix(), q * 2.0);
  EXPECT_GE(dense.GetLargestSetupMatrix(), q * q);
  EXPECT_LT(automatic.GetSetupWork(), 0.1 * dense.GetSetupWork());
  // A limit on the groups' records holds the set-up by groups only.
  MCEnginePredictor limited;
  limited.SetMaxGroupRecords(1000);
  EXPECT_TRUE(limited.Setup(fitter, input));
  limited.SetSetupSpace(MCEnginePredictor::kColumnSpace);
  EXPECT_FALSE(limited.Setup(fitter, input));
  const MCEnginePrediction a = automatic.Predict(Row(input, 5), RecordEntries(input, 5));
  const MCEnginePrediction b = dense.Predict(Row(input, 5), RecordEntries(input, 5));
  EXPECT_NEAR(a.GetStdError(), b.GetStdError(), 1e-8 * b.GetStdError());
  EXPECT_NEAR(a.GetDF(), b.GetDF(), 1e-8 * b.GetDF());
}

TEST(MCEngineSparsePredictor, CancelledSetUpFails) {
  // The same fit twice: the second one's query says stop a few questions
  // into the set-up of its predictions, which then fails.
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  MCEngineTestCancelAfter counting(1 << 30);
  MCEngineSettings settings = SparseFit(true);
  settings.SetCancel(&counting);
  MCEngineFitter first;
  ASSERT_FALSE(first.Fit(input, settings).IsError());
  MCEngineTestCancelAfter stopping(counting.GetCount() + 3);
  settings.SetCancel(&stopping);
  MCEngineFitter second;
  ASSERT_FALSE(second.Fit(input, settings).IsError());
  MCEnginePredictor predictor;
  EXPECT_FALSE(predictor.Setup(second, input));
  EXPECT_FALSE(predictor.IsReady());
  settings.SetCancel(nullptr);
}

TEST(MCEngineSparsePredictor, TheSetUpAtTheEstimatesTakesTheFitsLastFactor) {
  // The fit ends with the observed Hessian at the estimates, whose
  // difference quotients factor M elsewhere; what the predictions need at
  // the estimates is kept from before them. A set-up after an evaluation
  // elsewhere factors M again, and the two agree.
  const MCEngineInput input = Crossed(240, 30, 12, 1.0, 7u);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, SparseFit(true)).IsError());
  MCEnginePredictor kept, solved;
  kept.SetResidualDF(true);
  solved.SetResidualDF(true);
  long before = MCEngineSparseFactor::GetKernelCalls();
  ASSERT_TRUE(kept.Setup(fitter, input));
  const long keptCalls = MCEngineSparseFactor::GetKernelCalls() - before;

  std::vector<double> theta;
  for (const MCEngineCovParam& cp : fitter.GetResult().GetCovParams()) theta.push_back(1.3 * cp.GetEstimate());
  double value = 0.0;
  std::vector<double> grad, observed, average;
  ASSERT_TRUE(fitter.EvaluateAt(theta, value, grad, observed, average));
  before = MCEngineSparseFactor::GetKernelCalls();
  ASSERT_TRUE(solved.Setup(fitter, input));
  const long solvedCalls = MCEngineSparseFactor::GetKernelCalls() - before;
  EXPECT_LT(2 * keptCalls, solvedCalls);

  for (int r = 0; r < input.GetNRecords(); r += 7) {
    const MCEnginePrediction a = kept.Predict(Row(input, r), RecordEntries(input, r));
    const MCEnginePrediction b = solved.Predict(Row(input, r), RecordEntries(input, r));
    EXPECT_NEAR(a.GetEstimate(), b.GetEstimate(), 1e-12 * std::max(1.0, std::fabs(b.GetEstimate())));
    EXPECT_NEAR(a.GetStdError(), b.GetStdError(), 1e-12 * std::max(1.0, b.GetStdError()));
  }
}
