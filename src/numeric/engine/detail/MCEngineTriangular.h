#pragma once

namespace MCEngine_850 {

// Dense kernels on a lower triangular matrix of order n held column by
// column in the lower triangle of a block with leading dimension ld (its
// upper triangle is neither read nor written). Both split the block in
// halves and recurse, so that each takes n^3/3 operations, in matrix
// products, where solving against the identity would take n^3.
class MCEngineTriangular {
 public:
  // X, symmetric in its lower triangle, becomes its lower Cholesky factor
  // by the program's blocked factorisation. False, X then partly factored,
  // where X is not positive definite.
  static bool FactorLower(double* x, int n, int ld);
  // B (m by n, leading dimension ldb) becomes B L^-T, L the lower triangle
  // of order n held at l: the solve that gives a Cholesky factor's panel
  // below its diagonal block, n^2 m operations, most in matrix products.
  static void TimesInverseTransposed(const double* l, int n, int ldl, double* b, int m, int ldb);
  // X becomes X^-1.
  static void InvertLower(double* x, int n, int ld);
  // X becomes the lower triangle of X'X.
  static void LowerGram(double* x, int n, int ld);
  // X, a Cholesky factor L in its lower triangle, becomes the whole of
  // (L L')^-1 = L^-T L^-1: 2n^3/3 operations where solving against the
  // identity takes 2n^3.
  static void InvertFromFactor(double* x, int n, int ld);
};

}  // namespace MCEngine_850
