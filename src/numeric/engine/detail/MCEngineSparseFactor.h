#pragma once

#include <memory>
#include <vector>

#include "numeric/engine/detail/MCEngineRelativeIndex.h"

namespace MCEngine_850 {

// The Cholesky factor of a sparse symmetric positive definite matrix A whose
// pattern stays fixed while its values change: a fill-reducing ordering and
// the symbolic factorisation once, then only the numeric factorisation per
// set of values. Besides solves and the log determinant it gives the
// selected inverse: the entries of A^-1 on the pattern of the factor, which
// holds every entry of A's own pattern.
class MCEngineSparseFactor {
 public:
  MCEngineSparseFactor();
  ~MCEngineSparseFactor();
  MCEngineSparseFactor(const MCEngineSparseFactor&) = delete;
  MCEngineSparseFactor& operator=(const MCEngineSparseFactor&) = delete;

  // The lower triangle of A's pattern by columns: the rows of column j are
  // rowIndex[colStart[j] .. colStart[j + 1]), ascending, each at least j.
  // False when the library refuses the pattern. Given column sets (set of
  // each column, from 0), an ordering that eliminates the sets one after
  // another is tried besides the unconstrained one, and the one under which
  // a factorisation and its selected inverse cost less kept.
  bool Analyze(int n, const std::vector<int>& colStart, const std::vector<int>& rowIndex,
               const std::vector<int>& columnSets = {});
  int GetSize() const { return fN; }
  // The work of one numeric factorisation (floating-point operations) and
  // the entries of the factor, as the symbolic analysis counts them.
  double GetFactorFlops() const { return fFlops; }
  double GetFactorEntries() const { return fEntries; }

  // Values in the order of the analysed pattern. False when A is not
  // positive definite. Values equal to the last factored ones up to
  // rounding keep that factor and its selected inverse.
  bool Factorize(const std::vector<double>& values);
  // The numeric factorisations done since construction.
  long GetFactorizations() const { return fFactorizations; }
  // The dense kernel calls (BLAS and LAPACK routines, our own) so far in
  // the process: the factorisation's supernodes go through them.
  static long GetKernelCalls();
  double LogDet() const;

  // In place, for nrhs columns of length n stored one after the other:
  // A^-1 b, L^-1 P b and P' L'^-1 b, where P A P' = L L'.
  void Solve(double* b, int nrhs) const;
  void SolveL(double* b, int nrhs) const;
  void SolveLt(double* b, int nrhs) const;

  // Computes the selected inverse of the last factorisation, once per
  // factor. False when there is no factor or its pattern lacks an entry the
  // recursion needs (never for the library's supernodal patterns).
  bool SelectInverse();
  // Where entry (i, j) of A^-1 lies in the selected inverse; -1 when it is
  // not on the factor's pattern. Fixed once the pattern is analysed.
  long InversePosition(int i, int j) const;
  double InverseAt(long position) const { return fvInverse[static_cast<std::size_t>(position)]; }

 private:
  struct Library;
  struct Scratch;
  enum Op { kSolveA, kSolveL, kSolveLt };
  void SolveOp(Op op, double* b, int nrhs) const;
  // Column j (in factor order) of the supernodal layout: where its diagonal
  // lies in the values and its rows in the row list, and how many entries
  // it has from the diagonal down.
  void ColumnLayout();
  bool SameUpToRounding(const std::vector<double>& values) const;

  std::unique_ptr<Library> fpLib;
  std::unique_ptr<Scratch> fpScratch;
  int fN = 0;
  double fFlops = 0.0;
  double fEntries = 0.0;
  long fFactorizations = 0;
  bool fbFactored = false;  // the factor is of the values in the library's A
  bool fbInverse = false;   // the selected inverse is the factor's
  bool fbRelative = false;  // the rows below each supernode lie in their ancestors' lists
  std::vector<int> fvPerm;     // factor order -> A's order
  std::vector<int> fvInvPerm;  // A's order -> factor order
  std::vector<long> fvColValue;
  std::vector<long> fvColRow;
  std::vector<int> fvColCount;
  std::vector<double> fvInverse;  // laid out as the factor's values
  MCEngineRelativeIndex fRelative;
};

}  // namespace MCEngine_850
