#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "numeric/engine/detail/MCEngineGemm.h"

extern "C" {
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*);
void dsyrk_(const char*, const char*, const int*, const int*, const double*, const double*, const int*,
            const double*, double*, const int*);
void dtrsm_(const char*, const char*, const char*, const char*, const int*, const int*, const double*,
            const double*, const int*, double*, const int*);
void dgemv_(const char*, const int*, const int*, const double*, const double*, const int*, const double*,
            const int*, const double*, double*, const int*);
void dtrsv_(const char*, const char*, const char*, const int*, const double*, const int*, double*, const int*);
void dpotrf_(const char*, const int*, double*, const int*, int*);
}

namespace {

// A column-major matrix with a leading dimension beyond its rows, so that
// the kernels' strides are exercised; the padding holds values the
// kernels must neither read into results nor change.
struct Strided {
  int rows, cols, ld;
  std::vector<double> v;
  Strided(int r, int c, std::mt19937& draw) : rows(r), cols(c), ld(r + 3), v(static_cast<std::size_t>(ld) * c) {
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (double& x : v) x = u(draw);
  }
  double& operator()(int i, int j) { return v[static_cast<std::size_t>(j) * ld + i]; }
  double operator()(int i, int j) const { return v[static_cast<std::size_t>(j) * ld + i]; }
};

// op(M)(i, j) for a transposed (t) or plain reading.
double Op(const Strided& m, bool t, int i, int j) { return t ? m(j, i) : m(i, j); }

TEST(MCEngineBlasTest, GemmEqualsTheProductsByDefinitionForEveryTransposition) {
  std::mt19937 draw(3);
  const int m = 37, n = 29, k = 41;
  for (const char* ta : {"N", "T"}) {
    for (const char* tb : {"N", "t"}) {
      const bool at = *ta != 'N', bt = *tb != 'N';
      const Strided A(at ? k : m, at ? m : k, draw), B(bt ? n : k, bt ? k : n, draw);
      Strided C(m, n, draw);
      const Strided C0 = C;
      const double alpha = 0.7, beta = -1.3;
      dgemm_(ta, tb, &m, &n, &k, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld, &beta, C.v.data(), &C.ld);
      for (int i = 0; i < m; ++i) {
        for (int j = 0; j < n; ++j) {
          double s = 0.0;
          for (int l = 0; l < k; ++l) s += Op(A, at, i, l) * Op(B, bt, l, j);
          EXPECT_NEAR(C(i, j), alpha * s + beta * C0(i, j), 1e-13) << ta << tb;
        }
        for (int j = 0; j < n; ++j) {
          for (int pad = m; pad < C.ld; ++pad) ASSERT_EQ(C(pad, j), C0(pad, j));
        }
      }
    }
  }
}

TEST(MCEngineBlasTest, ABetaOfZeroIgnoresWhatTheResultHeld) {
  std::mt19937 draw(5);
  const int m = 5, n = 4, k = 3;
  const Strided A(m, k, draw), B(k, n, draw);
  Strided C(m, n, draw);
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) C(i, j) = std::numeric_limits<double>::quiet_NaN();
  }
  const double alpha = 1.0, beta = 0.0;
  dgemm_("N", "N", &m, &n, &k, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld, &beta, C.v.data(), &C.ld);
  for (int i = 0; i < m; ++i) {
    for (int j = 0; j < n; ++j) EXPECT_TRUE(std::isfinite(C(i, j)));
  }
}

// A well-conditioned triangle: a strong diagonal.
Strided Triangle(int n, std::mt19937& draw) {
  Strided A(n, n, draw);
  for (int i = 0; i < n; ++i) A(i, i) = 4.0 + std::fabs(A(i, i));
  return A;
}

// op(T) where T is A's uplo triangle, its diagonal taken as ones when unit.
double TriangleOp(const Strided& A, bool lower, bool t, bool unit, int i, int j) {
  const int r = t ? j : i, c = t ? i : j;
  if (r == c) return unit ? 1.0 : A(r, c);
  return (lower ? r > c : r < c) ? A(r, c) : 0.0;
}

