#include "numeric/engine/detail/MCEngineSubjectEvaluator.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineGroupSums.h"
#include "numeric/engine/detail/MCEngineMostlyZero.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// tr(A B) for square matrices of equal size.
inline double TraceOfProduct(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B) {
  return A.cwiseProduct(B.transpose()).sum();
}

// (L L')^-1 from the lower triangle L of llt.
Eigen::MatrixXd InverseOfFactored(const Eigen::MatrixXd& llt) {
  const int n = static_cast<int>(llt.rows());
  Eigen::MatrixXd x = llt.triangularView<Eigen::Lower>();
  MCEngineTriangular::InvertFromFactor(x.data(), n, n);
  return x;
}

// The lower Cholesky factor of X'V^-1 X in the lower triangle of `lower`;
// false where it is not positive definite. Over many fixed columns by the
// program's blocked factorisation; over few by Eigen's, which keeps small
// models' rounding as it was.
bool FactorFixedPart(const Eigen::Ref<const Eigen::MatrixXd>& xvx, Eigen::MatrixXd& lower) {
  const int p = static_cast<int>(xvx.rows());
  if (MCEngineMostlyZero::PaysOver(p)) {
    lower = xvx;
    return MCEngineTriangular::FactorLower(lower.data(), p, p);
  }
  const Eigen::LLT<Eigen::MatrixXd> llt(xvx);
  lower = llt.matrixLLT();
  return llt.info() == Eigen::Success;
}

// b = [-beta; 1], so that X~ b = y - X beta.
Eigen::VectorXd ResidualCoefficients(const Eigen::VectorXd& beta) {
  const Eigen::Index p = beta.size();
  Eigen::VectorXd b(p + 1);
  b.head(p) = -beta;
  b[p] = 1.0;
  return b;
}

}  // namespace

MCEngineSubjectEvaluator::MCEngineSubjectEvaluator(const MCEngineData& data, const MCEngineModel& model,
                                                   bool crossProducts)
    : fData(data), fModel(model), fCopies(data) {
  fbResidualDiagonal = MCEngineDataBuilder::IsDiagonalType(data.fResidualType);
  BuildGroups();
  fbCrossProducts = crossProducts && fbResidualDiagonal && model.GetResidual().GetType() == MCEngineCovType::ID;
  if (fbCrossProducts) ReduceGroups();
}

int MCEngineSubjectEvaluator::Layout(const Component& c, LowRank& lr) const {
  const int nb = fModel.GetNBlocks();
  lr.fvPos.assign(U(nb), 0);
  lr.fvLen.assign(U(nb), 0);
  lr.fvGroup0.assign(U(nb), 0);
  // The groups come block after block, so a block's subjects are adjacent.
  int Q = 0;
  for (int g = c.fGroup0; g < c.fGroup1; ++g) {
    const RandomGroup& rg = fvGroups[U(g)];
    if (lr.fvLen[U(rg.fBlock)] == 0) {
      lr.fvPos[U(rg.fBlock)] = Q;
      lr.fvGroup0[U(rg.fBlock)] = g;
    }
    lr.fvLen[U(rg.fBlock)] += rg.fNCols;
    Q += rg.fNCols;
  }
  return Q;
}

// A group of many random columns and few records would hold more in its
// cross products than its records' rows of [Z X y] do; it stays on the
// general evaluation.
void MCEngineSubjectEvaluator::ReduceGroups() {
  Eigen::MatrixXd Xb, whitened;
  LowRank lr;
  for (Component& c : fvComponents) {
    const int Q = Layout(c, lr);
    const int C = c.fXCol1 - c.fXCol0;
    if (Q + C + 1 > 2 * c.fM) continue;
    whitened.setZero(std::max(c.fM, Q + C), Q + C);
    int at = 0;
    for (int g = c.fGroup0; g < c.fGroup1; ++g) {
      const RandomGroup& rg = fvGroups[U(g)];
      Eigen::Map<const Eigen::MatrixXd> Z(&fvZ[U(rg.fZOffset)], rg.fNRows, rg.fNCols);
      const int* rows = &fvRows[U(rg.fRowOffset)];
      for (int j = 0; j < rg.fNCols; ++j) {
        for (int a = 0; a < rg.fNRows; ++a) whitened(rows[a], at + j) += Z(a, j);
      }
      at += rg.fNCols;
    }
    FillDesign(c, Xb);
    whitened.block(0, Q, c.fM, C) = Xb;
    double sumLogW = 0.0;
    for (int i = 0; i < c.fM; ++i) {
      const double w = fData.fvScaleWeight[U(c.fStart + i)];
      whitened.row(i) *= std::sqrt(w);
      sumLogW += std::log(w);
    }
    c.fCross = fCross.Reduce(whitened, Q, c.fM, sumLogW);
    ++fNReduced;
    fReducedRandom += Q;
  }
}

