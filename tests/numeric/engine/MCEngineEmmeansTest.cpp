// Estimated marginal means of the engine against closed forms: with fixed
// effects only and one residual variance, a mean of a one-way model is its
// group's mean with standard error s / sqrt(n) on N - k degrees of freedom.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "numeric/engine/MCEngineEmmeans.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineProbability.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

::testing::AssertionResult Rel(double a, double b, double tol) {
  if (std::fabs(a - b) <= tol * std::max(std::fabs(b), 1e-12)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

// y by the level of A (0, 1, 2): 3, 4 and 5 records.
const std::vector<std::vector<double>> kGroups = {{10, 12, 11}, {14, 15, 13, 17}, {9, 8, 10, 12, 11}};
constexpr int kA = 7;  // the factor's identifier
constexpr int kB = 8;
constexpr int kX = 9;  // a covariate

// The one-way model: intercept and A's three columns.
class OneWay {
 public:
  OneWay() {
    std::vector<double> y, X;
    for (int g = 0; g < 3; ++g) {
      for (double v : kGroups[U(g)]) {
        y.push_back(v);
        X.insert(X.end(), {1.0, g == 0 ? 1.0 : 0.0, g == 1 ? 1.0 : 0.0, g == 2 ? 1.0 : 0.0});
      }
    }
    fInput.SetY(y);
    fInput.SetX(4, X);
    fInput.AddTerm(MCEngineTerm::Intercept(0));
    fInput.AddTerm(MCEngineTerm(1, 3, {kA}, {}));
    fColumns = {MCEngineMeansColumn(), MCEngineMeansColumn({kA}, {0}, {}), MCEngineMeansColumn({kA}, {1}, {}),
                MCEngineMeansColumn({kA}, {2}, {})};
    fStatus = fFitter.Fit(fInput, MCEngineSettings());
    // Closed forms.
    double ss = 0.0;
    int n = 0;
    for (const auto& g : kGroups) {
      const double m = std::accumulate(g.begin(), g.end(), 0.0) / g.size();
      fvMean.push_back(m);
      for (double v : g) ss += (v - m) * (v - m);
      n += static_cast<int>(g.size());
    }
    fDF = n - 3;
    fS2 = ss / fDF;
  }

  MCEngineEmmeans Means() const { return MCEngineEmmeans(fFitter, fInput, fColumns, 95.0); }
  double Mean(int g) const { return fvMean[U(g)]; }
  double N(int g) const { return static_cast<double>(kGroups[U(g)].size()); }
  double S2() const { return fS2; }
  double DF() const { return fDF; }
  bool Fitted() const { return !fStatus.IsError(); }

 private:
  MCEngineInput fInput;
  std::vector<MCEngineMeansColumn> fColumns;
  MCEngineFitter fFitter;
  MCEngineStatus fStatus;
  std::vector<double> fvMean;
  double fDF = 0.0;
  double fS2 = 0.0;
};

MCEngineMeansRequest Compare(MCEngineMeansRequest::Contrast contrast,
                             MCEngineMeansRequest::Adjustment adjustment = MCEngineMeansRequest::kNoAdjustment) {
  MCEngineMeansRequest request;
  request.SetFactors({kA});
  request.SetCompareFactor(kA);
  request.SetContrast(contrast);
  request.SetAdjustment(adjustment);
  return request;
}

// Estimates and standard errors of contrasts against their coefficients.
void CheckAgainstCoefficients(const OneWay& model, const MCEngineMeansTable& table) {
  for (const MCEngineMeansContrast& c : table.GetContrasts()) {
    double est = 0.0, var = 0.0;
    for (int j = 0; j < 3; ++j) {
      est += c.GetCoefficients()[U(j)] * model.Mean(j);
      var += c.GetCoefficients()[U(j)] * c.GetCoefficients()[U(j)] * model.S2() / model.N(j);
    }
    EXPECT_TRUE(c.IsEstimable());
    EXPECT_NEAR(c.GetEstimate(), est, 1e-9);
    EXPECT_TRUE(Rel(c.GetStdError(), std::sqrt(var), 1e-8));
    EXPECT_TRUE(Rel(c.GetDF(), model.DF(), 1e-6));
    EXPECT_NEAR(c.GetT(), c.GetEstimate() / c.GetStdError(), 1e-9);
    EXPECT_TRUE(Rel(c.GetSig(), MCEngineProbability::TTwoSided(c.GetT(), model.DF()), 1e-6));
  }
}

}  // namespace

TEST(MCEngineEmmeans, OneWayMeansAreTheGroupMeans) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineEmmeans means = model.Means();
  EXPECT_EQ(means.GetFactorLevels(kA), 3);
  EXPECT_EQ(means.GetFactorLevels(kB), 0);
  MCEngineMeansRequest request;
  request.SetFactors({kA});
  const MCEngineMeansTable table = means.Compute(request);
  EXPECT_EQ(table.GetState(), MCEngineMeansTable::kOK);
  ASSERT_EQ(table.GetCells().size(), 3u);
  EXPECT_TRUE(table.GetContrasts().empty());
  EXPECT_TRUE(table.GetSlices().empty());
  for (int g = 0; g < 3; ++g) {
    const MCEngineMeansCell& cell = table.GetCells()[U(g)];
    EXPECT_EQ(cell.GetLevels(), std::vector<int>{g});
    EXPECT_TRUE(cell.IsEstimable());
    EXPECT_NEAR(cell.GetEstimate(), model.Mean(g), 1e-9);
    const double se = std::sqrt(model.S2() / model.N(g));
    EXPECT_TRUE(Rel(cell.GetStdError(), se, 1e-8));
    EXPECT_TRUE(Rel(cell.GetDF(), model.DF(), 1e-6));
    const double q = MCEngineProbability::TQuantile(0.975, model.DF());
    EXPECT_TRUE(Rel(cell.GetLower(), model.Mean(g) - q * se, 1e-7));
    EXPECT_TRUE(Rel(cell.GetUpper(), model.Mean(g) + q * se, 1e-7));
  }
}