TEST(MCEngineBlasTest, TrsmSolvesOnEitherSideForEveryTriangle) {
  std::mt19937 draw(13);
  const int m = 23, n = 17;
  for (const char* side : {"L", "R"}) {
    for (const char* uplo : {"L", "U"}) {
      for (const char* trans : {"N", "T"}) {
        for (const char* diag : {"N", "U"}) {
          const bool left = *side == 'L', lower = *uplo == 'L', t = *trans == 'T', unit = *diag == 'U';
          const int order = left ? m : n;
          const Strided A = Triangle(order, draw);
          Strided B(m, n, draw);
          const Strided B0 = B;
          const double alpha = 2.0;
          dtrsm_(side, uplo, trans, diag, &m, &n, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld);
          // op(A) X = alpha B0 or X op(A) = alpha B0.
          for (int i = 0; i < m; ++i) {
            for (int j = 0; j < n; ++j) {
              double s = 0.0;
              for (int l = 0; l < order; ++l) {
                s += left ? TriangleOp(A, lower, t, unit, i, l) * B(l, j) : B(i, l) * TriangleOp(A, lower, t, unit, l, j);
              }
              EXPECT_NEAR(s, alpha * B0(i, j), 1e-12) << side << uplo << trans << diag;
            }
          }
        }
      }
    }
  }
}

TEST(MCEngineBlasTest, GemvAndTrsvFollowTheirIncrements) {
  std::mt19937 draw(17);
  const int m = 9, n = 7;
  const Strided A(m, n, draw);
  for (const char* trans : {"N", "T"}) {
    const bool t = *trans == 'T';
    const int nx = t ? m : n, ny = t ? n : m;
    for (int inc : {1, 2, -2}) {
      std::vector<double> x(static_cast<std::size_t>(nx) * 2), y(static_cast<std::size_t>(ny) * 2);
      std::uniform_real_distribution<double> u(-1.0, 1.0);
      for (double& v : x) v = u(draw);
      for (double& v : y) v = u(draw);
      const std::vector<double> y0 = y;
      const int stride = std::abs(inc);
      // Element i of a vector of n with increment inc, as the kernels read it.
      auto at = [&](int i, int len) { return static_cast<std::size_t>(inc > 0 ? i * stride : (len - 1 - i) * stride); };
      const double alpha = 1.5, beta = 0.25;
      dgemv_(trans, &m, &n, &alpha, A.v.data(), &A.ld, x.data(), &inc, &beta, y.data(), &inc);
      for (int i = 0; i < ny; ++i) {
        double s = 0.0;
        for (int l = 0; l < nx; ++l) s += Op(A, t, i, l) * x[at(l, nx)];
        EXPECT_NEAR(y[at(i, ny)], alpha * s + beta * y0[at(i, ny)], 1e-13) << trans << inc;
      }
    }
  }
  const Strided T = Triangle(n, draw);
  for (const char* uplo : {"L", "U"}) {
    for (const char* trans : {"N", "T"}) {
      for (const char* diag : {"N", "U"}) {
        const bool lower = *uplo == 'L', t = *trans == 'T', unit = *diag == 'U';
        std::vector<double> x(static_cast<std::size_t>(n) * 2, 0.5);
        for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i) * 2] = i + 1.0;
        const std::vector<double> b = x;
        const int inc = 2;
        dtrsv_(uplo, trans, diag, &n, T.v.data(), &T.ld, x.data(), &inc);
        for (int i = 0; i < n; ++i) {
          double s = 0.0;
          for (int l = 0; l < n; ++l) s += TriangleOp(T, lower, t, unit, i, l) * x[static_cast<std::size_t>(l) * 2];
          EXPECT_NEAR(s, b[static_cast<std::size_t>(i) * 2], 1e-12) << uplo << trans << diag;
          EXPECT_EQ(x[static_cast<std::size_t>(i) * 2 + 1], 0.5);
        }
      }
    }
  }
}

// G G' + n I for a random G: symmetric positive definite, both triangles
// filled.
Strided PositiveDefinite(int n, std::mt19937& draw) {
  const Strided G(n, n, draw);
  Strided A(n, n, draw);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      double s = i == j ? n : 0.0;
      for (int l = 0; l < n; ++l) s += G(i, l) * G(j, l);
      A(i, j) = s;
    }
  }
  return A;
}

