#include "numeric/engine/detail/MCEngineMMEEvaluator.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "numeric/engine/detail/MCEngineDataBuilder.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

inline double TraceOfProduct(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B) {
  return A.cwiseProduct(B.transpose()).sum();
}

}  // namespace

MCEngineMMEEvaluator::MCEngineMMEEvaluator(const MCEngineData& data, const MCEngineModel& model)
    : fData(data), fModel(model), fCopies(data) {
  fbResidualDiagonal = MCEngineDataBuilder::IsDiagonalType(data.fResidualType);
  int offset = 0;
  for (const MCEngineBlockData& bd : data.fvBlocks) {
    fvBlockOffset.push_back(offset);
    offset += bd.fNSubjects * bd.fNColumns;
  }
  fNZ = offset;
  fvZStart.assign(1, 0);
  for (int r = 0; r < data.fNRecords; ++r) {
    std::map<int, double> entries;
    for (std::size_t b = 0; b < data.fvBlocks.size(); ++b) {
      const MCEngineBlockData& bd = data.fvBlocks[b];
      const int base = fvBlockOffset[b] + bd.fvSubject[U(r)] * bd.fNColumns;
      for (int e = bd.fvRowStart[U(r)]; e < bd.fvRowStart[U(r) + 1]; ++e) entries[base + bd.fvColIndex[U(e)]] += bd.fvValues[U(e)];
    }
    for (const auto& entry : entries) {
      fvZIndex.push_back(entry.first);
      fvZValue.push_back(entry.second);
    }
    fvZStart.push_back(static_cast<int>(fvZIndex.size()));
  }
  if (fbResidualDiagonal) {
    fvResGroups.reserve(U(data.fNRecords));
    for (int r = 0; r < data.fNRecords; ++r) fvResGroups.push_back(std::vector<int>(1, r));
  } else {
    std::vector<std::vector<int>> groups(U(data.fNResSubjects));
    for (int r = 0; r < data.fNRecords; ++r) groups[U(data.fvResSubject[U(r)])].push_back(r);
    for (auto& g : groups) {
      if (!g.empty()) fvResGroups.push_back(std::move(g));
    }
  }
  // A group's records lie in one independent group of records, whose copies
  // are the residual group's.
  std::vector<double> componentWeight(U(data.fNRecords));
  for (int c = 0; c < data.GetNComponents(); ++c) {
    for (int r = data.fvComponentStart[U(c)]; r < data.fvComponentStart[U(c) + 1]; ++r) {
      componentWeight[U(r)] = data.fvComponentWeight[U(c)];
    }
  }
  for (const std::vector<int>& g : fvResGroups) fvResGroupWeight.push_back(componentWeight[U(g.front())]);
}

bool MCEngineMMEEvaluator::Evaluate(const Eigen::VectorXd& theta, Level level, bool reml,
                                    MCEngineEvaluation& out) {
  out.fbOK = false;
  if (Cancelled()) return false;
  Work w;
  w.fbDerivs = level >= kGradient;
  w.fbHessian = level >= kHessian;
  w.fbReml = reml;
  if (!FactorG(theta, w)) return false;
  BuildResidual(theta, w);
  StartCrossProducts(w);
  GroupWork gw;
  for (std::size_t g = 0; g < fvResGroups.size(); ++g) {
    if (Cancelled() || !AddResidualGroup(g, w, gw)) return false;
  }
  if (!AddRecordCopies(w)) return false;
  if (!Solve(w, out)) return false;
  out.fbOK = true;
  if (w.fbDerivs) Derivatives(theta, w, out);
  return true;
}

bool MCEngineMMEEvaluator::FactorG(const Eigen::VectorXd& theta, Work& w) const {
  const int nb = fModel.GetNBlocks();
  w.fvLambda.resize(U(nb));
  for (int b = 0; b < nb; ++b) {
    if (!fModel.FactorBlock(theta, b, 0.0, w.fvLambda[U(b)], nullptr)) return false;
  }
  return true;
}