TEST(MCEngineEmmeans, GrandMeanWeighsTheLevelsEqually) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineMeansTable table = model.Means().Compute(MCEngineMeansRequest());
  ASSERT_EQ(table.GetCells().size(), 1u);
  const MCEngineMeansCell& cell = table.GetCells()[0];
  EXPECT_TRUE(cell.GetLevels().empty());
  EXPECT_NEAR(cell.GetEstimate(), (model.Mean(0) + model.Mean(1) + model.Mean(2)) / 3.0, 1e-9);
  const double var = model.S2() / 9.0 * (1.0 / model.N(0) + 1.0 / model.N(1) + 1.0 / model.N(2));
  EXPECT_TRUE(Rel(cell.GetStdError(), std::sqrt(var), 1e-8));
}

TEST(MCEngineEmmeans, PairwiseContrastsInLevelOrder) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineMeansTable table = model.Means().Compute(Compare(MCEngineMeansRequest::kPairwise));
  ASSERT_EQ(table.GetContrasts().size(), 3u);
  const int pairs[3][2] = {{0, 1}, {0, 2}, {1, 2}};
  for (int i = 0; i < 3; ++i) {
    const MCEngineMeansContrast& c = table.GetContrasts()[U(i)];
    EXPECT_EQ(c.GetLevel(), pairs[i][0]);
    EXPECT_EQ(c.GetReference(), pairs[i][1]);
    EXPECT_TRUE(c.GetByLevels().empty());
    EXPECT_NEAR(c.GetEstimate(), model.Mean(pairs[i][0]) - model.Mean(pairs[i][1]), 1e-9);
    // Without adjustment the adjusted p is the p value.
    EXPECT_EQ(c.GetAdjustedSig(), c.GetSig());
    const double q = MCEngineProbability::TQuantile(0.975, model.DF());
    EXPECT_TRUE(Rel(c.GetUpper() - c.GetLower(), 2.0 * q * c.GetStdError(), 1e-7));
  }
  CheckAgainstCoefficients(model, table);
}

