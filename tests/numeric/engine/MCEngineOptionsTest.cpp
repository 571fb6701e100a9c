// The fit's options: residual degrees of freedom, the robust covariance of
// the fixed estimates, and the cancel query. Reference values from
// tests/numeric/reference/make_reference.R.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "numeric/common/MCProgressObserver.h"
#include "numeric/common/MCQueryCancel.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineTestCancelAfter.h"
#include "numeric/engine/MCEngineTestCsv.h"
#include "numeric/engine/MCEngineTestDesign.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/MCEngineTestSimulation.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

using Model = MCEngineTestFixture::Model;

std::unique_ptr<Model> Built(std::unique_ptr<Model> m) {
  m->fInput = m->fpDesign->Build();
  return m;
}

std::unique_ptr<Model> Sleepstudy() { return Built(MCEngineTestFixture::Sleepstudy(MCEngineCovType::UN)); }
std::unique_ptr<Model> Orthodont() { return MCEngineTestFixture::Orthodont(); }
std::unique_ptr<Model> Machines() { return Built(MCEngineTestFixture::Machines()); }
std::unique_ptr<Model> Oats() { return Built(MCEngineTestFixture::Oats()); }

MCEngineSettings Residual() {
  MCEngineSettings s;
  s.SetDFMethod(MCEngineSettings::kResidual);
  return s;
}

MCEngineSettings Robust(MCEngineSettings::SolverPath path = MCEngineSettings::kAutomatic) {
  MCEngineSettings s;
  s.SetRobustCovariance(true);
  s.SetSolverPath(path);
  return s;
}

using CancelAfter = MCEngineTestCancelAfter;

// The polls a fit makes at most after the one that said "stop": the
// evaluation that asked returns, and each step that follows asks once
// before it would evaluate again.
constexpr int kPollsAfterAStop = 4;

// Keeps what it is told of each iteration.
class IterationLog : public MCCommon_850::MCProgressObserver {
 public:
  void Iteration(int iteration, double criterion) const override {
    fvIterations.push_back(iteration);
    fvCriteria.push_back(criterion);
  }
  mutable std::vector<int> fvIterations;
  mutable std::vector<double> fvCriteria;
};

// The inverse of a small symmetric positive definite matrix by Gauss-Jordan.
std::vector<std::vector<double>> Inverse(std::vector<std::vector<double>> a) {
  const std::size_t n = a.size();
  std::vector<std::vector<double>> inv(n, std::vector<double>(n, 0.0));
  for (std::size_t i = 0; i < n; ++i) inv[i][i] = 1.0;
  for (std::size_t k = 0; k < n; ++k) {
    const double pivot = a[k][k];
    for (std::size_t j = 0; j < n; ++j) {
      a[k][j] /= pivot;
      inv[k][j] /= pivot;
    }
    for (std::size_t i = 0; i < n; ++i) {
      if (i == k) continue;
      const double f = a[i][k];
      for (std::size_t j = 0; j < n; ++j) {
        a[i][j] -= f * a[k][j];
        inv[i][j] -= f * inv[k][j];
      }
    }
  }
  return inv;
}

}  // namespace

TEST(MCEngineOptions, ResidualDegreesOfFreedom) {
  {
    auto m = Sleepstudy();
    MCEngineFitter fitter;
    fitter.Fit(m->fInput, Residual());
    MCEngineTestFixture::CompareSection("sleepstudy_un", "residual_df", fitter, *m->fpDesign);
  }
  {
    auto m = Oats();
    MCEngineFitter fitter;
    fitter.Fit(m->fInput, Residual());
    MCEngineTestFixture::CompareSection("oats", "residual_df", fitter, *m->fpDesign);
    // Free contrasts use the same df: a difference of two varieties.
    std::vector<double> l(m->fpDesign->GetColumnNames().size(), 0.0);
    l[U(m->fpDesign->FindColumnName("Variety=Golden Rain"))] = 1.0;
    l[U(m->fpDesign->FindColumnName("Variety=Marvellous"))] = -1.0;
    for (const char* n : {"0", "0.2", "0.4", "0.6"}) {
      l[U(m->fpDesign->FindColumnName(std::string("Variety=Golden Rain*nitro=") + n))] = 0.25;
      l[U(m->fpDesign->FindColumnName(std::string("Variety=Marvellous*nitro=") + n))] = -0.25;
    }
    const MCEngineTest t = fitter.TestContrast({l});
    ASSERT_TRUE(t.IsValid());
    EXPECT_EQ(t.GetDenDF(), 60.0);
  }
  {
    auto m = Orthodont();
    m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::UN);
    m->fInput = m->fpDesign->Build();
    MCEngineFitter fitter;
    fitter.Fit(m->fInput, Residual());
    MCEngineTestFixture::CompareSection("orthodont_un", "residual_df", fitter, *m->fpDesign);
  }
}

