#pragma once

namespace MCEngine_850 {

// Eigenvalues (ascending) and eigenvectors of a symmetric matrix. Over many
// rows the decomposition is LAPACK's relatively robust representations
// (dsyevr): after the reduction to a tridiagonal matrix its eigenvectors
// cost the square of the rows, where the implicit QR iterations rotate the
// whole matrix of vectors at every step (at 999 rows, 0.45 s of processor
// time against 1.2 s). Over few rows the QR iterations stay, and with them
// the rounding of small models' results.
class MCEngineSymmetricEigen {
 public:
  // a: n x n, column by column (its lower triangle is read); values: n;
  // vectors: n x n, column by column, one eigenvector a column in the
  // order of the values.
  static void Decompose(const double* a, int n, double* values, double* vectors);

  // Decompositions taken so far in this process (a work count).
  static long GetDecompositions();

 private:
  // Returns false when LAPACK reports a failure (the QR iterations then
  // take over).
  static bool ByRepresentations(const double* a, int n, double* values, double* vectors);
};

}  // namespace MCEngine_850
