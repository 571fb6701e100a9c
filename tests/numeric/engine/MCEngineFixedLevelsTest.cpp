// A fixed factor of many levels beside a random intercept: each group of
// records reaches only the levels it holds, so the group-by-group products
// over the fixed columns cost what the records hold rather than the square
// of all columns, and the fit is the one the mixed-model equations give.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/engine/MCEngineEmmeans.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineTestCopies.h"
#include "numeric/engine/MCEngineTestDraws.h"
#include "numeric/engine/MCEngineTestFixture.h"
#include "numeric/engine/detail/MCEngineSymmetricEigen.h"

using namespace MCEngine_850;

namespace {

constexpr int kLevels = 300;
constexpr int kSubjects = 30;
constexpr int kRecords = 3 * kLevels;

// y = 10 + a_f + b_g + e over 3 records a level; record r at level
// r mod levels and subject (7 r + r / levels) mod nSubjects, so that a subject
// holds about 3 levels / nSubjects records, each at a level of its own.
// Without the intercept the factor's columns are all the design.
MCEngineInput ManyLevels(int levels, int nSubjects, bool intercept = true) {
  const int records = 3 * levels;
  MCEngineTestDraws draws(4242u);
  std::vector<double> a(static_cast<std::size_t>(levels)), b(static_cast<std::size_t>(nSubjects));
  for (double& v : a) v = draws.Normal();
  for (double& v : b) v = 0.8 * draws.Normal();
  std::vector<double> y, X(static_cast<std::size_t>(records) * (levels + 1), 0.0);
  std::vector<int> subjects;
  for (int r = 0; r < records; ++r) {
    const int level = r % levels, subject = (7 * r + r / levels) % nSubjects;
    y.push_back(10.0 + a[static_cast<std::size_t>(level)] + b[static_cast<std::size_t>(subject)] + draws.Normal());
    X[static_cast<std::size_t>(r) * (levels + 1)] = 1.0;
    X[static_cast<std::size_t>(r) * (levels + 1) + 1 + static_cast<std::size_t>(level)] = 1.0;
    subjects.push_back(subject);
  }
  MCEngineInput in;
  in.SetY(y);
  if (intercept) {
    in.SetX(levels + 1, X);
    in.AddTerm(MCEngineTerm::Intercept(0));
    in.AddTerm(MCEngineTerm(1, levels, {0}, {}));
  } else {
    std::vector<double> factorOnly;
    for (int r = 0; r < records; ++r) {
      const auto row = X.begin() + static_cast<std::ptrdiff_t>(r) * (levels + 1);
      factorOnly.insert(factorOnly.end(), row + 1, row + levels + 1);
    }
    in.SetX(levels, factorOnly);
    in.AddTerm(MCEngineTerm(0, levels, {0}, {}));
  }
  MCEngineRandomBlock block;
  block.SetCovType(MCEngineCovType::VC);
  block.SetDenseColumns(1, std::vector<double>(y.size(), 1.0));
  block.SetSubjects(subjects);
  in.AddRandomBlock(block);
  return in;
}

// The fit group by group equals the fit on the other path to tol.
void ExpectGroupByGroupFitsAs(const MCEngineInput& in, MCEngineSettings::SolverPath other, double tol) {
  MCEngineFitter bySubject, equations;
  ASSERT_FALSE(bySubject.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  ASSERT_FALSE(equations.Fit(in, MCEngineTestFixture::Tight(true, other)).IsError());
  EXPECT_EQ(bySubject.GetResult().GetSolverPath(), MCEngineSettings::kBySubject);
  EXPECT_EQ(equations.GetResult().GetSolverPath(), other);
  MCEngineTestCopies::ExpectSameFit(bySubject.GetResult(), equations.GetResult(), tol);
  EXPECT_EQ(bySubject.GetResult().GetTypeIIITests().size(), 2u);
}

TEST(MCEngineFixedLevels, GroupProductsGrowWithTheLevelsAGroupHolds) {
  const MCEngineInput in = ManyLevels(kLevels, kSubjects);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject)).IsError());
  const MCEngineResult& r = fitter.GetResult();
  EXPECT_EQ(r.GetSolverPath(), MCEngineSettings::kBySubject);
  EXPECT_EQ(r.GetRankX(), kLevels);
  // A subject holds 30 records, so at most 30 levels and the intercept: the
  // products over all 301 columns and the response would be 900 * 302^2.
  const double perSubject = kRecords / kSubjects;
  EXPECT_LE(r.GetGroupProductEntries(), kRecords * (perSubject + 2.0) * (perSubject + 2.0));
  EXPECT_GT(r.GetGroupProductEntries(), 0.0);
  // With the factor the only term after the intercept, its Type III test is
  // its Type I test, which comes from the forward Doolittle rows instead.
  ASSERT_EQ(r.GetTypeIIITests().size(), 2u);
  ASSERT_EQ(r.GetTypeITests().size(), 2u);
  EXPECT_DOUBLE_EQ(r.GetTypeIIITests()[1].GetNumDF(), kLevels - 1.0);
  EXPECT_NEAR(r.GetTypeIIITests()[1].GetF(), r.GetTypeITests()[1].GetF(), 1e-8 * r.GetTypeITests()[1].GetF());
}

