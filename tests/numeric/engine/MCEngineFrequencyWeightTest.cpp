// Frequency weights against the records written out as many times as their
// weight says: a record's copies within its subjects under a residual
// structure that couples no records, copies of whole groups with subjects of
// their own under one that does, on both evaluation paths.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "numeric/engine/MCEngineEmmeans.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

constexpr double kTol = 1e-8;

MCEngineSettings Tight(bool reml = true, MCEngineSettings::SolverPath path = MCEngineSettings::kAutomatic) {
  return MCEngineTestFixture::Tight(reml, path);
}

// -2 log L, its gradient and both Hessians of two fits at theta.
void ExpectSameEvaluation(const MCEngineFitter& a, const MCEngineFitter& b, const std::vector<double>& theta) {
  double fa = 0.0, fb = 0.0;
  std::vector<double> ga, gb, ha, hb, ea, eb;
  ASSERT_TRUE(a.EvaluateAt(theta, fa, ga, ha, ea));
  ASSERT_TRUE(b.EvaluateAt(theta, fb, gb, hb, eb));
  EXPECT_NEAR(fa, fb, kTol * std::fabs(fb));
  double scale = 0.0;
  for (double h : eb) scale = std::max(scale, std::fabs(h));
  for (std::size_t k = 0; k < ga.size(); ++k) EXPECT_NEAR(ga[k], gb[k], kTol * scale) << "gradient " << k;
  for (std::size_t k = 0; k < ha.size(); ++k) {
    EXPECT_NEAR(ha[k], hb[k], kTol * scale) << "observed Hessian " << k;
    EXPECT_NEAR(ea[k], eb[k], kTol * scale) << "expected Hessian " << k;
  }
}

// The weighted input against its copies. Both fitted group by group (whose
// -2 log L carries the least rounding error, so that both optima are found
// to the last digits) give the same fit. On the equations path -2 log L and
// its derivatives agree with the copies' at that optimum, and the fit stops
// within its convergence criterion of it.
void ExpectCopiesOnBothPaths(const MCEngineInput& weighted, const MCEngineInput& copies, bool reml) {
  MCEngineFitter reference, bySubject, equations;
  ASSERT_FALSE(reference.Fit(copies, Tight(reml, MCEngineSettings::kBySubject)).IsError());
  ASSERT_FALSE(bySubject.Fit(weighted, Tight(reml, MCEngineSettings::kBySubject)).IsError());
  MCEngineTestCopies::ExpectSameFit(bySubject.GetResult(), reference.GetResult(), kTol);
  SCOPED_TRACE("mixed-model equations");
  ASSERT_FALSE(equations.Fit(weighted, Tight(reml, MCEngineSettings::kMixedModelEquations)).IsError());
  EXPECT_EQ(equations.GetResult().GetSolverPath(), MCEngineSettings::kMixedModelEquations);
  std::vector<double> theta;
  for (const MCEngineCovParam& cp : reference.GetResult().GetCovParams()) theta.push_back(cp.GetEstimate());
  ExpectSameEvaluation(equations, reference, theta);
  MCEngineTestCopies::ExpectSameFit(equations.GetResult(), reference.GetResult(), 1e-4);
}

// A random intercept for each half of a subject's visits (the first two,
// the last two): a block nested in the subject.
MCEngineRandomBlock VisitPairs(const MCEngineTestSimulation& sim) {
  const std::vector<int> positions = sim.Residual(MCEngineCovType::ID).GetPositions();
  std::vector<int> pairs;
  for (int r = 0; r < sim.GetNRecords(); ++r) pairs.push_back(2 * sim.GetSubjects()[U(r)] + positions[U(r)] / 2);
  MCEngineRandomBlock block = sim.Intercept();
  block.SetSubjects(pairs);
  return block;
}