void MCEngineMMEEvaluator::BuildResidual(const Eigen::VectorXd& theta, Work& w) const {
  const MCCovStructure& residual = fModel.GetResidual();
  residual.Build(fModel.Segment(theta, -1), w.fSR);
  const int KR = residual.GetNParams();
  w.fvdR.assign(U(KR), Eigen::MatrixXd());
  if (!w.fbDerivs) return;
  const Eigen::VectorXd seg = fModel.Segment(theta, -1);
  for (int l = 0; l < KR; ++l) residual.Derivative(seg, l, w.fvdR[U(l)]);
  if (!w.fbHessian || residual.IsLinear()) return;
  for (int k = 0; k < KR; ++k) {
    for (int l = k; l < KR; ++l) {
      Eigen::MatrixXd d;
      residual.SecondDerivative(seg, k, l, d);
      if (d.cwiseAbs().maxCoeff() == 0.0) continue;
      w.fvSecondR.emplace_back(k, l);
      w.fvd2R.push_back(std::move(d));
    }
  }
}

void MCEngineMMEEvaluator::StartCrossProducts(Work& w) const {
  const int na = fData.fRank + fNZ + 1;
  const int KR = fModel.GetResidual().GetNParams();
  w.fQbar = Eigen::MatrixXd::Zero(na, na);
  w.fLogDetR = 0.0;
  if (!w.fbDerivs) return;
  w.fvAR.assign(U(KR), Eigen::MatrixXd::Zero(na, na));
  w.fvBR.assign(U(KR * KR), Eigen::MatrixXd());
  for (int k = 0; k < KR; ++k) {
    for (int l = k; l < KR; ++l) w.fvBR[U(k * KR + l)] = Eigen::MatrixXd::Zero(na, na);
  }
  w.ftR = Eigen::VectorXd::Zero(KR);
  w.ftRR = Eigen::MatrixXd::Zero(KR, KR);
  w.fvA2R.assign(w.fvSecondR.size(), Eigen::MatrixXd::Zero(na, na));
  w.ft2R = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(w.fvSecondR.size()));
}

void MCEngineMMEEvaluator::GroupDesign(const std::vector<int>& rows, GroupWork& gw) const {
  const int p = fData.fRank;
  const int nw = p + fNZ;
  const int m = static_cast<int>(rows.size());
  std::vector<int>& idx = gw.fvIndex;
  idx.clear();
  for (int j = 0; j < p; ++j) idx.push_back(j);
  for (int r : rows) {
    for (int e = fvZStart[U(r)]; e < fvZStart[U(r) + 1]; ++e) idx.push_back(p + fvZIndex[U(e)]);
  }
  std::sort(idx.begin() + p, idx.end());
  idx.erase(std::unique(idx.begin() + p, idx.end()), idx.end());
  idx.push_back(nw);
  const int nu = static_cast<int>(idx.size());
  gw.fD.setZero(m, nu);
  for (int a = 0; a < m; ++a) {
    const int r = rows[U(a)];
    for (int j = 0; j < p; ++j) gw.fD(a, j) = fData.fvXr[U(r) * U(p) + U(j)];
    for (int e = fvZStart[U(r)]; e < fvZStart[U(r) + 1]; ++e) {
      const int col = static_cast<int>(std::lower_bound(idx.begin() + p, idx.end() - 1, p + fvZIndex[U(e)]) - idx.begin());
      gw.fD(a, col) += fvZValue[U(e)];
    }
    gw.fD(a, nu - 1) = fData.fvY[U(r)];
  }
}

void MCEngineMMEEvaluator::OverRows(const std::vector<int>& rows, const Eigen::MatrixXd& S, Eigen::MatrixXd& out) const {
  const int m = static_cast<int>(rows.size());
  out.resize(m, m);
  for (int a = 0; a < m; ++a) {
    for (int b = 0; b < m; ++b) {
      const int ra = rows[U(a)], rb = rows[U(b)];
      out(a, b) = S(fData.fvResPosition[U(ra)], fData.fvResPosition[U(rb)]) /
                  std::sqrt(fData.fvScaleWeight[U(ra)] * fData.fvScaleWeight[U(rb)]);
    }
  }
}