TEST(MCEngineOptions, SatterthwaiteByDefault) {
  auto m = Sleepstudy();
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, MCEngineSettings());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_TRUE(MCEngineMissing::Is(r.GetFixedDF()));
  EXPECT_FALSE(r.IsCovBetaRobust());
  EXPECT_EQ(r.GetCovBeta(), r.GetModelCovBeta());
  EXPECT_DOUBLE_EQ(r.GetNGroups(), 18.0);
}

TEST(MCEngineOptions, RobustCovarianceBySubject) {
  auto m = Sleepstudy();
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, Robust());
  MCEngineTestFixture::CompareSection("sleepstudy_un", "robust", fitter, *m->fpDesign);
}

TEST(MCEngineOptions, RobustCovarianceThroughMixedModelEquations) {
  auto m = Sleepstudy();
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, Robust(MCEngineSettings::kMixedModelEquations));
  EXPECT_EQ(fitter.GetResult().GetSolverPath(), MCEngineSettings::kMixedModelEquations);
  MCEngineTestFixture::CompareSection("sleepstudy_un", "robust", fitter, *m->fpDesign);
}

TEST(MCEngineOptions, RobustCovarianceOverCrossedBlocks) {
  // Worker and Worker*Machine: the independent groups are the workers.
  auto m = Machines();
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, Robust());
  EXPECT_DOUBLE_EQ(fitter.GetResult().GetNGroups(), 6.0);
  MCEngineTestFixture::CompareSection("machines", "robust", fitter, *m->fpDesign);
}

TEST(MCEngineOptions, RobustCovarianceWithResidualStructure) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::CS);
  m->fInput = m->fpDesign->Build();
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, Robust());
  MCEngineTestFixture::CompareSection("orthodont_cs", "robust", fitter, *m->fpDesign);
}

TEST(MCEngineOptions, RobustCovarianceWithResidualDF) {
  auto m = Sleepstudy();
  MCEngineSettings settings = Robust();
  settings.SetDFMethod(MCEngineSettings::kResidual);
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, settings);
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_TRUE(r.IsCovBetaRobust());
  EXPECT_EQ(r.GetFixedDF(), 178.0);
  for (const MCEngineBetaStat& b : r.GetBeta()) EXPECT_EQ(b.GetDF(), 178.0);
  // The standard errors are the robust ones.
  MCEngineFitter robustOnly;
  robustOnly.Fit(m->fInput, Robust());
  EXPECT_NEAR(r.GetBeta()[0].GetStdError(), robustOnly.GetResult().GetBeta()[0].GetStdError(), 1e-9);
  EXPECT_NE(r.GetBeta()[0].GetDF(), robustOnly.GetResult().GetBeta()[0].GetDF());
}

TEST(MCEngineOptions, RobustCovarianceNeedsTwoGroups) {
  // Crossed random factors couple every record: one group, so the
  // model-based covariance and Satterthwaite's df stay.
  auto m = Built(MCEngineTestFixture::Penicillin());
  MCEngineFitter fitter;
  EXPECT_TRUE(fitter.Fit(m->fInput, Robust()).IsOK());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_DOUBLE_EQ(r.GetNGroups(), 1.0);
  EXPECT_FALSE(r.IsCovBetaRobust());
  EXPECT_EQ(r.GetCovBeta(), r.GetModelCovBeta());
  EXPECT_TRUE(MCEngineMissing::Is(r.GetFixedDF()));
  EXPECT_NEAR(r.GetBeta()[0].GetDF(), 5.48709, 1e-3);
}

