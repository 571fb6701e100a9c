#include "numeric/engine/detail/MCEngineBlas.h"

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

}  // namespace

long MCEngineBlas::GetCalls() { return gCalls.load(std::memory_order_relaxed); }

}  // namespace MCEngine_850

using MCEngine_850::ConstMatrix;
using MCEngine_850::Count;
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
  const bool lower = Is(uplo, 'L');
  if (*beta != 1.0) {
    for (int j = 0; j < *n; ++j) {
      const int i0 = lower ? j : 0;
      const int len = lower ? *n - j : j + 1;
      if (*beta == 0.0) {
        C.col(j).segment(i0, len).setZero();
      } else {
        C.col(j).segment(i0, len) *= *beta;
      }
    }
  }
  if (*alpha == 0.0 || *k <= 0) return;
  const bool t = !Is(trans, 'N');
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
    Matrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
    failed = Eigen::internal::llt_inplace<double, Eigen::Lower>::blocked(A);
  } else {
    // The upper triangle of a column-major matrix is the lower one of its
    // row-major reading, and A is symmetric.
    RowMatrix A(a, *n, *n, Eigen::OuterStride<>(*lda));
    failed = Eigen::internal::llt_inplace<double, Eigen::Lower>::blocked(A);
  }
  if (failed >= 0) *info = static_cast<int>(failed) + 1;
}

}  // extern "C"