TEST(MCEngineEmmeans, SimpleContrastsUseTheReferenceOrTheLastLevel) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineEmmeans means = model.Means();
  for (int reference : {-1, 0, 1, 2, 3}) {
    SCOPED_TRACE(reference);
    MCEngineMeansRequest request = Compare(MCEngineMeansRequest::kSimple);
    request.SetReferenceLevel(reference);
    const MCEngineMeansTable table = means.Compute(request);
    const int used = reference >= 0 && reference < 3 ? reference : 2;
    EXPECT_EQ(table.GetReferenceLevel(), used);
    ASSERT_EQ(table.GetContrasts().size(), 2u);
    int expected = 0;
    for (const MCEngineMeansContrast& c : table.GetContrasts()) {
      if (expected == used) ++expected;
      EXPECT_EQ(c.GetLevel(), expected);
      EXPECT_EQ(c.GetReference(), used);
      EXPECT_NEAR(c.GetEstimate(), model.Mean(expected) - model.Mean(used), 1e-9);
      ++expected;
    }
    CheckAgainstCoefficients(model, table);
  }
  // Other contrasts name no reference level.
  EXPECT_EQ(means.Compute(Compare(MCEngineMeansRequest::kPairwise)).GetReferenceLevel(), -1);
}

TEST(MCEngineEmmeans, ContrastsAgainstMeansOfLevels) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineEmmeans means = model.Means();
  const double m0 = model.Mean(0), m1 = model.Mean(1), m2 = model.Mean(2);
  const double all = (m0 + m1 + m2) / 3.0;

  const MCEngineMeansTable deviation = means.Compute(Compare(MCEngineMeansRequest::kDeviation));
  ASSERT_EQ(deviation.GetContrasts().size(), 3u);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(deviation.GetContrasts()[U(i)].GetLevel(), i);
    EXPECT_EQ(deviation.GetContrasts()[U(i)].GetReference(), -1);
    EXPECT_NEAR(deviation.GetContrasts()[U(i)].GetEstimate(), model.Mean(i) - all, 1e-9);
  }
  CheckAgainstCoefficients(model, deviation);

  const MCEngineMeansTable difference = means.Compute(Compare(MCEngineMeansRequest::kDifference));
  ASSERT_EQ(difference.GetContrasts().size(), 2u);
  EXPECT_EQ(difference.GetContrasts()[0].GetLevel(), 1);
  EXPECT_NEAR(difference.GetContrasts()[0].GetEstimate(), m1 - m0, 1e-9);
  EXPECT_EQ(difference.GetContrasts()[1].GetLevel(), 2);
  EXPECT_NEAR(difference.GetContrasts()[1].GetEstimate(), m2 - (m0 + m1) / 2.0, 1e-9);
  CheckAgainstCoefficients(model, difference);

  const MCEngineMeansTable helmert = means.Compute(Compare(MCEngineMeansRequest::kHelmert));
  ASSERT_EQ(helmert.GetContrasts().size(), 2u);
  EXPECT_NEAR(helmert.GetContrasts()[0].GetEstimate(), m0 - (m1 + m2) / 2.0, 1e-9);
  EXPECT_NEAR(helmert.GetContrasts()[1].GetEstimate(), m1 - m2, 1e-9);
  CheckAgainstCoefficients(model, helmert);

  const MCEngineMeansTable repeated = means.Compute(Compare(MCEngineMeansRequest::kRepeated));
  ASSERT_EQ(repeated.GetContrasts().size(), 2u);
  EXPECT_EQ(repeated.GetContrasts()[1].GetLevel(), 1);
  EXPECT_EQ(repeated.GetContrasts()[1].GetReference(), 2);
  EXPECT_NEAR(repeated.GetContrasts()[0].GetEstimate(), m0 - m1, 1e-9);
  EXPECT_NEAR(repeated.GetContrasts()[1].GetEstimate(), m1 - m2, 1e-9);
  CheckAgainstCoefficients(model, repeated);

  EXPECT_TRUE(means.Compute(Compare(MCEngineMeansRequest::kNone)).GetContrasts().empty());
}