TEST(MCEngineOptions, RobustCovarianceOfIndependentRecords) {
  // Without random blocks or residual subjects each record is its own group:
  // (X'X)^-1 (sum_i x_i x_i' e_i^2) (X'X)^-1 of least squares.
  const MCEngineTestSimulation sim(20, 11);
  const MCEngineInput in = sim.BaseInput();
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(in, Robust()).IsOK());
  const MCEngineResult& r = fitter.GetResult();
  const int n = sim.GetNRecords();
  EXPECT_DOUBLE_EQ(r.GetNGroups(), n);
  EXPECT_EQ(r.GetFixedDF(), n - 1.0);
  ASSERT_TRUE(r.GetBeta()[3].IsRedundant());

  // Columns 0..2 (A=2 is aliased).
  const std::size_t k = 3;
  std::vector<std::vector<double>> xtx(k, std::vector<double>(k, 0.0));
  std::vector<double> xty(k, 0.0);
  for (int i = 0; i < n; ++i) {
    for (std::size_t a = 0; a < k; ++a) {
      xty[a] += in.GetX()[U(i) * 4 + a] * in.GetY()[U(i)];
      for (std::size_t b = 0; b < k; ++b) xtx[a][b] += in.GetX()[U(i) * 4 + a] * in.GetX()[U(i) * 4 + b];
    }
  }
  const auto inv = Inverse(xtx);
  std::vector<double> beta(k, 0.0);
  for (std::size_t a = 0; a < k; ++a) {
    for (std::size_t b = 0; b < k; ++b) beta[a] += inv[a][b] * xty[b];
  }
  std::vector<std::vector<double>> meat(k, std::vector<double>(k, 0.0));
  for (int i = 0; i < n; ++i) {
    double e = in.GetY()[U(i)];
    for (std::size_t a = 0; a < k; ++a) e -= in.GetX()[U(i) * 4 + a] * beta[a];
    for (std::size_t a = 0; a < k; ++a) {
      for (std::size_t b = 0; b < k; ++b) meat[a][b] += in.GetX()[U(i) * 4 + a] * in.GetX()[U(i) * 4 + b] * e * e;
    }
  }
  for (std::size_t a = 0; a < k; ++a) {
    EXPECT_NEAR(r.GetBeta()[a].GetEstimate(), beta[a], 1e-9 * (1.0 + std::fabs(beta[a])));
    for (std::size_t b = 0; b < k; ++b) {
      double v = 0.0;
      for (std::size_t c = 0; c < k; ++c) {
        for (std::size_t d = 0; d < k; ++d) v += inv[a][c] * meat[c][d] * inv[d][b];
      }
      EXPECT_NEAR(r.GetCovBeta()[a * 4 + b], v, 1e-9 * std::fabs(v) + 1e-14);
    }
  }
}

TEST(MCEngineOptions, CancelledBeforeTheFirstIteration) {
  auto m = Sleepstudy();
  CancelAfter cancel(0);
  MCEngineSettings settings;
  settings.SetCancel(&cancel);
  MCEngineFitter fitter;
  const MCEngineStatus st = fitter.Fit(m->fInput, settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kCancelled);
  EXPECT_TRUE(st.IsError());
  EXPECT_EQ(fitter.GetResult().GetStatus().GetCode(), MCEngineStatus::kCancelled);
  EXPECT_EQ(fitter.GetResult().GetIterations(), 0);
  // The first evaluation asks first and stops; the fit's end asks once more.
  EXPECT_EQ(cancel.GetCount(), 2);
  // No statistics are computed for a cancelled fit.
  EXPECT_TRUE(fitter.GetResult().GetBeta().empty());
  EXPECT_TRUE(MCEngineMissing::Is(fitter.GetResult().GetMinus2LogLik()));
}

// A residual UN over the ten days of the sleep study: 55 parameters, whose
// derivatives make each evaluation long.
std::unique_ptr<Model> SleepstudyDaysUN() {
  auto m = MCEngineTestFixture::Load("sleepstudy.csv", {"Subject", "Days"});
  m->fpDesign->SetResponse("Reaction");
  m->fpDesign->AddFixedTerm("Intercept");
  m->fpDesign->SetResidual("Subject", "Days", MCEngineCovType::UN);
  m->fInput = m->fpDesign->Build();
  return m;
}

