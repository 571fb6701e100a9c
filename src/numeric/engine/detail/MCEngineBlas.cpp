#include "numeric/engine/detail/MCEngineBlas.h"

#include "numeric/engine/detail/MCEngineGemm.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

#include <Eigen/Dense>
#include <atomic>
#include <vector>

namespace MCEngine_850 {

namespace {

std::atomic<long> gCalls{0};

using Matrix = Eigen::Map<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;
using ConstMatrix = Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>>;
using RowMatrix = Eigen::Map<Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>, 0, Eigen::OuterStride<>>;

// A Fortran option letter, in either case.
bool Is(const char* option, char letter) { return (*option | 0x20) == (letter | 0x20); }

void Count() { gCalls.fetch_add(1, std::memory_order_relaxed); }

// A strided vector of n elements copied out and back, with the reference
// BLAS's meaning of a negative increment (the elements run backwards).
class Strided {
 public:
  Strided(double* x, int n, int inc) : fp(x), fN(n), fInc(inc), fv(static_cast<std::size_t>(n)) {
    for (int i = 0; i < n; ++i) fv[static_cast<std::size_t>(i)] = fp[Offset(i)];
  }
  Eigen::Map<Eigen::VectorXd> Vector() { return Eigen::Map<Eigen::VectorXd>(fv.data(), fN); }
  void WriteBack() const {
    for (int i = 0; i < fN; ++i) fp[Offset(i)] = fv[static_cast<std::size_t>(i)];
  }