bool MCEngineMMEEvaluator::AddResidualGroup(std::size_t g, Work& w, GroupWork& gw) const {
  const std::vector<int>& rows = fvResGroups[g];
  const double f = fvResGroupWeight[g];
  const int m = static_cast<int>(rows.size());
  const int KR = fModel.GetResidual().GetNParams();
  GroupDesign(rows, gw);
  const std::vector<int>& idx = gw.fvIndex;
  const int nu = static_cast<int>(idx.size());
  // Adds the group's matrix over its columns to one over all of [W y].
  auto scatter = [&](const Eigen::MatrixXd& a, Eigen::MatrixXd& to) {
    for (int i = 0; i < nu; ++i) {
      for (int j = 0; j < nu; ++j) to(idx[U(i)], idx[U(j)]) += f * a(i, j);
    }
  };
  OverRows(rows, w.fSR, gw.fR);
  gw.fLlt.compute(gw.fR);
  if (gw.fLlt.info() != Eigen::Success) return false;
  for (int a = 0; a < m; ++a) {
    const double d = gw.fLlt.matrixLLT()(a, a);
    if (!(d > 0.0) || !std::isfinite(d)) return false;
    w.fLogDetR += f * 2.0 * std::log(d);
  }
  gw.fRinv = gw.fLlt.solve(Eigen::MatrixXd::Identity(m, m));
  gw.fT.noalias() = gw.fRinv * gw.fD;
  scatter(gw.fD.transpose() * gw.fT, w.fQbar);
  if (!w.fbDerivs) return true;
  gw.fvRl.resize(U(KR));
  gw.fvUl.resize(U(KR));
  gw.fvRinvUl.resize(U(KR));
  for (int l = 0; l < KR; ++l) {
    OverRows(rows, w.fvdR[U(l)], gw.fvRl[U(l)]);
    gw.fvUl[U(l)].noalias() = gw.fvRl[U(l)] * gw.fT;
    gw.fvRinvUl[U(l)].noalias() = gw.fRinv * gw.fvUl[U(l)];
    w.ftR[l] += f * TraceOfProduct(gw.fRinv, gw.fvRl[U(l)]);
    scatter(gw.fT.transpose() * gw.fvUl[U(l)], w.fvAR[U(l)]);
  }
  for (int k = 0; k < KR; ++k) {
    const Eigen::MatrixXd RinvRk = gw.fRinv * gw.fvRl[U(k)];
    for (int l = k; l < KR; ++l) {
      w.ftRR(k, l) += f * TraceOfProduct(RinvRk, gw.fRinv * gw.fvRl[U(l)]);
      scatter(gw.fvRinvUl[U(k)].transpose() * gw.fvUl[U(l)], w.fvBR[U(k * KR + l)]);
    }
  }
  for (std::size_t s = 0; s < w.fvSecondR.size(); ++s) {
    Eigen::MatrixXd Rkl;
    OverRows(rows, w.fvd2R[s], Rkl);
    w.ft2R[static_cast<Eigen::Index>(s)] += f * TraceOfProduct(gw.fRinv, Rkl);
    scatter(gw.fT.transpose() * Rkl * gw.fT, w.fvA2R[s]);
  }
  return true;
}

bool MCEngineMMEEvaluator::AddRecordCopies(Work& w) const {
  if (fCopies.IsEmpty()) return true;
  double add = 0.0;
  if (!fCopies.LogDet(w.fSR, add)) return false;
  w.fLogDetR += add;
  const int KR = fModel.GetResidual().GetNParams();
  for (int k = 0; w.fbDerivs && k < KR; ++k) {
    w.ftR[k] += fCopies.Trace(w.fSR, w.fvdR[U(k)]);
    for (int l = k; l < KR; ++l) w.ftRR(k, l) += fCopies.TraceOfProducts(w.fSR, w.fvdR[U(k)], w.fvdR[U(l)]);
  }
  for (std::size_t s = 0; s < w.fvSecondR.size(); ++s) {
    w.ft2R[static_cast<Eigen::Index>(s)] += fCopies.Trace(w.fSR, w.fvd2R[s]);
  }
  return true;
}

