#include "numeric/engine/detail/MCEngineTriangular.h"

#include <Eigen/Dense>

#include "numeric/engine/detail/MCEngineGemm.h"

// The rank update of the program's own dense kernels, which splits a large
// triangle into blocks for the blocked product.
extern "C" void dsyrk_(const char* uplo, const char* trans, const int* n, const int* k, const double* alpha,
                       const double* a, const int* lda, const double* beta, double* c, const int* ldc);
extern "C" void dpotrf_(const char* uplo, const int* n, double* a, const int* lda, int* info);

namespace MCEngine_850 {

namespace {

using Block = Eigen::Ref<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;
using Strided = Eigen::Map<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;

// Blocks up to this order are done directly.
constexpr Eigen::Index kLeaf = 48;

// The lower triangle of a block as a square with zeros above: a triangular
// factor then goes through the blocked product, which does twice the
// operations of a triangular product but on registers four doubles wide
// with fused multiply-adds, and comes out ahead.
Eigen::MatrixXd Square(const Block& lower) { return lower.triangularView<Eigen::Lower>(); }

// out = alpha op(L) R, L lower triangular and R general, by the blocked
// product on L's square where it takes the product, by the triangular
// product elsewhere.
void MultiplyByLower(double alpha, const Block& lower, bool transposed, const Eigen::Ref<const Eigen::MatrixXd>& right,
                     Eigen::Ref<Eigen::MatrixXd, 0, Eigen::OuterStride<>> out) {
  const int m = static_cast<int>(out.rows());
  const int n = static_cast<int>(out.cols());
  const int k = static_cast<int>(right.rows());
  if (MCEngineGemm::Takes(m, n, k)) {
    const Eigen::MatrixXd square = Square(lower);
    out.setZero();
    MCEngineGemm::AddProduct(transposed, false, m, n, k, alpha, square.data(), k, right.data(),
                             static_cast<int>(right.outerStride()), out.data(), static_cast<int>(out.outerStride()));
    return;
  }
  if (transposed) {
    out.noalias() = lower.triangularView<Eigen::Lower>().transpose() * right;
  } else {
    out.noalias() = lower.triangularView<Eigen::Lower>() * right;
  }
  if (alpha != 1.0) out *= alpha;
}

void InvertLowerBlock(Block x) {
  const Eigen::Index n = x.rows();
  if (n <= kLeaf) {
    Eigen::MatrixXd inverse = Eigen::MatrixXd::Identity(n, n);
    x.triangularView<Eigen::Lower>().solveInPlace(inverse);
    x.triangularView<Eigen::Lower>() = inverse;
    return;
  }
  const Eigen::Index n1 = n / 2;
  const Eigen::Index n2 = n - n1;
  InvertLowerBlock(x.topLeftCorner(n1, n1));
  InvertLowerBlock(x.bottomRightCorner(n2, n2));
  // [A 0; B C]^-1 has -C^-1 B A^-1 below the diagonal blocks.
  // B A^-1 is (A^-T B')'.
  Eigen::MatrixXd right(n1, n2);
  MultiplyByLower(1.0, x.topLeftCorner(n1, n1), true, x.bottomLeftCorner(n2, n1).transpose(), right);
  MultiplyByLower(-1.0, x.bottomRightCorner(n2, n2), false, right.transpose(), x.bottomLeftCorner(n2, n1));
}

void LowerGramBlock(Block x) {
  const Eigen::Index n = x.rows();
  if (n <= kLeaf) {
    const Eigen::MatrixXd lower = x.triangularView<Eigen::Lower>();
    const Eigen::MatrixXd gram = lower.transpose() * lower;
    x.triangularView<Eigen::Lower>() = gram;
    return;
  }
  const Eigen::Index n1 = n / 2;
  const Eigen::Index n2 = n - n1;
  auto a = x.topLeftCorner(n1, n1);
  auto b = x.bottomLeftCorner(n2, n1);
  auto c = x.bottomRightCorner(n2, n2);
  // [A 0; B C]'[A 0; B C] = [A'A + B'B, B'C; C'B, C'C]: B is read before
  // C'B takes its place, and C before C'C takes its.
  LowerGramBlock(a);
  const int order = static_cast<int>(n1);
  const int depth = static_cast<int>(n2);
  const int ld = static_cast<int>(x.outerStride());
  const double one = 1.0;
  dsyrk_("L", "T", &order, &depth, &one, b.data(), &ld, &one, a.data(), &ld);
  Eigen::MatrixXd below(n2, n1);
  MultiplyByLower(1.0, c, true, b, below);
  b = below;
  LowerGramBlock(c);
}

}  // namespace

void MCEngineTriangular::TimesInverseTransposed(const double* l, int n, int ldl, double* b, int m, int ldb) {
  if (n <= 0 || m <= 0) return;
  const int n1 = n / 2;
  const int n2 = n - n1;
  if (n <= kLeaf || !MCEngineGemm::Takes(m, n2, n1)) {
    const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> L(l, n, n, Eigen::OuterStride<>(ldl));
    Strided B(b, m, n, Eigen::OuterStride<>(ldb));
    L.triangularView<Eigen::Lower>().transpose().solveInPlace<Eigen::OnTheRight>(B);
    return;
  }
  // [X1 X2][L11' L21'; 0 L22'] = [B1 B2]: X1 = B1 L11^-T, then
  // X2 = (B2 - X1 L21') L22^-T.
  double* b2 = b + static_cast<long>(n1) * ldb;
  TimesInverseTransposed(l, n1, ldl, b, m, ldb);
  MCEngineGemm::AddProduct(false, true, m, n2, n1, -1.0, b, ldb, l + n1, ldl, b2, ldb);
  TimesInverseTransposed(l + static_cast<long>(n1) * ldl + n1, n2, ldl, b2, m, ldb);
}

void MCEngineTriangular::InvertLower(double* x, int n, int ld) {
  InvertLowerBlock(Strided(x, n, n, Eigen::OuterStride<>(ld)));
}

void MCEngineTriangular::LowerGram(double* x, int n, int ld) {
  LowerGramBlock(Strided(x, n, n, Eigen::OuterStride<>(ld)));
}

bool MCEngineTriangular::FactorLower(double* x, int n, int ld) {
  int info = 0;
  dpotrf_("L", &n, x, &ld, &info);
  return info == 0;
}

void MCEngineTriangular::InvertFromFactor(double* x, int n, int ld) {
  InvertLower(x, n, ld);
  LowerGram(x, n, ld);
  Strided whole(x, n, n, Eigen::OuterStride<>(ld));
  for (int j = 1; j < n; ++j) {
    for (int i = 0; i < j; ++i) whole(i, j) = whole(j, i);
  }
}

}  // namespace MCEngine_850