 private:
  long Offset(int i) const { return fInc > 0 ? static_cast<long>(i) * fInc : static_cast<long>(fN - 1 - i) * -fInc; }
  double* fp;
  int fN;
  int fInc;
  std::vector<double> fv;
};

template <int Mode>
void TriangularSolve(bool left, bool transposed, const ConstMatrix& a, Matrix& b) {
  const auto triangle = a.triangularView<Mode>();
  if (left && !transposed) triangle.solveInPlace(b);
  if (left && transposed) triangle.transpose().solveInPlace(b);
  if (!left && !transposed) triangle.template solveInPlace<Eigen::OnTheRight>(b);
  if (!left && transposed) triangle.transpose().template solveInPlace<Eigen::OnTheRight>(b);
}

template <int Mode>
void TriangularSolveVector(bool transposed, const ConstMatrix& a, Eigen::Map<Eigen::VectorXd> x) {
  const auto triangle = a.triangularView<Mode>();
  if (transposed) {
    triangle.transpose().solveInPlace(x);
  } else {
    triangle.solveInPlace(x);
  }
}

// Columns of a triangle updated at once: the diagonal block of each stays
// on the portable rank update, the rectangle beside it goes to the
// blocked product.
constexpr int kSyrkBlock = 96;

// Factors of at most this order are left to the portable blocked
// factorisation; larger ones split in halves whose trailing update is a
// rank update through the blocked product.
constexpr int kPotrfLeaf = 128;

// The uplo triangle of C += alpha op(A) op(A)', op(A) n by k (A n by k, or
// k by n when transposed), by column blocks: false where the blocked
// product does not take the rectangles and the portable update runs.
bool RankUpdateByBlocks(bool lower, bool t, int n, int k, double alpha, const double* a, int lda, double* c,
                        int ldc) {
  if (n <= kSyrkBlock || !MCEngineGemm::Takes(n - kSyrkBlock, kSyrkBlock, k)) return false;
  // Row r of op(A), and the rows j0.. of op(A) as an operand.
  const auto rows = [&](int r) { return t ? a + static_cast<long>(r) * lda : a + r; };
  for (int j0 = 0; j0 < n; j0 += kSyrkBlock) {
    const int nb = n - j0 < kSyrkBlock ? n - j0 : kSyrkBlock;
    Matrix diagonal(c + static_cast<long>(j0) * ldc + j0, nb, nb, Eigen::OuterStride<>(ldc));
    const ConstMatrix part(rows(j0), t ? k : nb, t ? nb : k, Eigen::OuterStride<>(lda));
    if (lower && !t) diagonal.selfadjointView<Eigen::Lower>().rankUpdate(part, alpha);
    if (lower && t) diagonal.selfadjointView<Eigen::Lower>().rankUpdate(part.transpose(), alpha);
    if (!lower && !t) diagonal.selfadjointView<Eigen::Upper>().rankUpdate(part, alpha);
    if (!lower && t) diagonal.selfadjointView<Eigen::Upper>().rankUpdate(part.transpose(), alpha);
    // The rectangle below the diagonal block (lower) or above it (upper).
    const int r0 = lower ? j0 + nb : 0;
    const int nr = lower ? n - r0 : j0;
    if (nr == 0) continue;
    double* target = c + static_cast<long>(j0) * ldc + r0;
    if (!MCEngineGemm::AddProduct(t, !t, nr, nb, k, alpha, rows(r0), lda, rows(j0), lda, target, ldc)) {
      Matrix rectangle(target, nr, nb, Eigen::OuterStride<>(ldc));
      const ConstMatrix left(rows(r0), t ? k : nr, t ? nr : k, Eigen::OuterStride<>(lda));
      if (t) {
        rectangle.noalias() += alpha * left.transpose() * part;
      } else {
        rectangle.noalias() += alpha * left * part.transpose();
      }
    }
  }
  return true;
}

// The lower Cholesky factor of A in place: the index of the first minor
// not positive definite, or -1.
Eigen::Index FactorLower(double* a, int n, int lda) {
  if (n <= kPotrfLeaf || !MCEngineGemm::Takes(n / 2, n / 2, n / 2)) {
    Matrix A(a, n, n, Eigen::OuterStride<>(lda));
    return Eigen::internal::llt_inplace<double, Eigen::Lower>::blocked(A);
  }
  const int n1 = n / 2;
  const int n2 = n - n1;
  const Eigen::Index first = FactorLower(a, n1, lda);
  if (first >= 0) return first;
  // [L11 0; L21 L22] with L21 = A21 L11^-T and L22 L22' = A22 - L21 L21'.
  MCEngineTriangular::TimesInverseTransposed(a, n1, lda, a + n1, n2, lda);
  double* a22 = a + static_cast<long>(n1) * lda + n1;
  if (!RankUpdateByBlocks(true, false, n2, n1, -1.0, a + n1, lda, a22, lda)) {
    const ConstMatrix l21(a + n1, n2, n1, Eigen::OuterStride<>(lda));
    Matrix(a22, n2, n2, Eigen::OuterStride<>(lda)).selfadjointView<Eigen::Lower>().rankUpdate(l21, -1.0);
  }
  const Eigen::Index second = FactorLower(a22, n2, lda);
  return second >= 0 ? second + n1 : -1;
}

// The kernels the symmetric eigen-decomposition spends its time in beside
// the others: the tridiagonal reduction (dsymv, dsyr2, dsyr2k) and the
// back-transformation by blocked reflectors (dtrmm).
template <int Mode>
void ScaleTriangle(Matrix& c, double beta) {
  if (beta == 0.0) {
    c.triangularView<Mode>().setZero();
  } else if (beta != 1.0) {
    c.triangularView<Mode>() *= beta;
  }
}

// Scales the uplo triangle of C by beta, the first step of a symmetric rank
// update; true when that is the lower triangle.
bool ScaleUploTriangle(const char* uplo, Matrix& c, double beta) {
  const bool lower = Is(uplo, 'L');
  if (lower) {
    ScaleTriangle<Eigen::Lower>(c, beta);
  } else {
    ScaleTriangle<Eigen::Upper>(c, beta);
  }
  return lower;
}

// The uplo triangle of C += alpha (P Q' + Q P').
template <int Mode>
void AddSymmetricProducts(Matrix& c, double alpha, const ConstMatrix& p, const ConstMatrix& q, bool transposed) {
  if (transposed) {
    c.triangularView<Mode>() += alpha * p.transpose() * q;
    c.triangularView<Mode>() += alpha * q.transpose() * p;
  } else {
    c.triangularView<Mode>() += alpha * p * q.transpose();
    c.triangularView<Mode>() += alpha * q * p.transpose();
  }
}

template <int Mode>
void TriangularMultiply(bool left, bool transposed, double alpha, const ConstMatrix& a, Matrix& b) {
  const auto triangle = a.triangularView<Mode>();
  Eigen::MatrixXd product;
  if (left && !transposed) product = triangle * b;
  if (left && transposed) product = triangle.transpose() * b;
  if (!left && !transposed) product = b * triangle;
  if (!left && transposed) product = b * triangle.transpose();
  b = alpha * product;
}

template <int Mode>
void TriangularMultiplyOfDiagonal(bool unit, bool left, bool transposed, double alpha, const ConstMatrix& a,
                                  Matrix& b) {
  // A zero alpha ignores what B held, NaN included.
  if (alpha == 0.0) {
    b.setZero();
  } else if (unit) {
    TriangularMultiply<Mode | Eigen::UnitDiag>(left, transposed, alpha, a, b);
  } else {
    TriangularMultiply<Mode>(left, transposed, alpha, a, b);
  }
}

}  // namespace

long MCEngineBlas::GetCalls() { return gCalls.load(std::memory_order_relaxed); }

}  // namespace MCEngine_850