// A with row and column order-1 repeating the one before, the diagonal one
// less: the leading minor of that order is the first not positive definite
// (its last pivot is -1).
Strided FirstFailingMinor(const Strided& A, int order) {
  Strided B = A;
  const int r = order - 1;
  for (int j = 0; j < A.cols; ++j) {
    B(r, j) = B(r - 1, j);
    B(j, r) = B(j, r - 1);
  }
  B(r, r) = B(r - 1, r - 1) - 1.0;
  return B;
}

TEST(MCEngineBlasTest, PotrfFactorsEitherTriangleAndNamesTheFirstMinorNotPositiveDefinite) {
  std::mt19937 draw(19);
  const int n = 150;  // beyond one block of the blocked factorisation
  const Strided A = PositiveDefinite(n, draw);
  for (const char* uplo : {"L", "U"}) {
    const bool lower = *uplo == 'L';
    Strided F = A;
    int info = -1;
    dpotrf_(uplo, &n, F.v.data(), &F.ld, &info);
    ASSERT_EQ(info, 0);
    // L L' (or U'U) gives A back.
    for (int i = 0; i < n; i += 7) {
      for (int j = 0; j <= i; j += 5) {
        double s = 0.0;
        for (int l = 0; l <= j; ++l) s += lower ? F(i, l) * F(j, l) : F(l, i) * F(l, j);
        EXPECT_NEAR(s, A(i, j), 1e-9 * n);
      }
    }
  }
  Strided B = FirstFailingMinor(A, 101);
  int info = 0;
  dpotrf_("L", &n, B.v.data(), &B.ld, &info);
  EXPECT_EQ(info, 101);
}

// The blocked product where the processor has it (or the portable code
// where it is forced), against products by definition.
class MCEngineBlasPathTest : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override { MCEngine_850::MCEngineGemm::SetPortable(GetParam()); }
  void TearDown() override { MCEngine_850::MCEngineGemm::SetPortable(false); }
};

INSTANTIATE_TEST_SUITE_P(Paths, MCEngineBlasPathTest, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "Portable" : "Blocked"; });

// C = alpha op(A) op(B) + beta C by dgemm, checked element by element and
// with C's padding untouched.
void ExpectGemmByDefinition(int m, int n, int k, double alpha, double beta, std::mt19937& draw) {
  for (const char* ta : {"N", "T"}) {
    for (const char* tb : {"N", "T"}) {
      const bool at = *ta != 'N', bt = *tb != 'N';
      const Strided A(at ? k : m, at ? m : k, draw), B(bt ? n : k, bt ? k : n, draw);
      Strided C(m, n, draw);
      const Strided C0 = C;
      dgemm_(ta, tb, &m, &n, &k, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld, &beta, C.v.data(), &C.ld);
      for (int j = 0; j < n; ++j) {
        for (int i = 0; i < m; ++i) {
          double s = 0.0;
          for (int l = 0; l < k; ++l) s += Op(A, at, i, l) * Op(B, bt, l, j);
          ASSERT_NEAR(C(i, j), alpha * s + beta * C0(i, j), 1e-13 * (k + 1))
              << ta << tb << " " << m << "x" << n << "x" << k << " at " << i << "," << j;
        }
        for (int pad = m; pad < C.ld; ++pad) ASSERT_EQ(C(pad, j), C0(pad, j));
      }
    }
  }
}

// Sizes on either side of the register tile (8 by 6) and of the cache
// blocks (96 rows, depth 256).
TEST_P(MCEngineBlasPathTest, GemmAgreesWithTheDefinitionAcrossEveryBlockingEdge) {
  std::mt19937 draw(23);
  for (int s : {1, 5, 6, 7, 8, 9, 13, 95, 96, 97, 255, 256, 257}) {
    ExpectGemmByDefinition(s, 37, 41, 0.7, -1.3, draw);
    ExpectGemmByDefinition(45, s, 41, 0.7, -1.3, draw);
    ExpectGemmByDefinition(29, 31, s, 0.7, -1.3, draw);
  }
  ExpectGemmByDefinition(300, 203, 517, 1.0, 1.0, draw);
  for (double alpha : {0.0, 1.0, -1.0}) {
    for (double beta : {0.0, 1.0, 2.5}) ExpectGemmByDefinition(70, 50, 60, alpha, beta, draw);
  }
}

