#include "numeric/engine/detail/MCEngineHypothesis.h"

#include <algorithm>
#include <cmath>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/detail/MCEngineProduct.h"
#include "numeric/engine/detail/MCEngineSymmetricEigen.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// A maximal linearly independent subset of the rows, in their order: each
// row is kept when what is left of it after projecting out the rows kept
// before (twice, against rounding) exceeds 1e-8 of the largest row's norm.
// One projection per row keeps the cost at rows times kept rows times
// columns, where a factorisation of the rows kept so far for every row
// would grow with the fourth power of the columns.
std::vector<int> IndependentRows(const Eigen::MatrixXd& rows) {
  std::vector<int> chosen;
  // Most often every row is independent: R's diagonal of the rows' QR
  // factorisation (blocked, without pivots) is what is left of each row
  // after projecting out the rows before it, and shows that at once.
  double largest = 0.0;
  for (Eigen::Index i = 0; i < rows.rows(); ++i) largest = std::max(largest, rows.row(i).norm());
  if (rows.rows() > 0 && rows.rows() <= rows.cols()) {
    const Eigen::HouseholderQR<Eigen::MatrixXd> qr(rows.transpose());
    const Eigen::VectorXd rest = qr.matrixQR().diagonal().cwiseAbs();
    if (rest.minCoeff() > 1e-6 * largest) {
      for (Eigen::Index i = 0; i < rows.rows(); ++i) chosen.push_back(static_cast<int>(i));
      return chosen;
    }
  }
  // Orthonormal columns, the first `kept` of them filled.
  Eigen::MatrixXd basis(rows.cols(), std::min(rows.rows(), rows.cols()));
  Eigen::Index kept = 0;
  for (Eigen::Index i = 0; i < rows.rows() && kept < basis.cols(); ++i) {
    if (rows.row(i).cwiseAbs().maxCoeff() == 0.0) continue;
    Eigen::VectorXd v = rows.row(i).transpose();
    for (int pass = 0; pass < 2 && kept > 0; ++pass) {
      const Eigen::VectorXd along = basis.leftCols(kept).transpose() * v;
      v.noalias() -= basis.leftCols(kept) * along;
    }
    const double rest = v.norm();
    if (!(rest > 1e-8 * largest)) continue;
    basis.col(kept++) = v / rest;
    chosen.push_back(static_cast<int>(i));
  }
  return chosen;
}

// Makes the rows `keep` of L orthogonal to the rows `zrows`, as projecting
// out each of those rows in turn does, when the `zrows` are independent: the
// rows' QR factorisation (blocked) gives their span at once, and only the
// rows kept are projected, where row-by-row projections of every row cost
// the square of the rows times the columns in strided row operations.
// Returns false, leaving L as it was, when some row of `zrows` is (close to)
// a combination of those before it; the caller then projects row by row.
bool ProjectOutAtOnce(Eigen::MatrixXd& L, const std::vector<int>& zrows, const std::vector<int>& keep) {
  if (zrows.empty() || keep.empty()) return true;
  const Eigen::Index P = L.cols();
  const Eigen::Index z = static_cast<Eigen::Index>(zrows.size());
  if (z >= P) return false;
  Eigen::MatrixXd spanned(P, z);
  double largest = 0.0;
  for (Eigen::Index i = 0; i < z; ++i) {
    spanned.col(i) = L.row(zrows[U(static_cast<int>(i))]).transpose();
    largest = std::max(largest, spanned.col(i).norm());
  }
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(spanned);
  if (!(qr.matrixQR().diagonal().cwiseAbs().minCoeff() > 1e-6 * largest)) return false;
  Eigen::MatrixXd rest(P, static_cast<Eigen::Index>(keep.size()));
  for (std::size_t i = 0; i < keep.size(); ++i) rest.col(static_cast<Eigen::Index>(i)) = L.row(keep[i]).transpose();
  rest.applyOnTheLeft(qr.householderQ().adjoint());
  rest.topRows(z).setZero();
  rest.applyOnTheLeft(qr.householderQ());
  for (std::size_t i = 0; i < keep.size(); ++i) L.row(keep[i]) = rest.col(static_cast<Eigen::Index>(i)).transpose();
  for (int r : zrows) L.row(r).setZero();
  return true;
}