bool MCEngineSubjectEvaluator::AddCrossProducts(const Component& c, double s, const std::vector<Eigen::MatrixXd>& G,
                                                const std::vector<Eigen::MatrixXd>& dS,
                                                const std::vector<std::pair<int, int>>& secondPairs,
                                                const std::vector<Eigen::MatrixXd>& d2S, bool derivs,
                                                MCEngineGroupSums& sums) {
  const int nb = fModel.GetNBlocks();
  const int Q = Layout(c, fLayout);
  fGc.setZero(Q, Q);
  for (int b = 0; b < nb; ++b) {
    const int len = fLayout.fvLen[U(b)];
    if (len == 0) continue;
    BlockDerivative(c, b, G[U(b)], fLayout, fBlockG);
    fGc.block(fLayout.fvPos[U(b)], fLayout.fvPos[U(b)], len, len) = fBlockG;
  }
  fvTerms.clear();
  fvSeconds.clear();
  if (derivs) {
    const int K = fModel.GetNParams();
    fvDk.resize(U(K));
    for (int k = 0; k < K; ++k) {
      const int b = fModel.GetBlockOf(k);
      MCEngineGroupCrossProducts::Term t;
      t.fParam = k;
      if (b < 0) {
        t.fD = dS[U(k)](0, 0);
      } else {
        if (fLayout.fvLen[U(b)] == 0) continue;
        BlockDerivative(c, b, dS[U(k)], fLayout, fvDk[U(k)]);
        t.fPos = fLayout.fvPos[U(b)];
        t.fpD = &fvDk[U(k)];
      }
      fvTerms.push_back(t);
    }
    fvD2.resize(secondPairs.size());
    for (std::size_t i = 0; i < secondPairs.size(); ++i) {
      // An identity residual has no second derivatives.
      const int b = fModel.GetBlockOf(secondPairs[i].first);
      if (b < 0 || fLayout.fvLen[U(b)] == 0) continue;
      BlockDerivative(c, b, d2S[i], fLayout, fvD2[i]);
      MCEngineGroupCrossProducts::Second sec;
      sec.fIndex = static_cast<int>(i);
      sec.fPos = fLayout.fvPos[U(b)];
      sec.fpD = &fvD2[i];
      fvSeconds.push_back(sec);
    }
  }
  return fCross.Accumulate(c.fCross, s, fGc, c.fWeight, &fvXCols[U(c.fXCol0)], derivs, fvTerms, fvSeconds, sums);
}

void MCEngineSubjectEvaluator::BuildGroups() {
  const int nComp = fData.GetNComponents();
  fvComponents.resize(U(nComp));
  std::map<int, std::vector<int>> bySubject;
  std::vector<int> cols;
  for (int c = 0; c < nComp; ++c) {
    Component& comp = fvComponents[U(c)];
    comp.fStart = fData.fvComponentStart[U(c)];
    comp.fM = fData.fvComponentStart[U(c) + 1] - comp.fStart;
    comp.fWeight = fData.fvComponentWeight[U(c)];
    comp.fGroup0 = static_cast<int>(fvGroups.size());
    for (int b = 0; b < static_cast<int>(fData.fvBlocks.size()); ++b) {
      const MCEngineBlockData& bd = fData.fvBlocks[U(b)];
      bySubject.clear();
      for (int i = 0; i < comp.fM; ++i) {
        const int r = comp.fStart + i;
        if (bd.fvRowStart[U(r) + 1] > bd.fvRowStart[U(r)]) bySubject[bd.fvSubject[U(r)]].push_back(i);
      }
      for (const auto& entry : bySubject) {
        const std::vector<int>& rows = entry.second;
        cols.clear();
        for (int i : rows) {
          const int r = comp.fStart + i;
          for (int e = bd.fvRowStart[U(r)]; e < bd.fvRowStart[U(r) + 1]; ++e) cols.push_back(bd.fvColIndex[U(e)]);
        }
        std::sort(cols.begin(), cols.end());
        cols.erase(std::unique(cols.begin(), cols.end()), cols.end());
        RandomGroup g;
        g.fBlock = b;
        g.fRowOffset = static_cast<int>(fvRows.size());
        g.fNRows = static_cast<int>(rows.size());
        g.fColOffset = static_cast<int>(fvCols.size());
        g.fNCols = static_cast<int>(cols.size());
        g.fZOffset = static_cast<int>(fvZ.size());
        fvRows.insert(fvRows.end(), rows.begin(), rows.end());
        fvCols.insert(fvCols.end(), cols.begin(), cols.end());
        fvZ.resize(fvZ.size() + rows.size() * cols.size(), 0.0);
        for (std::size_t ii = 0; ii < rows.size(); ++ii) {
          const int r = comp.fStart + rows[ii];
          for (int e = bd.fvRowStart[U(r)]; e < bd.fvRowStart[U(r) + 1]; ++e) {
            const std::size_t jj = static_cast<std::size_t>(std::lower_bound(cols.begin(), cols.end(), bd.fvColIndex[U(e)]) - cols.begin());
            fvZ[U(g.fZOffset) + jj * rows.size() + ii] += bd.fvValues[U(e)];
          }
        }
        fvGroups.push_back(g);
      }
    }
    comp.fGroup1 = static_cast<int>(fvGroups.size());
    comp.fRes0 = static_cast<int>(fvResGroups.size());
    if (!fbResidualDiagonal) {
      bySubject.clear();
      for (int i = 0; i < comp.fM; ++i) bySubject[fData.fvResSubject[U(comp.fStart + i)]].push_back(i);
      for (const auto& entry : bySubject) {
        ResidualGroup rg;
        rg.fRowOffset = static_cast<int>(fvResRows.size());
        rg.fNRows = static_cast<int>(entry.second.size());
        fvResRows.insert(fvResRows.end(), entry.second.begin(), entry.second.end());
        fvResGroups.push_back(rg);
      }
    }
    comp.fRes1 = static_cast<int>(fvResGroups.size());
    FindFixedColumns(comp);
  }
}