TEST_P(MCEngineBlasPathTest, SyrkUpdatesOnlyItsTriangleWholeOrByBlocks) {
  std::mt19937 draw(29);
  for (int n : {33, 95, 96, 97, 193, 301}) {
    for (int k : {7, 19, 64}) {
      for (const char* uplo : {"L", "U"}) {
        for (const char* trans : {"N", "T"}) {
          const bool t = *trans == 'T', lower = *uplo == 'L';
          const Strided A(t ? k : n, t ? n : k, draw);
          Strided C(n, n, draw);
          const Strided C0 = C;
          const double alpha = -0.5, beta = n == 33 ? 0.5 : 1.0;
          dsyrk_(uplo, trans, &n, &k, &alpha, A.v.data(), &A.ld, &beta, C.v.data(), &C.ld);
          for (int j = 0; j < n; ++j) {
            for (int i = 0; i < C.ld; ++i) {
              if (i >= n || (lower ? i < j : i > j)) {
                ASSERT_EQ(C(i, j), C0(i, j));
                continue;
              }
              double s = 0.0;
              for (int l = 0; l < k; ++l) s += Op(A, t, i, l) * Op(A, t, j, l);
              ASSERT_NEAR(C(i, j), alpha * s + beta * C0(i, j), 1e-13 * k) << uplo << trans << n << " " << k;
            }
          }
        }
      }
    }
  }
}

TEST_P(MCEngineBlasPathTest, PotrfBySplitsFactorsAndNamesTheFirstMinorNotPositiveDefinite) {
  std::mt19937 draw(31);
  const int n = 403;
  const Strided A = PositiveDefinite(n, draw);
  Strided F = A;
  int info = -1;
  dpotrf_("L", &n, F.v.data(), &F.ld, &info);
  ASSERT_EQ(info, 0);
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < F.ld; ++i) {
      if (i < j || i >= n) {
        ASSERT_EQ(F(i, j), A(i, j));
        continue;
      }
      double s = 0.0;
      for (int l = 0; l <= j; ++l) s += F(i, l) * F(j, l);
      ASSERT_NEAR(s, A(i, j), 1e-11 * n);
    }
  }
  // The leading minor of order 301, in the second half's second half, is
  // the first not positive definite.
  Strided B = FirstFailingMinor(A, 301);
  dpotrf_("L", &n, B.v.data(), &B.ld, &info);
  EXPECT_EQ(info, 301);
}

}  // namespace

extern "C" {
void dsymv_(const char*, const int*, const double*, const double*, const int*, const double*, const int*,
            const double*, double*, const int*);
void dsyr2_(const char*, const int*, const double*, const double*, const int*, const double*, const int*, double*,
            const int*);
void dsyr2k_(const char*, const char*, const int*, const int*, const double*, const double*, const int*,
             const double*, const int*, const double*, double*, const int*);
void dtrmm_(const char*, const char*, const char*, const char*, const int*, const int*, const double*,
            const double*, const int*, double*, const int*);
}

namespace {

// The (i, j) cell of the symmetric matrix an uplo triangle of m stands for.
double Symmetric(const Strided& m, bool lower, int i, int j) {
  return (lower ? i >= j : i <= j) ? m(i, j) : m(j, i);
}

// The (i, j) cell of the triangular matrix m's uplo triangle stands for,
// with ones on the diagonal when unit.
double Triangular(const Strided& m, bool lower, bool unit, int i, int j) {
  if (i == j) return unit ? 1.0 : m(i, i);
  return (lower ? i > j : i < j) ? m(i, j) : 0.0;
}

// Whether (i, j) is outside the uplo triangle, where a symmetric update
// must leave the matrix as it was.
bool OutsideTriangle(bool lower, int i, int j) { return lower ? i < j : i > j; }

TEST(MCEngineBlasTest, SymvEqualsTheProductOfTheSymmetricMatrixOfOneTriangle) {
  std::mt19937 draw(23);
  const int n = 43, incx = 2, incy = -3;
  for (const char* uplo : {"L", "u"}) {
    const bool lower = *uplo == 'L';
    const Strided A(n, n, draw), X(n * incx, 1, draw);
    Strided Y(n * -incy, 1, draw);
    const Strided Y0 = Y;
    const double alpha = -0.6, beta = 1.7;
    dsymv_(uplo, &n, &alpha, A.v.data(), &A.ld, X.v.data(), &incx, &beta, Y.v.data(), &incy);
    for (int i = 0; i < n; ++i) {
      double s = 0.0;
      for (int j = 0; j < n; ++j) s += Symmetric(A, lower, i, j) * X(j * incx, 0);
      // A negative increment runs the vector from its far end.
      const int yi = (n - 1 - i) * -incy;
      EXPECT_NEAR(Y(yi, 0), alpha * s + beta * Y0(yi, 0), 1e-13) << uplo;
    }
    for (int i = 0; i < n * -incy; ++i) {
      if (i % -incy != 0) {
        ASSERT_EQ(Y(i, 0), Y0(i, 0));
      }
    }
  }
}

TEST(MCEngineBlasTest, Syr2AddsBothOuterProductsToItsTriangleOnly) {
  std::mt19937 draw(29);
  const int n = 31, incx = 1, incy = 2;
  for (const char* uplo : {"l", "U"}) {
    const bool lower = *uplo == 'l';
    const Strided X(n, 1, draw), Y(n * incy, 1, draw);
    Strided A(n, n, draw);
    const Strided A0 = A;
    const double alpha = 0.45;
    dsyr2_(uplo, &n, &alpha, X.v.data(), &incx, Y.v.data(), &incy, A.v.data(), &A.ld);
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        const double update = alpha * (X(i, 0) * Y(j * incy, 0) + Y(i * incy, 0) * X(j, 0));
        if (OutsideTriangle(lower, i, j)) {
          ASSERT_EQ(A(i, j), A0(i, j));
        } else {
          EXPECT_NEAR(A(i, j), A0(i, j) + update, 1e-14) << uplo;
        }
      }
    }
  }
}

