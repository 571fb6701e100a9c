#include "numeric/engine/detail/MCEngineHypothesis.h"

#include <algorithm>
#include <cmath>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineProbability.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

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
  Eigen::MatrixXd G2 = Eigen::MatrixXd::Zero(P, P);
  if (r > 0) {
    const Eigen::MatrixXd inv = sub.ldlt().solve(Eigen::MatrixXd::Identity(r, r));
    for (int i = 0; i < r; ++i) {
      for (int j = 0; j < r; ++j) G2(kept[U(i)], kept[U(j)]) = inv(i, j);
    }
  }
  fH = G2 * xtx;
  // Forward Doolittle with the same pivots.
  Eigen::MatrixXd A = xtx;
  fDoolittle = Eigen::MatrixXd::Zero(P, P);
  for (int k = 0; k < P; ++k) {
    if (aliased[U(k)]) continue;
    const double pivot = A(k, k);
    if (!(pivot > 0.0)) continue;
    fDoolittle.row(k) = A.row(k) / pivot;
    for (int i = k + 1; i < P; ++i) {
      const double f = A(i, k);
      if (f != 0.0) A.row(i) -= f * fDoolittle.row(k);
    }
  }
  for (int k = 0; k < P; ++k) {
    for (int j = 0; j < k; ++j) fDoolittle(k, j) = 0.0;
  }
}

void MCEngineHypothesis::SetEstimates(const Eigen::VectorXd& beta, const Eigen::MatrixXd& C,
                                      const std::vector<Eigen::MatrixXd>& dC, const Eigen::MatrixXd& asyCov) {
  fBeta = beta;
  fC = C;
  fvDC = dC;
  fAsyCov = asyCov;
}

bool MCEngineHypothesis::IsEstimable(const Eigen::RowVectorXd& l) const {
  // Without fixed parameters the one function of them is zero, which is
  // estimable (and has nothing to test).
  if (l.size() == 0) return true;
  const double c = l.cwiseAbs().maxCoeff();
  const double scale = c > 0.0 ? c : 1.0;
  return (l - l * fH).cwiseAbs().maxCoeff() <= scale * 1e-4;
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
  Eigen::MatrixXd out(static_cast<Eigen::Index>(keep.size()), P);
  for (std::size_t i = 0; i < keep.size(); ++i) {
    Eigen::RowVectorXd row = L.row(keep[i]);
    for (int c = 0; c < P; ++c) {
      if (std::fabs(row[c]) < 1e-6) row[c] = 0.0;
    }
    out.row(static_cast<Eigen::Index>(i)) = row;
  }
  // A maximal linearly independent subset of the rows, in their order.
  std::vector<int> chosen;
  Eigen::MatrixXd basis(0, P);
  for (int i = 0; i < out.rows(); ++i) {
    if (out.row(i).cwiseAbs().maxCoeff() == 0.0) continue;
    Eigen::MatrixXd trial(basis.rows() + 1, P);
    trial.topRows(basis.rows()) = basis;
    trial.row(basis.rows()) = out.row(i);
    Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(trial.transpose());
    qr.setThreshold(1e-8);
    if (qr.rank() == trial.rows()) {
      basis = trial;
      chosen.push_back(i);
    }
  }
  Eigen::MatrixXd result(static_cast<Eigen::Index>(chosen.size()), P);
  for (std::size_t i = 0; i < chosen.size(); ++i) result.row(static_cast<Eigen::Index>(i)) = out.row(chosen[i]);
  return result;
}

double MCEngineHypothesis::SatterthwaiteDF(const Eigen::RowVectorXd& l, double variance) const {
  const int nf = static_cast<int>(fvDC.size());
  if (fAsyCov.rows() != nf || nf == 0 || !(variance > 0.0)) return MCEngineMissing::Value();
  Eigen::VectorXd g(nf);
  for (int k = 0; k < nf; ++k) g[k] = l.dot(fvDC[U(k)] * l.transpose());
  const double denom = g.dot(fAsyCov * g);
  if (!(denom > 0.0) || !std::isfinite(denom)) return MCEngineMissing::Value();
  return 2.0 * variance * variance / denom;
}

double MCEngineHypothesis::DF(const Eigen::RowVectorXd& l, double variance) const {
  if (!MCEngineMissing::Is(fFixedDF)) return fFixedDF;
  return SatterthwaiteDF(l, variance);
}

MCEngineTest MCEngineHypothesis::Test(const Eigen::MatrixXd& L) const {
  return Test(L, Eigen::VectorXd::Zero(L.rows()));
}

MCEngineTest MCEngineHypothesis::Test(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const {
  MCEngineTest test;
  std::vector<std::vector<double>> rows(U(static_cast<int>(L.rows())));
  for (int i = 0; i < L.rows(); ++i) {
    rows[U(i)].resize(U(static_cast<int>(L.cols())));
    for (int j = 0; j < L.cols(); ++j) rows[U(i)][U(j)] = L(i, j);
  }
  test.SetL(rows);
  if (L.rows() == 0 || fC.rows() != L.cols() || k.size() != L.rows()) return test;
  for (int i = 0; i < L.rows(); ++i) {
    if (!IsEstimable(L.row(i))) return test;
  }
  const Eigen::MatrixXd LCL = L * fC * L.transpose();
  Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(LCL);
  const Eigen::VectorXd ev = es.eigenvalues();
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
  for (int m : use) {
    const Eigen::VectorXd u = es.eigenvectors().col(m);
    const double d = ev[m];
    const double est = u.dot(Lb);
    F += est * est / d;
    const Eigen::RowVectorXd bm = u.transpose() * L;
    const double nu = DF(bm, d);
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
