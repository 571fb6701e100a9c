// Aliasing, weights, invariances, information criteria, bounds and
// estimability.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

::testing::AssertionResult Rel(double a, double b, double tol) {
  if (std::fabs(a - b) <= tol * std::max(std::fabs(b), 1e-300)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

// Intercept, x, x again doubled, a three-level factor; the doubled column and
// the factor's last level are aliased.
MCEngineInput AliasedInput(const MCEngineTestSimulation& sim, double perturbation) {
  MCEngineInput base = sim.BaseInput();
  const int n = sim.GetNRecords();
  std::vector<double> X;
  for (int r = 0; r < n; ++r) {
    const double x = base.GetX()[static_cast<std::size_t>(r) * 4 + 1];
    const int level = r % 3;
    X.insert(X.end(), {1.0, x, 2.0 * x + perturbation * ((r * 7) % 5 - 2), level == 0 ? 1.0 : 0.0,
                       level == 1 ? 1.0 : 0.0, level == 2 ? 1.0 : 0.0});
  }
  MCEngineInput in;
  in.SetY(base.GetY());
  in.SetX(6, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  in.AddTerm(MCEngineTerm(2, 1, {}, {1}));
  in.AddTerm(MCEngineTerm(3, 3, {2}, {}));
  in.AddRandomBlock(sim.Intercept());
  return in;
}

std::unique_ptr<MCEngineTestDesign> SleepstudyDesign(MCEngineTestCsv& csv) {
  EXPECT_TRUE(csv.Read(MCEngineTestFixture::DataPath("sleepstudy.csv")));
  auto d = std::make_unique<MCEngineTestDesign>(csv, std::set<std::string>{"Subject"});
  d->SetResponse("Reaction");
  d->AddFixedTerm("Intercept");
  d->AddFixedTerm("Days");
  d->AddRandomBlock({"Intercept", "Days"}, "Subject", MCEngineCovType::UN);
  return d;
}

}  // namespace

TEST(MCEngineFit, AliasedColumnsAreRedundant) {
  const MCEngineTestSimulation sim(10);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(AliasedInput(sim, 0.0), MCEngineSettings()).IsError());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_EQ(r.GetRankX(), 4);
  const bool expected[] = {false, false, true, false, false, true};
  for (int j = 0; j < 6; ++j) {
    SCOPED_TRACE(j);
    const MCEngineBetaStat& b = r.GetBeta()[static_cast<std::size_t>(j)];
    EXPECT_EQ(b.IsRedundant(), expected[j]);
    if (expected[j]) {
      EXPECT_EQ(b.GetEstimate(), 0.0);
      EXPECT_TRUE(MCEngineMissing::Is(b.GetStdError()));
      EXPECT_TRUE(MCEngineMissing::Is(b.GetDF()));
      EXPECT_TRUE(MCEngineMissing::Is(b.GetSig()));
      for (int k = 0; k < 6; ++k) EXPECT_EQ(r.GetCovBeta()[static_cast<std::size_t>(j * 6 + k)], 0.0);
    } else {
      EXPECT_GT(b.GetStdError(), 0.0);
    }
  }
  // The term of the aliased covariate has nothing to test.
  EXPECT_FALSE(r.GetTypeIIITests()[2].IsValid());
  EXPECT_TRUE(r.GetTypeIIITests()[3].IsValid());
  EXPECT_EQ(r.GetTypeIIITests()[3].GetNumDF(), 2.0);
}

TEST(MCEngineFit, SingularityToleranceIsRelativeToTheDiagonal) {
  const MCEngineTestSimulation sim(10);
  // Nearly collinear: kept with the default tolerance, aliased with a loose one.
  const MCEngineInput in = AliasedInput(sim, 1e-4);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineSettings()).IsError());
  EXPECT_FALSE(fitter.GetResult().GetBeta()[2].IsRedundant());
  EXPECT_EQ(fitter.GetResult().GetRankX(), 5);
  MCEngineSettings loose;
  loose.SetSingularTolerance(1e-6);
  ASSERT_FALSE(fitter.Fit(in, loose).IsError());
  EXPECT_TRUE(fitter.GetResult().GetBeta()[2].IsRedundant());
  EXPECT_EQ(fitter.GetResult().GetRankX(), 4);
}