// The inverse of X'X over the columns not aliased.
Eigen::MatrixXd InverseOfKept(const Eigen::MatrixXd& sub) {
  return sub.ldlt().solve(Eigen::MatrixXd::Identity(sub.rows(), sub.rows()));
}

// Forward Doolittle on X'X with its kept columns as pivots: row k is row k
// of X'X less its multiples of the rows pivoted before it, over its pivot.
Eigen::MatrixXd ForwardDoolittle(const Eigen::MatrixXd& xtx, const std::vector<bool>& aliased) {
  const Eigen::Index P = xtx.rows();
  Eigen::MatrixXd A = xtx;
  Eigen::MatrixXd doolittle = Eigen::MatrixXd::Zero(P, P);
  for (Eigen::Index k = 0; k < P; ++k) {
    if (aliased[static_cast<std::size_t>(k)]) continue;
    const double pivot = A(k, k);
    if (!(pivot > 0.0)) continue;
    doolittle.row(k) = A.row(k) / pivot;
    // The rows below less their multiple of row k, on the columns from k on
    // (those left of k are not read again).
    const Eigen::Index below = P - k - 1;
    const Eigen::VectorXd factors = A.col(k).tail(below);
    A.bottomRightCorner(below, P - k).noalias() -= factors * doolittle.row(k).tail(P - k);
  }
  return doolittle;
}

// Over many columns both come from the Cholesky factor L of X'X over the
// kept columns K, in matrix products: the Doolittle row of the i-th kept
// column is row i of L^-1 X'X(K, :) over L_ii, and the inverse is
// L^-T L^-1, a third of the work of solving against the identity. False,
// leaving both to the plain forms, where that factor does not exist.
bool FromTheFactor(const Eigen::MatrixXd& xtx, const std::vector<int>& kept, const Eigen::MatrixXd& sub,
                   Eigen::MatrixXd& inverse, Eigen::MatrixXd& doolittle) {
  const Eigen::Index P = xtx.rows();
  const int r = static_cast<int>(kept.size());
  Eigen::MatrixXd lower = sub;
  if (r == 0 || !MCEngineTriangular::FactorLower(lower.data(), r, r)) return false;
  Eigen::MatrixXd rowsT(P, r);
  for (int i = 0; i < r; ++i) rowsT.col(i) = xtx.col(kept[U(i)]);
  MCEngineTriangular::TimesInverseTransposed(lower.data(), r, r, rowsT.data(), static_cast<int>(P), static_cast<int>(P));
  doolittle = Eigen::MatrixXd::Zero(P, P);
  for (int i = 0; i < r; ++i) doolittle.row(kept[U(i)]) = rowsT.col(i).transpose() / lower(i, i);
  MCEngineTriangular::InvertFromFactor(lower.data(), r, r);
  inverse = std::move(lower);
  return true;
}

}  // namespace

MCEngineHypothesis::MCEngineHypothesis(const Eigen::MatrixXd& xtx, const std::vector<bool>& aliased)
    : fXtX(xtx), fvAliased(aliased) {
  const int P = static_cast<int>(xtx.rows());
  std::vector<int> kept;
  for (int c = 0; c < P; ++c) {
    if (!aliased[U(c)]) kept.push_back(c);
  }
  const int r = static_cast<int>(kept.size());
  Eigen::MatrixXd sub(r, r);
  for (int i = 0; i < r; ++i) {
    for (int j = 0; j < r; ++j) sub(i, j) = xtx(kept[U(i)], kept[U(j)]);
  }
  Eigen::MatrixXd inv;
  if (!MCEngineMostlyZero::PaysOver(P) || !FromTheFactor(xtx, kept, sub, inv, fDoolittle)) {
    if (r > 0) inv = InverseOfKept(sub);
    fDoolittle = ForwardDoolittle(xtx, aliased);
  }
  for (int k = 0; k < P; ++k) {
    for (int j = 0; j < k; ++j) fDoolittle(k, j) = 0.0;
  }
  Eigen::MatrixXd G2 = Eigen::MatrixXd::Zero(P, P);
  for (int i = 0; i < r; ++i) {
    for (int j = 0; j < r; ++j) G2(kept[U(i)], kept[U(j)]) = inv(i, j);
  }
  // The cross-products of a factor's columns are mostly zero.
  fH = MCEngineMostlyZero::PaysOver(P) ? MCEngineMostlyZero(xtx).LeftProduct(G2) : Eigen::MatrixXd(G2 * xtx);
  // The estimability checks hold l - l H to 1e-4 of l's size, which entries
  // of H at the rounding of its largest do not move: without them H is
  // mostly zero when the columns are a factor's.
  fHermiteProducts = MCEngineMostlyZero(fH, fH.size() > 0 ? kNegligible * fH.cwiseAbs().maxCoeff() : 0.0);
}

