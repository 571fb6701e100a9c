#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "numeric/engine/detail/MCEngineRelativeIndex.h"

namespace MCEngine_850 {
namespace {

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

// A supernodal layout built here from a symmetric pattern by the plain
// elimination: column j's rows below are A's and those its children pass up,
// and consecutive columns with nested rows share a supernode.
struct Layout {
  std::vector<int> super, pi, px, s;
  int NSuper() const { return static_cast<int>(super.size()) - 1; }
  int NRowsBelow(int k) const { return pi[U(k) + 1] - pi[U(k)] - (super[U(k) + 1] - super[U(k)]); }
  const int* Below(int k) const { return &s[U(pi[U(k)] + super[U(k) + 1] - super[U(k)])]; }

  // Where (row, col), row >= col, lies: a search of the column's row list.
  long SearchedPosition(int row, int col) const {
    const int a = static_cast<int>(std::upper_bound(super.begin(), super.end(), col) - super.begin()) - 1;
    const int jj = col - super[U(a)];
    const int* first = &s[U(pi[U(a)] + jj)];
    const int* last = &s[U(pi[U(a) + 1] - 1)] + 1;
    const int* at = std::lower_bound(first, last, row);
    if (at == last || *at != row) return -1;
    return px[U(a)] + static_cast<long>(jj) * (pi[U(a) + 1] - pi[U(a)]) + (at - &s[U(pi[U(a)])]);
  }
};

Layout Eliminate(const std::vector<std::set<int>>& lowerRows, int maxWidth) {
  const int n = static_cast<int>(lowerRows.size());
  std::vector<std::set<int>> rows(lowerRows);
  for (int j = 0; j < n; ++j) {
    if (rows[U(j)].empty()) continue;
    const int parent = *rows[U(j)].begin();
    for (int r : rows[U(j)]) {
      if (r != parent) rows[U(parent)].insert(r);
    }
  }
  Layout out;
  out.super.push_back(0);
  for (int j = 1; j <= n; ++j) {
    const int first = out.super.back();
    const bool nested = j < n && j - first < maxWidth && !rows[U(j - 1)].empty() &&
                        *rows[U(j - 1)].begin() == j && rows[U(j - 1)].size() == rows[U(j)].size() + 1;
    if (!nested) out.super.push_back(j);
  }
  out.pi.push_back(0);
  out.px.push_back(0);
  for (int k = 0; k + 1 < static_cast<int>(out.super.size()); ++k) {
    const int first = out.super[U(k)], end = out.super[U(k) + 1];
    for (int j = first; j < end; ++j) out.s.push_back(j);
    for (int r : rows[U(first)]) {
      if (r >= end) out.s.push_back(r);
    }
    const int nrow = static_cast<int>(out.s.size()) - out.pi.back();
    out.px.push_back(out.px.back() + nrow * (end - first));
    out.pi.push_back(static_cast<int>(out.s.size()));
  }
  return out;
}

// A random pattern over n columns, each entry below the diagonal present
// with the given chance; blocks > 1 splits it into unconnected diagonal
// blocks, whose last supernodes have no rows below them.
std::vector<std::set<int>> RandomPattern(int n, double chance, int blocks, unsigned seed) {
  std::mt19937 draw(seed);
  std::bernoulli_distribution present(chance);
  std::vector<std::set<int>> rows(U(n));
  const int width = (n + blocks - 1) / blocks;
  for (int j = 0; j < n; ++j) {
    for (int i = j + 1; i < n && i / width == j / width; ++i) {
      if (present(draw)) rows[U(j)].insert(i);
    }
  }
  return rows;
}

// Every position and the gathered values agree with the search.
void ExpectAgreesWithSearch(const Layout& layout, long maxKept) {
  MCEngineRelativeIndex index;
  ASSERT_TRUE(index.Build(layout.NSuper(), layout.super.data(), layout.pi.data(), layout.px.data(), layout.s.data(),
                          maxKept));
  std::vector<double> values(U(layout.px.back()));
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = 0.5 + static_cast<double>(i);
  for (int k = 0; k < layout.NSuper(); ++k) {
    const int ns = layout.NRowsBelow(k);
    ASSERT_EQ(index.GetNRowsBelow(k), ns);
    const int* below = layout.Below(k);
    std::vector<double> zss(U(static_cast<long>(ns) * ns), -1.0);
    index.Gather(k, values.data(), zss.data());
    for (int b = 0; b < ns; ++b) {
      for (int t = b; t < ns; ++t) {
        const long searched = layout.SearchedPosition(below[t], below[b]);
        ASSERT_GE(searched, 0);
        ASSERT_EQ(index.Position(k, b, t), searched) << "supernode " << k << " (" << t << ", " << b << ")";
        ASSERT_EQ(zss[U(static_cast<long>(b) * ns + t)], values[U(searched)]);
      }
    }
  }
}

TEST(MCEngineRelativeIndexTest, PositionsAgreeWithTheSearchOnRandomPatterns) {
  for (unsigned seed = 1; seed <= 6; ++seed) {
    for (double chance : {0.02, 0.08, 0.3}) {
      for (int width : {1, 4, 64}) {
        SCOPED_TRACE(testing::Message() << "seed " << seed << " chance " << chance << " width " << width);
        const Layout layout = Eliminate(RandomPattern(80, chance, 1, seed), width);
        ExpectAgreesWithSearch(layout, 1L << 30);
        ExpectAgreesWithSearch(layout, 0);
      }
    }
  }
}

TEST(MCEngineRelativeIndexTest, SupernodesWithoutRowsBelowThemGatherNothing) {
  const Layout layout = Eliminate(RandomPattern(90, 0.2, 5, 11), 8);
  int roots = 0;
  for (int k = 0; k < layout.NSuper(); ++k) roots += layout.NRowsBelow(k) == 0 ? 1 : 0;
  EXPECT_GE(roots, 5);
  ExpectAgreesWithSearch(layout, 1L << 30);

  // A diagonal matrix: every supernode a root.
  const Layout diagonal = Eliminate(std::vector<std::set<int>>(12), 4);
  EXPECT_EQ(diagonal.NSuper(), 12);
  ExpectAgreesWithSearch(diagonal, 1L << 30);
}

TEST(MCEngineRelativeIndexTest, ADenseMatrixIsOneSupernodeWithNothingBelow) {
  const Layout layout = Eliminate(RandomPattern(30, 1.0, 1, 3), 1000);
  ASSERT_EQ(layout.NSuper(), 1);
  MCEngineRelativeIndex index;
  ASSERT_TRUE(index.Build(1, layout.super.data(), layout.pi.data(), layout.px.data(), layout.s.data(), 1L << 30));
  EXPECT_EQ(index.GetNRowsBelow(0), 0);
  EXPECT_EQ(index.GetKept(), 0);
}

TEST(MCEngineRelativeIndexTest, PositionsAreKeptOnlyWithinTheLimit) {
  const Layout layout = Eliminate(RandomPattern(80, 0.08, 1, 5), 4);
  MCEngineRelativeIndex index;
  ASSERT_TRUE(index.Build(layout.NSuper(), layout.super.data(), layout.pi.data(), layout.px.data(), layout.s.data(),
                          1L << 30));
  const long kept = index.GetKept();
  EXPECT_GT(kept, 0);
  ASSERT_TRUE(index.Build(layout.NSuper(), layout.super.data(), layout.pi.data(), layout.px.data(), layout.s.data(),
                          kept - 1));
  EXPECT_EQ(index.GetKept(), 0);
}

TEST(MCEngineRelativeIndexTest, ARowMissingFromItsAncestorsListIsRefused) {
  Layout layout = Eliminate(RandomPattern(60, 0.1, 1, 9), 1);
  // A supernode with two rows below: drop the later one from the first's
  // column, which still holds it in its own list.
  int k = 0;
  while (k < layout.NSuper() && layout.NRowsBelow(k) < 2) ++k;
  ASSERT_LT(k, layout.NSuper());
  const int* below = layout.Below(k);
  const int col = below[0];
  const int a = static_cast<int>(std::upper_bound(layout.super.begin(), layout.super.end(), col) - layout.super.begin()) - 1;
  auto first = layout.s.begin() + layout.pi[U(a)];
  auto last = layout.s.begin() + layout.pi[U(a) + 1];
  auto at = std::find(first, last, below[1]);
  ASSERT_NE(at, last);
  *at = below[1] - 1 > col ? below[1] - 1 : -1;
  if (*at < 0) *at = *(at - 1);
  MCEngineRelativeIndex index;
  EXPECT_FALSE(index.Build(layout.NSuper(), layout.super.data(), layout.pi.data(), layout.px.data(), layout.s.data(),
                           1L << 30));
}

}  // namespace
}  // namespace MCEngine_850
