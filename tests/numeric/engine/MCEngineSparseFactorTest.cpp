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

// A = Z'Z + I for 600 records spread over two crossed factors of 90 and 60
// levels: with levels drawn at random the factor fills in to a dense
// trailing block, as with crossed random effects.
struct CrossedEquations {
  int n = 150;
  std::map<std::pair<int, int>, double> lower;  // (column, row), row >= column
  std::vector<int> colStart;
  std::vector<int> rowIndex;
  std::vector<double> values;

  CrossedEquations() {
    std::mt19937 draw(7);
    std::uniform_int_distribution<int> a(0, 89), b(0, 59);
    for (int j = 0; j < n; ++j) lower[{j, j}] += 1.0;
    for (int r = 0; r < 600; ++r) {
      const int i = a(draw), j = 90 + b(draw);
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

}  // namespace
}  // namespace MCEngine_850