// A fixed factor of many levels has few of them in one group: the group's
// products over its own columns cost what its records hold, not the square
// of all columns.
void MCEngineSubjectEvaluator::FindFixedColumns(Component& comp) {
  const int p = fData.fRank;
  comp.fXCol0 = static_cast<int>(fvXCols.size());
  for (int j = 0; j < p; ++j) {
    for (int i = 0; i < comp.fM; ++i) {
      if (fData.fvXr[U(comp.fStart + i) * U(p) + U(j)] != 0.0) {
        fvXCols.push_back(j);
        break;
      }
    }
  }
  fvXCols.push_back(p);
  comp.fXCol1 = static_cast<int>(fvXCols.size());
}

// The factors cost p^2 Q_total for the solve and Q_total^2 a parameter;
// the dense products they replace cost p^3 and p times A_k's entries a
// parameter, and p^2 a parameter in memory.
bool MCEngineSubjectEvaluator::StepsByFactors() const {
  const int p = fData.fRank;
  return ForSteps() && fNReduced == static_cast<int>(fvComponents.size()) && fCopies.IsEmpty() &&
         MCEngineMostlyZero::PaysOver(p) && 4 * fReducedRandom <= p;
}

void MCEngineSubjectEvaluator::DerivativesByFactors(const MCEngineGroupSums& sums, const Eigen::MatrixXd& lower,
                                                    bool reml, bool hessian,
                                                    const std::vector<std::pair<int, int>>& secondPairs,
                                                    MCEngineEvaluation& out) {
  const int K = fModel.GetNParams();
  fLowRank.Finish(lower, sums.fMbar, ResidualCoefficients(out.fBeta));
  out.fQuad.resize(K);
  out.fTrace.resize(K);
  out.fGrad.resize(K);
  for (int k = 0; k < K; ++k) {
    out.fQuad[k] = fLowRank.Quad(fLowRank.First(k));
    out.fTrace[k] = sums.fTrW[k] - (reml ? fLowRank.Trace(fLowRank.First(k)) : 0.0);
    out.fGrad[k] = out.fTrace[k] - out.fQuad[k];
  }
  out.fHessExpected.resize(K, K);
  if (hessian) out.fHessObserved.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) {
      const int pair = fLowRank.Pair(k, l);
      const bool held = fLowRank.Holds(pair);
      double e = sums.fTrWW(k, l);
      if (reml) {
        if (held) e -= 2.0 * fLowRank.Trace(pair);
        e += fLowRank.TraceOfPair(k, l);
      }
      out.fHessExpected(k, l) = out.fHessExpected(l, k) = e;
      if (hessian) {
        const double quad2 = (held ? fLowRank.Quad(pair) : 0.0) -
                             fLowRank.HalfSolvedDirection(k).dot(fLowRank.HalfSolvedDirection(l));
        out.fHessObserved(k, l) = out.fHessObserved(l, k) = -e + 2.0 * quad2;
      }
    }
  }
  if (!hessian) return;
  for (std::size_t s = 0; s < secondPairs.size(); ++s) {
    const int k = secondPairs[s].first, l = secondPairs[s].second;
    const int second = fLowRank.Second(static_cast<int>(s));
    double t2 = sums.fTrW2[static_cast<Eigen::Index>(s)];
    if (reml) t2 -= fLowRank.Trace(second);
    const double extra = t2 - fLowRank.Quad(second);
    out.fHessObserved(k, l) += extra;
    if (k != l) out.fHessObserved(l, k) += extra;
  }
}

double MCEngineSubjectEvaluator::GetProductEntries() const {
  double n = 0.0;
  for (const Component& c : fvComponents) {
    const double columns = c.fXCol1 - c.fXCol0;
    n += c.fM * columns * columns;
  }
  return n;
}

void MCEngineSubjectEvaluator::FillDesign(const Component& c, Eigen::MatrixXd& Xb) const {
  const int p = fData.fRank;
  const int* cols = &fvXCols[U(c.fXCol0)];
  const int nc = c.fXCol1 - c.fXCol0;
  Xb.resize(c.fM, nc);
  for (int i = 0; i < c.fM; ++i) {
    const std::size_t r = U(c.fStart + i);
    const double* xr = p > 0 ? &fData.fvXr[r * U(p)] : nullptr;
    for (int j = 0; j + 1 < nc; ++j) Xb(i, j) = xr[cols[j]];
    Xb(i, nc - 1) = fData.fvY[r];
  }
}