bool MCEngineMMEEvaluator::Solve(Work& w, MCEngineEvaluation& out) const {
  const int p = fData.fRank;
  const int nz = fNZ;
  const int nw = p + nz;
  // The mixed-model equations in the Lambda form.
  const Eigen::MatrixXd Q = w.fQbar.topLeftCorner(nw, nw);
  const Eigen::VectorXd Qwy = w.fQbar.col(nw).head(nw);
  Eigen::MatrixXd Mstar(nw, nw);
  Mstar.topLeftCorner(p, p) = Q.topLeftCorner(p, p);
  const Eigen::MatrixXd QxzL = RightMultiplyLambda(w, Q.topRightCorner(p, nz), false);
  Mstar.topRightCorner(p, nz) = QxzL;
  Mstar.bottomLeftCorner(nz, p) = QxzL.transpose();
  Eigen::MatrixXd Mz = LeftMultiplyLambda(w, RightMultiplyLambda(w, Q.bottomRightCorner(nz, nz), false), true);
  Mz += Eigen::MatrixXd::Identity(nz, nz);
  Mstar.bottomRightCorner(nz, nz) = Mz;
  Eigen::LLT<Eigen::MatrixXd> lm(Mstar);
  if (lm.info() != Eigen::Success) return false;
  double logDetM = 0.0;
  for (int i = 0; i < nw; ++i) logDetM += 2.0 * std::log(lm.matrixLLT()(i, i));
  const Eigen::MatrixXd Kstar = lm.solve(Eigen::MatrixXd::Identity(nw, nw));
  Eigen::MatrixXd& Kmat = w.fKmat;
  Kmat.resize(nw, nw);
  Kmat.topLeftCorner(p, p) = Kstar.topLeftCorner(p, p);
  const Eigen::MatrixXd KxzL = RightMultiplyLambda(w, Kstar.topRightCorner(p, nz), true);
  Kmat.topRightCorner(p, nz) = KxzL;
  Kmat.bottomLeftCorner(nz, p) = KxzL.transpose();
  Kmat.bottomRightCorner(nz, nz) = LeftMultiplyLambda(w, RightMultiplyLambda(w, Kstar.bottomRightCorner(nz, nz), true), false);
  w.fLz.compute(Mz);
  if (w.fLz.info() != Eigen::Success) return false;
  double logDetMz = 0.0;
  for (int i = 0; i < nz; ++i) logDetMz += 2.0 * std::log(w.fLz.matrixLLT()(i, i));

  // The solution through the factor rather than the inverse, and r'V^-1 r
  // as y'R^-1 y less the squared norm of L^-1 t: fewer digits lost.
  Eigen::VectorXd t = Qwy;
  t.tail(nz) = LeftMultiplyLambda(w, Qwy.tail(nz), true);
  const Eigen::VectorXd half = lm.matrixL().solve(t);
  Eigen::VectorXd solution = lm.matrixU().solve(half);
  solution.tail(nz) = LeftMultiplyLambda(w, solution.tail(nz), false);
  w.fSolution = solution;
  out.fLogDetV = w.fLogDetR + logDetMz;
  out.fLogDetXVX = logDetM - logDetMz;
  out.fBeta = w.fSolution.head(p);
  out.fC = Kmat.topLeftCorner(p, p);
  out.fRVR = w.fQbar(nw, nw) - half.squaredNorm();
  return std::isfinite(out.fRVR) && std::isfinite(out.fLogDetV) && std::isfinite(out.fLogDetXVX);
}

void MCEngineMMEEvaluator::Derivatives(const Eigen::VectorXd& theta, const Work& w, MCEngineEvaluation& out) const {
  const Shared sh = SharedPieces(w);
  const RandomPieces rp = RandomDerivatives(theta, w, sh);
  const ResidualPieces res = ResidualDerivatives(w, sh);
  Gradient(w, sh, rp, res, out);
  Hessians(w, sh, rp, res, out);
  if (w.fbHessian) AddSecondDerivatives(theta, w, sh, out);
}