// The residual subjects of the copies written by MCEngineTestCopies::Write:
// copy j of a record in a subject of its own, the random blocks' subjects
// kept.
MCEngineResidualBlock ResidualOfOwn(const MCEngineResidualBlock& residual, const std::vector<int>& copies) {
  const std::vector<int>& subjects = residual.GetSubjects();
  const int stride = *std::max_element(subjects.begin(), subjects.end()) + 1;
  std::vector<int> own, positions;
  for (std::size_t r = 0; r < copies.size(); ++r) {
    for (int j = 0; j < copies[r]; ++j) {
      own.push_back(subjects[r] + j * stride);
      positions.push_back(residual.GetPositions()[r]);
    }
  }
  MCEngineResidualBlock out = residual;
  out.SetSubjects(own);
  out.SetPositions(positions);
  return out;
}

}  // namespace

TEST(MCEngineFrequencyWeight, NestedModelCountsEachRecordAsCopiesWithinItsSubjects) {
  // A random intercept and slope by subject and a random intercept per pair
  // of visits nested in the subject, weights 1 to 3 varying within subjects.
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::VC));
  in.AddRandomBlock(VisitPairs(sim));
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(sim.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
  const MCEngineInput written = MCEngineTestCopies::Write(in, copies, false);
  for (bool reml : {true, false}) {
    SCOPED_TRACE(reml ? "REML" : "ML");
    ExpectCopiesOnBothPaths(weighted, written, reml);
  }
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(weighted, Tight()).IsError());
  double total = 0.0;
  for (int c : copies) total += c;
  EXPECT_EQ(fitter.GetResult().GetTotalFreqWeight(), total);
  EXPECT_EQ(fitter.GetResult().GetNRecordsUsed(), sim.GetNRecords());
  EXPECT_FALSE(fitter.GetResult().GetWeightsCopyGroups());
}

TEST(MCEngineFrequencyWeight, CrossedModelCountsEachRecordAsCopies) {
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.Intercept());
  in.AddRandomBlock(sim.ByPosition());
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(sim.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
  ExpectCopiesOnBothPaths(weighted, MCEngineTestCopies::Write(in, copies, false), true);
}

TEST(MCEngineFrequencyWeight, RecordsNoRandomEffectReachesAreGroupsOfTheirOwn) {
  // The first subject's records have no random effect: each is an
  // independent group, and its copies are groups too.
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  for (MCEngineRandomBlock block : {sim.Intercept(), sim.ByPosition()}) {
    std::vector<double> z;
    for (int r = 0; r < sim.GetNRecords(); ++r) z.push_back(sim.GetSubjects()[U(r)] == 0 ? 0.0 : 1.0);
    block.SetDenseColumns(1, z);
    in.AddRandomBlock(block);
  }
  MCEngineResidualBlock residual;
  residual.SetSubjects(sim.GetSubjects());
  in.SetResidualBlock(residual);
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(sim.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
  MCEngineInput written = MCEngineTestCopies::Write(in, copies, false);
  ExpectCopiesOnBothPaths(weighted, written, true);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(weighted, Tight()).IsError());
  int firstSubjectCopies = 0;
  for (int r = 0; r < sim.GetNRecords(); ++r) {
    if (sim.GetSubjects()[U(r)] == 0) firstSubjectCopies += copies[U(r)];
  }
  EXPECT_EQ(fitter.GetResult().GetNGroups(), 1.0 + firstSubjectCopies);
}

TEST(MCEngineFrequencyWeight, ResidualOverAnIndexCopiesWholeSubjects) {
  // A correlated residual over the visits of a subject, with a random
  // intercept (AR1) or alone (UN), weights equal within subjects: each
  // subject counts as that many subjects.
  const MCEngineTestSimulation sim(12);
  for (MCEngineCovType type : {MCEngineCovType::AR1, MCEngineCovType::UN}) {
    SCOPED_TRACE(static_cast<int>(type));
    MCEngineInput in = sim.BaseInput();
    if (type == MCEngineCovType::AR1) in.AddRandomBlock(sim.Intercept());
    in.SetResidualBlock(sim.Residual(type));
    const std::vector<int> copies = MCEngineTestCopies::BySubject(sim.GetSubjects());
    const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
    const MCEngineInput written = MCEngineTestCopies::Write(in, copies, true);
    MCEngineFitter a, b;
    ASSERT_FALSE(a.Fit(weighted, Tight()).IsError());
    ASSERT_FALSE(b.Fit(written, Tight()).IsError());
    EXPECT_TRUE(a.GetResult().GetWeightsCopyGroups());
    // Copies of groups go group by group.
    EXPECT_EQ(a.GetResult().GetSolverPath(), MCEngineSettings::kBySubject);
    MCEngineTestCopies::ExpectSameFit(a.GetResult(), b.GetResult(), kTol);
    double subjects = 0.0;
    for (int s = 0; s < 12; ++s) subjects += MCEngineTestCopies::BySubject({s})[0];
    EXPECT_EQ(a.GetResult().GetNGroups(), subjects);
  }
}