TEST(MCEngineFit, InvariantToTheScaleOfTheResponse) {
  const MCEngineTestSimulation sim(12);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.InterceptSlope(MCEngineCovType::UN));
  in.SetResidualBlock(sim.Residual(MCEngineCovType::AR1));
  MCEngineFitter a;
  // Twelve subjects estimate an unstructured G that is not positive
  // definite; the fit says so and is otherwise complete.
  const MCEngineStatus status = a.Fit(in, MCEngineSettings());
  ASSERT_TRUE(status.IsOK() || status.GetCode() == MCEngineStatus::kGMatrixNotPD) << status.GetCode();
  for (double c : {1e100, 1e-100, 3.7}) {
    SCOPED_TRACE(c);
    MCEngineInput scaled = in;
    std::vector<double> y = in.GetY();
    for (double& v : y) v *= c;
    scaled.SetY(y);
    MCEngineFitter b;
    ASSERT_EQ(b.Fit(scaled, MCEngineSettings()).GetCode(), status.GetCode());
    const MCEngineResult &ra = a.GetResult(), &rb = b.GetResult();
    const double dof = ra.GetTotalFreqWeight() - ra.GetRankX();
    EXPECT_NEAR(rb.GetMinus2LogLik(), ra.GetMinus2LogLik() + dof * std::log(c * c), 1e-7 * std::fabs(dof * std::log(c * c)) + 1e-7);
    for (std::size_t j = 0; j < ra.GetBeta().size(); ++j) {
      if (ra.GetBeta()[j].IsRedundant()) continue;
      EXPECT_TRUE(Rel(rb.GetBeta()[j].GetEstimate(), ra.GetBeta()[j].GetEstimate() * c, 1e-6));
      EXPECT_TRUE(Rel(rb.GetBeta()[j].GetStdError(), ra.GetBeta()[j].GetStdError() * c, 1e-6));
      EXPECT_TRUE(Rel(rb.GetBeta()[j].GetDF(), ra.GetBeta()[j].GetDF(), 1e-5));
    }
    for (std::size_t k = 0; k < ra.GetCovParams().size(); ++k) {
      const MCEngineCovParam &pa = ra.GetCovParams()[k], &pb = rb.GetCovParams()[k];
      const double f = pa.GetKind() == MCEngineCovParam::kCorrelation ? 1.0 : c * c;
      EXPECT_TRUE(Rel(pb.GetEstimate(), pa.GetEstimate() * f, 1e-6)) << pa.GetLabel();
      EXPECT_EQ(pb.IsOnBoundary(), pa.IsOnBoundary()) << pa.GetLabel();
      if (MCEngineMissing::Is(pa.GetStdError())) {
        EXPECT_TRUE(MCEngineMissing::Is(pb.GetStdError())) << pa.GetLabel();
      } else {
        EXPECT_TRUE(Rel(pb.GetStdError(), pa.GetStdError() * f, 1e-5)) << pa.GetLabel();
      }
    }
  }
}

TEST(MCEngineFit, ConstantScaleWeightRescalesTheResidual) {
  const MCEngineTestSimulation sim(10);
  MCEngineInput in = sim.BaseInput();
  in.AddRandomBlock(sim.Intercept());
  MCEngineInput weighted = in;
  weighted.SetScaleWeights(std::vector<double>(static_cast<std::size_t>(sim.GetNRecords()), 4.0));
  MCEngineFitter fa, fb;
  ASSERT_TRUE(fa.Fit(in, MCEngineSettings()).IsOK());
  ASSERT_TRUE(fb.Fit(weighted, MCEngineSettings()).IsOK());
  const MCEngineResult &ra = fa.GetResult(), &rb = fb.GetResult();
  // Var(e) = sigma^2 / 4 spans the same covariance matrices: the same
  // likelihood, with a residual parameter four times larger.
  EXPECT_TRUE(Rel(rb.GetCovParams()[1].GetEstimate(), 4.0 * ra.GetCovParams()[1].GetEstimate(), 1e-7));
  EXPECT_TRUE(Rel(rb.GetCovParams()[0].GetEstimate(), ra.GetCovParams()[0].GetEstimate(), 1e-7));
  EXPECT_TRUE(Rel(rb.GetMinus2LogLik(), ra.GetMinus2LogLik(), 1e-10));
  EXPECT_TRUE(Rel(rb.GetBeta()[1].GetStdError(), ra.GetBeta()[1].GetStdError(), 1e-7));
}