TEST(MCEngineOptions, ALargeStructureIsAskedToStopInsideEachEvaluation) {
  auto m = SleepstudyDaysUN();
  CancelAfter never(1 << 30);
  IterationLog log;
  MCEngineSettings settings;
  settings.SetCancel(&never);
  settings.SetProgress(&log);
  settings.SetMaxIterations(1);
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, settings);
  // Once per parameter in each loop over the derivatives, not only before
  // each iteration.
  ASSERT_FALSE(log.fvIterations.empty());
  EXPECT_GT(never.GetCount(), 2 * 55 * static_cast<int>(log.fvIterations.size()));
}

// Wherever the stop comes, the fit asks only a few more times before it
// ends as cancelled: no loop over the parameters or the subjects goes on.
TEST(MCEngineOptions, AStopInsideAnEvaluationEndsTheFitAtOnce) {
  auto m = SleepstudyDaysUN();
  CancelAfter never(1 << 30);
  MCEngineSettings settings;
  settings.SetCancel(&never);
  settings.SetMaxIterations(2);
  MCEngineFitter fitter;
  fitter.Fit(m->fInput, settings);
  const int total = never.GetCount();
  ASSERT_GT(total, 200);
  for (int at : {1, 20, 54, 55, 100, total / 3, total / 2, total - 30}) {
    CancelAfter stop(at);
    settings.SetCancel(&stop);
    const MCEngineStatus st = fitter.Fit(m->fInput, settings);
    EXPECT_EQ(st.GetCode(), MCEngineStatus::kCancelled) << "stopped at poll " << at;
    EXPECT_LE(stop.GetCount(), at + kPollsAfterAStop) << "stopped at poll " << at;
    EXPECT_TRUE(fitter.GetResult().GetBeta().empty()) << "stopped at poll " << at;
  }
}

TEST(MCEngineOptions, AStopAtAnIterationsStartEndsTheIterations) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::UN);
  m->fInput = m->fpDesign->Build();
  IterationLog log;
  MCEngineSettings settings;
  settings.SetProgress(&log);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(m->fInput, settings).IsOK());
  ASSERT_GE(fitter.GetResult().GetIterations(), 2);

  // The poll right after the progress of iteration 2.
  class StopAtIteration : public MCCommon_850::MCQueryCancel, public MCCommon_850::MCProgressObserver {
   public:
    void Iteration(int iteration, double) const override { fbStop = iteration >= 2; }
    bool IsCancelled() const override { return fbStop; }
    mutable bool fbStop = false;
  } stop;
  settings.SetCancel(&stop);
  settings.SetProgress(&stop);
  const MCEngineStatus st = fitter.Fit(m->fInput, settings);
  EXPECT_EQ(st.GetCode(), MCEngineStatus::kCancelled);
  EXPECT_EQ(fitter.GetResult().GetIterations(), 2);
}

TEST(MCEngineOptions, TheProgressObserverIsToldEachIterationAndItsMinus2LogLikelihood) {
  auto m = Orthodont();
  m->fpDesign->SetResidual("Subject", "age", MCEngineCovType::UN);
  m->fInput = m->fpDesign->Build();
  IterationLog log;
  CancelAfter never(1 << 30);
  MCEngineSettings settings;
  settings.SetCancel(&never);
  settings.SetProgress(&log);
  MCEngineFitter fitter;
  ASSERT_TRUE(fitter.Fit(m->fInput, settings).IsOK());
  const int iterations = fitter.GetResult().GetIterations();
  // Told at the start of each iteration, with the iteration about to start,
  // and once more before the convergence test that ends them.
  ASSERT_EQ(static_cast<int>(log.fvIterations.size()), iterations + 1);
  for (int i = 0; i <= iterations; ++i) EXPECT_EQ(log.fvIterations[static_cast<std::size_t>(i)], i);
  // The criterion falls, and ends at the fit's -2 log likelihood.
  for (std::size_t i = 1; i < log.fvCriteria.size(); ++i) EXPECT_LE(log.fvCriteria[i], log.fvCriteria[i - 1] + 1e-9);
  const double m2ll = fitter.GetResult().GetMinus2LogLik();
  EXPECT_NEAR(log.fvCriteria.back(), m2ll, 1e-8 * std::fabs(m2ll));

  // Without an observer the fit is the same.
  MCEngineSettings plain;
  MCEngineFitter other;
  ASSERT_TRUE(other.Fit(m->fInput, plain).IsOK());
  EXPECT_EQ(other.GetResult().GetMinus2LogLik(), m2ll);
}