TEST(MCEngineEmmeans, PolynomialContrastsAreOrthonormal) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineEmmeans means = model.Means();
  for (const std::vector<double>& metric : {std::vector<double>{}, std::vector<double>{1.0, 2.0, 4.0}}) {
    MCEngineMeansRequest request = Compare(MCEngineMeansRequest::kPolynomial);
    request.SetMetricValues(metric);
    const MCEngineMeansTable table = means.Compute(request);
    ASSERT_EQ(table.GetContrasts().size(), 2u);
    const std::vector<double> x = metric.empty() ? std::vector<double>{0.0, 1.0, 2.0} : metric;
    for (int d = 0; d < 2; ++d) {
      const std::vector<double>& c = table.GetContrasts()[U(d)].GetCoefficients();
      EXPECT_EQ(table.GetContrasts()[U(d)].GetLevel(), -1);
      EXPECT_NEAR(c[0] + c[1] + c[2], 0.0, 1e-12);
      EXPECT_NEAR(c[0] * c[0] + c[1] * c[1] + c[2] * c[2], 1.0, 1e-12);
      if (d == 0) {
        // The linear contrast rises with the metric.
        EXPECT_GT(c[2], 0.0);
        EXPECT_NEAR(c[0] * (x[1] - x[2]) + c[1] * (x[2] - x[0]) + c[2] * (x[0] - x[1]), 0.0, 1e-12);
      }
    }
    const std::vector<double>& l = table.GetContrasts()[0].GetCoefficients();
    const std::vector<double>& q = table.GetContrasts()[1].GetCoefficients();
    EXPECT_NEAR(l[0] * q[0] + l[1] * q[1] + l[2] * q[2], 0.0, 1e-12);
    CheckAgainstCoefficients(model, table);
  }
  // Metric values of the wrong length fall back to equal spacing.
  MCEngineMeansRequest request = Compare(MCEngineMeansRequest::kPolynomial);
  request.SetMetricValues({1.0, 2.0});
  const MCEngineMeansTable table = means.Compute(request);
  ASSERT_EQ(table.GetContrasts().size(), 2u);
  EXPECT_NEAR(table.GetContrasts()[0].GetCoefficients()[0], -1.0 / std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(table.GetContrasts()[0].GetCoefficients()[1], 0.0, 1e-12);
}