TEST(MCEngineFit, InformationCriteria) {
  MCEngineTestCsv csv;
  auto d = SleepstudyDesign(csv);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(d->Build(), MCEngineSettings()).IsOK());
  const MCEngineResult& r = fitter.GetResult();
  // REML: d = 4 covariance parameters, n* = 180 - 2, n for BIC = 18 subjects.
  EXPECT_NEAR(r.GetAIC(), 1751.628272, 1e-5);
  EXPECT_NEAR(r.GetAICC(), 1743.628272 + 8.0 * 178.0 / 173.0, 1e-5);
  EXPECT_NEAR(r.GetBIC(), 1743.628272 + 4.0 * std::log(18.0), 1e-5);
  EXPECT_NEAR(r.GetCAIC(), 1743.628272 + 4.0 * (std::log(18.0) + 1.0), 1e-5);
  EXPECT_NEAR(r.GetHQIC(), 1743.628272 + 8.0 * std::log(std::log(18.0)), 1e-5);
  EXPECT_EQ(r.GetNSubjects(), 18.0);
  EXPECT_EQ(r.GetNCovParamsFree(), 4);
  EXPECT_TRUE(r.IsScaleProfiled());
  EXPECT_LT(r.GetMinus2LogLik(), r.GetNullMinus2LogLik());
  // ML counts the fixed effects too.
  MCEngineSettings ml;
  ml.SetREML(false);
  ASSERT_TRUE(fitter.Fit(d->Build(), ml).IsOK());
  EXPECT_NEAR(fitter.GetResult().GetAIC(), fitter.GetResult().GetMinus2LogLik() + 12.0, 1e-9);
  EXPECT_NEAR(fitter.GetResult().GetAICC(), fitter.GetResult().GetMinus2LogLik() + 12.0 * 180.0 / 173.0, 1e-9);
}

TEST(MCEngineFit, NullModelAndCovarianceParameterTable) {
  MCEngineTestCsv csv;
  auto d = SleepstudyDesign(csv);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(d->Build(), MCEngineSettings()).IsOK());
  const MCEngineResult& r = fitter.GetResult();
  // Independent residuals only (R: -2 logLik of gls(Reaction ~ Days), REML).
  EXPECT_NEAR(r.GetNullMinus2LogLik(), 1893.66366347, 1e-6);
  // A variance: one-sided p and Satterthwaite chi-square limits with 2 Z^2 df.
  const MCEngineCovParam& v = r.GetCovParams()[0];
  const double z = v.GetEstimate() / v.GetStdError();
  EXPECT_NEAR(v.GetWaldZ(), z, 1e-12);
  EXPECT_NEAR(v.GetSig(), MCEngineProbability::NormalUpper(z), 1e-15);
  const double nu = 2.0 * z * z;
  EXPECT_NEAR(v.GetLower(), nu * v.GetEstimate() / MCEngineProbability::ChiSquareQuantile(0.975, nu), 1e-9);
  EXPECT_NEAR(v.GetUpper(), nu * v.GetEstimate() / MCEngineProbability::ChiSquareQuantile(0.025, nu), 1e-9);
  EXPECT_NEAR(v.GetLower(), 289.443851, 2e-3);  // R, from the same estimate and standard error
  EXPECT_NEAR(v.GetUpper(), 2042.669145, 2e-2);
  // A covariance: two-sided p and Wald limits.
  const MCEngineCovParam& c = r.GetCovParams()[1];
  EXPECT_EQ(c.GetKind(), MCEngineCovParam::kCovariance);
  EXPECT_NEAR(c.GetSig(), 2.0 * MCEngineProbability::NormalUpper(std::fabs(c.GetWaldZ())), 1e-15);
  EXPECT_NEAR(c.GetLower(), c.GetEstimate() - 1.959963984540054 * c.GetStdError(), 1e-9);
  EXPECT_NEAR(c.GetUpper(), c.GetEstimate() + 1.959963984540054 * c.GetStdError(), 1e-9);
  // The asymptotic covariance holds the squared standard errors.
  const std::vector<double>& A = r.GetCovParamsCov();
  ASSERT_EQ(A.size(), 16u);
  EXPECT_NEAR(std::sqrt(A[0]), v.GetStdError(), 1e-9 * v.GetStdError());
  EXPECT_NEAR(A[1], A[4], 1e-12 * std::fabs(A[1]));
  // A fixed effect's interval uses t with its Satterthwaite df.
  const MCEngineBetaStat& b = r.GetBeta()[1];
  const double tq = MCEngineProbability::TQuantile(0.975, b.GetDF());
  EXPECT_NEAR(b.GetLower(), b.GetEstimate() - tq * b.GetStdError(), 1e-9);
  EXPECT_NEAR(b.GetUpper(), b.GetEstimate() + tq * b.GetStdError(), 1e-9);
  MCEngineSettings level90;
  level90.SetConfidenceLevel(90.0);
  ASSERT_TRUE(fitter.Fit(d->Build(), level90).IsOK());
  const MCEngineBetaStat& b90 = fitter.GetResult().GetBeta()[1];
  EXPECT_NEAR(b90.GetUpper() - b90.GetEstimate(), MCEngineProbability::TQuantile(0.95, b90.GetDF()) * b90.GetStdError(), 1e-9);
}