using MCEngine_850::ConstMatrix;
using MCEngine_850::Count;
using MCEngine_850::FactorLower;
using MCEngine_850::MCEngineGemm;
using MCEngine_850::RankUpdateByBlocks;
using MCEngine_850::Is;
using MCEngine_850::Matrix;
using MCEngine_850::RowMatrix;
using MCEngine_850::Strided;

extern "C" {

// C = alpha op(A) op(B) + beta C, C m by n.
void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k, const double* alpha,
            const double* a, const int* lda, const double* b, const int* ldb, const double* beta, double* c,
            const int* ldc) {
  Count();
  if (*m <= 0 || *n <= 0) return;
  Matrix C(c, *m, *n, Eigen::OuterStride<>(*ldc));
  if (*beta == 0.0) {
    C.setZero();
  } else if (*beta != 1.0) {
    C *= *beta;
  }
  if (*alpha == 0.0 || *k <= 0) return;
  const bool ta = !Is(transa, 'N');
  const bool tb = !Is(transb, 'N');
  if (MCEngineGemm::AddProduct(ta, tb, *m, *n, *k, *alpha, a, *lda, b, *ldb, c, *ldc)) return;
  const ConstMatrix A(a, ta ? *k : *m, ta ? *m : *k, Eigen::OuterStride<>(*lda));
  const ConstMatrix B(b, tb ? *n : *k, tb ? *k : *n, Eigen::OuterStride<>(*ldb));
  if (!ta && !tb) C.noalias() += *alpha * A * B;
  if (ta && !tb) C.noalias() += *alpha * A.transpose() * B;
  if (!ta && tb) C.noalias() += *alpha * A * B.transpose();
  if (ta && tb) C.noalias() += *alpha * A.transpose() * B.transpose();
}

// The uplo triangle of C = alpha A A' + beta C (trans N, A n by k) or
// alpha A'A + beta C (A k by n).
void dsyrk_(const char* uplo, const char* trans, const int* n, const int* k, const double* alpha, const double* a,
            const int* lda, const double* beta, double* c, const int* ldc) {
  Count();
  if (*n <= 0) return;
  Matrix C(c, *n, *n, Eigen::OuterStride<>(*ldc));
  const bool lower = MCEngine_850::ScaleUploTriangle(uplo, C, *beta);
  if (*alpha == 0.0 || *k <= 0) return;
  const bool t = !Is(trans, 'N');
  if (RankUpdateByBlocks(lower, t, *n, *k, *alpha, a, *lda, c, *ldc)) return;
  const ConstMatrix A(a, t ? *k : *n, t ? *n : *k, Eigen::OuterStride<>(*lda));
  if (lower && !t) C.selfadjointView<Eigen::Lower>().rankUpdate(A, *alpha);
  if (lower && t) C.selfadjointView<Eigen::Lower>().rankUpdate(A.transpose(), *alpha);
  if (!lower && !t) C.selfadjointView<Eigen::Upper>().rankUpdate(A, *alpha);
  if (!lower && t) C.selfadjointView<Eigen::Upper>().rankUpdate(A.transpose(), *alpha);
}