// The Type I rows of a factor of many levels come from the Cholesky factor
// of X'X rather than from elimination row by row: each is still the
// forward Doolittle row of its column, 1 on its pivot and 0 left of it,
// and its test the Type III test (same hypothesis, other rows).
TEST(MCEngineFixedLevels, TypeIRowsOfManyLevelsAreDoolittleRows) {
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(ManyLevels(kLevels, kSubjects), MCEngineTestFixture::Tight(true)).IsError());
  const MCEngineResult& r = fitter.GetResult();
  ASSERT_EQ(r.GetTypeITests().size(), 2u);
  const std::vector<std::vector<double>>& L = r.GetTypeITests()[1].GetL();
  ASSERT_EQ(L.size(), static_cast<std::size_t>(kLevels - 1));
  // The factor's columns 1..levels, the last aliased with the intercept.
  for (std::size_t i = 0; i < L.size(); ++i) {
    const std::size_t pivot = i + 1;
    ASSERT_EQ(L[i].size(), static_cast<std::size_t>(kLevels + 1));
    EXPECT_NEAR(L[i][pivot], 1.0, 1e-12) << i;
    for (std::size_t j = 0; j < pivot; ++j) ASSERT_EQ(L[i][j], 0.0) << i << "," << j;
  }
  EXPECT_NEAR(r.GetTypeITests()[1].GetF(), r.GetTypeIIITests()[1].GetF(), 1e-8 * r.GetTypeIIITests()[1].GetF());
}

