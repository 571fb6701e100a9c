// Many random blocks, group by group: a random parameter's derivative of V
// is of low rank, so the products of a pair of parameters cost the pair's
// random columns, and only pairs that some group holds both of keep a
// product over the fixed columns. The fits are those of the mixed-model
// equations.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "numeric/engine/MCEngineDerivativeCheck.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestDraws.h"
#include "numeric/engine/MCEngineTestFixture.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// One-column block b of a random intercept, on the records with
// r mod blocks = b only, its subjects (r / blocks) mod 4; the records a block
// does not reach have empty rows.
MCEngineRandomBlock InterceptOnOwnRecords(int b, int blocks, int records) {
  std::vector<int> rowStart(1, 0), subjects(U(records), 0);
  for (int r = 0; r < records; ++r) {
    rowStart.push_back(rowStart.back() + (r % blocks == b ? 1 : 0));
    subjects[U(r)] = (r / blocks) % 4;
  }
  MCEngineRandomBlock block;
  block.SetCovType(MCEngineCovType::VC);
  const std::size_t n = U(rowStart.back());
  block.SetColumns(1, rowStart, std::vector<int>(n, 0), std::vector<double>(n, 1.0));
  block.SetSubjects(subjects);
  return block;
}

// y = 1 + 0.5 x + u_(b, s) + e over `blocks` blocks of 4 subjects with 5
// records each.
MCEngineInput BlocksOnTheirOwnRecords(int blocks) {
  const int records = blocks * 20;
  MCEngineTestDraws draws(919u);
  std::vector<double> u(U(blocks) * 4);
  for (double& v : u) v = 0.7 * draws.Normal();
  std::vector<double> y, X;
  for (int r = 0; r < records; ++r) {
    const double x = draws.Uniform() * 4.0;
    y.push_back(1.0 + 0.5 * x + u[U(r % blocks) * 4 + U((r / blocks) % 4)] + draws.Normal());
    X.push_back(1.0);
    X.push_back(x);
  }
  MCEngineInput in;
  in.SetY(y);
  in.SetX(2, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  for (int b = 0; b < blocks; ++b) in.AddRandomBlock(InterceptOnOwnRecords(b, blocks, records));
  return in;
}

// Blocks that share their groups, of one and of two columns, with a
// residual structure that couples the records of a subject:
// y = 1 + 0.5 x + a_s + c_s x + (d_t + g_t x2) + e, t nested in s (two per
// s), e AR1 within s.
MCEngineInput SharedGroups() {
  constexpr int kSubjects = 24, kPerSubject = 8;
  MCEngineTestDraws draws(4711u);
  std::vector<double> y, X, ones, xs, pair;
  std::vector<int> s, t, position;
  for (int i = 0; i < kSubjects; ++i) {
    const double a = 0.9 * draws.Normal(), c = 0.4 * draws.Normal();
    const double d[2] = {0.6 * draws.Normal(), 0.6 * draws.Normal()};
    const double g[2] = {0.3 * draws.Normal(), 0.3 * draws.Normal()};
    double e = draws.Normal();
    for (int j = 0; j < kPerSubject; ++j) {
      const double x = j, x2 = draws.Uniform() * 2.0 - 1.0;
      const int half = j % 2;
      if (j > 0) e = 0.4 * e + std::sqrt(1.0 - 0.16) * draws.Normal();
      y.push_back(1.0 + 0.5 * x + a + c * x + d[half] + g[half] * x2 + e);
      X.insert(X.end(), {1.0, x});
      ones.push_back(1.0);
      xs.push_back(x);
      pair.insert(pair.end(), {1.0, x2});
      s.push_back(i);
      t.push_back(2 * i + half);
      position.push_back(j);
    }
  }
  MCEngineInput in;
  in.SetY(y);
  in.SetX(2, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  MCEngineRandomBlock intercept, slope, nested;
  intercept.SetCovType(MCEngineCovType::VC);
  intercept.SetDenseColumns(1, ones);
  intercept.SetSubjects(s);
  slope.SetCovType(MCEngineCovType::VC);
  slope.SetDenseColumns(1, xs);
  slope.SetSubjects(s);
  nested.SetCovType(MCEngineCovType::UN);
  nested.SetDenseColumns(2, pair);
  nested.SetSubjects(t);
  in.AddRandomBlock(intercept);
  in.AddRandomBlock(slope);
  in.AddRandomBlock(nested);
  MCEngineResidualBlock residual;
  residual.SetCovType(MCEngineCovType::AR1);
  residual.SetSubjects(s);
  residual.SetPositions(position);
  residual.SetDimension(kPerSubject);
  in.SetResidualBlock(residual);
  return in;
}

// More random columns than records in every group: `blocks` one-column
// blocks of covariates drawn per record, all by the same subjects of 3
// records, under an AR1 residual within subject:
// y = 1 + 0.5 x + sum_b z_b u_(b, s) + e.
constexpr int kRecordsPerSubject = 3;

MCEngineInput BlocksOnTheSameSubjects(int blocks, int subjects) {
  const int records = subjects * kRecordsPerSubject;
  MCEngineTestDraws draws(2719u);
  std::vector<std::vector<double>> z(U(blocks), std::vector<double>(U(records)));
  std::vector<double> y, X;
  std::vector<int> s, position;
  for (int r = 0; r < records; ++r) {
    const double x = draws.Uniform() * 4.0;
    double v = 1.0 + 0.5 * x + draws.Normal();
    for (int b = 0; b < blocks; ++b) {
      z[U(b)][U(r)] = draws.Uniform() * 2.0 - 1.0;
      v += 0.5 * z[U(b)][U(r)] * draws.Normal();
    }
    y.push_back(v);
    X.insert(X.end(), {1.0, x});
    s.push_back(r / kRecordsPerSubject);
    position.push_back(r % kRecordsPerSubject);
  }
  MCEngineInput in;
  in.SetY(y);
  in.SetX(2, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  for (int b = 0; b < blocks; ++b) {
    MCEngineRandomBlock block;
    block.SetCovType(MCEngineCovType::VC);
    block.SetDenseColumns(1, z[U(b)]);
    block.SetSubjects(s);
    in.AddRandomBlock(block);
  }
  MCEngineResidualBlock residual;
  residual.SetCovType(MCEngineCovType::AR1);
  residual.SetSubjects(s);
  residual.SetPositions(position);
  residual.SetDimension(kRecordsPerSubject);
  in.SetResidualBlock(residual);
  return in;
}

void ExpectSamePrediction(const MCEnginePrediction& a, const MCEnginePrediction& b) {
  EXPECT_NEAR(a.GetEstimate(), b.GetEstimate(), 1e-8 * std::max(1.0, std::fabs(b.GetEstimate())));
  EXPECT_NEAR(a.GetStdError(), b.GetStdError(), 1e-8 * std::max(1.0, std::fabs(b.GetStdError())));
  EXPECT_NEAR(a.GetDF(), b.GetDF(), 1e-6 * std::max(1.0, std::fabs(b.GetDF())));
}

// `blocks` one-column blocks of 5 subjects each over `records` records,
// record r in subject (r / (b + 1)) mod 5 of block b: the blocks cross, so
// that all records are one group.
MCEngineInput CrossedBlocks(int blocks, int records) {
  MCEngineTestDraws draws(77u);
  std::vector<double> y;
  for (int r = 0; r < records; ++r) y.push_back(draws.Normal());
  MCEngineInput in;
  in.SetY(y);
  in.SetX(1, std::vector<double>(U(records), 1.0));
  in.AddTerm(MCEngineTerm::Intercept(0));
  for (int b = 0; b < blocks; ++b) {
    std::vector<int> subjects;
    for (int r = 0; r < records; ++r) subjects.push_back((r / (b + 1)) % 5);
    MCEngineRandomBlock block;
    block.SetCovType(MCEngineCovType::VC);
    block.SetDenseColumns(1, std::vector<double>(U(records), 1.0));
    block.SetSubjects(subjects);
    in.AddRandomBlock(block);
  }
  return in;
}

}  // namespace

TEST(MCEngineManyBlocks, OnlyPairsThatShareAGroupKeepAProduct) {
  constexpr int kBlocks = 30;
  const MCEngineInput in = BlocksOnTheirOwnRecords(kBlocks);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_EQ(r.GetSolverPath(), MCEngineSettings::kBySubject);
  ASSERT_EQ(r.GetCovParams().size(), U(kBlocks) + 1);
  // Each block with itself and with the residual variance, and the residual
  // variance with itself; all 31 * 32 / 2 = 496 pairs would be the square
  // of the blocks.
  EXPECT_EQ(r.GetGroupPairProducts(), 2.0 * kBlocks + 1.0);
}

TEST(MCEngineManyBlocks, BlocksOnTheirOwnRecordsFitAsTheMixedModelEquations) {
  const MCEngineInput in = BlocksOnTheirOwnRecords(12);
  MCEngineFitter bySubject, equations;
  ASSERT_FALSE(bySubject.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  ASSERT_FALSE(equations.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kMixedModelEquations)).IsError());
  EXPECT_EQ(equations.GetResult().GetSolverPath(), MCEngineSettings::kMixedModelEquations);
  MCEngineTestCopies::ExpectSameFit(bySubject.GetResult(), equations.GetResult(), 1e-8);
}

TEST(MCEngineManyBlocks, BlocksSharingGroupsUnderACoupledResidualHaveTheDerivativesOfTheMixedModelEquations) {
  // One- and two-column blocks in the same groups, and a residual parameter
  // with each: the pair terms from the low-rank pieces against central
  // differences, and the whole evaluation against the dense equations'.
  const MCEngineInput in = SharedGroups();
  for (bool reml : {true, false}) {
    SCOPED_TRACE(reml ? "REML" : "ML");
    std::vector<double> theta, expected;
    for (MCEngineSettings::SolverPath path : {MCEngineSettings::kBySubject, MCEngineSettings::kMixedModelEquations}) {
      MCEngineSettings settings;
      settings.SetREML(reml);
      settings.SetSolverPath(path);
      settings.SetMaxIterations(8);
      MCEngineFitter fitter;
      fitter.Fit(in, settings);
      ASSERT_EQ(fitter.GetResult().GetSolverPath(), path);
      if (theta.empty()) {
        ASSERT_FALSE(fitter.GetResult().GetStatus().IsError()) << fitter.GetResult().GetStatus().GetCode();
        // Intercept, slope, the nested UN's three and the residual's two.
        ASSERT_EQ(fitter.GetResult().GetCovParams().size(), 7u);
        theta = MCEngineDerivativeCheck::EvaluationPoint(fitter.GetResult(), 0.0);
      }
      MCEngineDerivativeCheck::ExpectFiniteDifferences(fitter, theta);
      MCEngineDerivativeCheck::ExpectSameEvaluation(fitter, theta, expected);
    }
  }
}

TEST(MCEngineManyBlocksPredictor, GroupsOfFewRecordsAreSetUpOverTheirRecords) {
  constexpr int kBlocks = 12, kSubjects = 6;
  const MCEngineInput in = BlocksOnTheSameSubjects(kBlocks, kSubjects);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  MCEnginePredictor automatic, records, columns;
  records.SetSetupSpace(MCEnginePredictor::kRecordSpace);
  columns.SetSetupSpace(MCEnginePredictor::kColumnSpace);
  ASSERT_TRUE(automatic.Setup(fitter, in));
  ASSERT_TRUE(records.Setup(fitter, in));
  ASSERT_TRUE(columns.Setup(fitter, in));
  // Each group: m = 3 records, q = 12 random columns, W = [Z X y] of
  // nw = 15 columns. Over the records m^3 + m^2 nw + m nw^2 = 27 + 135 +
  // 675 = 837; over the columns q^3 + q nw^2 = 1728 + 2700 = 4428, what
  // every group cost before (the cube of the blocks).
  EXPECT_EQ(automatic.GetSetupWork(), kSubjects * 837.0);
  EXPECT_EQ(records.GetSetupWork(), kSubjects * 837.0);
  EXPECT_EQ(columns.GetSetupWork(), kSubjects * 4428.0);
}

TEST(MCEngineManyBlocksPredictor, BothFormsOfTheSetUpGiveTheSamePredictions) {
  // Four blocks on subjects of three records, enough subjects to estimate
  // each variance well.
  constexpr int kBlocks = 4, kSubjects = 40;
  const MCEngineInput in = BlocksOnTheSameSubjects(kBlocks, kSubjects);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  MCEnginePredictor records, columns;
  records.SetSetupSpace(MCEnginePredictor::kRecordSpace);
  columns.SetSetupSpace(MCEnginePredictor::kColumnSpace);
  ASSERT_TRUE(records.Setup(fitter, in));
  ASSERT_TRUE(columns.Setup(fitter, in));
  // A record's prediction with all its blocks, and each random effect alone.
  for (int r = 0; r < in.GetNRecords(); ++r) {
    const std::vector<double> x(in.GetX().begin() + 2 * r, in.GetX().begin() + 2 * r + 2);
    std::vector<MCEngineRandomEntry> z;
    for (int b = 0; b < kBlocks; ++b) {
      z.emplace_back(b, r / kRecordsPerSubject, 0, in.GetRandomBlocks()[U(b)].GetValues()[U(r)]);
    }
    ExpectSamePrediction(records.Predict(x, z), columns.Predict(x, z));
  }
  for (int b = 0; b < kBlocks; ++b) {
    for (int subject = 0; subject < kSubjects; ++subject) {
      const std::vector<MCEngineRandomEntry> z{MCEngineRandomEntry(b, subject, 0, 1.0)};
      ExpectSamePrediction(records.Predict({0.0, 0.0}, z), columns.Predict({0.0, 0.0}, z));
    }
  }
}

TEST(MCEngineManyBlocks, ACrossedGroupTooLargeToEvaluateIsRefusedWithItsWork) {
  // One group of 2000 records, each in all 300 blocks: an evaluation would
  // form V^-1 Z and Z'V^-1 Z over 2000 records times 600,000 random
  // entries, 1200 million multiplications.
  const MCEngineInput in = CrossedBlocks(300, 2000);
  MCEngineTestCancelAfter cancel(1000000);
  MCEngineSettings settings;
  settings.SetSolverPath(MCEngineSettings::kBySubject);
  settings.SetCancel(&cancel);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(in, settings);
  EXPECT_TRUE(status.IsError());
  EXPECT_EQ(status.GetCode(), MCEngineStatus::kRandomEffectsTooLarge);
  EXPECT_EQ(status.GetCount(), 1200);
  // Refused once the groups are known, before any iteration: the data's
  // passes ask the stop query a few times, the iterations never.
  EXPECT_LT(cancel.GetCount(), 100);
}

TEST(MCEngineManyBlocks, ACrossedGroupWithinTheLimitIsFitted) {
  // 300 records in 40 blocks: 300 * 12,000 = 3.6 million.
  const MCEngineInput in = CrossedBlocks(40, 300);
  MCEngineSettings settings;
  settings.SetSolverPath(MCEngineSettings::kBySubject);
  settings.SetMaxIterations(2);
  MCEngineFitter fitter;
  const MCEngineStatus status = fitter.Fit(in, settings);
  EXPECT_NE(status.GetCode(), MCEngineStatus::kRandomEffectsTooLarge);
  EXPECT_FALSE(status.IsError()) << status.GetCode();
  EXPECT_EQ(fitter.GetResult().GetSolverPath(), MCEngineSettings::kBySubject);
}