void MCEngineSubjectEvaluator::AddRandom(const RandomGroup& g, const Eigen::MatrixXd& G, Eigen::MatrixXd& V) const {
  Eigen::Map<const Eigen::MatrixXd> Z(&fvZ[U(g.fZOffset)], g.fNRows, g.fNCols);
  Eigen::MatrixXd Gs(g.fNCols, g.fNCols);
  const int* cols = &fvCols[U(g.fColOffset)];
  for (int a = 0; a < g.fNCols; ++a) {
    for (int b = 0; b < g.fNCols; ++b) Gs(a, b) = G(cols[a], cols[b]);
  }
  const Eigen::MatrixXd blk = Z * Gs * Z.transpose();
  const int* rows = &fvRows[U(g.fRowOffset)];
  for (int a = 0; a < g.fNRows; ++a) {
    for (int b = 0; b < g.fNRows; ++b) V(rows[a], rows[b]) += blk(a, b);
  }
}

void MCEngineSubjectEvaluator::AddResidual(const Component& c, const Eigen::MatrixXd& S, Eigen::MatrixXd& V) const {
  const int* pos = &fData.fvResPosition[U(c.fStart)];
  const double* w = &fData.fvScaleWeight[U(c.fStart)];
  if (fbResidualDiagonal) {
    for (int i = 0; i < c.fM; ++i) V(i, i) += S(pos[i], pos[i]) / w[i];
    return;
  }
  for (int g = c.fRes0; g < c.fRes1; ++g) {
    const ResidualGroup& rg = fvResGroups[U(g)];
    const int* rows = &fvResRows[U(rg.fRowOffset)];
    for (int a = 0; a < rg.fNRows; ++a) {
      const int ra = rows[a];
      for (int b = 0; b < rg.fNRows; ++b) {
        const int rb = rows[b];
        V(ra, rb) += S(pos[ra], pos[rb]) / std::sqrt(w[ra] * w[rb]);
      }
    }
  }
}

bool MCEngineSubjectEvaluator::FormLowRank(const Component& c, const Eigen::MatrixXd& W, const Eigen::MatrixXd& Xb,
                                           LowRank& lr) const {
  const int Q = Layout(c, lr);
  const int m = c.fM;
  lr.fZW.setZero(m, Q);
  int at = 0;
  for (int g = c.fGroup0; g < c.fGroup1; ++g) {
    const RandomGroup& rg = fvGroups[U(g)];
    Eigen::Map<const Eigen::MatrixXd> Z(&fvZ[U(rg.fZOffset)], rg.fNRows, rg.fNCols);
    const int* rows = &fvRows[U(rg.fRowOffset)];
    for (int j = 0; j < rg.fNCols; ++j) {
      for (int a = 0; a < rg.fNRows; ++a) {
        const double z = Z(a, j);
        if (z != 0.0) lr.fZW.col(at + j) += z * W.col(rows[a]);
      }
    }
    at += rg.fNCols;
  }
  // M = Z'(W Z), symmetric: column j of M sums the records' rows of W Z,
  // read as contiguous columns of its transpose, so that a record in many
  // blocks costs one pass over Q numbers per block.
  const Eigen::MatrixXd ZWt = lr.fZW.transpose();
  lr.fM.setZero(Q, Q);
  at = 0;
  for (int g = c.fGroup0; g < c.fGroup1; ++g) {
    if (Cancelled()) return false;
    const RandomGroup& rg = fvGroups[U(g)];
    Eigen::Map<const Eigen::MatrixXd> Z(&fvZ[U(rg.fZOffset)], rg.fNRows, rg.fNCols);
    const int* rows = &fvRows[U(rg.fRowOffset)];
    for (int j = 0; j < rg.fNCols; ++j) {
      for (int a = 0; a < rg.fNRows; ++a) {
        const double z = Z(a, j);
        if (z != 0.0) lr.fM.col(at + j) += z * ZWt.col(rows[a]);
      }
    }
    at += rg.fNCols;
  }
  lr.fU.noalias() = lr.fZW.transpose() * Xb;
  return true;
}

void MCEngineSubjectEvaluator::AddRandomPair(int k, int l, const LowRank& lr, const std::vector<Eigen::MatrixXd>& Dk,
                                             const std::vector<Eigen::MatrixXd>& Lk, double f, const int* idx,
                                             Eigen::MatrixXd& trWW, Eigen::MatrixXd& B) const {
  const int bk = fModel.GetBlockOf(k), bl = fModel.GetBlockOf(l);
  const int pk = lr.fvPos[U(bk)], nk = lr.fvLen[U(bk)];
  const int pl = lr.fvPos[U(bl)], nl = lr.fvLen[U(bl)];
  if (nk == 1 && nl == 1) {
    // One column each (a one-column block's subject): all of it is scalars.
    const double mkl = lr.fM(pk, pl);
    trWW(k, l) += f * Dk[U(k)](0, 0) * Dk[U(l)](0, 0) * mkl * mkl;
    MCEngineGroupSums::AddAt(B, idx, f * mkl, Lk[U(k)].transpose() * Lk[U(l)]);
    return;
  }
  const auto Mkl = lr.fM.block(pk, pl, nk, nl);
  trWW(k, l) += f * (Dk[U(k)] * Mkl).cwiseProduct(Mkl * Dk[U(l)]).sum();
  MCEngineGroupSums::AddAt(B, idx, f, Lk[U(k)].transpose() * Mkl * Lk[U(l)]);
}

