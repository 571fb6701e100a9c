#include "numeric/engine/detail/MCEngineSparseFactor.h"

#include "numeric/engine/detail/MCEngineBlas.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

#include <cholmod.h>
#include <omp.h>

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>

namespace MCEngine_850 {

namespace {

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

// A rows x cols matrix on a buffer that only grows.
Eigen::Map<Eigen::MatrixXd> Sized(std::vector<double>& buffer, long rows, long cols) {
  if (buffer.size() < U(rows * cols)) buffer.resize(U(rows * cols));
  return Eigen::Map<Eigen::MatrixXd>(buffer.data(), rows, cols);
}

// Values this close to the factored ones are the same matrix reached by
// another rounding: a profiled fit asks for the same equations at a point
// and at its rescaled copy, whose factors differ by rounding only.
constexpr double kRounding = 1e-13;

// The library's supernodal factorisation opens parallel regions of its own
// thread count. On equations of a few thousand columns each region is too
// short for its threads: their wake-ups and hand-offs cost more processor
// time than they share, and on two cores the elapsed time too. For as long
// as it lives, parallel regions opened on this thread run on it alone.
class SerialRegions {
 public:
  SerialRegions() : fLevels(omp_get_max_active_levels()) { omp_set_max_active_levels(0); }
  ~SerialRegions() { omp_set_max_active_levels(fLevels); }
  SerialRegions(const SerialRegions&) = delete;
  SerialRegions& operator=(const SerialRegions&) = delete;

 private:
  int fLevels;
};

}  // namespace

// What the selected inverse's recursion works in: the buffers that only grow
// are kept from one factor to the next, so that no evaluation allocates
// them again.
struct MCEngineSparseFactor::Scratch {
  // Z(S, S), -Z(S, S) B, B'Z(S, J) and w, by supernode.
  std::vector<double> fZss, fZsb, fBz, fW;
};

struct MCEngineSparseFactor::Library {
  cholmod_common fCommon;
  cholmod_sparse* fpA = nullptr;
  cholmod_factor* fpL = nullptr;
  // A solve's result, the first half's of a two-step solve, and workspace.
  cholmod_dense* fpX = nullptr;
  cholmod_dense* fpHalf = nullptr;
  cholmod_dense* fpY = nullptr;
  cholmod_dense* fpE = nullptr;