void MCEngineHypothesis::SetEstimates(const Eigen::VectorXd& beta, const Eigen::MatrixXd& C,
                                      std::vector<Eigen::MatrixXd> dC, std::vector<MCEngineMostlyZero> A,
                                      const Eigen::MatrixXd& asyCov) {
  fBeta = beta;
  fC = C;
  fvDC = std::move(dC);
  fvA = std::move(A);
  fColumnForms.resize(0, 0);
  fDerivativeWork = 0.0;
  ForgetLastTest();
  fAsyCov = asyCov;
}

void MCEngineHypothesis::ForgetLastTest() {
  fLastL.resize(0, 0);
  fLastK.resize(0);
}

bool MCEngineHypothesis::IsEstimable(const Eigen::RowVectorXd& l) const {
  return IsEstimableGiven(l, l - fHermiteProducts.LeftProduct(l));
}

bool MCEngineHypothesis::IsEstimableGiven(const Eigen::RowVectorXd& l, const Eigen::RowVectorXd& lessProjection) {
  // Without fixed parameters the one function of them is zero, which is
  // estimable (and has nothing to test).
  if (l.size() == 0) return true;
  const double c = l.cwiseAbs().maxCoeff();
  const double scale = c > 0.0 ? c : 1.0;
  return lessProjection.cwiseAbs().maxCoeff() <= scale * 1e-4;
}

Eigen::MatrixXd MCEngineHypothesis::TypeI(const MCEngineTerm& term) const {
  std::vector<int> rows;
  for (int c = term.GetFirstColumn(); c < term.GetFirstColumn() + term.GetNColumns(); ++c) {
    if (!fvAliased[U(c)]) rows.push_back(c);
  }
  Eigen::MatrixXd L(static_cast<Eigen::Index>(rows.size()), fXtX.cols());
  for (std::size_t i = 0; i < rows.size(); ++i) L.row(static_cast<Eigen::Index>(i)) = fDoolittle.row(rows[i]);
  return L;
}