MCEngineMMEEvaluator::Shared MCEngineMMEEvaluator::SharedPieces(const Work& w) const {
  const int p = fData.fRank;
  const int nz = fNZ;
  const int nw = p + nz;
  const Eigen::MatrixXd Q = w.fQbar.topLeftCorner(nw, nw);
  const Eigen::VectorXd Qwy = w.fQbar.col(nw).head(nw);
  const Eigen::MatrixXd& Kmat = w.fKmat;
  Shared sh;
  sh.fKz = LeftMultiplyLambda(w, RightMultiplyLambda(w, w.fLz.solve(Eigen::MatrixXd::Identity(nz, nz)), true), false);
  const Eigen::MatrixXd Qzz = Q.bottomRightCorner(nz, nz);
  const Eigen::MatrixXd Qzx = Q.bottomLeftCorner(nz, p);
  const Eigen::MatrixXd Omega = Q - Q * Kmat * Q;
  sh.fOmegaZ = Omega.bottomRightCorner(nz, nz);
  sh.fOmegaMLZ = Qzz - Qzz * sh.fKz * Qzz;
  const Eigen::VectorXd v = Qwy - Q * w.fSolution;  // W'P y
  sh.fs = v.tail(nz);
  sh.fbbar.resize(nw + 1);
  sh.fbbar.head(nw) = -w.fSolution;
  sh.fbbar[nw] = 1.0;
  sh.fF = Eigen::MatrixXd::Identity(nw, nw) - Q * Kmat;
  sh.fFz = Eigen::MatrixXd::Identity(nz, nz) - Qzz * sh.fKz;
  sh.fHzx = Qzx - Qzz * sh.fKz * Qzx;
  sh.fTx.resize(nw, p);
  sh.fTx.topRows(p) = Eigen::MatrixXd::Identity(p, p);
  sh.fTx.bottomRows(nz) = -sh.fKz * Qzx;
  return sh;
}

MCEngineMMEEvaluator::RandomPieces MCEngineMMEEvaluator::RandomDerivatives(const Eigen::VectorXd& theta,
                                                                           const Work& w, const Shared& sh) const {
  const int ro = fModel.GetResidualOffset();
  RandomPieces rp;
  rp.fvdG.resize(U(ro));
  rp.fvY.resize(U(ro));
  rp.fvv.resize(U(ro));
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), rp.fvdG[U(k)]);
    rp.fvY[U(k)] = Eigen::MatrixXd::Zero(fNZ, fNZ);
    RightMultiply(sh.OmegaT(w.fbReml), b, rp.fvdG[U(k)], rp.fvY[U(k)]);
    rp.fvv[U(k)] = BlockApply(b, rp.fvdG[U(k)], sh.fs);
  }
  return rp;
}

MCEngineMMEEvaluator::ResidualPieces MCEngineMMEEvaluator::ResidualDerivatives(const Work& w,
                                                                               const Shared& sh) const {
  const int nz = fNZ;
  const int nw = fData.fRank + nz;
  const int KR = fModel.GetResidual().GetNParams();
  ResidualPieces res;
  res.fvARw.resize(U(KR));
  res.fvKA.resize(U(KR));
  res.fvFAF.resize(U(KR));
  res.fvaR.resize(U(KR));
  res.fvFaR.resize(U(KR));
  for (int l = 0; l < KR; ++l) {
    const Eigen::MatrixXd& AR = w.fvAR[U(l)];
    res.fvARw[U(l)] = AR.topLeftCorner(nw, nw);
    res.fvaR[U(l)] = AR.topRows(nw) * sh.fbbar;
    res.fvFaR[U(l)] = sh.fF * res.fvaR[U(l)];
    if (w.fbReml) {
      res.fvKA[U(l)] = w.fKmat * res.fvARw[U(l)];
      res.fvFAF[U(l)] = (sh.fF * res.fvARw[U(l)] * sh.fF.transpose()).bottomRightCorner(nz, nz);
    } else {
      res.fvKA[U(l)] = sh.fKz * res.fvARw[U(l)].bottomRightCorner(nz, nz);
      res.fvFAF[U(l)] = sh.fFz * res.fvARw[U(l)].bottomRightCorner(nz, nz) * sh.fFz.transpose();
    }
  }
  return res;
}