TEST(MCEngineFixedLevels, TypeIAndTypeIIIOfTheOneFactorShareTheirDecomposition) {
  // Without an intercept the Type I rows of the one factor (forward
  // Doolittle on a diagonal X'X) and its Type III rows (the Hermite form)
  // are both the identity: one eigen-decomposition of L C L' serves both.
  const MCEngineInput in = ManyLevels(kLevels, kSubjects, false);
  MCEngineFitter fitter;
  const long before = MCEngineSymmetricEigen::GetDecompositions();
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true)).IsError());
  EXPECT_EQ(MCEngineSymmetricEigen::GetDecompositions() - before, 1);
  const MCEngineResult& r = fitter.GetResult();
  ASSERT_EQ(r.GetTypeITests().size(), 1u);
  ASSERT_EQ(r.GetTypeIIITests().size(), 1u);
  const MCEngineTest& typeI = r.GetTypeITests()[0];
  const MCEngineTest& typeIII = r.GetTypeIIITests()[0];
  ASSERT_TRUE(typeIII.IsValid());
  EXPECT_DOUBLE_EQ(typeIII.GetNumDF(), kLevels);
  EXPECT_EQ(typeI.GetF(), typeIII.GetF());
  EXPECT_EQ(typeI.GetDenDF(), typeIII.GetDenDF());
  // The shared result is the test taken apart: twice the identity's rows
  // state the same hypothesis with the same F and df (both scale out), and
  // are not the last test's rows, so they take a decomposition of their own.
  std::vector<std::vector<double>> twice(kLevels, std::vector<double>(kLevels, 0.0));
  for (int j = 0; j < kLevels; ++j) twice[static_cast<std::size_t>(j)][static_cast<std::size_t>(j)] = 2.0;
  const MCEngineTest apart = fitter.TestContrast(twice, std::vector<double>(kLevels, 0.0));
  EXPECT_EQ(MCEngineSymmetricEigen::GetDecompositions() - before, 2);
  EXPECT_NEAR(apart.GetF(), typeIII.GetF(), 1e-10 * typeIII.GetF());
  EXPECT_NEAR(apart.GetDenDF(), typeIII.GetDenDF(), 1e-8 * typeIII.GetDenDF());
  // With the intercept the Type I rows are not the Type III rows (e_j less
  // the later levels' weights against e_j - e_last): each test decomposes
  // its own.
  const long withIntercept = MCEngineSymmetricEigen::GetDecompositions();
  MCEngineFitter second;
  ASSERT_FALSE(second.Fit(ManyLevels(kLevels, kSubjects), MCEngineTestFixture::Tight(true)).IsError());
  EXPECT_EQ(MCEngineSymmetricEigen::GetDecompositions() - withIntercept, 2);
}

TEST(MCEngineFixedLevels, MeansOfManyLevelsTakeTheirTestsTogether) {
  constexpr int kFactor = 5;
  const MCEngineInput in = ManyLevels(kLevels, kSubjects);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true)).IsError());
  std::vector<MCEngineMeansColumn> columns = {MCEngineMeansColumn()};
  for (int j = 0; j < kLevels; ++j) columns.push_back(MCEngineMeansColumn({kFactor}, {j}, {}));
  const MCEngineEmmeans means(fitter, in, columns, 95.0);
  MCEngineMeansRequest request;
  request.SetFactors({kFactor});
  request.SetCompareFactor(kFactor);
  request.SetContrast(MCEngineMeansRequest::kSimple);
  const long before = fitter.GetCovarianceProducts();
  const MCEngineMeansTable table = means.Compute(request);
  // The 300 means, the 299 contrasts and the joint test: one product each
  // for the means, for the contrasts and for the joint test, where testing
  // them one by one would take 600.
  EXPECT_LE(fitter.GetCovarianceProducts() - before, 3);
  ASSERT_EQ(table.GetCells().size(), static_cast<std::size_t>(kLevels));
  ASSERT_EQ(table.GetContrasts().size(), static_cast<std::size_t>(kLevels - 1));
  // Each mean against the same row tested twice over, a test of two rows of
  // rank one, which goes through the eigen-directions of L C L' instead:
  // the same F (the squared t) and the same df.
  for (int j : {0, kLevels / 2, kLevels - 1}) {
    std::vector<double> l(static_cast<std::size_t>(kLevels + 1), 0.0);
    l[0] = 1.0;
    l[static_cast<std::size_t>(j + 1)] = 1.0;
    const MCEngineTest twice = fitter.TestContrast({l, l});
    ASSERT_TRUE(twice.IsValid());
    EXPECT_DOUBLE_EQ(twice.GetNumDF(), 1.0);
    const MCEngineMeansCell& cell = table.GetCells()[static_cast<std::size_t>(j)];
    ASSERT_TRUE(cell.IsEstimable());
    const double t = cell.GetEstimate() / cell.GetStdError();
    EXPECT_NEAR(t * t, twice.GetF(), 1e-8 * twice.GetF());
    EXPECT_NEAR(cell.GetDF(), twice.GetDenDF(), 1e-8 * twice.GetDenDF());
  }
}