TEST(MCEngineEmmeans, AdjustedSignificanceAndIntervals) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineEmmeans means = model.Means();
  const MCEngineMeansTable raw = means.Compute(Compare(MCEngineMeansRequest::kPairwise));
  ASSERT_EQ(raw.GetContrasts().size(), 3u);
  std::vector<double> p;
  for (const MCEngineMeansContrast& c : raw.GetContrasts()) p.push_back(c.GetSig());
  // Order of the p values, smallest first.
  std::vector<int> order = {0, 1, 2};
  std::sort(order.begin(), order.end(), [&](int a, int b) { return p[U(a)] < p[U(b)]; });
  const double m = 3.0;
  const double alpha = 0.05;
  auto sidak = [](double x, double k) { return 1.0 - std::pow(1.0 - x, k); };

  struct Case {
    MCEngineMeansRequest::Adjustment fMethod;
    std::vector<double> fExpected;
    double fCoverage;
  };
  std::vector<double> holm(3), seqSidak(3), bonferroni(3), sidakOne(3);
  double runHolm = 0.0, runSidak = 0.0;
  for (int j = 0; j < 3; ++j) {
    const int i = order[U(j)];
    runHolm = std::max(runHolm, std::min(1.0, (m - j) * p[U(i)]));
    runSidak = std::max(runSidak, sidak(p[U(i)], m - j));
    holm[U(i)] = runHolm;
    seqSidak[U(i)] = runSidak;
    bonferroni[U(i)] = std::min(1.0, m * p[U(i)]);
    sidakOne[U(i)] = sidak(p[U(i)], m);
  }
  const double bonferroniCoverage = 1.0 - alpha / (2.0 * m);
  const double sidakCoverage = 0.5 * (1.0 + std::pow(1.0 - alpha, 1.0 / m));
  const std::vector<Case> cases = {{MCEngineMeansRequest::kSequentialBonferroni, holm, bonferroniCoverage},
                                   {MCEngineMeansRequest::kBonferroni, bonferroni, bonferroniCoverage},
                                   {MCEngineMeansRequest::kSequentialSidak, seqSidak, sidakCoverage},
                                   {MCEngineMeansRequest::kSidak, sidakOne, sidakCoverage}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fMethod);
    const MCEngineMeansTable table = means.Compute(Compare(MCEngineMeansRequest::kPairwise, c.fMethod));
    ASSERT_EQ(table.GetContrasts().size(), 3u);
    for (int i = 0; i < 3; ++i) {
      const MCEngineMeansContrast& contrast = table.GetContrasts()[U(i)];
      EXPECT_EQ(contrast.GetSig(), p[U(i)]);
      EXPECT_TRUE(Rel(contrast.GetAdjustedSig(), c.fExpected[U(i)], 1e-10));
      EXPECT_GE(contrast.GetAdjustedSig(), contrast.GetSig());
      const double q = MCEngineProbability::TQuantile(c.fCoverage, model.DF());
      EXPECT_TRUE(Rel(contrast.GetUpper() - contrast.GetEstimate(), q * contrast.GetStdError(), 1e-7));
      EXPECT_TRUE(Rel(contrast.GetEstimate() - contrast.GetLower(), q * contrast.GetStdError(), 1e-7));
    }
  }
}

TEST(MCEngineEmmeans, JointTestIsTheOneWayAnalysisOfVariance) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  const MCEngineMeansTable table = model.Means().Compute(Compare(MCEngineMeansRequest::kNone));
  ASSERT_EQ(table.GetSlices().size(), 1u);
  const MCEngineMeansSlice& slice = table.GetSlices()[0];
  double total = 0.0, n = 0.0;
  for (int g = 0; g < 3; ++g) {
    total += model.N(g) * model.Mean(g);
    n += model.N(g);
  }
  double between = 0.0;
  for (int g = 0; g < 3; ++g) between += model.N(g) * std::pow(model.Mean(g) - total / n, 2);
  EXPECT_TRUE(slice.IsValid());
  EXPECT_TRUE(slice.GetByLevels().empty());
  EXPECT_TRUE(Rel(slice.GetF(), between / 2.0 / model.S2(), 1e-8));
  EXPECT_EQ(slice.GetNumDF(), 2.0);
  EXPECT_TRUE(Rel(slice.GetDenDF(), model.DF(), 1e-6));
  EXPECT_TRUE(Rel(slice.GetSig(), MCEngineProbability::FUpper(slice.GetF(), 2.0, model.DF()), 1e-8));
}

TEST(MCEngineEmmeans, InvalidRequests) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  MCEngineEmmeans means = model.Means();
  MCEngineMeansRequest unknown;
  unknown.SetFactors({kB});
  EXPECT_EQ(means.Compute(unknown).GetState(), MCEngineMeansTable::kInvalid);
  EXPECT_TRUE(means.Compute(unknown).GetCells().empty());

  MCEngineMeansRequest twice;
  twice.SetFactors({kA, kA});
  EXPECT_EQ(means.Compute(twice).GetState(), MCEngineMeansTable::kInvalid);

  MCEngineMeansRequest elsewhere;
  elsewhere.SetFactors({kA});
  elsewhere.SetCompareFactor(kB);
  EXPECT_EQ(means.Compute(elsewhere).GetState(), MCEngineMeansTable::kInvalid);

  // A factor that the model does not use has equal means at every level.
  means.SetFactorLevels(kB, 2);
  MCEngineMeansRequest unused;
  unused.SetFactors({kB});
  const MCEngineMeansTable table = means.Compute(unused);
  EXPECT_EQ(table.GetState(), MCEngineMeansTable::kOK);
  ASSERT_EQ(table.GetCells().size(), 2u);
  EXPECT_NEAR(table.GetCells()[0].GetEstimate(), table.GetCells()[1].GetEstimate(), 1e-12);

  // Too many cells.
  means.SetFactorLevels(kB, 400);
  means.SetFactorLevels(kX, 400);
  MCEngineMeansRequest large;
  large.SetFactors({kB, kX});
  EXPECT_EQ(means.Compute(large).GetState(), MCEngineMeansTable::kInvalid);
}