void MCEngineMMEEvaluator::Gradient(const Work& w, const Shared& sh, const RandomPieces& rp,
                                    const ResidualPieces& res, MCEngineEvaluation& out) const {
  const int K = fModel.GetNParams();
  const int ro = fModel.GetResidualOffset();
  const int KR = fModel.GetResidual().GetNParams();
  out.fGrad.resize(K);
  out.fQuad.resize(K);
  out.fTrace.resize(K);
  out.fvA.assign(U(K), Eigen::MatrixXd());
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    out.fTrace[k] = rp.fvY[U(k)].trace();
    out.fQuad[k] = sh.fs.dot(rp.fvv[U(k)]);
    Eigen::MatrixXd GH(fNZ, fData.fRank);
    GH.setZero();
    LeftMultiply(b, rp.fvdG[U(k)], sh.fHzx, GH);
    out.fvA[U(k)] = sh.fHzx.transpose() * GH;
  }
  for (int l = 0; l < KR; ++l) {
    out.fTrace[ro + l] = w.ftR[l] - res.fvKA[U(l)].trace();
    out.fQuad[ro + l] = sh.fbbar.dot(w.fvAR[U(l)] * sh.fbbar);
    out.fvA[U(ro + l)] = sh.fTx.transpose() * res.fvARw[U(l)] * sh.fTx;
  }
  for (int k = 0; k < K; ++k) out.fGrad[k] = out.fTrace[k] - out.fQuad[k];
}

void MCEngineMMEEvaluator::Hessians(const Work& w, const Shared& sh, const RandomPieces& rp,
                                    const ResidualPieces& res, MCEngineEvaluation& out) const {
  const int K = fModel.GetNParams();
  const int ro = fModel.GetResidualOffset();
  const int KR = fModel.GetResidual().GetNParams();
  const int p = fData.fRank;
  const int nz = fNZ;
  const int nw = p + nz;
  out.fHessExpected.resize(K, K);
  if (w.fbHessian) out.fHessObserved.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) {
      double e, quad2;
      if (l < ro) {
        e = TraceOfProduct(rp.fvY[U(k)], rp.fvY[U(l)]);
        quad2 = rp.fvv[U(k)].dot(sh.fOmegaZ * rp.fvv[U(l)]);
      } else if (k < ro) {
        const int lr = l - ro;
        e = BlockTrace(fModel.GetBlockOf(k), rp.fvdG[U(k)], res.fvFAF[U(lr)]);
        quad2 = rp.fvv[U(k)].dot(res.fvFaR[U(lr)].tail(nz));
      } else {
        const int kr = k - ro, lr = l - ro;
        const Eigen::MatrixXd& B = w.fvBR[U(kr * KR + lr)];
        if (w.fbReml) {
          e = w.ftRR(kr, lr) - 2.0 * TraceOfProduct(w.fKmat, B.topLeftCorner(nw, nw)) +
              TraceOfProduct(res.fvKA[U(kr)], res.fvKA[U(lr)]);
        } else {
          e = w.ftRR(kr, lr) - 2.0 * TraceOfProduct(sh.fKz, B.block(p, p, nz, nz)) +
              TraceOfProduct(res.fvKA[U(kr)], res.fvKA[U(lr)]);
        }
        quad2 = sh.fbbar.dot(B * sh.fbbar) - res.fvaR[U(kr)].dot(w.fKmat * res.fvaR[U(lr)]);
      }
      out.fHessExpected(k, l) = out.fHessExpected(l, k) = e;
      if (w.fbHessian) out.fHessObserved(k, l) = out.fHessObserved(l, k) = -e + 2.0 * quad2;
    }
  }
}

