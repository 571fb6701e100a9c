// Eigen-decompositions of symmetric matrices whose eigenvalues are known by
// construction: A = Q diag(w) Q' with Q = I - 2 v v' / v'v, over few rows
// (the QR iterations) and over many (the relatively robust representations).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "numeric/engine/detail/MCEngineSymmetricEigen.h"

namespace MCEngine_850 {
namespace {

struct Known {
  int n;
  std::vector<double> a;       // n x n, column by column
  std::vector<double> values;  // ascending
};

// Eigenvalues w_i = (i - n/3) / 7 (distinct, some negative) rotated by a
// Householder reflection of v_i = 1 + (i mod 5).
Known Build(int n) {
  Known k{n, std::vector<double>(static_cast<std::size_t>(n) * n), {}};
  std::vector<double> v(static_cast<std::size_t>(n)), w(static_cast<std::size_t>(n));
  double vv = 0.0;
  for (int i = 0; i < n; ++i) {
    v[static_cast<std::size_t>(i)] = 1.0 + i % 5;
    vv += v[static_cast<std::size_t>(i)] * v[static_cast<std::size_t>(i)];
    w[static_cast<std::size_t>(i)] = (i - n / 3.0) / 7.0;
  }
  auto q = [&](int r, int c) { return (r == c ? 1.0 : 0.0) - 2.0 * v[static_cast<std::size_t>(r)] * v[static_cast<std::size_t>(c)] / vv; };
  for (int c = 0; c < n; ++c) {
    for (int r = 0; r < n; ++r) {
      double s = 0.0;
      for (int m = 0; m < n; ++m) s += q(r, m) * w[static_cast<std::size_t>(m)] * q(c, m);
      k.a[static_cast<std::size_t>(c) * n + r] = s;
    }
  }
  k.values = w;
  std::sort(k.values.begin(), k.values.end());
  return k;
}

void ExpectDecomposition(int n) {
  const Known k = Build(n);
  std::vector<double> values(static_cast<std::size_t>(n)), vectors(static_cast<std::size_t>(n) * n);
  const long before = MCEngineSymmetricEigen::GetDecompositions();
  MCEngineSymmetricEigen::Decompose(k.a.data(), n, values.data(), vectors.data());
  EXPECT_EQ(MCEngineSymmetricEigen::GetDecompositions() - before, 1);
  const double largest = std::fabs(k.values.front()) > std::fabs(k.values.back()) ? std::fabs(k.values.front()) : std::fabs(k.values.back());
  for (int i = 0; i < n; ++i) {
    ASSERT_NEAR(values[static_cast<std::size_t>(i)], k.values[static_cast<std::size_t>(i)], 1e-12 * largest) << i;
  }
  auto vec = [&](int r, int c) { return vectors[static_cast<std::size_t>(c) * n + r]; };
  for (int c = 0; c < n; ++c) {
    // A x = w x, and the vectors orthonormal.
    for (int r = 0; r < n; ++r) {
      double ax = 0.0;
      for (int m = 0; m < n; ++m) ax += k.a[static_cast<std::size_t>(m) * n + r] * vec(m, c);
      ASSERT_NEAR(ax, values[static_cast<std::size_t>(c)] * vec(r, c), 1e-11 * largest) << r << "," << c;
    }
    for (int d = c; d < n; ++d) {
      double dot = 0.0;
      for (int m = 0; m < n; ++m) dot += vec(m, c) * vec(m, d);
      ASSERT_NEAR(dot, c == d ? 1.0 : 0.0, 1e-11) << c << "," << d;
    }
  }
}

TEST(MCEngineSymmetricEigen, FewRowsByTheQRIterations) { ExpectDecomposition(40); }

TEST(MCEngineSymmetricEigen, ManyRowsByRelativelyRobustRepresentations) { ExpectDecomposition(260); }

}  // namespace
}  // namespace MCEngine_850