TEST(MCEngineFixedLevels, PredictionsAreSetUpOverTheLevelsAGroupHolds) {
  constexpr int kFactor = 5;
  const MCEngineInput in = ManyLevels(kLevels, kSubjects);
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(true)).IsError());
  MCEnginePredictor predictor;
  ASSERT_TRUE(predictor.Setup(fitter, in));
  // A subject's group: one random column and W = [Z X y] over at most its
  // 30 levels, the intercept and the response, so q^3 + q nw^2 is at most
  // 1 + 33^2; over all 301 fixed columns it would be 1 + 303^2 a group.
  const double perSubject = kRecords / kSubjects;
  EXPECT_LE(predictor.GetSetupWork(), kSubjects * (1.0 + (perSubject + 3.0) * (perSubject + 3.0)));
  EXPECT_GT(predictor.GetSetupWork(), 0.0);
  // The fixed part of a prediction against the fit's own mean of the level,
  // which comes from the fit's X'V^-1 X and its derivatives rather than
  // from the set-up's products: the same estimate, error and df.
  std::vector<MCEngineMeansColumn> columns = {MCEngineMeansColumn()};
  for (int j = 0; j < kLevels; ++j) columns.push_back(MCEngineMeansColumn({kFactor}, {j}, {}));
  const MCEngineEmmeans means(fitter, in, columns, 95.0);
  MCEngineMeansRequest request;
  request.SetFactors({kFactor});
  const MCEngineMeansTable table = means.Compute(request);
  ASSERT_EQ(table.GetCells().size(), static_cast<std::size_t>(kLevels));
  for (int j : {0, 7, kLevels / 2, kLevels - 1}) {
    SCOPED_TRACE(j);
    std::vector<double> x(static_cast<std::size_t>(kLevels + 1), 0.0);
    x[0] = 1.0;
    x[static_cast<std::size_t>(j + 1)] = 1.0;
    const MCEnginePrediction fixedPart = predictor.Predict(x, {});
    const MCEngineMeansCell& cell = table.GetCells()[static_cast<std::size_t>(j)];
    ASSERT_TRUE(cell.IsEstimable());
    EXPECT_NEAR(fixedPart.GetEstimate(), cell.GetEstimate(), 1e-8 * std::fabs(cell.GetEstimate()));
    EXPECT_NEAR(fixedPart.GetStdError(), cell.GetStdError(), 1e-8 * cell.GetStdError());
    EXPECT_NEAR(fixedPart.GetDF(), cell.GetDF(), 1e-6 * cell.GetDF());
  }
}

TEST(MCEngineFixedLevels, DegreesOfFreedomCostTheEntriesLevelsShare) {
  // 100 subjects of 9 records: a subject holds at most 9 levels.
  constexpr int kManySubjects = 100;
  const MCEngineInput in = ManyLevels(kLevels, kManySubjects);
  MCEngineFitter bySubject, equations;
  ASSERT_FALSE(bySubject.Fit(in, MCEngineTestFixture::Tight(true)).IsError());
  ASSERT_EQ(bySubject.GetResult().GetSolverPath(), MCEngineSettings::kBySubject);
  ASSERT_EQ(bySubject.GetResult().GetNCovParamsFree(), 2);
  // Each A_k = X'V^-1 V_k V^-1 X joins only levels a subject holds together
  // (and the intercept): at most 100 * 10^2 entries of 301^2. The df of the
  // 301 estimates and of the Type I and Type III tests' 299 rows each take
  // one pass over every A_k's entries; over dense matrices they would take
  // 899 * 2 * 301^2, some 1.6e8.
  const double perSubject = kRecords / kManySubjects;
  const double entries = kManySubjects * (perSubject + 1.0) * (perSubject + 1.0);
  const double rows = (kLevels + 1.0) + 2.0 * (kLevels - 1.0);
  EXPECT_LE(bySubject.GetDerivativeWork(), rows * 2.0 * entries);
  EXPECT_GT(bySubject.GetDerivativeWork(), 0.0);
  // The same fit and statistics through the dense mixed-model equations,
  // whose evaluations form C A_k densely rather than over A_k's entries. An
  // estimate near 0 (0.001, against standard errors near 1) differs in its
  // 11th digit between the two optima, a relative 1e-8.
  ASSERT_FALSE(equations.Fit(in, MCEngineTestFixture::Tight(true, MCEngineSettings::kMixedModelEquations)).IsError());
  MCEngineTestCopies::ExpectSameFit(bySubject.GetResult(), equations.GetResult(), 1e-7);
}