TEST(MCEngineFrequencyWeight, DiagonalResidualOverAnIndexCopiesRecords) {
  // A variance per visit couples no records, so a record's copies stay in
  // its subject at its visit; written out, each copy needs a residual
  // subject of its own only because a subject holds a visit once. The random
  // intercept is one per four subjects: one per subject would fit a visit's
  // records exactly, and with copies at a visit -2 log L would fall without
  // bound as that visit's variance goes to 0.
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  MCEngineRandomBlock clusters = sim.Intercept();
  std::vector<int> cluster;
  for (int s : sim.GetSubjects()) cluster.push_back(s / 4);
  clusters.SetSubjects(cluster);
  in.AddRandomBlock(clusters);
  in.SetResidualBlock(sim.Residual(MCEngineCovType::DIAG));
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(sim.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
  MCEngineInput written = MCEngineTestCopies::Write(in, copies, false);
  written.SetResidualBlock(ResidualOfOwn(in.GetResidualBlock(), copies));
  for (bool reml : {true, false}) {
    SCOPED_TRACE(reml ? "REML" : "ML");
    ExpectCopiesOnBothPaths(weighted, written, reml);
  }
}

TEST(MCEngineFrequencyWeight, WeightOneEverywhereIsNoWeight) {
  const MCEngineTestSimulation sim(12);
  for (MCEngineCovType type : {MCEngineCovType::ID, MCEngineCovType::AR1}) {
    SCOPED_TRACE(static_cast<int>(type));
    MCEngineInput in = sim.BaseInput();
    in.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::UN));
    if (type != MCEngineCovType::ID) in.SetResidualBlock(sim.Residual(type));
    MCEngineInput weighted = in;
    weighted.SetFrequencyWeights(std::vector<double>(U(sim.GetNRecords()), 1.0));
    MCEngineFitter a, b;
    ASSERT_FALSE(a.Fit(weighted, MCEngineSettings()).IsError());
    ASSERT_FALSE(b.Fit(in, MCEngineSettings()).IsError());
    EXPECT_EQ(a.GetResult().GetSolverPath(), b.GetResult().GetSolverPath());
    MCEngineTestCopies::ExpectSameFit(a.GetResult(), b.GetResult(), 0.0);
  }
}

TEST(MCEngineFrequencyWeight, WeightsThatDifferWithinAGroupUnderACorrelatedResidual) {
  // Two copies of a record would share its visit: the weight cannot copy
  // the record, and the group has no one weight to copy it by.
  const MCEngineTestSimulation sim(8);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.Intercept());
  in.SetResidualBlock(sim.Residual(MCEngineCovType::AR1));
  in.SetFrequencyWeights(MCEngineTestCopies::AsWeights(MCEngineTestCopies::ByRecord(sim.GetNRecords())));
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(in, MCEngineSettings());
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kDifferentWeightsInSubject);
  EXPECT_TRUE(st.IsError());
  // The same weights under independent residuals copy the records.
  in.SetResidualBlock(MCEngineResidualBlock());
  EXPECT_FALSE(fitter.Fit(in, MCEngineSettings()).IsError());
}