// B = alpha op(A)^-1 B (side L) or alpha B op(A)^-1 (side R), A triangular.
void dtrsm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
            const double* alpha, const double* a, const int* lda, double* b, const int* ldb) {
  Count();
  if (*m <= 0 || *n <= 0) return;
  Matrix B(b, *m, *n, Eigen::OuterStride<>(*ldb));
  if (*alpha == 0.0) {
    B.setZero();
    return;
  }
  if (*alpha != 1.0) B *= *alpha;
  const bool left = Is(side, 'L');
  const int order = left ? *m : *n;
  const ConstMatrix A(a, order, order, Eigen::OuterStride<>(*lda));
  const bool t = !Is(transa, 'N');
  const bool unit = Is(diag, 'U');
  // The form the supernodal factorisation asks for, L21 = A21 L11^-T.
  if (!left && t && !unit && Is(uplo, 'L')) {
    MCEngine_850::MCEngineTriangular::TimesInverseTransposed(a, order, *lda, b, *m, *ldb);
    return;
  }
  if (Is(uplo, 'L')) {
    if (unit) {
      MCEngine_850::TriangularSolve<Eigen::UnitLower>(left, t, A, B);
    } else {
      MCEngine_850::TriangularSolve<Eigen::Lower>(left, t, A, B);
    }
  } else if (unit) {
    MCEngine_850::TriangularSolve<Eigen::UnitUpper>(left, t, A, B);
  } else {
    MCEngine_850::TriangularSolve<Eigen::Upper>(left, t, A, B);
  }
}

// y = alpha op(A) x + beta y, A m by n.
void dgemv_(const char* trans, const int* m, const int* n, const double* alpha, const double* a, const int* lda,
            const double* x, const int* incx, const double* beta, double* y, const int* incy) {
  Count();
  if (*m <= 0 || *n <= 0) return;
  const bool t = !Is(trans, 'N');
  const int nx = t ? *m : *n;
  const int ny = t ? *n : *m;
  Strided xs(const_cast<double*>(x), nx, *incx);
  Strided ys(y, ny, *incy);
  auto Y = ys.Vector();
  if (*beta == 0.0) {
    Y.setZero();
  } else if (*beta != 1.0) {
    Y *= *beta;
  }
  if (*alpha != 0.0) {
    const ConstMatrix A(a, *m, *n, Eigen::OuterStride<>(*lda));
    if (t) {
      Y.noalias() += *alpha * A.transpose() * xs.Vector();
    } else {
      Y.noalias() += *alpha * A * xs.Vector();
    }
  }
  ys.WriteBack();
}

// x = op(A)^-1 x, A triangular n by n.
void dtrsv_(const char* uplo, const char* trans, const char* diag, const int* n, const double* a, const int* lda,
            double* x, const int* incx) {
  Count();
  if (*n <= 0) return;
  const ConstMatrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
  Strided xs(x, *n, *incx);
  const bool t = !Is(trans, 'N');
  const bool unit = Is(diag, 'U');
  if (Is(uplo, 'L')) {
    if (unit) {
      MCEngine_850::TriangularSolveVector<Eigen::UnitLower>(t, A, xs.Vector());
    } else {
      MCEngine_850::TriangularSolveVector<Eigen::Lower>(t, A, xs.Vector());
    }
  } else if (unit) {
    MCEngine_850::TriangularSolveVector<Eigen::UnitUpper>(t, A, xs.Vector());
  } else {
    MCEngine_850::TriangularSolveVector<Eigen::Upper>(t, A, xs.Vector());
  }
  xs.WriteBack();
}

// The Cholesky factor of A in its uplo triangle; info is 0, or the order
// of the first leading minor that is not positive definite.
void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info) {
  Count();
  *info = 0;
  if (*n <= 0) return;
  Eigen::Index failed = -1;
  if (Is(uplo, 'L')) {
    failed = FactorLower(a, *n, *lda);
  } else {
    // The upper triangle of a column-major matrix is the lower one of its
    // row-major reading, and A is symmetric.
    RowMatrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
    failed = Eigen::internal::llt_inplace<double, Eigen::Lower>::blocked(A);
  }
  if (failed >= 0) *info = static_cast<int>(failed) + 1;
}