TEST(MCEngineFit, CompoundSymmetryOnTheRandomSideEqualsTwoVarianceComponents) {
  // Variety within Block with a CS structure is Block + Block*Variety.
  MCEngineTestCsv csv;
  ASSERT_TRUE(csv.Read(MCEngineTestFixture::DataPath("oats.csv")));
  MCEngineTestDesign vc(csv, {"Block", "Variety", "nitro"}), cs(csv, {"Block", "Variety", "nitro"});
  for (MCEngineTestDesign* d : {&vc, &cs}) {
    d->SetResponse("yield");
    d->AddFixedTerm("Intercept");
    d->AddFixedTerm("Variety");
    d->AddFixedTerm("nitro");
    d->AddFixedTerm("Variety*nitro");
  }
  vc.AddRandomBlock({"Block", "Block*Variety"}, "", MCEngineCovType::VC);
  cs.AddRandomBlock({"Variety"}, "Block", MCEngineCovType::CS);
  MCEngineFitter fa, fb;
  ASSERT_TRUE(fa.Fit(vc.Build(), MCEngineSettings()).IsOK());
  ASSERT_TRUE(fb.Fit(cs.Build(), MCEngineSettings()).IsOK());
  const MCEngineResult &ra = fa.GetResult(), &rb = fb.GetResult();
  EXPECT_TRUE(Rel(rb.GetMinus2LogLik(), ra.GetMinus2LogLik(), 1e-10));
  EXPECT_EQ(rb.GetCovParams()[0].GetLabel(), "CS");
  EXPECT_TRUE(Rel(rb.GetCovParams()[0].GetEstimate(), ra.GetCovParams()[0].GetEstimate(), 1e-7));
  EXPECT_TRUE(Rel(rb.GetCovParams()[1].GetEstimate(), ra.GetCovParams()[1].GetEstimate(), 1e-7));
  EXPECT_TRUE(Rel(rb.GetTypeIIITests()[1].GetDenDF(), ra.GetTypeIIITests()[1].GetDenDF(), 1e-6));
}