void MCEngineSubjectEvaluator::BlockDerivative(const Component& c, int b, const Eigen::MatrixXd& dG,
                                               const LowRank& lr, Eigen::MatrixXd& D) const {
  const int len = lr.fvLen[U(b)];
  D.setZero(len, len);
  int at = 0;
  for (int g = lr.fvGroup0[U(b)]; g < c.fGroup1 && at < len; ++g) {
    const RandomGroup& rg = fvGroups[U(g)];
    const int* cols = &fvCols[U(rg.fColOffset)];
    for (int a = 0; a < rg.fNCols; ++a) {
      for (int e = 0; e < rg.fNCols; ++e) D(at + a, at + e) = dG(cols[a], cols[e]);
    }
    at += rg.fNCols;
  }
}

bool MCEngineSubjectEvaluator::EmpiricalMeat(const Eigen::VectorXd& theta, const Eigen::VectorXd& beta,
                                             Eigen::MatrixXd& meat) const {
  const int p = fData.fRank;
  const int nb = fModel.GetNBlocks();
  std::vector<Eigen::MatrixXd> G(U(nb));
  for (int b = 0; b < nb; ++b) fModel.GetBlock(b).Build(fModel.Segment(theta, b), G[U(b)]);
  Eigen::MatrixXd SR;
  fModel.GetResidual().Build(fModel.Segment(theta, -1), SR);
  meat = Eigen::MatrixXd::Zero(p, p);
  Eigen::MatrixXd V, Xb;
  Eigen::VectorXd e, bg;
  Eigen::LLT<Eigen::MatrixXd> llt;
  for (const Component& c : fvComponents) {
    const int m = c.fM;
    FillDesign(c, Xb);
    const int* idx = &fvXCols[U(c.fXCol0)];
    const int nx = c.fXCol1 - c.fXCol0 - 1;
    bg.resize(nx);
    for (int j = 0; j < nx; ++j) bg[j] = beta[idx[j]];
    e = Xb.col(nx) - Xb.leftCols(nx) * bg;
    V.setZero(m, m);
    for (int g = c.fGroup0; g < c.fGroup1; ++g) AddRandom(fvGroups[U(g)], G[U(fvGroups[U(g)].fBlock)], V);
    AddResidual(c, SR, V);
    llt.compute(V);
    if (llt.info() != Eigen::Success) return false;
    const Eigen::VectorXd u = Xb.leftCols(nx).transpose() * llt.solve(e);
    for (int b = 0; b < nx; ++b) {
      for (int a = 0; a < nx; ++a) meat(idx[a], idx[b]) += c.fWeight * u[a] * u[b];
    }
  }
  return meat.allFinite();
}