TEST(MCEngineBlasTest, Syr2kAddsBothProductsToItsTriangleOnlyForEitherTransposition) {
  std::mt19937 draw(31);
  const int n = 67, k = 24;
  for (const char* uplo : {"L", "U"}) {
    for (const char* trans : {"N", "T"}) {
      const bool lower = *uplo == 'L', t = *trans == 'T';
      const Strided A(t ? k : n, t ? n : k, draw), B(t ? k : n, t ? n : k, draw);
      Strided C(n, n, draw);
      const Strided C0 = C;
      const double alpha = 1.3, beta = -0.4;
      dsyr2k_(uplo, trans, &n, &k, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld, &beta, C.v.data(), &C.ld);
      for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
          if (OutsideTriangle(lower, i, j)) {
            ASSERT_EQ(C(i, j), C0(i, j));
            continue;
          }
          double s = 0.0;
          for (int l = 0; l < k; ++l) s += Op(A, t, i, l) * Op(B, t, j, l) + Op(B, t, i, l) * Op(A, t, j, l);
          EXPECT_NEAR(C(i, j), alpha * s + beta * C0(i, j), 1e-13) << uplo << trans;
        }
      }
    }
  }
}

TEST(MCEngineBlasTest, TrmmEqualsTheTriangularProductForEverySideTriangleTranspositionAndDiagonal) {
  std::mt19937 draw(37);
  const int m = 26, n = 19;
  for (const char* side : {"L", "R"}) {
    for (const char* uplo : {"L", "U"}) {
      for (const char* transa : {"N", "T"}) {
        for (const char* diag : {"N", "U"}) {
          const bool left = *side == 'L', lower = *uplo == 'L', t = *transa == 'T', unit = *diag == 'U';
          const int order = left ? m : n;
          const Strided A(order, order, draw);
          Strided B(m, n, draw);
          const Strided B0 = B;
          const double alpha = -1.1;
          dtrmm_(side, uplo, transa, diag, &m, &n, &alpha, A.v.data(), &A.ld, B.v.data(), &B.ld);
          auto opA = [&](int i, int j) { return t ? Triangular(A, lower, unit, j, i) : Triangular(A, lower, unit, i, j); };
          for (int i = 0; i < m; ++i) {
            for (int j = 0; j < n; ++j) {
              double s = 0.0;
              if (left) {
                for (int l = 0; l < m; ++l) s += opA(i, l) * B0(l, j);
              } else {
                for (int l = 0; l < n; ++l) s += B0(i, l) * opA(l, j);
              }
              EXPECT_NEAR(B(i, j), alpha * s, 1e-13) << side << uplo << transa << diag;
            }
            for (int pad = m; pad < B.ld; ++pad) ASSERT_EQ(B(pad, 0), B0(pad, 0));
          }
        }
      }
    }
  }
}

}  // namespace