TEST(MCEngineEmmeans, CompareFactorWithOneLevel) {
  const OneWay model;
  ASSERT_TRUE(model.Fitted());
  MCEngineEmmeans means = model.Means();
  means.SetFactorLevels(kB, 1);
  MCEngineMeansRequest request;
  request.SetFactors({kA, kB});
  request.SetCompareFactor(kB);
  request.SetContrast(MCEngineMeansRequest::kPairwise);
  const MCEngineMeansTable table = means.Compute(request);
  EXPECT_EQ(table.GetState(), MCEngineMeansTable::kCompareOneLevel);
  ASSERT_EQ(table.GetCells().size(), 3u);
  EXPECT_NEAR(table.GetCells()[2].GetEstimate(), model.Mean(2), 1e-9);
  EXPECT_EQ(table.GetCells()[2].GetLevels(), (std::vector<int>{2, 0}));
  EXPECT_TRUE(table.GetContrasts().empty());
  EXPECT_TRUE(table.GetSlices().empty());
}

// Two crossed factors A (3 levels) and B (2 levels) with A*B, one cell empty
// (A = 2, B = 1), and a covariate; the last record has no response and the
// one before it a frequency weight of 0, so the fit leaves both out.
TEST(MCEngineEmmeans, EmptyCellsAndCovariates) {
  std::vector<double> y, X, w, x;
  const int P = 1 + 3 + 2 + 6 + 1;
  auto add = [&](int a, int b, double xv, double yv, double wv) {
    std::vector<double> row(U(P), 0.0);
    row[0] = 1.0;
    row[U(1 + a)] = 1.0;
    row[U(4 + b)] = 1.0;
    row[U(6 + 2 * a + b)] = 1.0;
    row[12] = xv;
    X.insert(X.end(), row.begin(), row.end());
    y.push_back(yv);
    w.push_back(wv);
    x.push_back(xv);
  };
  double v = 1.0;
  for (int rep = 0; rep < 3; ++rep) {
    for (int a = 0; a < 3; ++a) {
      for (int b = 0; b < 2; ++b) {
        if (a == 2 && b == 1) continue;
        v = std::fmod(v * 7.3 + 1.1, 5.0);
        add(a, b, 1.0 + rep + 0.5 * a, 10.0 + a + 2.0 * b + v, rep == 2 ? 2.0 : 1.0);
      }
    }
  }
  add(0, 0, 100.0, 12.0, 0.0);
  add(1, 1, 200.0, std::numeric_limits<double>::quiet_NaN(), 1.0);
  MCEngineInput input;
  input.SetY(y);
  input.SetX(P, X);
  input.SetFrequencyWeights(w);
  input.AddTerm(MCEngineTerm::Intercept(0));
  input.AddTerm(MCEngineTerm(1, 3, {kA}, {}));
  input.AddTerm(MCEngineTerm(4, 2, {kB}, {}));
  input.AddTerm(MCEngineTerm(6, 6, {kA, kB}, {}));
  input.AddTerm(MCEngineTerm(12, 1, {}, {kX}));
  std::vector<MCEngineMeansColumn> columns(1);
  for (int a = 0; a < 3; ++a) columns.emplace_back(std::vector<int>{kA}, std::vector<int>{a}, std::vector<int>{});
  for (int b = 0; b < 2; ++b) columns.emplace_back(std::vector<int>{kB}, std::vector<int>{b}, std::vector<int>{});
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 2; ++b) {
      columns.emplace_back(std::vector<int>{kA, kB}, std::vector<int>{a, b}, std::vector<int>{});
    }
  }
  columns.emplace_back(std::vector<int>{}, std::vector<int>{}, std::vector<int>{kX});
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(input, MCEngineSettings()).IsError());
  MCEngineEmmeans means(fitter, input, columns, 90.0);
  means.SetCovariateRecords(kX, x);

  // The covariate's mean over the records used, weighted.
  double sx = 0.0, sw = 0.0;
  for (std::size_t r = 0; r + 2 < x.size(); ++r) {
    sx += w[r] * x[r];
    sw += w[r];
  }
  EXPECT_NEAR(means.GetCovariateMean(kX), sx / sw, 1e-12);
  EXPECT_EQ(means.GetCovariateMean(kB), MCEngineMissing::Value());

  MCEngineMeansRequest request;
  request.SetFactors({kA, kB});
  request.SetCompareFactor(kA);
  request.SetContrast(MCEngineMeansRequest::kPairwise);
  const MCEngineMeansTable table = means.Compute(request);
  ASSERT_EQ(table.GetCovariates(), std::vector<int>{kX});
  EXPECT_NEAR(table.GetCovariateValues()[0], sx / sw, 1e-12);
  ASSERT_EQ(table.GetCells().size(), 6u);
  for (const MCEngineMeansCell& cell : table.GetCells()) {
    const bool empty = cell.GetLevels() == std::vector<int>{2, 1};
    EXPECT_EQ(cell.IsEstimable(), !empty);
    EXPECT_EQ(MCEngineMissing::Is(cell.GetEstimate()), empty);
    EXPECT_EQ(MCEngineMissing::Is(cell.GetLower()), empty);
  }
  // Within B = 1 only the pair (0, 1) is estimable, and the test has one
  // degree of freedom.
  ASSERT_EQ(table.GetContrasts().size(), 6u);
  for (const MCEngineMeansContrast& c : table.GetContrasts()) {
    const bool estimable = c.GetByLevels()[0] == 0 || c.GetReference() != 2;
    EXPECT_EQ(c.IsEstimable(), estimable);
    EXPECT_EQ(MCEngineMissing::Is(c.GetAdjustedSig()), !estimable);
  }
  ASSERT_EQ(table.GetSlices().size(), 2u);
  EXPECT_EQ(table.GetSlices()[0].GetNumDF(), 2.0);
  EXPECT_EQ(table.GetSlices()[1].GetByLevels(), std::vector<int>{1});
  EXPECT_EQ(table.GetSlices()[1].GetNumDF(), 1.0);

  // Marginal means of A: the level with an empty cell is not estimable; a
  // covariate held at a value of its own moves every mean by the same amount.
  MCEngineMeansRequest marginal;
  marginal.SetFactors({kA});
  const MCEngineMeansTable atMean = means.Compute(marginal);
  marginal.SetCovariateValue(kX, sx / sw + 1.0);
  const MCEngineMeansTable atValue = means.Compute(marginal);
  EXPECT_NEAR(atValue.GetCovariateValues()[0], sx / sw + 1.0, 1e-12);
  ASSERT_EQ(atMean.GetCells().size(), 3u);
  EXPECT_FALSE(atMean.GetCells()[2].IsEstimable());
  const double shift = atValue.GetCells()[0].GetEstimate() - atMean.GetCells()[0].GetEstimate();
  EXPECT_NE(shift, 0.0);
  EXPECT_NEAR(atValue.GetCells()[1].GetEstimate() - atMean.GetCells()[1].GetEstimate(), shift, 1e-9);
  // At 90% the interval is narrower than at 95%.
  const MCEngineMeansCell& cell = atMean.GetCells()[0];
  const double q = MCEngineProbability::TQuantile(0.95, cell.GetDF());
  EXPECT_TRUE(Rel(cell.GetUpper() - cell.GetEstimate(), q * cell.GetStdError(), 1e-7));
}