TEST(MCEngineFrequencyWeight, RobustCovarianceOfCopies) {
  // Copies within a subject leave the groups as they are; copies of groups
  // are groups of their own.
  const MCEngineTestSimulation sim(10, 5u);
  for (bool groups : {false, true}) {
    SCOPED_TRACE(groups ? "copies of groups" : "copies of records");
    MCEngineInput in = sim.BaseInput();
    in.AddRandomBlock(sim.Intercept());
    if (groups) in.SetResidualBlock(sim.Residual(MCEngineCovType::AR1));
    const std::vector<int> copies =
        groups ? MCEngineTestCopies::BySubject(sim.GetSubjects()) : MCEngineTestCopies::ByRecord(sim.GetNRecords());
    const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
    MCEngineSettings settings = Tight();
    settings.SetRobustCovariance(true);
    MCEngineFitter a, b;
    ASSERT_FALSE(a.Fit(weighted, settings).IsError());
    ASSERT_FALSE(b.Fit(MCEngineTestCopies::Write(in, copies, groups), settings).IsError());
    ASSERT_TRUE(a.GetResult().IsCovBetaRobust());
    if (!groups) {
      EXPECT_EQ(a.GetResult().GetNGroups(), 10.0);
    }
    MCEngineTestCopies::ExpectSameFit(a.GetResult(), b.GetResult(), kTol);
    for (std::size_t i = 0; i < 16; ++i) {
      const double v = b.GetResult().GetCovBeta()[i];
      EXPECT_NEAR(a.GetResult().GetCovBeta()[i], v, kTol * std::fabs(v) + 1e-14) << i;
    }
  }
}

TEST(MCEngineFrequencyWeight, ResidualDegreesOfFreedomCountTheCopies) {
  const MCEngineTestSimulation sim(10);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.Intercept());
  const std::vector<int> copies = MCEngineTestCopies::ByRecord(sim.GetNRecords());
  const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
  MCEngineSettings settings = Tight();
  settings.SetDFMethod(MCEngineSettings::kResidual);
  MCEngineFitter a, b;
  ASSERT_FALSE(a.Fit(weighted, settings).IsError());
  ASSERT_FALSE(b.Fit(MCEngineTestCopies::Write(in, copies, false), settings).IsError());
  double total = 0.0;
  for (int c : copies) total += c;
  EXPECT_EQ(a.GetResult().GetFixedDF(), total - 3.0);
  MCEngineTestCopies::ExpectSameFit(a.GetResult(), b.GetResult(), kTol);
}

TEST(MCEngineFrequencyWeight, PredictionsOfCopies) {
  const MCEngineTestSimulation sim(12, 5u);
  for (bool groups : {false, true}) {
    SCOPED_TRACE(groups ? "copies of groups" : "copies of records");
    // A random intercept and slope with independent residuals, a random
    // intercept with autoregressive ones.
    MCEngineInput in = sim.BaseInput();
    in.AddRandomBlock(groups ? sim.Intercept() : sim.InterceptSlope(MCEngineCovType::UN));
    if (groups) in.SetResidualBlock(sim.Residual(MCEngineCovType::AR1));
    const std::vector<int> copies =
        groups ? MCEngineTestCopies::BySubject(sim.GetSubjects()) : MCEngineTestCopies::ByRecord(sim.GetNRecords());
    const MCEngineInput weighted = MCEngineTestCopies::Weighted(in, copies);
    const MCEngineInput written = MCEngineTestCopies::Write(in, copies, groups);
    MCEngineFitter a, b;
    ASSERT_FALSE(a.Fit(weighted, Tight()).IsError());
    ASSERT_FALSE(b.Fit(written, Tight()).IsError());
    MCEnginePredictor pa, pb;
    ASSERT_TRUE(pa.Setup(a, weighted));
    ASSERT_TRUE(pb.Setup(b, written));
    const std::vector<double> x = {1.0, 1.5, 0.0, 1.0};
    for (int subject : {0, 3, 7}) {
      for (int col = 0; col < in.GetRandomBlocks()[0].GetNColumns(); ++col) {
        SCOPED_TRACE("subject " + std::to_string(subject) + ", column " + std::to_string(col));
        const MCEnginePrediction p = pa.Predict(x, {MCEngineRandomEntry(0, subject, col, 1.0)});
        const MCEnginePrediction q = pb.Predict(x, {MCEngineRandomEntry(0, subject, col, 1.0)});
        EXPECT_NEAR(p.GetEstimate(), q.GetEstimate(), kTol * std::fabs(q.GetEstimate()));
        EXPECT_NEAR(p.GetStdError(), q.GetStdError(), kTol * q.GetStdError());
        EXPECT_NEAR(p.GetDF(), q.GetDF(), 1e-6 * q.GetDF());
      }
    }
  }
}