Eigen::MatrixXd MCEngineHypothesis::TypeIII(const std::vector<MCEngineTerm>& terms, int t) const {
  const int P = static_cast<int>(fXtX.cols());
  const MCEngineTerm& F = terms[U(t)];
  std::vector<char> inF(U(P), 0), containsF(U(P), 0);
  for (int c = F.GetFirstColumn(); c < F.GetFirstColumn() + F.GetNColumns(); ++c) inF[U(c)] = 1;
  for (std::size_t e = 0; e < terms.size(); ++e) {
    if (static_cast<int>(e) == t || !terms[e].Contains(F)) continue;
    for (int c = terms[e].GetFirstColumn(); c < terms[e].GetFirstColumn() + terms[e].GetNColumns(); ++c) containsF[U(c)] = 1;
  }
  Eigen::MatrixXd L = fH;
  std::vector<char> alive(U(P), 1);
  for (int c = 0; c < P; ++c) {
    if (inF[U(c)] || containsF[U(c)]) continue;
    int r0 = -1;
    for (int r = 0; r < P; ++r) {
      if (!alive[U(r)] || std::fabs(L(r, c)) <= 1e-8) continue;
      if (r0 < 0) {
        r0 = r;
        L.row(r0) /= L(r0, c);
      } else {
        L.row(r) -= L(r, c) * L.row(r0);
      }
    }
    if (r0 >= 0) {
      L.row(r0).setZero();
      alive[U(r0)] = 0;
    }
  }
  std::vector<int> rows;
  for (int r = 0; r < P; ++r) {
    if (alive[U(r)] && L.row(r).cwiseAbs().maxCoeff() > 1e-8) rows.push_back(r);
  }
  // Rows that involve only terms containing F: make the rest orthogonal to them.
  std::vector<int> zrows, keep;
  for (int r : rows) {
    double m = 0.0;
    for (int c = 0; c < P; ++c) {
      if (inF[U(c)]) m = std::max(m, std::fabs(L(r, c)));
    }
    if (m <= 1e-8) {
      zrows.push_back(r);
    } else {
      keep.push_back(r);
    }
  }
  if (!ProjectOutAtOnce(L, zrows, keep)) {
    for (int z : zrows) {
      const Eigen::RowVectorXd w = L.row(z);
      const double ww = w.squaredNorm();
      if (ww > 0.0) {
        for (int r : rows) {
          if (r == z) continue;
          L.row(r) -= (w.dot(L.row(r)) / ww) * w;
        }
      }
      L.row(z).setZero();
    }
  }
  Eigen::MatrixXd out(static_cast<Eigen::Index>(keep.size()), P);
  for (std::size_t i = 0; i < keep.size(); ++i) {
    Eigen::RowVectorXd row = L.row(keep[i]);
    for (int c = 0; c < P; ++c) {
      if (std::fabs(row[c]) < 1e-6) row[c] = 0.0;
    }
    out.row(static_cast<Eigen::Index>(i)) = row;
  }
  const std::vector<int> chosen = IndependentRows(out);
  Eigen::MatrixXd result(static_cast<Eigen::Index>(chosen.size()), P);
  for (std::size_t i = 0; i < chosen.size(); ++i) result.row(static_cast<Eigen::Index>(i)) = out.row(chosen[i]);
  return result;
}

double MCEngineHypothesis::DFOfColumn(int j, double variance) const {
  if (!MCEngineMissing::Is(fFixedDF)) return fFixedDF;
  const int nf = static_cast<int>(fvDC.size() + fvA.size());
  if (fAsyCov.rows() != nf || nf == 0 || !(variance > 0.0)) return MCEngineMissing::Value();
  if (!fvDC.empty()) {
    Eigen::VectorXd g(nf);
    for (int k = 0; k < nf; ++k) g[k] = fvDC[U(k)](j, j);
    return SatterthwaiteFromGradient(g, variance);
  }
  if (fColumnForms.cols() != nf) {
    // C is symmetric: its rows are its columns.
    fColumnForms.resize(fC.rows(), nf);
    for (int k = 0; k < nf; ++k) {
      fColumnForms.col(k) = fvA[U(k)].RowForms(fC);
      fDerivativeWork += static_cast<double>(fC.rows()) * fvA[U(k)].GetRowWork();
    }
  }
  return SatterthwaiteFromGradient(fColumnForms.row(j).transpose(), variance);
}

double MCEngineHypothesis::SatterthwaiteFromGradient(const Eigen::VectorXd& g, double variance) const {
  const double denom = g.dot(fAsyCov * g);
  if (!(denom > 0.0) || !std::isfinite(denom)) return MCEngineMissing::Value();
  return 2.0 * variance * variance / denom;
}

