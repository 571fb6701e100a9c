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
  const int K = fModel.GetNParams();
  const int p = fData.fRank;
  const int nz = fNZ;
  const int nw = p + nz;
  const int na = nw + 1;  // with y
  const int nb = fModel.GetNBlocks();
  const bool derivs = level >= kGradient;
  const bool hessian = level >= kHessian;

  // Lambda: G = Lambda Lambda', block by block (the same factor for every subject of a block).
  std::vector<Eigen::MatrixXd> Lb(U(nb));
  for (int b = 0; b < nb; ++b) {
    Eigen::MatrixXd Gb;
    fModel.GetBlock(b).Build(fModel.Segment(theta, b), Gb);
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(Gb);
    if (es.info() != Eigen::Success) return false;
    const Eigen::VectorXd ev = es.eigenvalues();
    const double scale = std::max(ev.cwiseAbs().maxCoeff(), 1e-300);
    if (ev.minCoeff() < -1e-10 * scale) return false;
    Lb[U(b)] = es.eigenvectors() * ev.cwiseMax(0.0).cwiseSqrt().asDiagonal();
  }
  // Products with block-diagonal matrices over the random columns: one small
  // matrix per block, repeated for each of the block's subjects.
  auto rightMul = [&](const Eigen::MatrixXd& M, int b, const Eigen::MatrixXd& d, Eigen::MatrixXd& out) {
    const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
    for (int su = 0; su < bd.fNSubjects; ++su) {
      const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
      out.middleCols(o, bd.fNColumns).noalias() = M.middleCols(o, bd.fNColumns) * d;
    }
  };
  auto leftMul = [&](int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M, Eigen::MatrixXd& out) {
    const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
    for (int su = 0; su < bd.fNSubjects; ++su) {
      const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
      out.middleRows(o, bd.fNColumns).noalias() = d * M.middleRows(o, bd.fNColumns);
    }
  };
  auto rightMulLambda = [&](const Eigen::MatrixXd& M, bool transpose) {
    Eigen::MatrixXd out(M.rows(), nz);
    for (int b = 0; b < nb; ++b) rightMul(M, b, transpose ? Eigen::MatrixXd(Lb[U(b)].transpose()) : Lb[U(b)], out);
    return out;
  };
  auto leftMulLambda = [&](const Eigen::MatrixXd& M, bool transpose) {
    Eigen::MatrixXd out(nz, M.cols());
    for (int b = 0; b < nb; ++b) leftMul(b, transpose ? Eigen::MatrixXd(Lb[U(b)].transpose()) : Lb[U(b)], M, out);
    return out;
  };

  // Residual structure and its derivatives.
  Eigen::MatrixXd SR;
  fModel.GetResidual().Build(fModel.Segment(theta, -1), SR);
  const int ro = fModel.GetResidualOffset();
  const int KR = fModel.GetResidual().GetNParams();
  std::vector<Eigen::MatrixXd> dR(U(KR));
  std::vector<std::pair<int, int>> secondR;
  std::vector<Eigen::MatrixXd> d2R;
  if (derivs) {
    const Eigen::VectorXd seg = fModel.Segment(theta, -1);
    for (int l = 0; l < KR; ++l) fModel.GetResidual().Derivative(seg, l, dR[U(l)]);
    if (hessian && !fModel.GetResidual().IsLinear()) {
      for (int k = 0; k < KR; ++k) {
        for (int l = k; l < KR; ++l) {
          Eigen::MatrixXd d;
          fModel.GetResidual().SecondDerivative(seg, k, l, d);
          if (d.cwiseAbs().maxCoeff() == 0.0) continue;
          secondR.emplace_back(k, l);
          d2R.push_back(std::move(d));
        }
      }
    }
  }

  // Cross products of [X Z y] weighted by R^-1 and by the R derivatives.
  Eigen::MatrixXd Qbar = Eigen::MatrixXd::Zero(na, na);
  std::vector<Eigen::MatrixXd> AR, BR, A2R;
  Eigen::VectorXd tR, t2R;
  Eigen::MatrixXd tRR;
  if (derivs) {
    AR.assign(U(KR), Eigen::MatrixXd::Zero(na, na));
    BR.assign(U(KR * KR), Eigen::MatrixXd());
    for (int k = 0; k < KR; ++k) {
      for (int l = k; l < KR; ++l) BR[U(k * KR + l)] = Eigen::MatrixXd::Zero(na, na);
    }
    tR = Eigen::VectorXd::Zero(KR);
    tRR = Eigen::MatrixXd::Zero(KR, KR);
    A2R.assign(secondR.size(), Eigen::MatrixXd::Zero(na, na));
    t2R = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(secondR.size()));
  }
  double logDetR = 0.0;
  std::vector<int> idx;
  Eigen::MatrixXd D, Rg, Rinv, T;
  std::vector<Eigen::MatrixXd> Rl(U(KR)), Ul(U(KR)), RinvUl(U(KR));
  Eigen::LLT<Eigen::MatrixXd> llt;
  for (std::size_t g = 0; g < fvResGroups.size(); ++g) {
    const std::vector<int>& rows = fvResGroups[g];
    const double f = fvResGroupWeight[g];
    const int m = static_cast<int>(rows.size());
    idx.clear();
    for (int j = 0; j < p; ++j) idx.push_back(j);
    for (int r : rows) {
      for (int e = fvZStart[U(r)]; e < fvZStart[U(r) + 1]; ++e) idx.push_back(p + fvZIndex[U(e)]);
    }
    std::sort(idx.begin() + p, idx.end());
    idx.erase(std::unique(idx.begin() + p, idx.end()), idx.end());
    idx.push_back(nw);
    const int nu = static_cast<int>(idx.size());
    D.setZero(m, nu);
    for (int a = 0; a < m; ++a) {
      const int r = rows[U(a)];
      for (int j = 0; j < p; ++j) D(a, j) = fData.fvXr[U(r) * U(p) + U(j)];
      for (int e = fvZStart[U(r)]; e < fvZStart[U(r) + 1]; ++e) {
        const int col = static_cast<int>(std::lower_bound(idx.begin() + p, idx.end() - 1, p + fvZIndex[U(e)]) - idx.begin());
        D(a, col) += fvZValue[U(e)];
      }
      D(a, nu - 1) = fData.fvY[U(r)];
    }
    Rg.resize(m, m);
    for (int a = 0; a < m; ++a) {
      for (int b = 0; b < m; ++b) {
        const int ra = rows[U(a)], rb = rows[U(b)];
        Rg(a, b) = SR(fData.fvResPosition[U(ra)], fData.fvResPosition[U(rb)]) /
                   std::sqrt(fData.fvScaleWeight[U(ra)] * fData.fvScaleWeight[U(rb)]);
      }
    }
    llt.compute(Rg);
    if (llt.info() != Eigen::Success) return false;
    for (int a = 0; a < m; ++a) {
      const double d = llt.matrixLLT()(a, a);
      if (!(d > 0.0) || !std::isfinite(d)) return false;
      logDetR += f * 2.0 * std::log(d);
    }
    Rinv = llt.solve(Eigen::MatrixXd::Identity(m, m));
    T.noalias() = Rinv * D;
    const Eigen::MatrixXd q = D.transpose() * T;
    for (int a = 0; a < nu; ++a) {
      for (int b = 0; b < nu; ++b) Qbar(idx[U(a)], idx[U(b)]) += f * q(a, b);
    }
    if (!derivs) continue;
    for (int l = 0; l < KR; ++l) {
      Rl[U(l)].resize(m, m);
      for (int a = 0; a < m; ++a) {
        for (int b = 0; b < m; ++b) {
          const int ra = rows[U(a)], rb = rows[U(b)];
          Rl[U(l)](a, b) = dR[U(l)](fData.fvResPosition[U(ra)], fData.fvResPosition[U(rb)]) /
                           std::sqrt(fData.fvScaleWeight[U(ra)] * fData.fvScaleWeight[U(rb)]);
        }
      }
      Ul[U(l)].noalias() = Rl[U(l)] * T;
      RinvUl[U(l)].noalias() = Rinv * Ul[U(l)];
      tR[l] += f * TraceOfProduct(Rinv, Rl[U(l)]);
      const Eigen::MatrixXd a = T.transpose() * Ul[U(l)];
      for (int i = 0; i < nu; ++i) {
        for (int j = 0; j < nu; ++j) AR[U(l)](idx[U(i)], idx[U(j)]) += f * a(i, j);
      }
    }
    for (int k = 0; k < KR; ++k) {
      const Eigen::MatrixXd RinvRk = Rinv * Rl[U(k)];
      for (int l = k; l < KR; ++l) {
        tRR(k, l) += f * TraceOfProduct(RinvRk, Rinv * Rl[U(l)]);
        const Eigen::MatrixXd bkl = RinvUl[U(k)].transpose() * Ul[U(l)];
        for (int i = 0; i < nu; ++i) {
          for (int j = 0; j < nu; ++j) BR[U(k * KR + l)](idx[U(i)], idx[U(j)]) += f * bkl(i, j);
        }
      }
    }
    for (std::size_t s = 0; s < secondR.size(); ++s) {
      Eigen::MatrixXd Rkl(m, m);
      for (int a = 0; a < m; ++a) {
        for (int b = 0; b < m; ++b) {
          const int ra = rows[U(a)], rb = rows[U(b)];
          Rkl(a, b) = d2R[s](fData.fvResPosition[U(ra)], fData.fvResPosition[U(rb)]) /
                      std::sqrt(fData.fvScaleWeight[U(ra)] * fData.fvScaleWeight[U(rb)]);
        }
      }
      t2R[static_cast<Eigen::Index>(s)] += f * TraceOfProduct(Rinv, Rkl);
      const Eigen::MatrixXd a = T.transpose() * Rkl * T;
      for (int i = 0; i < nu; ++i) {
        for (int j = 0; j < nu; ++j) A2R[s](idx[U(i)], idx[U(j)]) += f * a(i, j);
      }
    }
  }

  // Copies of weighted records.
  if (!fCopies.IsEmpty()) {
    double add = 0.0;
    if (!fCopies.LogDet(SR, add)) return false;
    logDetR += add;
    for (int k = 0; derivs && k < KR; ++k) {
      tR[k] += fCopies.Trace(SR, dR[U(k)]);
      for (int l = k; l < KR; ++l) tRR(k, l) += fCopies.TraceOfProducts(SR, dR[U(k)], dR[U(l)]);
    }
    for (std::size_t s = 0; s < secondR.size(); ++s) t2R[static_cast<Eigen::Index>(s)] += fCopies.Trace(SR, d2R[s]);
  }

  // The mixed-model equations in the Lambda form.
  const Eigen::MatrixXd Q = Qbar.topLeftCorner(nw, nw);
  const Eigen::VectorXd Qwy = Qbar.col(nw).head(nw);
  Eigen::MatrixXd Mstar(nw, nw);
  Mstar.topLeftCorner(p, p) = Q.topLeftCorner(p, p);
  const Eigen::MatrixXd QxzL = rightMulLambda(Q.topRightCorner(p, nz), false);
  Mstar.topRightCorner(p, nz) = QxzL;
  Mstar.bottomLeftCorner(nz, p) = QxzL.transpose();
  Eigen::MatrixXd Mz = leftMulLambda(rightMulLambda(Q.bottomRightCorner(nz, nz), false), true);
  Mz += Eigen::MatrixXd::Identity(nz, nz);
  Mstar.bottomRightCorner(nz, nz) = Mz;
  Eigen::LLT<Eigen::MatrixXd> lm(Mstar);
  if (lm.info() != Eigen::Success) return false;
  double logDetM = 0.0;
  for (int i = 0; i < nw; ++i) logDetM += 2.0 * std::log(lm.matrixLLT()(i, i));
  const Eigen::MatrixXd Kstar = lm.solve(Eigen::MatrixXd::Identity(nw, nw));
  Eigen::MatrixXd Kmat(nw, nw);
  Kmat.topLeftCorner(p, p) = Kstar.topLeftCorner(p, p);
  const Eigen::MatrixXd KxzL = rightMulLambda(Kstar.topRightCorner(p, nz), true);
  Kmat.topRightCorner(p, nz) = KxzL;
  Kmat.bottomLeftCorner(nz, p) = KxzL.transpose();
  Kmat.bottomRightCorner(nz, nz) = leftMulLambda(rightMulLambda(Kstar.bottomRightCorner(nz, nz), true), false);
  Eigen::LLT<Eigen::MatrixXd> lz(Mz);
  if (lz.info() != Eigen::Success) return false;
  double logDetMz = 0.0;
  for (int i = 0; i < nz; ++i) logDetMz += 2.0 * std::log(lz.matrixLLT()(i, i));

  const Eigen::VectorXd sol = Kmat * Qwy;
  out.fLogDetV = logDetR + logDetMz;
  out.fLogDetXVX = logDetM - logDetMz;
  out.fBeta = sol.head(p);
  out.fC = Kmat.topLeftCorner(p, p);
  out.fRVR = Qbar(nw, nw) - Qwy.dot(sol);
  if (!std::isfinite(out.fRVR) || !std::isfinite(out.fLogDetV) || !std::isfinite(out.fLogDetXVX)) return false;
  out.fbOK = true;
  if (!derivs) return true;

  // Derivative pieces.
  const Eigen::MatrixXd Kz =
      leftMulLambda(rightMulLambda(lz.solve(Eigen::MatrixXd::Identity(nz, nz)), true), false);
  const Eigen::MatrixXd Qzz = Q.bottomRightCorner(nz, nz);
  const Eigen::MatrixXd Qzx = Q.bottomLeftCorner(nz, p);
  const Eigen::MatrixXd Omega = Q - Q * Kmat * Q;
  const Eigen::MatrixXd OmegaZ = Omega.bottomRightCorner(nz, nz);
  const Eigen::MatrixXd OmegaMLZ = Qzz - Qzz * Kz * Qzz;
  const Eigen::MatrixXd& OmegaT = reml ? OmegaZ : OmegaMLZ;
  const Eigen::VectorXd v = Qwy - Q * sol;  // W'P y
  const Eigen::VectorXd s = v.tail(nz);     // Z'P y
  Eigen::VectorXd bbar(na);
  bbar.head(nw) = -sol;
  bbar[nw] = 1.0;
  const Eigen::MatrixXd F = Eigen::MatrixXd::Identity(nw, nw) - Q * Kmat;
  const Eigen::MatrixXd Fz = Eigen::MatrixXd::Identity(nz, nz) - Qzz * Kz;
  const Eigen::MatrixXd Hzx = Qzx - Qzz * Kz * Qzx;  // Z'V^-1 X
  Eigen::MatrixXd Tx(nw, p);
  Tx.topRows(p) = Eigen::MatrixXd::Identity(p, p);
  Tx.bottomRows(nz) = -Kz * Qzx;  // V^-1 X = R^-1 W Tx

  // Per-parameter derivative of G: one small matrix per parameter, applied
  // block-wise. Yk = OmegaT G_k and vk = G_k s.
  std::vector<Eigen::MatrixXd> dG(U(ro));
  std::vector<Eigen::MatrixXd> Yk(U(ro));
  std::vector<Eigen::VectorXd> vk(U(ro));
  auto blockTrace = [&](int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M) {
    const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
    double t = 0.0;
    for (int su = 0; su < bd.fNSubjects; ++su) {
      const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
      t += TraceOfProduct(d, M.block(o, o, bd.fNColumns, bd.fNColumns));
    }
    return t;
  };
  auto blockApply = [&](int b, const Eigen::MatrixXd& d, const Eigen::VectorXd& x) {
    Eigen::VectorXd out = Eigen::VectorXd::Zero(nz);
    const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
    for (int su = 0; su < bd.fNSubjects; ++su) {
      const int o = fvBlockOffset[U(b)] + su * bd.fNColumns;
      out.segment(o, bd.fNColumns) = d * x.segment(o, bd.fNColumns);
    }
    return out;
  };
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), dG[U(k)]);
    Yk[U(k)] = Eigen::MatrixXd::Zero(nz, nz);
    rightMul(OmegaT, b, dG[U(k)], Yk[U(k)]);
    vk[U(k)] = blockApply(b, dG[U(k)], s);
  }

  out.fGrad.resize(K);
  out.fQuad.resize(K);
  out.fTrace.resize(K);
  out.fvA.assign(U(K), Eigen::MatrixXd());
  std::vector<Eigen::MatrixXd> ARw(U(KR)), KA(U(KR)), FAF(U(KR));
  std::vector<Eigen::VectorXd> aR(U(KR)), FaR(U(KR));
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    out.fTrace[k] = Yk[U(k)].trace();
    out.fQuad[k] = s.dot(vk[U(k)]);
    Eigen::MatrixXd GH(nz, p);
    GH.setZero();
    leftMul(b, dG[U(k)], Hzx, GH);
    out.fvA[U(k)] = Hzx.transpose() * GH;
  }
  for (int l = 0; l < KR; ++l) {
    ARw[U(l)] = AR[U(l)].topLeftCorner(nw, nw);
    aR[U(l)] = AR[U(l)].topRows(nw) * bbar;
    FaR[U(l)] = F * aR[U(l)];
    if (reml) {
      KA[U(l)] = Kmat * ARw[U(l)];
      FAF[U(l)] = (F * ARw[U(l)] * F.transpose()).bottomRightCorner(nz, nz);
    } else {
      KA[U(l)] = Kz * ARw[U(l)].bottomRightCorner(nz, nz);
      FAF[U(l)] = Fz * ARw[U(l)].bottomRightCorner(nz, nz) * Fz.transpose();
    }
    out.fTrace[ro + l] = tR[l] - KA[U(l)].trace();
    out.fQuad[ro + l] = bbar.dot(AR[U(l)] * bbar);
    out.fvA[U(ro + l)] = Tx.transpose() * ARw[U(l)] * Tx;
  }
  for (int k = 0; k < K; ++k) out.fGrad[k] = out.fTrace[k] - out.fQuad[k];

  out.fHessExpected.resize(K, K);
  if (hessian) out.fHessObserved.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) {
      double e, quad2;
      if (l < ro) {
        e = TraceOfProduct(Yk[U(k)], Yk[U(l)]);
        quad2 = vk[U(k)].dot(OmegaZ * vk[U(l)]);
      } else if (k < ro) {
        const int lr = l - ro;
        e = blockTrace(fModel.GetBlockOf(k), dG[U(k)], FAF[U(lr)]);
        quad2 = vk[U(k)].dot(FaR[U(lr)].tail(nz));
      } else {
        const int kr = k - ro, lr = l - ro;
        const Eigen::MatrixXd& B = BR[U(kr * KR + lr)];
        if (reml) {
          e = tRR(kr, lr) - 2.0 * TraceOfProduct(Kmat, B.topLeftCorner(nw, nw)) + TraceOfProduct(KA[U(kr)], KA[U(lr)]);
        } else {
          e = tRR(kr, lr) - 2.0 * TraceOfProduct(Kz, B.block(p, p, nz, nz)) + TraceOfProduct(KA[U(kr)], KA[U(lr)]);
        }
        quad2 = bbar.dot(B * bbar) - aR[U(kr)].dot(Kmat * aR[U(lr)]);
      }
      out.fHessExpected(k, l) = out.fHessExpected(l, k) = e;
      if (hessian) out.fHessObserved(k, l) = out.fHessObserved(l, k) = -e + 2.0 * quad2;
    }
  }
  if (hessian) {
    // Second derivatives of non-linear random structures.
    for (int k = 0; k < ro; ++k) {
      for (int l = k; l < ro; ++l) {
        const int b = fModel.GetBlockOf(k);
        if (fModel.GetBlockOf(l) != b || fModel.GetBlock(b).IsLinear()) continue;
        Eigen::MatrixXd d;
        fModel.GetBlock(b).SecondDerivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), fModel.GetLocalIndex(l), d);
        if (d.cwiseAbs().maxCoeff() == 0.0) continue;
        const double extra = blockTrace(b, d, OmegaT) - s.dot(blockApply(b, d, s));
        out.fHessObserved(k, l) += extra;
        if (k != l) out.fHessObserved(l, k) += extra;
      }
    }
    for (std::size_t si = 0; si < secondR.size(); ++si) {
      const int kr = secondR[si].first, lr = secondR[si].second;
      const Eigen::MatrixXd& A2 = A2R[si];
      double t2 = t2R[static_cast<Eigen::Index>(si)];
      if (reml) {
        t2 -= TraceOfProduct(Kmat, A2.topLeftCorner(nw, nw));
      } else {
        t2 -= TraceOfProduct(Kz, A2.block(p, p, nz, nz));
      }
      const double extra = t2 - bbar.dot(A2 * bbar);
      out.fHessObserved(ro + kr, ro + lr) += extra;
      if (kr != lr) out.fHessObserved(ro + lr, ro + kr) += extra;
    }
  }
  return true;
}

}  // namespace MCEngine_850