TEST(MCEngineFixedLevels, GroupByGroupEqualsTheMixedModelEquations) {
  // Small enough for the dense equations.
  ExpectGroupByGroupFitsAs(ManyLevels(60, 10), MCEngineSettings::kMixedModelEquations, 1e-8);
}

// Over more than 200 fixed columns the group-by-group path factors and
// inverts X'V^-1 X by the blocked kernels and multiplies the derivative
// products through their entries: still the fit of the sparse mixed-model
// equations, which take the fixed part as its own dense complement.
TEST(MCEngineFixedLevels, GroupByGroupOverManyColumnsEqualsTheSparseEquations) {
  ExpectGroupByGroupFitsAs(ManyLevels(250, 10), MCEngineSettings::kSparseEquations, 1e-8);
}

}  // namespace

namespace {

// A factor of many levels beside a random intercept and slope (UN) and a
// random AR(1) block over three periods within each subject, with scale
// weights: the random columns of all subjects (5 a subject) are few beside
// the fixed ones, so the optimiser's steps keep the groups' products as
// factors; the AR(1) correlation brings second derivatives.
MCEngineInput LevelsWithSlopes(int levels, int nSubjects) {
  const int records = 3 * levels;
  MCEngineTestDraws draws(977u);
  std::vector<double> a(static_cast<std::size_t>(levels)), b(static_cast<std::size_t>(2 * nSubjects)),
      c(static_cast<std::size_t>(3 * nSubjects));
  for (double& v : a) v = draws.Normal();
  for (double& v : b) v = 0.7 * draws.Normal();
  // Each subject's three periods: AR(1) with correlation 0.5, variance 0.5.
  for (std::size_t s = 0; s < static_cast<std::size_t>(nSubjects); ++s) {
    c[3 * s] = std::sqrt(0.5) * draws.Normal();
    for (std::size_t j = 1; j < 3; ++j) c[3 * s + j] = 0.5 * c[3 * s + j - 1] + std::sqrt(0.5 * 0.75) * draws.Normal();
  }
  std::vector<double> y, w, X(static_cast<std::size_t>(records) * (levels + 1), 0.0), Z1, Z2;
  std::vector<int> subjects;
  for (int r = 0; r < records; ++r) {
    const int level = r % levels, subject = (7 * r + r / levels) % nSubjects, period = r % 3;
    const double x = draws.Uniform(), weight = 0.5 + 1.5 * draws.Uniform();
    const std::size_t si = static_cast<std::size_t>(subject);
    y.push_back(10.0 + a[static_cast<std::size_t>(level)] + b[2 * si] + b[2 * si + 1] * x +
                c[3 * si + static_cast<std::size_t>(period)] + draws.Normal() / std::sqrt(weight));
    w.push_back(weight);
    X[static_cast<std::size_t>(r) * (levels + 1)] = 1.0;
    X[static_cast<std::size_t>(r) * (levels + 1) + 1 + static_cast<std::size_t>(level)] = 1.0;
    Z1.insert(Z1.end(), {1.0, x});
    for (int j = 0; j < 3; ++j) Z2.push_back(j == period ? 1.0 : 0.0);
    subjects.push_back(subject);
  }
  MCEngineInput in;
  in.SetY(y);
  in.SetScaleWeights(w);
  in.SetX(levels + 1, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, levels, {0}, {}));
  MCEngineRandomBlock slopes;
  slopes.SetCovType(MCEngineCovType::UN);
  slopes.SetDenseColumns(2, Z1);
  slopes.SetSubjects(subjects);
  in.AddRandomBlock(slopes);
  MCEngineRandomBlock periods;
  periods.SetCovType(MCEngineCovType::AR1);
  periods.SetDenseColumns(3, Z2);
  periods.SetSubjects(subjects);
  in.AddRandomBlock(periods);
  return in;
}