bool MCEngineSubjectEvaluator::Evaluate(const Eigen::VectorXd& theta, Level level, bool reml,
                                        MCEngineEvaluation& out) {
  out.fbOK = false;
  if (Cancelled()) return false;
  const int K = fModel.GetNParams();
  const int p = fData.fRank;
  const int nb = fModel.GetNBlocks();
  const bool derivs = level >= kGradient;
  const bool hessian = level >= kHessian;

  // Structure matrices and their derivatives at theta.
  std::vector<Eigen::MatrixXd> G(U(nb));
  std::vector<Eigen::MatrixXd> dS(U(K));
  for (int b = 0; b < nb; ++b) fModel.GetBlock(b).Build(fModel.Segment(theta, b), G[U(b)]);
  Eigen::MatrixXd SR;
  fModel.GetResidual().Build(fModel.Segment(theta, -1), SR);
  // Second-derivative pairs of non-linear structures.
  std::vector<std::pair<int, int>> secondPairs;
  std::vector<Eigen::MatrixXd> d2S;
  if (derivs) {
    for (int k = 0; k < K; ++k) {
      if (Cancelled()) return false;
      const int b = fModel.GetBlockOf(k);
      const MCCovStructure& s = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
      s.Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), dS[U(k)]);
    }
    if (hessian) {
      for (int k = 0; k < K; ++k) {
        if (Cancelled()) return false;
        const int b = fModel.GetBlockOf(k);
        const MCCovStructure& s = b < 0 ? fModel.GetResidual() : fModel.GetBlock(b);
        if (s.IsLinear()) continue;
        // A block's parameters are adjacent.
        const int end = b < 0 ? K : fModel.GetBlockOffset(b) + s.GetNParams();
        for (int l = k; l < end; ++l) {
          Eigen::MatrixXd d;
          s.SecondDerivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), fModel.GetLocalIndex(l), d);
          if (d.cwiseAbs().maxCoeff() == 0.0) continue;
          secondPairs.emplace_back(k, l);
          d2S.push_back(std::move(d));
        }
      }
    }
  }

  const int q = p + 1;
  MCEngineGroupSums sums;
  sums.fMbar = Eigen::MatrixXd::Zero(q, q);
  const bool byFactors = derivs && StepsByFactors();
  if (derivs) {
    sums.fTrW = Eigen::VectorXd::Zero(K);
    sums.fTrWW = Eigen::MatrixXd::Zero(K, K);
    sums.fTrW2 = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(secondPairs.size()));
  }
  if (byFactors) {
    ++fStepsByFactors;
    fLowRank.Start(K, static_cast<int>(secondPairs.size()));
    sums.fpLowRank = &fLowRank;
  } else if (derivs) {
    sums.fvAbar.assign(U(K), Eigen::MatrixXd::Zero(q, q));
    // A pair's product is formed when a group holds both of its parameters;
    // pairs of blocks that share no group keep none.
    sums.fvBbar.assign(U(K) * U(K + 1) / 2, Eigen::MatrixXd());
    sums.fvA2bar.assign(secondPairs.size(), Eigen::MatrixXd::Zero(q, q));
  }
  Eigen::MatrixXd& Mbar = sums.fMbar;
  double& logDetV = sums.fLogDetV;
  Eigen::VectorXd& trW = sums.fTrW;
  Eigen::MatrixXd& trWW = sums.fTrWW;
  std::vector<Eigen::MatrixXd>& Abar = sums.fvAbar;
  Eigen::VectorXd& trW2 = sums.fTrW2;
  std::vector<Eigen::MatrixXd>& A2bar = sums.fvA2bar;

  Eigen::MatrixXd V, Xb, W, WX, S;
  std::vector<Eigen::MatrixXd> Vk(U(K)), WVk(U(K)), Tk(U(K));
  // Random parameters: D and D U over their block's columns; residual
  // parameters: Vk ZW and ZW' Tk.
  std::vector<Eigen::MatrixXd> Dk(U(K)), Lk(U(K)), VkZW(U(K)), Pk(U(K));
  LowRank lr;
  auto pairProduct = [&](int k, int l) -> Eigen::MatrixXd& { return sums.PairProduct(k, l); };
  std::vector<int> relevant;
  std::vector<char> blockPresent(U(nb));
  Eigen::LLT<Eigen::MatrixXd> llt;
  fRecordsVisited = 0.0;
  // The residual is s W^-1 where the groups were reduced to their cross
  // products (an identity residual structure).
  const double s = fbCrossProducts ? SR(0, 0) : 0.0;

  for (const Component& c : fvComponents) {
    if (Cancelled()) return false;
    const int m = c.fM;
    const double f = c.fWeight;
    if (c.fCross >= 0 && s > 0.0) {
      if (!AddCrossProducts(c, s, G, dS, secondPairs, d2S, derivs, sums)) return false;
      continue;
    }
    fRecordsVisited += m;
    FillDesign(c, Xb);
    const int* idx = &fvXCols[U(c.fXCol0)];
    V.setZero(m, m);
    std::fill(blockPresent.begin(), blockPresent.end(), 0);
    for (int g = c.fGroup0; g < c.fGroup1; ++g) {
      AddRandom(fvGroups[U(g)], G[U(fvGroups[U(g)].fBlock)], V);
      blockPresent[U(fvGroups[U(g)].fBlock)] = 1;
    }
    AddResidual(c, SR, V);
    llt.compute(V);
    if (llt.info() != Eigen::Success) return false;
    const auto& Lmat = llt.matrixLLT();
    double ld = 0.0;
    for (int i = 0; i < m; ++i) {
      const double d = Lmat(i, i);
      if (!(d > 0.0) || !std::isfinite(d)) return false;
      ld += std::log(d);
    }
    logDetV += f * 2.0 * ld;
    if (!derivs) {
      S = llt.matrixL().solve(Xb);
      MCEngineGroupSums::AddAt(Mbar, idx, f, S.transpose() * S);
      continue;
    }
    W = llt.solve(Eigen::MatrixXd::Identity(m, m));
    WX.noalias() = W * Xb;
    MCEngineGroupSums::AddAt(Mbar, idx, f, Xb.transpose() * WX);

    if (!FormLowRank(c, W, Xb, lr)) return false;
    relevant.clear();
    for (int k = 0; k < K; ++k) {
      const int b = fModel.GetBlockOf(k);
      if (b >= 0 && !blockPresent[U(b)]) continue;
      relevant.push_back(k);
      if (b >= 0) {
        const auto Ub = lr.fU.middleRows(lr.fvPos[U(b)], lr.fvLen[U(b)]);
        BlockDerivative(c, b, dS[U(k)], lr, Dk[U(k)]);
        Lk[U(k)].noalias() = Dk[U(k)] * Ub;
        const auto Mbb = lr.fM.block(lr.fvPos[U(b)], lr.fvPos[U(b)], lr.fvLen[U(b)], lr.fvLen[U(b)]);
        trW[k] += f * Dk[U(k)].cwiseProduct(Mbb).sum();
        MCEngineGroupSums::AddAt(Abar[U(k)], idx, f, Ub.transpose() * Lk[U(k)]);
        continue;
      }
      Vk[U(k)].setZero(m, m);
      AddResidual(c, dS[U(k)], Vk[U(k)]);
      WVk[U(k)].noalias() = W * Vk[U(k)];
      Tk[U(k)].noalias() = Vk[U(k)] * WX;
      VkZW[U(k)].noalias() = Vk[U(k)] * lr.fZW;
      Pk[U(k)].noalias() = lr.fZW.transpose() * Tk[U(k)];
      trW[k] += f * WVk[U(k)].trace();
      MCEngineGroupSums::AddAt(Abar[U(k)], idx, f, WX.transpose() * Tk[U(k)]);
    }
    for (std::size_t a = 0; a < relevant.size(); ++a) {
      if (Cancelled()) return false;
      const int k = relevant[a];
      const int bk = fModel.GetBlockOf(k);
      Eigen::MatrixXd WTk;
      if (bk < 0) WTk.noalias() = W * Tk[U(k)];
      for (std::size_t bidx = a; bidx < relevant.size(); ++bidx) {
        const int l = relevant[bidx];
        const int bl = fModel.GetBlockOf(l);
        if (bk >= 0 && bl >= 0) {
          AddRandomPair(k, l, lr, Dk, Lk, f, idx, trWW, pairProduct(k, l));
        } else if (bk < 0 && bl < 0) {
          trWW(k, l) += f * TraceOfProduct(WVk[U(k)], WVk[U(l)]);
          MCEngineGroupSums::AddAt(pairProduct(k, l), idx, f, WTk.transpose() * Tk[U(l)]);
        } else {
          // One residual parameter r and one random parameter s of block bs:
          // tr(W Vr W Z Ds Z') = sum(Ds .* (ZW' Vr ZW)) over the block's
          // columns, and X~'W Vr W Vs W X~ = (ZW' Tr)' Ds U = Pr' Ls.
          const int r = bk < 0 ? k : l;
          const int sp = bk < 0 ? l : k;
          const int bs = fModel.GetBlockOf(sp);
          const int pos = lr.fvPos[U(bs)], len = lr.fvLen[U(bs)];
          const Eigen::MatrixXd G = lr.fZW.middleCols(pos, len).transpose() * VkZW[U(r)].middleCols(pos, len);
          trWW(k, l) += f * G.cwiseProduct(Dk[U(sp)]).sum();
          const auto Pr = Pk[U(r)].middleRows(pos, len);
          if (k == r) {
            MCEngineGroupSums::AddAt(pairProduct(k, l), idx, f, Pr.transpose() * Lk[U(sp)]);
          } else {
            MCEngineGroupSums::AddAt(pairProduct(k, l), idx, f, Lk[U(sp)].transpose() * Pr);
          }
        }
      }
    }
    for (std::size_t s = 0; s < secondPairs.size(); ++s) {
      const int k = secondPairs[s].first;
      const int b = fModel.GetBlockOf(k);
      if (b >= 0 && !blockPresent[U(b)]) continue;
      if (b >= 0) {
        Eigen::MatrixXd D2;
        BlockDerivative(c, b, d2S[s], lr, D2);
        const auto Ub = lr.fU.middleRows(lr.fvPos[U(b)], lr.fvLen[U(b)]);
        const auto Mbb = lr.fM.block(lr.fvPos[U(b)], lr.fvPos[U(b)], lr.fvLen[U(b)], lr.fvLen[U(b)]);
        trW2[static_cast<Eigen::Index>(s)] += f * D2.cwiseProduct(Mbb).sum();
        MCEngineGroupSums::AddAt(A2bar[s], idx, f, Ub.transpose() * D2 * Ub);
        continue;
      }
      Eigen::MatrixXd Vkl = Eigen::MatrixXd::Zero(m, m);
      AddResidual(c, d2S[s], Vkl);
      trW2[static_cast<Eigen::Index>(s)] += f * TraceOfProduct(W, Vkl);
      MCEngineGroupSums::AddAt(A2bar[s], idx, f, WX.transpose() * Vkl * WX);
    }
  }

  if (derivs) {
    fPairProducts = 0.0;
    for (const Eigen::MatrixXd& B : sums.fvBbar) fPairProducts += B.size() > 0 ? 1.0 : 0.0;
  }

  // Copies of weighted records.
  if (!fCopies.IsEmpty()) {
    double add = 0.0;
    if (!fCopies.LogDet(SR, add)) return false;
    logDetV += add;
    for (int k = 0; derivs && k < K; ++k) {
      if (fModel.GetBlockOf(k) >= 0) continue;
      trW[k] += fCopies.Trace(SR, dS[U(k)]);
      for (int l = k; l < K; ++l) {
        if (fModel.GetBlockOf(l) < 0) trWW(k, l) += fCopies.TraceOfProducts(SR, dS[U(k)], dS[U(l)]);
      }
    }
    for (std::size_t s = 0; s < secondPairs.size(); ++s) {
      if (fModel.GetBlockOf(secondPairs[s].first) < 0) trW2[static_cast<Eigen::Index>(s)] += fCopies.Trace(SR, d2S[s]);
    }
  }

  // Generalised least squares over the kept columns.
  out.fLogDetV = logDetV;
  out.fBeta = Eigen::VectorXd::Zero(p);
  out.fC = byFactors ? Eigen::MatrixXd() : Eigen::MatrixXd::Zero(p, p);
  out.fLogDetXVX = 0.0;
  Eigen::MatrixXd lower;
  if (p > 0) {
    Eigen::MatrixXd lx;
    if (!FactorFixedPart(Mbar.topLeftCorner(p, p), lx)) return false;
    for (int i = 0; i < p; ++i) {
      const double d = lx(i, i);
      if (!(d > 0.0)) return false;
      out.fLogDetXVX += 2.0 * std::log(d);
    }
    const auto L = lx.triangularView<Eigen::Lower>();
    // The value alone needs no inverse, which costs the cube of the fixed
    // columns; nor do the derivatives from the factors.
    if (derivs && !byFactors) {
      if (MCEngineMostlyZero::PaysOver(p)) {
        out.fC = InverseOfFactored(lx);
      } else {
        out.fC = Eigen::MatrixXd::Identity(p, p);
        L.solveInPlace(out.fC);
        L.adjoint().solveInPlace(out.fC);
      }
    }
    out.fBeta = Mbar.col(p).head(p);
    L.solveInPlace(out.fBeta);
    L.adjoint().solveInPlace(out.fBeta);
    if (byFactors) lower = std::move(lx);
  }
  out.fRVR = Mbar(p, p) - (p > 0 ? Mbar.col(p).head(p).dot(out.fBeta) : 0.0);
  if (!std::isfinite(out.fRVR) || !std::isfinite(logDetV)) return false;
  out.fbOK = true;
  if (!derivs) return true;
  if (byFactors) {
    DerivativesByFactors(sums, lower, reml, hessian, secondPairs, out);
    return true;
  }

  const Eigen::VectorXd bvec = ResidualCoefficients(out.fBeta);
  const Eigen::MatrixXd& C = out.fC;
  out.fvA.assign(U(K), Eigen::MatrixXd());
  std::vector<Eigen::MatrixXd> CA(U(K));
  std::vector<Eigen::VectorXd> avec(U(K));
  out.fQuad.resize(K);
  out.fTrace.resize(K);
  out.fGrad.resize(K);
  for (int k = 0; k < K; ++k) {
    out.fvA[U(k)] = Abar[U(k)].topLeftCorner(p, p);
    // A factor of many levels leaves A_k mostly zero (levels that share no
    // group), and C A_k then costs p times its nonzero entries, not p^3.
    CA[U(k)] = MCEngineMostlyZero::PaysOver(p) ? MCEngineMostlyZero(out.fvA[U(k)]).LeftProduct(C)
                                               : Eigen::MatrixXd(C * out.fvA[U(k)]);
    avec[U(k)] = Abar[U(k)].topRows(p) * bvec;
    out.fQuad[k] = bvec.dot(Abar[U(k)] * bvec);
    out.fTrace[k] = trW[k] - (reml ? CA[U(k)].trace() : 0.0);
    out.fGrad[k] = out.fTrace[k] - out.fQuad[k];
  }
  out.fHessExpected.resize(K, K);
  if (hessian) out.fHessObserved.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) {
      const Eigen::MatrixXd& B = sums.fvBbar[MCEngineGroupSums::PairIndex(k, l, K)];
      const bool held = B.size() > 0;
      double e = trWW(k, l);
      if (reml) {
        if (held) e -= 2.0 * TraceOfProduct(C, B.topLeftCorner(p, p));
        e += TraceOfProduct(CA[U(k)], CA[U(l)]);
      }
      out.fHessExpected(k, l) = out.fHessExpected(l, k) = e;
      if (hessian) {
        const double quad2 = (held ? bvec.dot(B * bvec) : 0.0) - avec[U(k)].dot(C * avec[U(l)]);
        const double h = -e + 2.0 * quad2;
        out.fHessObserved(k, l) = out.fHessObserved(l, k) = h;
      }
    }
  }
  if (hessian) {
    for (std::size_t s = 0; s < secondPairs.size(); ++s) {
      const int k = secondPairs[s].first, l = secondPairs[s].second;
      double t2 = trW2[static_cast<Eigen::Index>(s)];
      if (reml) t2 -= TraceOfProduct(C, A2bar[s].topLeftCorner(p, p));
      const double extra = t2 - bvec.dot(A2bar[s] * bvec);
      out.fHessObserved(k, l) += extra;
      if (k != l) out.fHessObserved(l, k) += extra;
    }
  }
  return true;
}

}  // namespace MCEngine_850
