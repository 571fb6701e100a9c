#include "numeric/engine/detail/MCEngineTriangular.h"

#include <Eigen/Dense>

namespace MCEngine_850 {

namespace {

using Block = Eigen::Ref<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;
using Strided = Eigen::Map<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;

// Blocks up to this order are done directly.
constexpr Eigen::Index kLeaf = 48;

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
  const Eigen::MatrixXd right = x.bottomLeftCorner(n2, n1) * x.topLeftCorner(n1, n1).triangularView<Eigen::Lower>();
  x.bottomLeftCorner(n2, n1).noalias() = -(x.bottomRightCorner(n2, n2).triangularView<Eigen::Lower>() * right);
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
  a.selfadjointView<Eigen::Lower>().rankUpdate(b.transpose());
  const Eigen::MatrixXd below = c.triangularView<Eigen::Lower>().transpose() * b;
  b = below;
  LowerGramBlock(c);
}

}  // namespace

void MCEngineTriangular::InvertLower(double* x, int n, int ld) {
  InvertLowerBlock(Strided(x, n, n, Eigen::OuterStride<>(ld)));
}

void MCEngineTriangular::LowerGram(double* x, int n, int ld) {
  LowerGramBlock(Strided(x, n, n, Eigen::OuterStride<>(ld)));
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
