#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "numeric/engine/detail/MCEngineSparseFactor.h"

namespace MCEngine_850 {
namespace {

// A = Z'Z + I for records spread over two crossed factors, by default 600
// records over 90 and 60 levels: with levels drawn at random the factor
// fills in to a dense trailing block, as with crossed random effects.
struct CrossedEquations {
  int n = 0;
  std::map<std::pair<int, int>, double> lower;  // (column, row), row >= column
  std::vector<int> colStart;
  std::vector<int> rowIndex;
  std::vector<double> values;
  // The factor of each column: 0 for the first's levels, 1 for the second's.
  std::vector<int> factorOf;

  explicit CrossedEquations(int levelsA = 90, int levelsB = 60, int records = 600) : n(levelsA + levelsB) {
    std::mt19937 draw(7);
    std::uniform_int_distribution<int> a(0, levelsA - 1), b(0, levelsB - 1);
    for (int j = 0; j < n; ++j) {
      lower[{j, j}] += 1.0;
      factorOf.push_back(j < levelsA ? 0 : 1);
    }
    for (int r = 0; r < records; ++r) {
      const int i = a(draw), j = levelsA + b(draw);
      lower[{i, i}] += 1.0;
      lower[{j, j}] += 1.0;
      lower[{i, j}] += 1.0;
    }
    colStart.assign(static_cast<std::size_t>(n) + 1, 0);
    for (const auto& e : lower) ++colStart[static_cast<std::size_t>(e.first.first) + 1];
    for (int j = 0; j < n; ++j) colStart[static_cast<std::size_t>(j) + 1] += colStart[static_cast<std::size_t>(j)];
    for (const auto& e : lower) {
      rowIndex.push_back(e.first.second);
      values.push_back(e.second);
    }
  }
};

// Column j of A^-1 through the factor's solve, independent of the
// selected inverse's recursion.
std::vector<double> InverseColumn(const MCEngineSparseFactor& factor, int n, int j) {
  std::vector<double> e(static_cast<std::size_t>(n), 0.0);
  e[static_cast<std::size_t>(j)] = 1.0;
  factor.Solve(e.data(), 1);
  return e;
}

double WorstSelectedError(const MCEngineSparseFactor& factor, const CrossedEquations& eq) {
  double worst = 0.0;
  for (int j = 0; j < eq.n; ++j) {
    const std::vector<double> column = InverseColumn(factor, eq.n, j);
    for (int i = j; i < eq.n; ++i) {
      const long at = factor.InversePosition(i, j);
      if (at < 0) continue;
      worst = std::max(worst, std::fabs(factor.InverseAt(at) - column[static_cast<std::size_t>(i)]));
    }
  }
  return worst;
}

// Analysed, factored and its selected inverse computed.
::testing::AssertionResult Factored(MCEngineSparseFactor& factor, const CrossedEquations& eq) {
  if (!factor.Analyze(eq.n, eq.colStart, eq.rowIndex)) return ::testing::AssertionFailure() << "not analysed";
  if (!factor.Factorize(eq.values)) return ::testing::AssertionFailure() << "not factored";
  if (!factor.SelectInverse()) return ::testing::AssertionFailure() << "no selected inverse";
  return ::testing::AssertionSuccess();
}

TEST(MCEngineSparseFactorTest, SelectedInverseEqualsTheSolvedInverseOnTheMatrixPattern) {
  const CrossedEquations eq;
  MCEngineSparseFactor factor;
  ASSERT_TRUE(Factored(factor, eq));
  for (const auto& e : eq.lower) ASSERT_GE(factor.InversePosition(e.first.second, e.first.first), 0);
  EXPECT_LT(WorstSelectedError(factor, eq), 1e-14);
}

TEST(MCEngineSparseFactorTest, ValuesEqualUpToRoundingKeepTheFactorAndOthersRefactor) {
  const CrossedEquations eq;
  MCEngineSparseFactor factor;
  ASSERT_TRUE(Factored(factor, eq));
  const double logDet = factor.LogDet();
  EXPECT_EQ(factor.GetFactorizations(), 1);

  std::vector<double> rounded = eq.values;
  for (double& v : rounded) v *= 1.0 + 4e-16;
  ASSERT_TRUE(factor.Factorize(rounded));
  EXPECT_EQ(factor.GetFactorizations(), 1);
  EXPECT_EQ(factor.LogDet(), logDet);

  std::vector<double> changed = eq.values;
  for (double& v : changed) v *= 1.001;
  ASSERT_TRUE(factor.Factorize(changed));
  EXPECT_EQ(factor.GetFactorizations(), 2);
  // A scaled by c has log determinant n log c more.
  EXPECT_NEAR(factor.LogDet(), logDet + eq.n * std::log(1.001), 1e-10);
  // The selected inverse follows the new factor.
  ASSERT_TRUE(factor.SelectInverse());
  CrossedEquations scaled = eq;
  scaled.values = changed;
  EXPECT_LT(WorstSelectedError(factor, scaled), 1e-14);
}

TEST(MCEngineSparseFactorTest, TheFactorisationGoesThroughTheProgramsOwnDenseKernels) {
  const CrossedEquations eq;
  MCEngineSparseFactor factor;
  ASSERT_TRUE(factor.Analyze(eq.n, eq.colStart, eq.rowIndex));
  const long before = MCEngineSparseFactor::GetKernelCalls();
  ASSERT_TRUE(factor.Factorize(eq.values));
  EXPECT_GT(MCEngineSparseFactor::GetKernelCalls(), before);
}

TEST(MCEngineSparseFactorTest, NoSelectedInverseWithoutAFactor) {
  const CrossedEquations eq;
  MCEngineSparseFactor factor;
  ASSERT_TRUE(factor.Analyze(eq.n, eq.colStart, eq.rowIndex));
  EXPECT_FALSE(factor.SelectInverse());
  std::vector<double> indefinite = eq.values;
  for (double& v : indefinite) v = -v;
  EXPECT_FALSE(factor.Factorize(indefinite));
  EXPECT_FALSE(factor.SelectInverse());
}

// Two crossed factors of 400 levels met by 20,000 records: eliminating the
// first factor's levels before the second's leaves each of them a column of
// the second's levels it meets and the second's levels one dense block,
// where the unconstrained ordering mixes the two.
TEST(MCEngineSparseFactorTest, CrossedFactorsEliminatedInTurnFillLess) {
  const CrossedEquations eq(400, 400, 20000);
  MCEngineSparseFactor free, inTurn;
  ASSERT_TRUE(free.Analyze(eq.n, eq.colStart, eq.rowIndex));
  ASSERT_TRUE(inTurn.Analyze(eq.n, eq.colStart, eq.rowIndex, eq.factorOf));
  // Each column of the first factor: its diagonal and the levels it meets;
  // then at most the whole triangle of the second's.
  const double firstColumns = static_cast<double>(eq.lower.size()) - 400.0;
  EXPECT_LE(inTurn.GetFactorEntries(), firstColumns + 400.0 * 401.0 / 2.0);
  EXPECT_LT(inTurn.GetFactorEntries(), 0.7 * free.GetFactorEntries());
  EXPECT_LT(inTurn.GetFactorFlops(), 0.5 * free.GetFactorFlops());
  ASSERT_TRUE(inTurn.Factorize(eq.values));
  ASSERT_TRUE(inTurn.SelectInverse());
  for (const auto& e : eq.lower) ASSERT_GE(inTurn.InversePosition(e.first.second, e.first.first), 0);
  EXPECT_LT(WorstSelectedError(inTurn, eq), 1e-14);
  ASSERT_TRUE(free.Factorize(eq.values));
  EXPECT_NEAR(inTurn.LogDet(), free.LogDet(), 1e-10 * std::fabs(free.LogDet()));
}

// Where nearly every level of one factor meets every level of the other,
// the constrained ordering leaves one narrow supernode per level of the
// first factor, each below it a column of all the second's levels, and
// the selected inverse would gather the whole dense block once per level:
// the library's own ordering is kept.
TEST(MCEngineSparseFactorTest, FactorsThatAllMeetKeepTheUnconstrainedOrdering) {
  const CrossedEquations eq(60, 60, 20000);
  MCEngineSparseFactor free, inTurn;
  ASSERT_TRUE(free.Analyze(eq.n, eq.colStart, eq.rowIndex));
  ASSERT_TRUE(inTurn.Analyze(eq.n, eq.colStart, eq.rowIndex, eq.factorOf));
  EXPECT_EQ(inTurn.GetFactorEntries(), free.GetFactorEntries());
  EXPECT_EQ(inTurn.GetFactorFlops(), free.GetFactorFlops());
}

// One set, or sets of the wrong length, are no constraint.
TEST(MCEngineSparseFactorTest, OneColumnSetIsTheUnconstrainedOrdering) {
  const CrossedEquations eq(400, 400, 20000);
  MCEngineSparseFactor free, oneSet, wrongLength;
  ASSERT_TRUE(free.Analyze(eq.n, eq.colStart, eq.rowIndex));
  ASSERT_TRUE(oneSet.Analyze(eq.n, eq.colStart, eq.rowIndex, std::vector<int>(static_cast<std::size_t>(eq.n), 0)));
  ASSERT_TRUE(wrongLength.Analyze(eq.n, eq.colStart, eq.rowIndex, std::vector<int>{0, 1}));
  EXPECT_EQ(oneSet.GetFactorEntries(), free.GetFactorEntries());
  EXPECT_EQ(wrongLength.GetFactorEntries(), free.GetFactorEntries());
}

}  // namespace
}  // namespace MCEngine_850