TEST(MCEngineFit, TypeIIIHypothesesAverageOverTheOtherFactor) {
  MCEngineTestCsv csv;
  ASSERT_TRUE(csv.Read(MCEngineTestFixture::DataPath("oats.csv")));
  MCEngineTestDesign d(csv, {"Block", "Variety", "nitro"});
  d.SetResponse("yield");
  d.AddFixedTerm("Intercept");
  d.AddFixedTerm("Variety");
  d.AddFixedTerm("nitro");
  d.AddFixedTerm("Variety*nitro");
  d.AddRandomBlock({"Block", "Block*Variety"}, "", MCEngineCovType::VC);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(d.Build(), MCEngineSettings()).IsOK());
  const MCEngineTest& variety = fitter.GetResult().GetTypeIIITests()[1];
  ASSERT_EQ(variety.GetL().size(), 2u);
  for (const std::vector<double>& row : variety.GetL()) {
    // No intercept or nitro main effect; the Variety part sums to 0, and each
    // variety's interaction cells carry its coefficient divided by 4.
    EXPECT_EQ(row[0], 0.0);
    double sum = 0.0;
    for (int v = 0; v < 3; ++v) {
      const double a = row[static_cast<std::size_t>(1 + v)];
      sum += a;
      for (int n = 0; n < 4; ++n) EXPECT_NEAR(row[static_cast<std::size_t>(8 + 4 * v + n)], a / 4.0, 1e-9);
    }
    EXPECT_NEAR(sum, 0.0, 1e-9);
    for (int n = 0; n < 4; ++n) EXPECT_EQ(row[static_cast<std::size_t>(4 + n)], 0.0);
  }
  // A Variety level alone is not estimable; a difference averaged over nitro is.
  std::vector<double> l(d.GetColumnNames().size(), 0.0);
  l[1] = 1.0;
  EXPECT_FALSE(fitter.IsEstimable(l));
  EXPECT_FALSE(fitter.TestContrast({l}).IsValid());
  EXPECT_TRUE(fitter.IsEstimable(variety.GetL()[0]));
  // Testing the Type III rows again reproduces the Type III test.
  const MCEngineTest again = fitter.TestContrast(variety.GetL());
  EXPECT_NEAR(again.GetF(), variety.GetF(), 1e-10 * variety.GetF());
  EXPECT_NEAR(again.GetDenDF(), variety.GetDenDF(), 1e-8 * variety.GetDenDF());
  // A row of the wrong length is refused.
  EXPECT_FALSE(fitter.TestContrast({{1.0, 2.0}}).IsValid());
}

TEST(MCEngineFit, VarianceAtItsBound) {
  // Within-subject deviations that sum to zero and are orthogonal to x leave
  // no between-subject variation: the subject variance is estimated at 0.
  MCEngineInput in;
  std::vector<double> y, X;
  std::vector<int> subj;
  const double dev[] = {1.0, -1.0, -1.0, 1.0};
  for (int s = 0; s < 6; ++s) {
    for (int j = 0; j < 4; ++j) {
      const double x = j;
      y.push_back(1.0 + 0.5 * x + (0.5 + 0.3 * s) * dev[j]);
      X.insert(X.end(), {1.0, x});
      subj.push_back(s);
    }
  }
  in.SetY(y);
  in.SetX(2, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  MCEngineRandomBlock b;
  b.SetDenseColumns(1, std::vector<double>(y.size(), 1.0));
  b.SetSubjects(subj);
  in.AddRandomBlock(b);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(in, MCEngineSettings()).IsOK());
  const MCEngineResult& r = fitter.GetResult();
  const MCEngineCovParam& sv = r.GetCovParams()[0];
  EXPECT_TRUE(sv.IsOnBoundary());
  EXPECT_EQ(sv.GetEstimate(), 0.0);
  EXPECT_TRUE(MCEngineMissing::Is(sv.GetStdError()));
  EXPECT_FALSE(r.GetCovParams()[1].IsOnBoundary());
  EXPECT_FALSE(MCEngineMissing::Is(r.GetCovParams()[1].GetStdError()));
  EXPECT_EQ(r.GetNCovParamsFree(), 1);
  EXPECT_NEAR(r.GetAIC(), r.GetMinus2LogLik() + 2.0, 1e-12);
  // With the subject variance at 0 the fit is ordinary least squares.
  EXPECT_NEAR(r.GetBeta()[1].GetEstimate(), 0.5, 1e-10);
  EXPECT_NEAR(r.GetBeta()[1].GetDF(), 22.0, 1e-6);
}

TEST(MCEngineFit, EvaluationNeedsAFit) {
  MCEngineFitter fitter;
  double f = 0.0;
  std::vector<double> g, h1, h2;
  EXPECT_FALSE(fitter.EvaluateAt({1.0}, f, g, h1, h2));
  EXPECT_FALSE(fitter.TestContrast({{1.0}}).IsValid());
  EXPECT_FALSE(fitter.IsEstimable({1.0}));
}