// Equal to 1e-9 of the largest entry, or of `scale` where that is larger
// (a gradient at the estimates is rounding noise about zero).
void ExpectSameNumbers(const std::vector<double>& byFactors, const std::vector<double>& full, const char* what,
                       double scale = 0.0) {
  ASSERT_EQ(byFactors.size(), full.size()) << what;
  double largest = scale;
  for (double v : full) largest = std::max(largest, std::fabs(v));
  for (std::size_t i = 0; i < full.size(); ++i) EXPECT_NEAR(byFactors[i], full[i], 1e-9 * largest) << what << " " << i;
}

}  // namespace

// The optimiser's steps take the derivatives from the groups' low-rank
// factors and never form (X'V^-1 X)^-1: the gradient and both Hessians
// are those of the evaluation that forms it, at the estimates and away
// from them (where the gradient is far from zero).
TEST(MCEngineFixedLevels, StepsFromTheGroupsFactorsEqualTheFullEvaluation) {
  const MCEngineInput in = LevelsWithSlopes(240, 12);
  for (const bool reml : {true, false}) {
    MCEngineFitter fitter;
    ASSERT_FALSE(fitter.Fit(in, MCEngineTestFixture::Tight(reml, MCEngineSettings::kBySubject)).IsError());
    EXPECT_EQ(fitter.GetResult().GetSolverPath(), MCEngineSettings::kBySubject);
    EXPECT_GT(fitter.GetStepsByFactors(), 0);
    std::vector<double> theta;
    for (const MCEngineCovParam& cp : fitter.GetResult().GetCovParams()) theta.push_back(cp.GetEstimate());
    ASSERT_EQ(theta.size(), 6u) << reml;  // UN 3, AR(1) 2, residual 1
    std::vector<double> away = theta;
    for (double& v : away) v *= 0.7;
    for (const std::vector<double>& at : {theta, away}) {
      double f1 = 0.0, f2 = 0.0;
      std::vector<double> g1, g2, h1, h2, e1, e2;
      const int before = fitter.GetStepsByFactors();
      ASSERT_TRUE(fitter.EvaluateAt(at, f1, g1, h1, e1, true));
      EXPECT_EQ(fitter.GetStepsByFactors(), before + 1);
      ASSERT_TRUE(fitter.EvaluateAt(at, f2, g2, h2, e2));
      EXPECT_EQ(fitter.GetStepsByFactors(), before + 1);
      EXPECT_EQ(f1, f2);
      // Its terms, tr(P V_k) and y'P V_k P y, are of the order of the records.
      ExpectSameNumbers(g1, g2, "gradient", static_cast<double>(in.GetY().size()));
      ExpectSameNumbers(h1, h2, "observed Hessian");
      ExpectSameNumbers(e1, e2, "expected Hessian");
    }
  }
}

// Random columns of all groups not few beside the fixed ones: the steps
// keep the products over all fixed columns.
TEST(MCEngineFixedLevels, ManyRandomColumnsKeepTheProductsOverTheFixedColumns) {
  MCEngineFitter fitter;
  ASSERT_FALSE(fitter.Fit(LevelsWithSlopes(240, 80), MCEngineTestFixture::Tight(true, MCEngineSettings::kBySubject))
                   .IsError());
  EXPECT_EQ(fitter.GetStepsByFactors(), 0);
}
