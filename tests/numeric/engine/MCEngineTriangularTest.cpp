#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <random>
#include <tuple>
#include <vector>

#include "numeric/engine/detail/MCEngineGemm.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

namespace MCEngine_850 {
namespace {

constexpr double kAbove = 7.0;

// A well-conditioned lower triangle of order n in a block of leading
// dimension ld, with a marker above the diagonal and below the triangle's
// rows that the kernels must neither read nor write.
struct Triangle {
  int n;
  int ld;
  std::vector<double> v;
  Triangle(int order, int lead) : n(order), ld(lead), v(static_cast<std::size_t>(lead) * order, kAbove) {
    std::mt19937 draw(static_cast<unsigned>(order));
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int c = 0; c < n; ++c) {
      at(c, c) = 2.0 + std::fabs(unit(draw));
      for (int r = c + 1; r < n; ++r) at(r, c) = unit(draw) / std::sqrt(static_cast<double>(n));
    }
  }
  double& at(int r, int c) { return v[static_cast<std::size_t>(c) * ld + r]; }
  double get(int r, int c) const { return r < c ? 0.0 : v[static_cast<std::size_t>(c) * ld + r]; }
};

void ExpectMarkersKept(const Triangle& t) {
  for (int c = 0; c < t.n; ++c) {
    for (int r = 0; r < t.ld; ++r) {
      if (r < c || r >= t.n) {
        ASSERT_EQ(t.v[static_cast<std::size_t>(c) * t.ld + r], kAbove) << r << "," << c;
      }
    }
  }
}

// The largest |error(i, j)| over the square of order n, or its lower
// triangle.
template <typename Error>
double Worst(int n, bool lowerOnly, Error error) {
  double worst = 0.0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j <= (lowerOnly ? i : n - 1); ++j) worst = std::max(worst, std::fabs(error(i, j)));
  }
  return worst;
}

using Kernel = void (*)(double*, int, int);

// A copy of the triangle after the kernels, its markers checked.
Triangle After(const Triangle& d, std::initializer_list<Kernel> kernels) {
  Triangle x = d;
  for (Kernel kernel : kernels) kernel(x.v.data(), x.n, x.ld);
  ExpectMarkersKept(x);
  return x;
}

// An order, and whether the portable products are forced in place of the
// blocked product.
class MCEngineTriangularTest : public ::testing::TestWithParam<std::tuple<int, bool>> {
 protected:
  void SetUp() override { MCEngineGemm::SetPortable(std::get<1>(GetParam())); }
  void TearDown() override { MCEngineGemm::SetPortable(false); }
  static int Order() { return std::get<0>(GetParam()); }
};

// Orders below, at and above the size done directly, and odd splits.
INSTANTIATE_TEST_SUITE_P(Orders, MCEngineTriangularTest,
                         ::testing::Combine(::testing::Values(1, 2, 7, 48, 49, 97, 130, 301),
                                            ::testing::Bool()));

TEST_P(MCEngineTriangularTest, InvertsTheLowerTriangle) {
  const Triangle d(Order(), Order() + 3);
  const Triangle x = After(d, {&MCEngineTriangular::InvertLower});
  EXPECT_LT(Worst(d.n, false,
                  [&](int i, int j) {
                    double sum = 0.0;
                    for (int k = 0; k < d.n; ++k) sum += d.get(i, k) * x.get(k, j);
                    return sum - (i == j ? 1.0 : 0.0);
                  }),
            1e-13);
}

TEST_P(MCEngineTriangularTest, FormsTheGramMatrixOfTheTriangle) {
  const Triangle d(Order(), Order() + 3);
  const Triangle x = After(d, {&MCEngineTriangular::LowerGram});
  EXPECT_LT(Worst(d.n, true,
                  [&](int i, int j) {
                    double sum = 0.0;
                    for (int k = 0; k < d.n; ++k) sum += d.get(k, i) * d.get(k, j);
                    return sum - x.get(i, j);
                  }),
            1e-13);
}