std::vector<double> MCEngineHypothesis::DFs(const Eigen::MatrixXd& rows, const Eigen::MatrixXd& rowsTimesC,
                                            const Eigen::VectorXd& variances) const {
  const int n = static_cast<int>(fvDC.empty() ? rowsTimesC.rows() : rows.rows());
  const int nf = static_cast<int>(fvDC.size() + fvA.size());
  if (!MCEngineMissing::Is(fFixedDF)) return std::vector<double>(U(n), fFixedDF);
  if (fAsyCov.rows() != nf || nf == 0) return std::vector<double>(U(n), MCEngineMissing::Value());
  Eigen::MatrixXd g(n, nf);
  for (int k = 0; k < nf; ++k) {
    if (!fvDC.empty()) {
      g.col(k) = (rows * fvDC[U(k)]).cwiseProduct(rows).rowwise().sum();
      fDerivativeWork += static_cast<double>(n) * static_cast<double>(fvDC[U(k)].size());
      continue;
    }
    g.col(k) = fvA[U(k)].RowForms(rowsTimesC);
    fDerivativeWork += n * fvA[U(k)].GetRowWork();
  }
  std::vector<double> out(U(n));
  for (int i = 0; i < n; ++i) {
    out[U(i)] = variances[i] > 0.0 ? SatterthwaiteFromGradient(g.row(i).transpose(), variances[i]) : MCEngineMissing::Value();
  }
  return out;
}

MCEngineTest MCEngineHypothesis::Test(const Eigen::MatrixXd& L) const {
  return Test(L, Eigen::VectorXd::Zero(L.rows()));
}