  Library() {
    cholmod_start(&fCommon);
    // Messages are ours to give; the supernodal form is what the selected
    // inverse reads.
    fCommon.print = 0;
    fCommon.supernodal = CHOLMOD_SUPERNODAL;
    fCommon.final_asis = 1;
  }
  ~Library() {
    for (cholmod_dense** d : {&fpX, &fpHalf, &fpY, &fpE}) {
      if (*d != nullptr) cholmod_free_dense(d, &fCommon);
    }
    if (fpL != nullptr) cholmod_free_factor(&fpL, &fCommon);
    if (fpA != nullptr) cholmod_free_sparse(&fpA, &fCommon);
    cholmod_finish(&fCommon);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

namespace {

// What an evaluation does on a factor beyond the factorisation's own
// operations: the selected inverse's dense products, and its gathering of
// Z(S, S) entry by entry, which on supernodes of a column or a few runs at
// the speed of memory, about thirty operations' time an entry (measured on
// crossed designs of 400 to 6,400 levels).
double SelectedInverseWork(const cholmod_factor& L) {
  const int* super = static_cast<const int*>(L.super);
  const int* pi = static_cast<const int*>(L.pi);
  double work = 0.0;
  for (std::size_t k = 0; k < L.nsuper; ++k) {
    const double nj = super[k + 1] - super[k];
    const double ns = pi[k + 1] - pi[k] - nj;
    work += 2.0 * nj * nj * nj / 3.0 + 2.0 * ns * nj * (ns + nj) + 30.0 * ns * ns;
  }
  return work;
}

struct Analysis {
  cholmod_factor* fpL = nullptr;
  double fFlops = 0.0, fEntries = 0.0, fWork = 0.0;
};

// Given no permutation, the library's own choice: minimum degree, and
// nested dissection where that fills much.
Analysis Analysed(cholmod_sparse* A, int* perm, cholmod_common& common) {
  Analysis out;
  out.fpL = cholmod_analyze_p(A, perm, nullptr, 0, &common);
  if (out.fpL != nullptr && (common.status != CHOLMOD_OK || !out.fpL->is_super)) cholmod_free_factor(&out.fpL, &common);
  if (out.fpL == nullptr) return out;
  out.fFlops = common.fl;
  out.fEntries = common.lnz;
  out.fWork = out.fFlops + SelectedInverseWork(*out.fpL);
  return out;
}

// Minimum degree constrained to eliminate the column sets one after
// another; empty when there is one set or the library refuses.
std::vector<int> SetsInTurn(cholmod_sparse* A, const std::vector<int>& columnSets, cholmod_common& common) {
  const std::size_t n = A->nrow;
  if (columnSets.size() != n || std::all_of(columnSets.begin(), columnSets.end(),
                                            [&](int c) { return c == columnSets[0]; })) {
    return {};
  }
  std::vector<int> sets(columnSets);
  std::vector<int> perm(n, 0);
  if (!cholmod_camd(A, nullptr, 0, sets.data(), perm.data(), &common)) return {};
  return perm;
}

// Crossed factors fill least when the one of most levels is eliminated
// first, each of its levels joining only the levels of the others it
// meets, where the unconstrained ordering mixes them and leaves a larger
// dense block; on designs whose factors nearly all meet, the constrained
// ordering's many narrow supernodes cost more. The cheaper evaluation is
// kept.
Analysis OrderAndAnalyze(cholmod_sparse* A, const std::vector<int>& columnSets, cholmod_common& common) {
  Analysis best = Analysed(A, nullptr, common);
  std::vector<int> perm = SetsInTurn(A, columnSets, common);
  if (perm.empty()) return best;
  const int methods = common.nmethods;
  common.nmethods = 1;  // the given permutation only
  Analysis constrained = Analysed(A, perm.data(), common);
  common.nmethods = methods;
  if (constrained.fpL == nullptr) return best;
  if (best.fpL != nullptr && best.fWork <= constrained.fWork) {
    cholmod_free_factor(&constrained.fpL, &common);
    return best;
  }
  if (best.fpL != nullptr) cholmod_free_factor(&best.fpL, &common);
  return constrained;
}

}  // namespace

MCEngineSparseFactor::MCEngineSparseFactor()
    : fpLib(std::make_unique<Library>()), fpScratch(std::make_unique<Scratch>()) {}

MCEngineSparseFactor::~MCEngineSparseFactor() = default;

bool MCEngineSparseFactor::Analyze(int n, const std::vector<int>& colStart, const std::vector<int>& rowIndex,
                                   const std::vector<int>& columnSets) {
  Library& lib = *fpLib;
  if (lib.fpL != nullptr) cholmod_free_factor(&lib.fpL, &lib.fCommon);
  if (lib.fpA != nullptr) cholmod_free_sparse(&lib.fpA, &lib.fCommon);
  fN = 0;
  fbFactored = false;
  fbInverse = false;
  fbRelative = false;
  if (n <= 0 || static_cast<int>(colStart.size()) != n + 1) return false;
  const std::size_t nnz = rowIndex.size();
  lib.fpA = cholmod_allocate_sparse(U(n), U(n), nnz, 1, 1, -1, CHOLMOD_REAL, &lib.fCommon);
  if (lib.fpA == nullptr) return false;
  std::copy(colStart.begin(), colStart.end(), static_cast<int*>(lib.fpA->p));
  std::copy(rowIndex.begin(), rowIndex.end(), static_cast<int*>(lib.fpA->i));
  std::fill(static_cast<double*>(lib.fpA->x), static_cast<double*>(lib.fpA->x) + nnz, 0.0);
  const Analysis analysis = OrderAndAnalyze(lib.fpA, columnSets, lib.fCommon);
  lib.fpL = analysis.fpL;
  if (lib.fpL == nullptr) return false;
  fN = n;
  fFlops = analysis.fFlops;
  fEntries = analysis.fEntries;
  const int* perm = static_cast<const int*>(lib.fpL->Perm);
  fvPerm.assign(perm, perm + n);
  fvInvPerm.assign(U(n), 0);
  for (int k = 0; k < n; ++k) fvInvPerm[U(fvPerm[U(k)])] = k;
  ColumnLayout();
  // The positions kept take at most half the factor's memory (ints against
  // doubles); beyond that the gather finds them again each time.
  const cholmod_factor& L = *lib.fpL;
  fbRelative = fRelative.Build(static_cast<int>(L.nsuper), static_cast<const int*>(L.super),
                               static_cast<const int*>(L.pi), static_cast<const int*>(L.px),
                               static_cast<const int*>(L.s), static_cast<long>(L.xsize));
  return true;
}

void MCEngineSparseFactor::ColumnLayout() {
  const cholmod_factor& L = *fpLib->fpL;
  const int* super = static_cast<const int*>(L.super);
  const int* pi = static_cast<const int*>(L.pi);
  const int* px = static_cast<const int*>(L.px);
  fvColValue.assign(U(fN), 0);
  fvColRow.assign(U(fN), 0);
  fvColCount.assign(U(fN), 0);
  for (std::size_t k = 0; k < L.nsuper; ++k) {
    const int nrow = pi[k + 1] - pi[k];
    for (int j = super[k]; j < super[k + 1]; ++j) {
      const int jj = j - super[k];
      fvColValue[U(j)] = static_cast<long>(px[k]) + static_cast<long>(jj) * nrow + jj;
      fvColRow[U(j)] = static_cast<long>(pi[k]) + jj;
      fvColCount[U(j)] = nrow - jj;
    }
  }
}

long MCEngineSparseFactor::GetKernelCalls() { return MCEngineBlas::GetCalls(); }

bool MCEngineSparseFactor::Factorize(const std::vector<double>& values) {
  Library& lib = *fpLib;
  if (fN == 0 || values.size() != lib.fpA->nzmax) return false;
  if (fbFactored && SameUpToRounding(values)) return true;
  fbFactored = false;
  fbInverse = false;
  std::copy(values.begin(), values.end(), static_cast<double*>(lib.fpA->x));
  ++fFactorizations;
  {
    const SerialRegions serial;
    if (!cholmod_factorize(lib.fpA, lib.fpL, &lib.fCommon)) return false;
  }
  if (lib.fCommon.status != CHOLMOD_OK || lib.fpL->minor < U(fN) || !lib.fpL->is_super) return false;
  const double* x = static_cast<const double*>(lib.fpL->x);
  for (int j = 0; j < fN; ++j) {
    const double d = x[fvColValue[U(j)]];
    if (!(d > 0.0) || !std::isfinite(d)) return false;
  }
  fbFactored = true;
  return true;
}

bool MCEngineSparseFactor::SameUpToRounding(const std::vector<double>& values) const {
  const double* last = static_cast<const double*>(fpLib->fpA->x);
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (!(std::fabs(values[k] - last[k]) <= kRounding * std::max(1.0, std::fabs(last[k])))) return false;
  }
  return true;
}

double MCEngineSparseFactor::LogDet() const {
  const double* x = static_cast<const double*>(fpLib->fpL->x);
  double sum = 0.0;
  for (int j = 0; j < fN; ++j) sum += std::log(x[fvColValue[U(j)]]);
  return 2.0 * sum;
}

void MCEngineSparseFactor::SolveOp(Op op, double* b, int nrhs) const {
  Library& lib = *fpLib;
  if (nrhs <= 0 || fN == 0) return;
  cholmod_dense B{};
  B.nrow = U(fN);
  B.ncol = U(nrhs);
  B.nzmax = U(fN) * U(nrhs);
  B.d = U(fN);
  B.x = b;
  B.z = nullptr;
  B.xtype = CHOLMOD_REAL;
  B.dtype = CHOLMOD_DOUBLE;
  // The results and the library's workspace are kept from one solve to the
  // next of the same shape.
  auto step = [&lib](int sys, cholmod_dense* in, cholmod_dense** out) {
    return cholmod_solve2(sys, lib.fpL, in, nullptr, out, nullptr, &lib.fpY, &lib.fpE, &lib.fCommon) != 0;
  };
  bool solved = false;
  switch (op) {
    case kSolveA:
      solved = step(CHOLMOD_A, &B, &lib.fpX);
      break;
    case kSolveL:
      solved = step(CHOLMOD_P, &B, &lib.fpHalf) && step(CHOLMOD_L, lib.fpHalf, &lib.fpX);
      break;
    case kSolveLt:
      solved = step(CHOLMOD_Lt, &B, &lib.fpHalf) && step(CHOLMOD_Pt, lib.fpHalf, &lib.fpX);
      break;
  }
  if (solved) {
    const double* x = static_cast<const double*>(lib.fpX->x);
    std::copy(x, x + static_cast<std::ptrdiff_t>(fN) * nrhs, b);
  } else {
    std::fill(b, b + static_cast<std::ptrdiff_t>(fN) * nrhs, std::nan(""));
  }
}

void MCEngineSparseFactor::Solve(double* b, int nrhs) const { SolveOp(kSolveA, b, nrhs); }

void MCEngineSparseFactor::SolveL(double* b, int nrhs) const { SolveOp(kSolveL, b, nrhs); }

void MCEngineSparseFactor::SolveLt(double* b, int nrhs) const { SolveOp(kSolveLt, b, nrhs); }

bool MCEngineSparseFactor::SelectInverse() {
  if (fbInverse) return true;
  if (!fbFactored || !fbRelative) return false;
  // Supernode by supernode from the last: with J the supernode's columns, S
  // the rows below them, D = L(J, J) and B = L(S, J),
  //   Z(S, J) = -Z(S, S) B D^-1,   Z(J, J) = D^-T D^-1 - D^-T B'Z(S, J),
  // where every entry of Z(S, S) lies on the pattern of a later column.
  // D^-1 is formed once and D^-T D^-1 from its triangle: the last supernode
  // is often a large dense block, where two solves against the identity
  // would take three times the work.
  const cholmod_factor& L = *fpLib->fpL;
  const double* x = static_cast<const double*>(L.x);
  const int* super = static_cast<const int*>(L.super);
  const int* pi = static_cast<const int*>(L.pi);
  const int* px = static_cast<const int*>(L.px);
  // Every entry the recursion or InverseAt reads is written before it is
  // read: the strict upper triangles of the diagonal blocks stay unused.
  fvInverse.resize(L.xsize);
  Scratch& sc = *fpScratch;
  for (long k = static_cast<long>(L.nsuper) - 1; k >= 0; --k) {
    const int nj = super[k + 1] - super[k];
    const int nrow = pi[k + 1] - pi[k];
    const int ns = nrow - nj;
    const Eigen::Map<const Eigen::MatrixXd> block(x + px[k], nrow, nj);
    Eigen::Map<Eigen::MatrixXd> out(&fvInverse[U(px[k])], nrow, nj);
    // D^-1, then D^-T D^-1, in the lower triangle of Z(J, J)'s place.
    double* zjj = out.data();
    out.topRows(nj).triangularView<Eigen::Lower>() = block.topRows(nj);
    MCEngineTriangular::InvertLower(zjj, nj, nrow);
    // The last supernode has no rows below its columns: Z(J, J) = D^-T D^-1.
    if (ns > 0) {
      const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>> dinv(zjj, nj, nj, Eigen::OuterStride<>(nrow));
      Eigen::Map<Eigen::MatrixXd> below = Sized(sc.fZss, ns, ns);
      fRelative.Gather(static_cast<int>(k), fvInverse.data(), below.data());
      Eigen::Map<Eigen::MatrixXd> zsb = Sized(sc.fZsb, ns, nj);
      zsb.noalias() = -(below.selfadjointView<Eigen::Lower>() * block.bottomRows(ns));
      out.bottomRows(ns).noalias() = zsb * dinv.triangularView<Eigen::Lower>();
      // w = D^-T B'Z(S, J), with Z(S, J) in its place.
      Eigen::Map<Eigen::MatrixXd> bz = Sized(sc.fBz, nj, nj);
      bz.noalias() = block.bottomRows(ns).transpose() * out.bottomRows(ns);
      Eigen::Map<Eigen::MatrixXd> w = Sized(sc.fW, nj, nj);
      w.noalias() = dinv.triangularView<Eigen::Lower>().transpose() * bz;
      MCEngineTriangular::LowerGram(zjj, nj, nrow);
      for (int c = 0; c < nj; ++c) {
        for (int r = c; r < nj; ++r) out(r, c) -= 0.5 * (w(r, c) + w(c, r));
      }
    } else {
      MCEngineTriangular::LowerGram(zjj, nj, nrow);
    }
  }
  // Z(S, S) is the one large buffer: kept, it would sit beside the
  // factorisation's own workspace and raise the fit's peak.
  std::vector<double>().swap(sc.fZss);
  fbInverse = true;
  return true;
}

long MCEngineSparseFactor::InversePosition(int i, int j) const {
  if (i < 0 || j < 0 || i >= fN || j >= fN) return -1;
  const int a = fvInvPerm[U(i)];
  const int b = fvInvPerm[U(j)];
  const int col = std::min(a, b);
  const int row = std::max(a, b);
  const int* s = static_cast<const int*>(fpLib->fpL->s);
  const int* first = s + fvColRow[U(col)];
  const int* last = first + fvColCount[U(col)];
  const int* at = std::lower_bound(first, last, row);
  if (at == last || *at != row) return -1;
  return fvColValue[U(col)] + (at - first);
}

}  // namespace MCEngine_850