// Together they give (D D')^-1, which the selected inverse of a dense
// supernode needs.
TEST_P(MCEngineTriangularTest, InverseThenGramInvertsTheProduct) {
  const Triangle d(Order(), Order());
  const Triangle z = After(d, {&MCEngineTriangular::InvertLower, &MCEngineTriangular::LowerGram});
  auto symmetric = [&](int i, int j) { return i >= j ? z.get(i, j) : z.get(j, i); };
  EXPECT_LT(Worst(d.n, false,
                  [&](int i, int j) {
                    // (D D' Z)_ij = sum_k D_ik (D' Z)_kj.
                    double sum = 0.0;
                    for (int k = 0; k <= i; ++k) {
                      double dz = 0.0;
                      for (int m = k; m < d.n; ++m) dz += d.get(m, k) * symmetric(m, j);
                      sum += d.get(i, k) * dz;
                    }
                    return sum - (i == j ? 1.0 : 0.0);
                  }),
            1e-12);
}

TEST_P(MCEngineTriangularTest, FactorsTheGramMatrixBackIntoItsTriangle) {
  const Triangle d(Order(), Order() + 3);
  Triangle a = d;
  for (int j = 0; j < d.n; ++j) {
    for (int i = j; i < d.n; ++i) {
      double sum = 0.0;
      for (int k = 0; k <= j; ++k) sum += d.get(i, k) * d.get(j, k);
      a.at(i, j) = sum;
    }
  }
  ASSERT_TRUE(MCEngineTriangular::FactorLower(a.v.data(), a.n, a.ld));
  ExpectMarkersKept(a);
  EXPECT_LT(Worst(d.n, true, [&](int i, int j) { return a.get(i, j) - d.get(i, j); }), 1e-12);
}

TEST_P(MCEngineTriangularTest, AMatrixNotPositiveDefiniteHasNoFactor) {
  Triangle a(Order(), Order());
  // The Gram matrix of a triangle with a zero on its diagonal.
  for (int j = 0; j < a.n; ++j) {
    for (int i = j; i < a.n; ++i) a.at(i, j) = i == j ? 1.0 : 0.0;
  }
  a.at(a.n - 1, a.n - 1) = -1.0;
  EXPECT_FALSE(MCEngineTriangular::FactorLower(a.v.data(), a.n, a.ld));
}

// B L^-T for a block of rows below the triangle, as a factor's panel.
TEST_P(MCEngineTriangularTest, SolvesARowBlockAgainstTheTransposedTriangle) {
  const Triangle l(Order(), Order() + 3);
  const int m = 37;
  const int ldb = m + 2;
  std::mt19937 draw(11);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::vector<double> b(static_cast<std::size_t>(ldb) * l.n, kAbove);
  for (int c = 0; c < l.n; ++c) {
    for (int r = 0; r < m; ++r) b[static_cast<std::size_t>(c) * ldb + r] = unit(draw);
  }
  std::vector<double> x = b;
  MCEngineTriangular::TimesInverseTransposed(l.v.data(), l.n, l.ld, x.data(), m, ldb);
  double worst = 0.0;
  for (int c = 0; c < l.n; ++c) {
    for (int r = 0; r < ldb; ++r) {
      const std::size_t at = static_cast<std::size_t>(c) * ldb + r;
      if (r >= m) {
        ASSERT_EQ(x[at], kAbove) << r << "," << c;
        continue;
      }
      // (X L')_rc = sum_k X_rk L_ck.
      double sum = 0.0;
      for (int k = 0; k <= c; ++k) sum += x[static_cast<std::size_t>(k) * ldb + r] * l.get(c, k);
      worst = std::max(worst, std::fabs(sum - b[at]));
    }
  }
  EXPECT_LT(worst, 1e-12);
  ExpectMarkersKept(l);
}

}  // namespace
}  // namespace MCEngine_850