std::vector<MCEngineTest> MCEngineHypothesis::TestRows(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const {
  const int n = static_cast<int>(L.rows());
  std::vector<MCEngineTest> tests(U(n));
  for (int i = 0; i < n; ++i) {
    const Eigen::RowVectorXd l = L.row(i);
    tests[U(i)].SetL({std::vector<double>(l.data(), l.data() + l.size())});
  }
  if (n == 0 || fC.rows() != L.cols() || k.size() != L.rows()) return tests;
  ++fCovarianceProducts;
  const Eigen::MatrixXd lessProjection = L - fHermiteProducts.LeftProduct(L);
  const Eigen::MatrixXd LC =
      MCEngineMostlyZero::PaysOver(L.cols()) ? MCEngineMostlyZero(L).RightProduct(fC) : Eigen::MatrixXd(L * fC);
  const Eigen::VectorXd variances = LC.cwiseProduct(L).rowwise().sum();
  const std::vector<double> nus = DFs(L, LC, variances);
  for (int i = 0; i < n; ++i) {
    MCEngineTest& test = tests[U(i)];
    const double var = variances[i];
    if (!IsEstimableGiven(L.row(i), lessProjection.row(i)) || !(var > 0.0)) continue;
    const double est = L.row(i).dot(fBeta);
    const double distance = est - k[i];
    test.SetValid(true);
    test.SetF(distance * distance / var);
    test.SetNumDF(1);
    const double ddf = MCEngineMissing::Is(fFixedDF) ? nus[U(i)] : fFixedDF;
    test.SetDenDF(ddf);
    if (!MCEngineMissing::Is(ddf) && ddf > 0.0) test.SetSig(MCEngineProbability::FUpper(test.GetF(), 1, ddf));
    test.SetEstimate(est);
    const double se = std::sqrt(var);
    test.SetStdError(se);
    test.SetT(est / se);
  }
  return tests;
}

MCEngineTest MCEngineHypothesis::Test(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const {
  if (L.rows() == 1) return TestRows(L, k).front();
  MCEngineTest test;
  std::vector<std::vector<double>> rows(U(static_cast<int>(L.rows())));
  for (int i = 0; i < L.rows(); ++i) {
    rows[U(i)].resize(U(static_cast<int>(L.cols())));
    for (int j = 0; j < L.cols(); ++j) rows[U(i)][U(j)] = L(i, j);
  }
  test.SetL(rows);
  if (L.rows() == 0 || fC.rows() != L.cols() || k.size() != L.rows()) return test;
  if (IsLastTest(L, k)) {
    MCEngineTest same = fLastTest;
    same.SetL(rows);
    return same;
  }
  test = TestOfRows(L, k, test);
  // Over few columns a test costs little, and taking each apart keeps small
  // models' results to the last bit.
  if (MCEngineMostlyZero::PaysOver(L.cols())) {
    fLastL = L;
    fLastK = k;
    fLastTest = test;
  }
  return test;
}

bool MCEngineHypothesis::IsLastTest(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const {
  if (fLastL.rows() != L.rows() || fLastL.cols() != L.cols() || fLastK != k) return false;
  // Rows formed apart (a Doolittle row and a Hermite row) differ by their
  // rounding.
  const double largest = L.cwiseAbs().maxCoeff();
  return (fLastL - L).cwiseAbs().maxCoeff() <= kSameRows * largest;
}

MCEngineTest MCEngineHypothesis::TestOfRows(const Eigen::MatrixXd& L, const Eigen::VectorXd& k, MCEngineTest test) const {
  const Eigen::MatrixXd lessProjection = L - fHermiteProducts.LeftProduct(L);
  for (int i = 0; i < L.rows(); ++i) {
    if (!IsEstimableGiven(L.row(i), lessProjection.row(i))) return test;
  }
  ++fCovarianceProducts;
  // A factor's rows hold a few entries each.
  const bool byEntries = MCEngineMostlyZero::PaysOver(L.cols());
  const MCEngineMostlyZero held = byEntries ? MCEngineMostlyZero(L) : MCEngineMostlyZero();
  const Eigen::MatrixXd LC = byEntries ? held.RightProduct(fC) : Eigen::MatrixXd(L * fC);
  const Eigen::MatrixXd LCL = byEntries ? held.RightProduct(LC.transpose()) : Eigen::MatrixXd(LC * L.transpose());
  Eigen::VectorXd ev(LCL.rows());
  Eigen::MatrixXd vectors(LCL.rows(), LCL.cols());
  MCEngineSymmetricEigen::Decompose(LCL.data(), static_cast<int>(LCL.rows()), ev.data(), vectors.data());
  const double maxEv = ev.maxCoeff();
  if (!(maxEv > 0.0)) return test;
  std::vector<int> use;
  for (int i = 0; i < ev.size(); ++i) {
    if (ev[i] > 1e-8 * maxEv) use.push_back(i);
  }
  const int q = static_cast<int>(use.size());
  const Eigen::VectorXd Lb = L * fBeta - k;
  double F = 0.0;
  double E = 0.0;
  bool dfOK = true;
  double nu1 = MCEngineMissing::Value();
  Eigen::MatrixXd directions(q, L.rows());
  Eigen::VectorXd variances(q);
  for (int i = 0; i < q; ++i) {
    directions.row(i) = vectors.col(use[U(i)]).transpose();
    variances[i] = ev[use[U(i)]];
  }
  // Over few columns the dC_k are formed and the directions' rows taken
  // with each; over many, the rows times C with the A_k.
  const auto times = [byEntries](const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
    return byEntries ? MCEngineProduct::Of(a, b) : Eigen::MatrixXd(a * b);
  };
  const std::vector<double> nus = fvDC.empty() ? DFs(Eigen::MatrixXd(), times(directions, LC), variances)
                                               : DFs(times(directions, L), Eigen::MatrixXd(), variances);
  for (int i = 0; i < q; ++i) {
    const double d = variances[i];
    const double est = directions.row(i).dot(Lb);
    F += est * est / d;
    const double nu = nus[U(i)];
    if (MCEngineMissing::Is(nu)) {
      dfOK = false;
    } else {
      nu1 = nu;
      if (nu > 2.0) E += nu / (nu - 2.0);
    }
  }
  F /= q;
  test.SetValid(true);
  test.SetF(F);
  test.SetNumDF(q);
  double ddf = MCEngineMissing::Value();
  if (!MCEngineMissing::Is(fFixedDF)) {
    ddf = fFixedDF;
  } else if (dfOK) {
    if (q == 1) {
      ddf = nu1;
    } else {
      ddf = E > q ? 2.0 * E / (E - q) : 0.0;
    }
  }
  test.SetDenDF(ddf);
  if (!MCEngineMissing::Is(ddf) && ddf > 0.0) test.SetSig(MCEngineProbability::FUpper(F, q, ddf));
  if (L.rows() == 1) {
    const double est = L.row(0).dot(fBeta);
    const double var = LCL(0, 0);
    test.SetEstimate(est);
    if (var > 0.0) {
      const double se = std::sqrt(var);
      test.SetStdError(se);
      test.SetT(est / se);
    }
  }
  return test;
}

}  // namespace MCEngine_850