void MCEngineMMEEvaluator::AddSecondDerivatives(const Eigen::VectorXd& theta, const Work& w, const Shared& sh,
                                                MCEngineEvaluation& out) const {
  const int ro = fModel.GetResidualOffset();
  const int p = fData.fRank;
  const int nz = fNZ;
  const int nw = p + nz;
  // Non-linear random structures.
  for (int k = 0; k < ro; ++k) {
    for (int l = k; l < ro; ++l) {
      const int b = fModel.GetBlockOf(k);
      if (fModel.GetBlockOf(l) != b || fModel.GetBlock(b).IsLinear()) continue;
      Eigen::MatrixXd d;
      fModel.GetBlock(b).SecondDerivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), fModel.GetLocalIndex(l), d);
      if (d.cwiseAbs().maxCoeff() == 0.0) continue;
      const double extra = BlockTrace(b, d, sh.OmegaT(w.fbReml)) - sh.fs.dot(BlockApply(b, d, sh.fs));
      out.fHessObserved(k, l) += extra;
      if (k != l) out.fHessObserved(l, k) += extra;
    }
  }
  // The residual structure.
  for (std::size_t si = 0; si < w.fvSecondR.size(); ++si) {
    const int kr = w.fvSecondR[si].first, lr = w.fvSecondR[si].second;
    const Eigen::MatrixXd& A2 = w.fvA2R[si];
    double t2 = w.ft2R[static_cast<Eigen::Index>(si)];
    if (w.fbReml) {
      t2 -= TraceOfProduct(w.fKmat, A2.topLeftCorner(nw, nw));
    } else {
      t2 -= TraceOfProduct(sh.fKz, A2.block(p, p, nz, nz));
    }
    const double extra = t2 - sh.fbbar.dot(A2 * sh.fbbar);
    out.fHessObserved(ro + kr, ro + lr) += extra;
    if (kr != lr) out.fHessObserved(ro + lr, ro + kr) += extra;
  }
}

void MCEngineMMEEvaluator::RightMultiply(const Eigen::MatrixXd& M, int b, const Eigen::MatrixXd& d,
                                         Eigen::MatrixXd& out) const {
  const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
  for (int su = 0; su < bd.fNSubjects; ++su) {
    const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
    out.middleCols(o, bd.fNColumns).noalias() = M.middleCols(o, bd.fNColumns) * d;
  }
}

void MCEngineMMEEvaluator::LeftMultiply(int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M,
                                        Eigen::MatrixXd& out) const {
  const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
  for (int su = 0; su < bd.fNSubjects; ++su) {
    const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
    out.middleRows(o, bd.fNColumns).noalias() = d * M.middleRows(o, bd.fNColumns);
  }
}

Eigen::MatrixXd MCEngineMMEEvaluator::RightMultiplyLambda(const Work& w, const Eigen::MatrixXd& M,
                                                          bool transpose) const {
  Eigen::MatrixXd out(M.rows(), fNZ);
  for (int b = 0; b < fModel.GetNBlocks(); ++b) {
    RightMultiply(M, b, transpose ? Eigen::MatrixXd(w.fvLambda[U(b)].transpose()) : w.fvLambda[U(b)], out);
  }
  return out;
}

Eigen::MatrixXd MCEngineMMEEvaluator::LeftMultiplyLambda(const Work& w, const Eigen::MatrixXd& M,
                                                         bool transpose) const {
  Eigen::MatrixXd out(fNZ, M.cols());
  for (int b = 0; b < fModel.GetNBlocks(); ++b) {
    LeftMultiply(b, transpose ? Eigen::MatrixXd(w.fvLambda[U(b)].transpose()) : w.fvLambda[U(b)], M, out);
  }
  return out;
}

double MCEngineMMEEvaluator::BlockTrace(int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M) const {
  const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
  double t = 0.0;
  for (int su = 0; su < bd.fNSubjects; ++su) {
    const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
    t += TraceOfProduct(d, M.block(o, o, bd.fNColumns, bd.fNColumns));
  }
  return t;
}

Eigen::VectorXd MCEngineMMEEvaluator::BlockApply(int b, const Eigen::MatrixXd& d, const Eigen::VectorXd& x) const {
  Eigen::VectorXd out = Eigen::VectorXd::Zero(fNZ);
  const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
  for (int su = 0; su < bd.fNSubjects; ++su) {
    const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
    out.segment(o, bd.fNColumns) = d * x.segment(o, bd.fNColumns);
  }
  return out;
}

}  // namespace MCEngine_850