// y = alpha A x + beta y, A symmetric n by n given by its uplo triangle.
void dsymv_(const char* uplo, const int* n, const double* alpha, const double* a, const int* lda, const double* x,
            const int* incx, const double* beta, double* y, const int* incy) {
  Count();
  if (*n <= 0) return;
  Eigen::VectorXd product = Eigen::VectorXd::Zero(*n);
  if (*alpha != 0.0) {
    const ConstMatrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
    Strided xs(const_cast<double*>(x), *n, *incx);
    if (Is(uplo, 'L')) {
      product.noalias() = A.selfadjointView<Eigen::Lower>() * xs.Vector();
    } else {
      product.noalias() = A.selfadjointView<Eigen::Upper>() * xs.Vector();
    }
  }
  // A beta of zero ignores what y held, NaN included.
  Strided ys(y, *n, *incy);
  if (*beta == 0.0) {
    ys.Vector() = *alpha * product;
  } else {
    ys.Vector() = *alpha * product + *beta * ys.Vector();
  }
  ys.WriteBack();
}

// The uplo triangle of A += alpha (x y' + y x'), A n by n.
void dsyr2_(const char* uplo, const int* n, const double* alpha, const double* x, const int* incx, const double* y,
            const int* incy, double* a, const int* lda) {
  Count();
  if (*n <= 0 || *alpha == 0.0) return;
  Strided xs(const_cast<double*>(x), *n, *incx);
  Strided ys(const_cast<double*>(y), *n, *incy);
  Matrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
  if (Is(uplo, 'L')) {
    A.selfadjointView<Eigen::Lower>().rankUpdate(xs.Vector(), ys.Vector(), *alpha);
  } else {
    A.selfadjointView<Eigen::Upper>().rankUpdate(xs.Vector(), ys.Vector(), *alpha);
  }
}

// The uplo triangle of C = alpha (A B' + B A') + beta C (trans N, A and B
// n by k) or alpha (A'B + B'A) + beta C (A and B k by n).
void dsyr2k_(const char* uplo, const char* trans, const int* n, const int* k, const double* alpha, const double* a,
             const int* lda, const double* b, const int* ldb, const double* beta, double* c, const int* ldc) {
  Count();
  if (*n <= 0) return;
  Matrix C(c, *n, *n, Eigen::OuterStride<>(*ldc));
  const bool lower = MCEngine_850::ScaleUploTriangle(uplo, C, *beta);
  if (*alpha == 0.0 || *k <= 0) return;
  const bool t = !Is(trans, 'N');
  const ConstMatrix A(a, t ? *k : *n, t ? *n : *k, Eigen::OuterStride<>(*lda));
  const ConstMatrix B(b, t ? *k : *n, t ? *n : *k, Eigen::OuterStride<>(*ldb));
  if (lower) {
    MCEngine_850::AddSymmetricProducts<Eigen::Lower>(C, *alpha, A, B, t);
  } else {
    MCEngine_850::AddSymmetricProducts<Eigen::Upper>(C, *alpha, A, B, t);
  }
}

// B = alpha op(A) B (side L) or alpha B op(A) (side R), A triangular.
void dtrmm_(const char* side, const char* uplo, const char* transa, const char* diag, const int* m, const int* n,
            const double* alpha, const double* a, const int* lda, double* b, const int* ldb) {
  Count();
  if (*m <= 0 || *n <= 0) return;
  const bool left = Is(side, 'L');
  const int order = left ? *m : *n;
  Matrix B(b, *m, *n, Eigen::OuterStride<>(*ldb));
  const ConstMatrix A(a, order, order, Eigen::OuterStride<>(*lda));
  const bool t = !Is(transa, 'N');
  const bool unit = Is(diag, 'U');
  if (Is(uplo, 'L')) {
    MCEngine_850::TriangularMultiplyOfDiagonal<Eigen::Lower>(unit, left, t, *alpha, A, B);
  } else {
    MCEngine_850::TriangularMultiplyOfDiagonal<Eigen::Upper>(unit, left, t, *alpha, A, B);
  }
}

}  // extern "C"
