#include "numeric/engine/detail/MCEngineSparseEvaluator.h"

#include <algorithm>
#include <cmath>

#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineRecordFree.h"

namespace MCEngine_850 {

namespace {

// The smallest singular value Lambda keeps (the response is scaled to a
// magnitude near 1, so this is far below anything a variance can mean).
constexpr double kLift = 1e-60;

// Parameters this close are the same point: the estimates come back to the
// predictions rescaled and unscaled, a few units in the last place apart.
constexpr double kThetaRounding = 1e-14;

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

inline double TraceOfProduct(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B) {
  return A.cwiseProduct(B.transpose()).sum();
}

Eigen::Map<Eigen::MatrixXd> AsMatrix(Eigen::VectorXd& v) { return Eigen::Map<Eigen::MatrixXd>(v.data(), v.size(), 1); }

void Scale(const MCEngineCrossProducts& from, double c, MCEngineCrossProducts& to) {
  to.fvZZ.resize(from.fvZZ.size());
  for (std::size_t i = 0; i < from.fvZZ.size(); ++i) to.fvZZ[i] = c * from.fvZZ[i];
  to.fZX = c * from.fZX;
  to.fXX = c * from.fXX;
  to.fZY = c * from.fZY;
  to.fXY = c * from.fXY;
  to.fYY = c * from.fYY;
}

// The common value of a matrix's diagonal, or NaN when it has none.
double CommonDiagonal(const Eigen::MatrixXd& S) {
  if (S.rows() == 0) return std::nan("");
  const double v = S(0, 0);
  for (Eigen::Index i = 1; i < S.rows(); ++i) {
    if (S(i, i) != v) return std::nan("");
  }
  return v;
}

}  // namespace

MCEngineSparseEvaluator::MCEngineSparseEvaluator(const MCEngineData& data, const MCEngineModel& model,
                                                 bool crossProducts)
    : fData(data),
      fModel(model),
      fCopies(data),
      fDesign(data, MCEngineDataBuilder::IsDiagonalType(data.fResidualType)),
      fbResidualDiagonal(MCEngineDataBuilder::IsDiagonalType(data.fResidualType)) {
  long offset = 0;
  for (const MCEngineSparseDesign::Group& g : fDesign.GetGroups()) {
    fvRinvOffset.push_back(offset);
    offset += static_cast<long>(g.fNRows) * g.fNRows;
  }
  const int nz = fDesign.GetNColumns();
  if (nz == 0 || !fFactor.Analyze(nz, fDesign.GetColStart(), fDesign.GetRowIndex(), fDesign.BlocksBySubjects())) return;
  fvPairInverse.assign(U(fDesign.GetNPairValues()), -1);
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow);
    const int qc = fDesign.GetNodeSize(pr.fCol);
    for (int cc = 0; cc < qc; ++cc) {
      for (int ca = 0; ca < qa; ++ca) {
        const long at = fFactor.InversePosition(fDesign.GetNodeStart(pr.fRow) + ca, fDesign.GetNodeStart(pr.fCol) + cc);
        if (at < 0) return;
        fvPairInverse[U(pr.fOffset + ca + static_cast<long>(qa) * cc)] = at;
      }
    }
  }
  fvRecordWeight.resize(data.fNRecords);
  bool singleRows = true;
  for (const MCEngineSparseDesign::Group& g : fDesign.GetGroups()) {
    for (int a = 0; a < g.fNRows; ++a) fvRecordWeight[fDesign.GetGroupRows()[U(g.fRow0 + a)]] = g.fWeight;
    singleRows = singleRows && g.fNRows == 1;
  }
  // One variance over single records: R^-1 is a fixed matrix times a number.
  fbRecordFree = crossProducts && singleRows && fbResidualDiagonal &&
                 fModel.GetResidual().GetNParams() == 1;
  if (fbRecordFree) FormUnitProducts();
  fbReady = true;
}

void MCEngineSparseEvaluator::FormUnitProducts() {
  const int p = fData.fRank;
  const std::vector<MCEngineSparseDesign::Group>& groups = fDesign.GetGroups();
  auto form = [&](const std::vector<double>& y) {
    MCEngineRecordFree::CountRecordPass();
    fUnit.Reset(fDesign, p);
    for (int g = 0; g < static_cast<int>(groups.size()); ++g) {
      fUnit.AddRecord(fDesign, g, fData.fvScaleWeight[U(fDesign.GetGroupRows()[U(groups[U(g)].fRow0)])], y);
    }
  };
  form(fData.fvY);
  fShift = Eigen::VectorXd::Zero(p);
  if (p > 0) {
    const Eigen::LLT<Eigen::MatrixXd> llt(fUnit.fXX);
    if (llt.info() == Eigen::Success) fShift = llt.solve(fUnit.fXY);
    if (!fShift.allFinite()) fShift.setZero();
    const Eigen::VectorXd fitted = DesignTimes(Eigen::VectorXd::Zero(fDesign.GetNColumns()), fShift);
    std::vector<double> y(fData.fvY);
    for (std::size_t r = 0; r < y.size(); ++r) y[r] -= fitted[static_cast<Eigen::Index>(r)];
    form(y);
  }
  fSumCopies = 0.0;
  fSumLogWeights = 0.0;
  for (const MCEngineSparseDesign::Group& g : groups) {
    fSumCopies += g.fWeight;
    fSumLogWeights += g.fWeight * std::log(fData.fvScaleWeight[U(fDesign.GetGroupRows()[U(g.fRow0)])]);
  }
}

bool MCEngineSparseEvaluator::Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) {
  return Compute(theta, level, reml, true, out);
}

bool MCEngineSparseEvaluator::Compute(const Eigen::VectorXd& theta, Level level, bool reml, bool information,
                                      MCEngineEvaluation& out) {
  out.fbOK = false;
  // Also stops the Hessian's difference quotients, one gradient each.
  if (Cancelled()) return false;
  if (!fbReady) return false;
  const bool derivs = level >= kGradient;
  if (!Solved(theta, reml, derivs, out)) return false;
  out.fbOK = true;
  if (!derivs) return true;
  const Work& w = fLast;
  if (!fFactor.SelectInverse()) return false;
  const Shared sh = SharedPieces(w);
  const int K = fModel.GetNParams();
  out.fGrad.resize(K);
  out.fQuad.resize(K);
  out.fTrace.resize(K);
  out.fvA.assign(U(K), Eigen::MatrixXd());
  RandomGradient(theta, w, sh, out);
  ResidualGradient(w, sh, level >= kHessian, out);
  out.fGrad = out.fTrace - out.fQuad;
  if (!out.fGrad.allFinite()) return false;
  if (information) AverageInformation(theta, w, sh, out);
  if (level < kHessian) return true;
  // The statistics' Hessian is asked for at the estimates; the differences
  // that follow replace the factor, and predictions there need it again.
  KeepPredictionPoint(theta);
  RandomA(theta, sh, out);
  return ObservedHessian(theta, reml, out, out.fHessObserved);
}

bool MCEngineSparseEvaluator::Solved(const Eigen::VectorXd& theta, bool reml, bool derivs, MCEngineEvaluation& out) {
  // A line search's value is followed by the gradient at the point it
  // accepts: the factor of the last point serves both.
  const bool same = fbHaveLast && fbLastReml == reml && fLastTheta.size() == theta.size() && fLastTheta == theta;
  if (same && (fLast.fbDerivs || !derivs)) {
    CopyValue(fLastValue, out);
    return true;
  }
  if (same) {
    // The residual's derivative pieces only; the factor stays.
    fLast.fbDerivs = true;
    BuildResidual(theta, fLast);
    if (!ResidualGroups(fLast)) return false;
    CopyValue(fLastValue, out);
    return true;
  }
  fbHaveLast = false;
  fLast = Work();
  fLast.fbDerivs = derivs;
  fLast.fbReml = reml;
  if (!FactorG(theta, fLast)) return false;
  BuildResidual(theta, fLast);
  if (!ResidualGroups(fLast)) return false;
  if (!SolveEquations(fLast, out)) return false;
  CopyValue(out, fLastValue);
  fLastTheta = theta;
  fbLastReml = reml;
  fbHaveLast = true;
  return true;
}

void MCEngineSparseEvaluator::CopyValue(const MCEngineEvaluation& from, MCEngineEvaluation& to) {
  to.fLogDetV = from.fLogDetV;
  to.fLogDetXVX = from.fLogDetXVX;
  to.fRVR = from.fRVR;
  to.fBeta = from.fBeta;
  to.fC = from.fC;
}

bool MCEngineSparseEvaluator::FactorG(const Eigen::VectorXd& theta, Work& w) const {
  const int nb = fModel.GetNBlocks();
  w.fvLambda.resize(U(nb));
  w.fvLambdaInv.resize(U(nb));
  for (int b = 0; b < nb; ++b) {
    if (!fModel.FactorBlock(theta, b, kLift, w.fvLambda[U(b)], &w.fvLambdaInv[U(b)])) return false;
  }
  return true;
}

void MCEngineSparseEvaluator::BuildResidual(const Eigen::VectorXd& theta, Work& w) const {
  const MCCovStructure& residual = fModel.GetResidual();
  const Eigen::VectorXd seg = fModel.Segment(theta, -1);
  residual.Build(seg, w.fSR);
  w.fvdR.assign(U(residual.GetNParams()), Eigen::MatrixXd());
  if (!w.fbDerivs) return;
  for (int l = 0; l < residual.GetNParams(); ++l) residual.Derivative(seg, l, w.fvdR[U(l)]);
}

void MCEngineSparseEvaluator::OverRows(int g, const Eigen::MatrixXd& S, Eigen::MatrixXd& out) const {
  const MCEngineSparseDesign::Group& gr = fDesign.GetGroups()[U(g)];
  const int* rows = &fDesign.GetGroupRows()[U(gr.fRow0)];
  out.resize(gr.fNRows, gr.fNRows);
  for (int a = 0; a < gr.fNRows; ++a) {
    for (int b = 0; b < gr.fNRows; ++b) {
      const int ra = rows[a], rb = rows[b];
      out(a, b) = S(fData.fvResPosition[U(ra)], fData.fvResPosition[U(rb)]) /
                  std::sqrt(fData.fvScaleWeight[U(ra)] * fData.fvScaleWeight[U(rb)]);
    }
  }
}

Eigen::Map<const Eigen::MatrixXd> MCEngineSparseEvaluator::Rinv(const Work& w, int g) const {
  const int m = fDesign.GetGroups()[U(g)].fNRows;
  return Eigen::Map<const Eigen::MatrixXd>(&w.fvRinv[U(fvRinvOffset[U(g)])], m, m);
}

bool MCEngineSparseEvaluator::ScaledResidual(Work& w) const {
  const double s = CommonDiagonal(w.fSR);
  if (!(s > 0.0) || !std::isfinite(s)) return false;
  Scale(fUnit, 1.0 / s, w.fQ);
  w.fLogDetR = std::log(s) * fSumCopies - fSumLogWeights;
  if (!fCopies.IsEmpty()) {
    double add = 0.0;
    if (!fCopies.LogDet(w.fSR, add)) return false;
    w.fLogDetR += add;
  }
  if (w.fbDerivs) {
    const double d = CommonDiagonal(w.fvdR[0]);
    if (!std::isfinite(d)) return false;
    w.fDs = d / s;
    w.fvB.assign(1, MCEngineCrossProducts());
    Scale(fUnit, w.fDs / s, w.fvB[0]);
    w.fTraceR = Eigen::VectorXd::Constant(1, w.fDs * fSumCopies);
    if (!fCopies.IsEmpty()) w.fTraceR[0] += fCopies.Trace(w.fSR, w.fvdR[0]);
  }
  w.fbRecordFree = true;
  return std::isfinite(w.fLogDetR);
}

bool MCEngineSparseEvaluator::ResidualGroups(Work& w) const {
  if (fbRecordFree && ScaledResidual(w)) return true;
  MCEngineRecordFree::CountRecordPass();
  w.fbRecordFree = false;
  const std::vector<MCEngineSparseDesign::Group>& groups = fDesign.GetGroups();
  const int KR = fModel.GetResidual().GetNParams();
  const int p = fData.fRank;
  w.fQ.Reset(fDesign, p);
  w.fvRinv.assign(groups.empty() ? 0 : U(fvRinvOffset.back() + static_cast<long>(groups.back().fNRows) * groups.back().fNRows), 0.0);
  w.fLogDetR = 0.0;
  if (w.fbDerivs) {
    w.fvB.assign(U(KR), MCEngineCrossProducts());
    for (MCEngineCrossProducts& b : w.fvB) b.Reset(fDesign, p);
    w.fTraceR = Eigen::VectorXd::Zero(KR);
  }
  Eigen::MatrixXd R, dR, Ri, W;
  Eigen::LLT<Eigen::MatrixXd> llt;
  for (int g = 0; g < static_cast<int>(groups.size()); ++g) {
    const MCEngineSparseDesign::Group& gr = groups[U(g)];
    const double f = gr.fWeight;
    if (gr.fNRows == 1) {
      const int r = fDesign.GetGroupRows()[U(gr.fRow0)];
      const int pos = fData.fvResPosition[U(r)];
      const double sw = fData.fvScaleWeight[U(r)];
      const double rv = w.fSR(pos, pos) / sw;
      if (!(rv > 0.0) || !std::isfinite(rv)) return false;
      const double ri = 1.0 / rv;
      w.fvRinv[U(fvRinvOffset[U(g)])] = ri;
      w.fLogDetR += f * std::log(rv);
      w.fQ.AddRecord(fDesign, g, ri, fData.fvY);
      for (int l = 0; w.fbDerivs && l < KR; ++l) {
        const double dv = w.fvdR[U(l)](pos, pos) / sw;
        w.fTraceR[l] += f * dv * ri;
        w.fvB[U(l)].AddRecord(fDesign, g, dv * ri * ri, fData.fvY);
      }
      continue;
    }
    OverRows(g, w.fSR, R);
    llt.compute(R);
    if (llt.info() != Eigen::Success) return false;
    for (int a = 0; a < gr.fNRows; ++a) {
      const double d = llt.matrixLLT()(a, a);
      if (!(d > 0.0) || !std::isfinite(d)) return false;
      w.fLogDetR += f * 2.0 * std::log(d);
    }
    Ri = llt.solve(Eigen::MatrixXd::Identity(gr.fNRows, gr.fNRows));
    Eigen::Map<Eigen::MatrixXd>(&w.fvRinv[U(fvRinvOffset[U(g)])], gr.fNRows, gr.fNRows) = Ri;
    w.fQ.Add(fDesign, g, Ri, fData.fvY);
    for (int l = 0; w.fbDerivs && l < KR; ++l) {
      OverRows(g, w.fvdR[U(l)], dR);
      W = Ri * dR * Ri;
      w.fTraceR[l] += f * TraceOfProduct(Ri, dR);
      w.fvB[U(l)].Add(fDesign, g, W, fData.fvY);
    }
  }
  if (!fCopies.IsEmpty()) {
    double add = 0.0;
    if (!fCopies.LogDet(w.fSR, add)) return false;
    w.fLogDetR += add;
    for (int l = 0; w.fbDerivs && l < KR; ++l) w.fTraceR[l] += fCopies.Trace(w.fSR, w.fvdR[U(l)]);
  }
  return std::isfinite(w.fLogDetR);
}

bool MCEngineSparseEvaluator::SolveEquations(Work& w, MCEngineEvaluation& out) {
  const int p = fData.fRank;
  // The random part Lambda'Z'R^-1 Z Lambda + I on the analysed pattern.
  std::vector<double> pairM(U(fDesign.GetNPairValues()));
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow);
    const int qc = fDesign.GetNodeSize(pr.fCol);
    const Eigen::MatrixXd& La = w.fvLambda[U(fDesign.GetNodeBlock(pr.fRow))];
    const Eigen::MatrixXd& Lc = w.fvLambda[U(fDesign.GetNodeBlock(pr.fCol))];
    if (qa == 1 && qc == 1) {
      pairM[U(pr.fOffset)] = La(0, 0) * w.fQ.fvZZ[U(pr.fOffset)] * Lc(0, 0);
      continue;
    }
    const Eigen::Map<const Eigen::MatrixXd> Q(&w.fQ.fvZZ[U(pr.fOffset)], qa, qc);
    Eigen::Map<Eigen::MatrixXd>(&pairM[U(pr.fOffset)], qa, qc) = La.transpose() * Q * Lc;
  }
  const std::vector<int>& colStart = fDesign.GetColStart();
  const std::vector<int>& rowIndex = fDesign.GetRowIndex();
  const std::vector<long>& source = fDesign.GetEntrySource();
  std::vector<double>& values = w.fvM;
  values.resize(rowIndex.size());
  for (int j = 0; j < fDesign.GetNColumns(); ++j) {
    for (int k = colStart[U(j)]; k < colStart[U(j) + 1]; ++k) {
      values[U(k)] = pairM[U(source[U(k)])] + (rowIndex[U(k)] == j ? 1.0 : 0.0);
    }
  }
  if (!fFactor.Factorize(values)) return false;
  const double logDetM = fFactor.LogDet();

  // The fixed part: the Schur complement X'V^-1 X = X'R^-1 X - RZX'RZX.
  w.fRZX = w.fQ.fZX;
  ApplyLambda(w, w.fRZX, true);
  fFactor.SolveL(w.fRZX.data(), p);
  Eigen::VectorXd cz = w.fQ.fZY;
  ApplyLambda(w, AsMatrix(cz), true);
  Eigen::VectorXd rz = cz;
  fFactor.SolveL(rz.data(), 1);
  const Eigen::MatrixXd S = w.fQ.fXX - w.fRZX.transpose() * w.fRZX;
  w.fS.compute(S);
  double logDetS = 0.0;
  if (p > 0) {
    if (w.fS.info() != Eigen::Success) return false;
    for (int i = 0; i < p; ++i) {
      const double d = w.fS.matrixLLT()(i, i);
      if (!(d > 0.0) || !std::isfinite(d)) return false;
      logDetS += 2.0 * std::log(d);
    }
    w.fBeta = w.fS.solve(w.fQ.fXY - w.fRZX.transpose() * rz);
    w.fC = w.fS.solve(Eigen::MatrixXd::Identity(p, p));
  } else {
    w.fBeta.resize(0);
    w.fC.resize(0, 0);
  }
  w.fV = rz - w.fRZX * w.fBeta;
  fFactor.SolveLt(w.fV.data(), 1);
  w.fU = w.fV;
  ApplyLambda(w, AsMatrix(w.fU), false);
  out.fLogDetV = w.fLogDetR + logDetM;
  out.fLogDetXVX = logDetS;
  out.fBeta = Estimates(w);
  out.fC = w.fC;
  if (w.fbRecordFree) {
    // y'R^-1 y less the squares of the half-solved right-hand side.
    double rvr = w.fQ.fYY - rz.squaredNorm();
    if (p > 0) rvr -= w.fS.matrixL().solve(w.fQ.fXY - w.fRZX.transpose() * rz).squaredNorm();
    out.fRVR = rvr;
    w.fERE = rvr - w.fV.squaredNorm();
    return std::isfinite(out.fRVR) && std::isfinite(out.fLogDetV) && std::isfinite(out.fLogDetXVX);
  }
  // The residuals and r'V^-1 r as the penalised sum of squares
  // e'R^-1 e + v'v, e = y - X beta - Z Lambda v, which keeps its digits
  // where y'R^-1 y would cancel them.
  const Eigen::VectorXd fitted = DesignTimes(w.fU, w.fBeta);
  Eigen::VectorXd e(fData.fNRecords);
  for (int r = 0; r < fData.fNRecords; ++r) e[r] = fData.fvY[U(r)] - fitted[r];
  w.fE = e;
  ResidualSolve(w, w.fE);
  out.fRVR = WeightedDot(e, w.fE) + w.fV.squaredNorm();
  return std::isfinite(out.fRVR) && std::isfinite(out.fLogDetV) && std::isfinite(out.fLogDetXVX);
}

Eigen::VectorXd MCEngineSparseEvaluator::Estimates(const Work& w) const {
  return w.fbRecordFree ? Eigen::VectorXd(w.fBeta + fShift) : w.fBeta;
}

Eigen::VectorXd MCEngineSparseEvaluator::RandomTimesPy(const Work& w) const {
  // Z'R^-1 e with e = y - X beta - Z u.
  return w.fQ.fZY - w.fQ.fZX * w.fBeta - PairTimes(w.fQ.fvZZ, w.fU);
}

double MCEngineSparseEvaluator::WeightedDot(const Eigen::VectorXd& a, const Eigen::VectorXd& b) const {
  MCEngineRecordFree::CountRecordPass();
  return a.cwiseProduct(fvRecordWeight).dot(b);
}

MCEngineSparseEvaluator::Shared MCEngineSparseEvaluator::SharedPieces(const Work& w) {
  const int nb = fModel.GetNBlocks();
  Shared sh;
  sh.fY = w.fRZX;
  fFactor.SolveLt(sh.fY.data(), static_cast<int>(sh.fY.cols()));
  Eigen::MatrixXd LY = sh.fY;
  ApplyLambda(w, LY, false);
  sh.fHx = w.fQ.fZX - PairTimes(w.fQ.fvZZ, LY);
  // Z'P y with P y = R^-1 e.
  if (w.fbRecordFree) {
    sh.fs = RandomTimesPy(w);
  } else {
    Eigen::VectorXd sx;
    DesignTransposeTimes(w.fE, sh.fs, sx);
  }
  // Per block, sum over subjects of (Z'V^-1 Z)_ss = (Z'R^-1 Z Lambda M^-1)_ss Lambda^-1.
  sh.fvD = DiagonalOfInverseProduct(w);
  for (int b = 0; b < nb; ++b) {
    const Eigen::MatrixXd D = sh.fvD[U(b)] * w.fvLambdaInv[U(b)];
    sh.fvD[U(b)] = 0.5 * (D + D.transpose());
  }
  if (w.fbReml && fData.fRank > 0) {
    // Z'P Z = Z'V^-1 Z - Hx C Hx' with C = S^-1: the rows of Hx L_S^-T.
    const Eigen::MatrixXd HL = w.fS.matrixL().solve(sh.fHx.transpose()).transpose();
    for (int a = 0; a < fDesign.GetNNodes(); ++a) {
      const auto rows = HL.middleRows(fDesign.GetNodeStart(a), fDesign.GetNodeSize(a));
      sh.fvD[U(fDesign.GetNodeBlock(a))].noalias() -= rows * rows.transpose();
    }
  }
  return sh;
}

void MCEngineSparseEvaluator::RandomGradient(const Eigen::VectorXd& theta, const Work&, const Shared& sh,
                                             MCEngineEvaluation& out) const {
  const int ro = fModel.GetResidualOffset();
  Eigen::MatrixXd Gk;
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), Gk);
    out.fTrace[k] = TraceOfProduct(sh.fvD[U(b)], Gk);
    double quad = 0.0;
    for (int a = 0; a < fDesign.GetNNodes(); ++a) {
      if (fDesign.GetNodeBlock(a) != b) continue;
      const auto sa = sh.fs.segment(fDesign.GetNodeStart(a), fDesign.GetNodeSize(a));
      quad += sa.dot(Gk * sa);
    }
    out.fQuad[k] = quad;
  }
}

void MCEngineSparseEvaluator::ResidualGradient(const Work& w, const Shared& sh, bool keepA,
                                               MCEngineEvaluation& out) const {
  const int ro = fModel.GetResidualOffset();
  const int KR = fModel.GetResidual().GetNParams();
  Eigen::MatrixXd LY = sh.fY;
  ApplyLambda(w, LY, false);
  Eigen::VectorXd Rle;
  for (int l = 0; l < KR; ++l) {
    const MCEngineCrossProducts& B = w.fvB[U(l)];
    double trace = w.fTraceR[l] - TraceWithInverse(w, B.fvZZ);
    if (w.fbReml || keepA) {
      // X'V^-1 R_l V^-1 X with V^-1 X = R^-1 (X - Z Lambda Y).
      const Eigen::MatrixXd T = LY.transpose() * B.fZX;
      const Eigen::MatrixXd A = B.fXX - T - T.transpose() + LY.transpose() * PairTimes(B.fvZZ, LY);
      if (w.fbReml) trace -= TraceOfProduct(w.fC, A);
      if (keepA) out.fvA[U(ro + l)] = A;
    }
    out.fTrace[ro + l] = trace;
    // y'P R_l P y with P y = R^-1 e.
    if (w.fbRecordFree) {
      out.fQuad[ro + l] = w.fDs * w.fERE;
      continue;
    }
    Rle = w.fE;
    ResidualTimes(w.fvdR[U(l)], Rle);
    out.fQuad[ro + l] = WeightedDot(w.fE, Rle);
  }
}

void MCEngineSparseEvaluator::AverageInformation(const Eigen::VectorXd& theta, const Work& w, const Shared& sh,
                                                 MCEngineEvaluation& out) {
  if (w.fbRecordFree) {
    AverageInformationFromProducts(theta, w, sh, out);
    return;
  }
  const int K = fModel.GetNParams();
  const int ro = fModel.GetResidualOffset();
  // t_k = V_k P y, and the products t_k'P t_l over the records with their copies.
  std::vector<Eigen::VectorXd> t(U(K)), Pt(U(K));
  Eigen::MatrixXd Gk;
  for (int k = 0; k < K; ++k) {
    if (k < ro) {
      const int b = fModel.GetBlockOf(k);
      fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), Gk);
      Eigen::VectorXd gz = Eigen::VectorXd::Zero(fDesign.GetNColumns());
      for (int a = 0; a < fDesign.GetNNodes(); ++a) {
        if (fDesign.GetNodeBlock(a) != b) continue;
        const int at = fDesign.GetNodeStart(a), q = fDesign.GetNodeSize(a);
        gz.segment(at, q) = Gk * sh.fs.segment(at, q);
      }
      t[U(k)] = DesignTimes(gz, Eigen::VectorXd());
    } else {
      t[U(k)] = w.fE;
      ResidualTimes(w.fvdR[U(k - ro)], t[U(k)]);
    }
    Pt[U(k)] = ApplyP(w, t[U(k)]);
  }
  out.fHessExpected.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) out.fHessExpected(k, l) = out.fHessExpected(l, k) = WeightedDot(t[U(k)], Pt[U(l)]);
  }
}

void MCEngineSparseEvaluator::AverageInformationFromProducts(const Eigen::VectorXd& theta, const Work& w,
                                                             const Shared& sh, MCEngineEvaluation& out) {
  const int K = fModel.GetNParams();
  const int ro = fModel.GetResidualOffset();
  // Per parameter: Z'R^-1 t_k for a random one, c_k = [Lambda'Z'R^-1 t_k;
  // X'R^-1 t_k] and its solve K^-1 c_k.
  std::vector<Eigen::VectorXd> gz(U(ro)), zt(U(ro)), cz(U(K)), cx(U(K)), a(U(K)), b(U(K));
  Eigen::MatrixXd Gk;
  for (int k = 0; k < ro; ++k) {
    const int blk = fModel.GetBlockOf(k);
    fModel.GetBlock(blk).Derivative(fModel.Segment(theta, blk), fModel.GetLocalIndex(k), Gk);
    gz[U(k)] = Eigen::VectorXd::Zero(fDesign.GetNColumns());
    for (int n = 0; n < fDesign.GetNNodes(); ++n) {
      if (fDesign.GetNodeBlock(n) != blk) continue;
      const int at = fDesign.GetNodeStart(n), q = fDesign.GetNodeSize(n);
      gz[U(k)].segment(at, q) = Gk * sh.fs.segment(at, q);
    }
    zt[U(k)] = PairTimes(w.fQ.fvZZ, gz[U(k)]);
    cz[U(k)] = zt[U(k)];
    cx[U(k)] = w.fQ.fZX.transpose() * gz[U(k)];
  }
  for (int k = ro; k < K; ++k) {
    // t = (d / s) e: X'R^-1 e = X'R^-1 y - X'R^-1 X beta - X'R^-1 Z u.
    cz[U(k)] = w.fDs * sh.fs;
    cx[U(k)] = w.fDs * (w.fQ.fXY - w.fQ.fXX * w.fBeta - w.fQ.fZX.transpose() * w.fU);
  }
  for (int k = 0; k < K; ++k) {
    ApplyLambda(w, AsMatrix(cz[U(k)]), true);
    SolveFull(w, cz[U(k)], cx[U(k)], a[U(k)], b[U(k)]);
  }
  auto inner = [&](int k, int l) {
    if (k < ro && l < ro) return gz[U(k)].dot(zt[U(l)]);
    if (k < ro) return w.fDs * gz[U(k)].dot(sh.fs);
    if (l < ro) return w.fDs * gz[U(l)].dot(sh.fs);
    return w.fDs * w.fDs * w.fERE;
  };
  out.fHessExpected.resize(K, K);
  for (int k = 0; k < K; ++k) {
    for (int l = k; l < K; ++l) {
      const double h = inner(k, l) - cz[U(k)].dot(a[U(l)]) - (cx[U(k)].size() > 0 ? cx[U(k)].dot(b[U(l)]) : 0.0);
      out.fHessExpected(k, l) = out.fHessExpected(l, k) = h;
    }
  }
}

void MCEngineSparseEvaluator::RandomA(const Eigen::VectorXd& theta, const Shared& sh, MCEngineEvaluation& out) const {
  const int ro = fModel.GetResidualOffset();
  const int p = fData.fRank;
  Eigen::MatrixXd Gk;
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), Gk);
    Eigen::MatrixXd A = Eigen::MatrixXd::Zero(p, p);
    for (int a = 0; a < fDesign.GetNNodes(); ++a) {
      if (fDesign.GetNodeBlock(a) != b) continue;
      const auto H = sh.fHx.middleRows(fDesign.GetNodeStart(a), fDesign.GetNodeSize(a));
      A.noalias() += H.transpose() * Gk * H;
    }
    out.fvA[U(k)] = A;
  }
}

bool MCEngineSparseEvaluator::GradientAt(const Eigen::VectorXd& theta, bool reml, Eigen::VectorXd& g) {
  if (!fModel.InBounds(theta)) return false;
  MCEngineEvaluation ev;
  if (!Compute(theta, kGradient, reml, false, ev)) return false;
  g = ev.fGrad;
  return true;
}

bool MCEngineSparseEvaluator::ObservedHessian(const Eigen::VectorXd& theta, bool reml, const MCEngineEvaluation& here,
                                              Eigen::MatrixXd& H) {
  const int K = static_cast<int>(theta.size());
  const Eigen::VectorXd& g = here.fGrad;
  H.resize(K, K);
  // Under a profiled scale the column of the scale follows from the others,
  // one factorisation per difference quotient fewer.
  const int skipped = fModel.IsProfiled() && theta[fModel.GetScaleIndex()] > 0.0 ? fModel.GetScaleIndex() : -1;
  DifferenceSide up, down;
  for (int k = 0; k < K; ++k) {
    if (k == skipped) continue;
    const double h = DifferenceStep(fModel, theta, k);
    auto at = [&](double step, Eigen::VectorXd& out) {
      Eigen::VectorXd t = theta;
      t[k] += step;
      return GradientAt(t, reml, out);
    };
    up.fbOK = at(h, up.fFull) && at(0.5 * h, up.fHalf);
    down.fbOK = at(-h, down.fFull) && at(-0.5 * h, down.fHalf);
    Eigen::VectorXd column;
    if (!DifferenceQuotient(up, down, g, h, column)) return false;
    H.col(k) = column;
  }
  if (skipped >= 0) ScaleColumn(theta, here, skipped, H);
  H = (0.5 * (H + H.transpose())).eval();
  return H.allFinite();
}

double MCEngineSparseEvaluator::DifferenceStep(const MCEngineModel& model, const Eigen::VectorXd& theta, int k) {
  const double floor = model.IsScaleLike(k) ? 1e-4 : 0.1;
  double h = 1e-3 * std::max(std::fabs(theta[k]), floor);
  double lower = 0.0, upper = 0.0;
  model.GetBounds(k, lower, upper);
  if (std::isfinite(upper) && upper - theta[k] > 0.0) h = std::min(h, 0.25 * (upper - theta[k]));
  if (std::isfinite(lower) && theta[k] - lower > 0.0) h = std::min(h, 0.25 * (theta[k] - lower));
  return h;
}

bool MCEngineSparseEvaluator::DifferenceQuotient(const DifferenceSide& up, const DifferenceSide& down,
                                                 const Eigen::VectorXd& here, double h, Eigen::VectorXd& out) {
  if (up.fbOK && down.fbOK) {
    out = (4.0 * (up.fHalf - down.fHalf) / h - (up.fFull - down.fFull) / (2.0 * h)) / 3.0;
  } else if (up.fbOK) {
    out = 2.0 * (up.fHalf - here) / (0.5 * h) - (up.fFull - here) / h;
  } else if (down.fbOK) {
    out = 2.0 * (here - down.fHalf) / (0.5 * h) - (here - down.fFull) / h;
  } else {
    return false;
  }
  return true;
}

bool MCEngineSparseEvaluator::PredictionPointAt(const Eigen::VectorXd& theta, PredictionPoint& out) {
  if (fbKeptPoint && SameUpToRounding(theta, fKeptTheta)) {
    out = fKeptPoint;
    return true;
  }
  MCEngineEvaluation ev;
  if (!fbReady || Cancelled() || !Solved(theta, fbHaveLast && fbLastReml, false, ev)) return false;
  if (!fFactor.SelectInverse()) return false;
  FillPredictionPoint(out);
  return true;
}

void MCEngineSparseEvaluator::KeepPredictionPoint(const Eigen::VectorXd& theta) {
  FillPredictionPoint(fKeptPoint);
  fKeptTheta = theta;
  fbKeptPoint = true;
}

void MCEngineSparseEvaluator::FillPredictionPoint(PredictionPoint& out) const {
  const Work& w = fLast;
  out.fvLambda = w.fvLambda;
  out.fvPairInverse.resize(fvPairInverse.size());
  for (std::size_t i = 0; i < fvPairInverse.size(); ++i) out.fvPairInverse[i] = fFactor.InverseAt(fvPairInverse[i]);
  out.fvM = w.fvM;
  out.fY = w.fRZX;
  if (out.fY.cols() > 0) fFactor.SolveLt(out.fY.data(), static_cast<int>(out.fY.cols()));
  out.fC = w.fC;
  out.fBeta = Estimates(w);
  out.fV = w.fV;
}

bool MCEngineSparseEvaluator::SameUpToRounding(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  if (a.size() != b.size()) return false;
  for (Eigen::Index k = 0; k < a.size(); ++k) {
    if (!(std::fabs(a[k] - b[k]) <= kThetaRounding * std::fabs(b[k]))) return false;
  }
  return true;
}

void MCEngineSparseEvaluator::ScaleColumn(const Eigen::VectorXd& theta, const MCEngineEvaluation& at, int r,
                                          Eigen::MatrixXd& H) const {
  // V is homogeneous in the parameters: V(theta(c)) = c V(theta) for
  // theta(c)_l = c^p_l theta_l (p_l the scale power), which is what profiling
  // the scale rests on. The log determinants then change by multiples of
  // log c and r'V^-1 r by the factor 1/c, so that differentiating the
  // gradient along theta(c) at c = 1 gives, for every k,
  //   sum_l H_kl p_l theta_l = -p_k g_k + y'P V_k P y.
  // Row r holds the columns already differenced; column r then follows.
  const int K = static_cast<int>(theta.size());
  const double pr = fModel.GetScalePower(r) * theta[r];
  auto rest = [&](int k) {
    double sum = -fModel.GetScalePower(k) * at.fGrad[k] + at.fQuad[k];
    for (int l = 0; l < K; ++l) {
      if (l != r) sum -= H(k, l) * fModel.GetScalePower(l) * theta[l];
    }
    return sum;
  };
  H(r, r) = rest(r) / pr;
  for (int k = 0; k < K; ++k) {
    if (k != r) H(k, r) = rest(k) / pr;
  }
}

bool MCEngineSparseEvaluator::StartInformation(const Eigen::VectorXd& theta, Eigen::MatrixXd& info) {
  // The information tr(V^-1 V_k V^-1 V_l) where V = R (no random effects):
  // the pairs of Z'R^-1 Z carry the random parameters, the diagonal blocks
  // of Z'R^-1 R_l R^-1 Z their products with the residual's, and R's groups
  // the residual's own.
  if (!fbReady) return false;
  Work w;
  w.fbDerivs = true;
  if (!FactorG(theta, w)) return false;
  BuildResidual(theta, w);
  if (!ResidualGroups(w)) return false;
  const int K = fModel.GetNParams();
  const int ro = fModel.GetResidualOffset();
  const int KR = K - ro;
  std::vector<Eigen::MatrixXd> dG(U(ro));
  for (int k = 0; k < ro; ++k) {
    const int b = fModel.GetBlockOf(k);
    fModel.GetBlock(b).Derivative(fModel.Segment(theta, b), fModel.GetLocalIndex(k), dG[U(k)]);
  }
  info = Eigen::MatrixXd::Zero(K, K);
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow), qc = fDesign.GetNodeSize(pr.fCol);
    const int ba = fDesign.GetNodeBlock(pr.fRow), bc = fDesign.GetNodeBlock(pr.fCol);
    const Eigen::Map<const Eigen::MatrixXd> Q(&w.fQ.fvZZ[U(pr.fOffset)], qa, qc);
    for (int k = 0; k < ro; ++k) {
      for (int l = 0; l < ro; ++l) {
        if (fModel.GetBlockOf(k) == ba && fModel.GetBlockOf(l) == bc) {
          info(k, l) += TraceOfProduct(dG[U(k)] * Q, dG[U(l)] * Q.transpose());
        }
        if (pr.fRow != pr.fCol && fModel.GetBlockOf(k) == bc && fModel.GetBlockOf(l) == ba) {
          info(k, l) += TraceOfProduct(dG[U(k)] * Q.transpose(), dG[U(l)] * Q);
        }
      }
      if (pr.fRow != pr.fCol || fModel.GetBlockOf(k) != ba) continue;
      for (int l = 0; l < KR; ++l) {
        const Eigen::Map<const Eigen::MatrixXd> B(&w.fvB[U(l)].fvZZ[U(pr.fOffset)], qa, qa);
        info(k, ro + l) += TraceOfProduct(dG[U(k)], B);
      }
    }
  }
  for (int k = 0; k < ro; ++k) {
    for (int l = 0; l < KR; ++l) info(ro + l, k) = info(k, ro + l);
  }
  // The residual's parameters, group by group; one variance over the
  // records adds (d / s)^2 for each.
  Eigen::MatrixXd Rk, Rl;
  if (w.fbRecordFree) info(ro, ro) += w.fDs * w.fDs * fSumCopies;
  for (int g = 0; !w.fbRecordFree && g < static_cast<int>(fDesign.GetGroups().size()); ++g) {
    const double f = fDesign.GetGroups()[U(g)].fWeight;
    const Eigen::MatrixXd Ri = Rinv(w, g);
    for (int k = 0; k < KR; ++k) {
      OverRows(g, w.fvdR[U(k)], Rk);
      const Eigen::MatrixXd RiRk = Ri * Rk;
      for (int l = k; l < KR; ++l) {
        OverRows(g, w.fvdR[U(l)], Rl);
        info(ro + k, ro + l) += f * TraceOfProduct(RiRk, Ri * Rl);
      }
    }
  }
  for (int k = 0; k < KR; ++k) {
    for (int l = k; l < KR; ++l) {
      if (!fCopies.IsEmpty()) info(ro + k, ro + l) += fCopies.TraceOfProducts(w.fSR, w.fvdR[U(k)], w.fvdR[U(l)]);
      info(ro + l, ro + k) = info(ro + k, ro + l);
    }
  }
  return info.allFinite();
}

void MCEngineSparseEvaluator::ApplyLambda(const Work& w, Eigen::Ref<Eigen::MatrixXd> M, bool transpose) const {
  for (int a = 0; a < fDesign.GetNNodes(); ++a) {
    const Eigen::MatrixXd& L = w.fvLambda[U(fDesign.GetNodeBlock(a))];
    const int at = fDesign.GetNodeStart(a), q = fDesign.GetNodeSize(a);
    if (q == 1) {
      M.row(at) *= L(0, 0);
    } else if (transpose) {
      M.middleRows(at, q) = (L.transpose() * M.middleRows(at, q)).eval();
    } else {
      M.middleRows(at, q) = (L * M.middleRows(at, q)).eval();
    }
  }
}

Eigen::MatrixXd MCEngineSparseEvaluator::PairTimes(const std::vector<double>& pairs, const Eigen::MatrixXd& M) const {
  Eigen::MatrixXd out = Eigen::MatrixXd::Zero(M.rows(), M.cols());
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow), qc = fDesign.GetNodeSize(pr.fCol);
    const int ra = fDesign.GetNodeStart(pr.fRow), rc = fDesign.GetNodeStart(pr.fCol);
    if (qa == 1 && qc == 1) {
      const double v = pairs[U(pr.fOffset)];
      out.row(ra) += v * M.row(rc);
      if (pr.fRow != pr.fCol) out.row(rc) += v * M.row(ra);
      continue;
    }
    const Eigen::Map<const Eigen::MatrixXd> N(&pairs[U(pr.fOffset)], qa, qc);
    out.middleRows(ra, qa).noalias() += N * M.middleRows(rc, qc);
    if (pr.fRow != pr.fCol) out.middleRows(rc, qc).noalias() += N.transpose() * M.middleRows(ra, qa);
  }
  return out;
}

double MCEngineSparseEvaluator::TraceWithInverse(const Work& w, const std::vector<double>& pairs) const {
  double sum = 0.0;
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow), qc = fDesign.GetNodeSize(pr.fCol);
    const double weight = pr.fRow == pr.fCol ? 1.0 : 2.0;
    const Eigen::MatrixXd& La = w.fvLambda[U(fDesign.GetNodeBlock(pr.fRow))];
    const Eigen::MatrixXd& Lc = w.fvLambda[U(fDesign.GetNodeBlock(pr.fCol))];
    if (qa == 1 && qc == 1) {
      sum += weight * fFactor.InverseAt(fvPairInverse[U(pr.fOffset)]) * La(0, 0) * pairs[U(pr.fOffset)] * Lc(0, 0);
      continue;
    }
    const Eigen::Map<const Eigen::MatrixXd> N(&pairs[U(pr.fOffset)], qa, qc);
    const Eigen::MatrixXd LNL = La.transpose() * N * Lc;
    for (int cc = 0; cc < qc; ++cc) {
      for (int ca = 0; ca < qa; ++ca) {
        sum += weight * fFactor.InverseAt(fvPairInverse[U(pr.fOffset + ca + static_cast<long>(qa) * cc)]) * LNL(ca, cc);
      }
    }
  }
  return sum;
}

std::vector<Eigen::MatrixXd> MCEngineSparseEvaluator::DiagonalOfInverseProduct(const Work& w) const {
  const int nb = fModel.GetNBlocks();
  std::vector<Eigen::MatrixXd> E(U(nb));
  for (int b = 0; b < nb; ++b) E[U(b)] = Eigen::MatrixXd::Zero(fData.fvBlocks[U(b)].fNColumns, fData.fvBlocks[U(b)].fNColumns);
  for (const MCEngineSparseDesign::Pair& pr : fDesign.GetPairs()) {
    const int qa = fDesign.GetNodeSize(pr.fRow), qc = fDesign.GetNodeSize(pr.fCol);
    const int ba = fDesign.GetNodeBlock(pr.fRow), bc = fDesign.GetNodeBlock(pr.fCol);
    const Eigen::MatrixXd& La = w.fvLambda[U(ba)];
    const Eigen::MatrixXd& Lc = w.fvLambda[U(bc)];
    if (qa == 1 && qc == 1) {
      const double q = w.fQ.fvZZ[U(pr.fOffset)];
      const double s = fFactor.InverseAt(fvPairInverse[U(pr.fOffset)]);
      E[U(ba)](0, 0) += q * Lc(0, 0) * s;
      if (pr.fRow != pr.fCol) E[U(bc)](0, 0) += q * La(0, 0) * s;
      continue;
    }
    const Eigen::Map<const Eigen::MatrixXd> Q(&w.fQ.fvZZ[U(pr.fOffset)], qa, qc);
    Eigen::MatrixXd Sel(qa, qc);
    for (int cc = 0; cc < qc; ++cc) {
      for (int ca = 0; ca < qa; ++ca) Sel(ca, cc) = fFactor.InverseAt(fvPairInverse[U(pr.fOffset + ca + static_cast<long>(qa) * cc)]);
    }
    // (Z'R^-1 Z Lambda M^-1)_aa takes Q_ac Lambda_c (M^-1)_ca from each neighbour c.
    E[U(ba)].noalias() += Q * Lc * Sel.transpose();
    if (pr.fRow != pr.fCol) E[U(bc)].noalias() += Q.transpose() * La * Sel;
  }
  return E;
}

Eigen::VectorXd MCEngineSparseEvaluator::DesignTimes(const Eigen::VectorXd& u, const Eigen::VectorXd& b) const {
  MCEngineRecordFree::CountRecordPass();
  Eigen::VectorXd out = Eigen::VectorXd::Zero(fData.fNRecords);
  const bool fixed = b.size() > 0;
  for (const MCEngineSparseDesign::Group& g : fDesign.GetGroups()) {
    const int m = g.fNRows;
    const int* rows = &fDesign.GetGroupRows()[U(g.fRow0)];
    const double* z = g.fNZ > 0 ? &fDesign.GetGroupZValues()[U(g.fZValue0)] : nullptr;
    const double* x = g.fNX > 0 ? &fDesign.GetGroupXValues()[U(g.fXValue0)] : nullptr;
    for (int k = 0; k < g.fNZ; ++k) {
      const double uk = u[fDesign.GetGroupZColumns()[U(g.fZ0 + k)]];
      for (int a = 0; a < m; ++a) out[rows[a]] += z[static_cast<long>(k) * m + a] * uk;
    }
    for (int k = 0; fixed && k < g.fNX; ++k) {
      const double bk = b[fDesign.GetGroupXColumns()[U(g.fX0 + k)]];
      for (int a = 0; a < m; ++a) out[rows[a]] += x[static_cast<long>(k) * m + a] * bk;
    }
  }
  return out;
}

void MCEngineSparseEvaluator::DesignTransposeTimes(const Eigen::VectorXd& t, Eigen::VectorXd& tz,
                                                   Eigen::VectorXd& tx) const {
  MCEngineRecordFree::CountRecordPass();
  tz = Eigen::VectorXd::Zero(fDesign.GetNColumns());
  tx = Eigen::VectorXd::Zero(fData.fRank);
  for (const MCEngineSparseDesign::Group& g : fDesign.GetGroups()) {
    const int m = g.fNRows;
    const int* rows = &fDesign.GetGroupRows()[U(g.fRow0)];
    const double* z = g.fNZ > 0 ? &fDesign.GetGroupZValues()[U(g.fZValue0)] : nullptr;
    const double* x = g.fNX > 0 ? &fDesign.GetGroupXValues()[U(g.fXValue0)] : nullptr;
    for (int k = 0; k < g.fNZ; ++k) {
      double sum = 0.0;
      for (int a = 0; a < m; ++a) sum += z[static_cast<long>(k) * m + a] * t[rows[a]];
      tz[fDesign.GetGroupZColumns()[U(g.fZ0 + k)]] += g.fWeight * sum;
    }
    for (int k = 0; k < g.fNX; ++k) {
      double sum = 0.0;
      for (int a = 0; a < m; ++a) sum += x[static_cast<long>(k) * m + a] * t[rows[a]];
      tx[fDesign.GetGroupXColumns()[U(g.fX0 + k)]] += g.fWeight * sum;
    }
  }
}

void MCEngineSparseEvaluator::ResidualSolve(const Work& w, Eigen::VectorXd& t) const {
  MCEngineRecordFree::CountRecordPass();
  const std::vector<MCEngineSparseDesign::Group>& groups = fDesign.GetGroups();
  Eigen::VectorXd tg;
  for (int g = 0; g < static_cast<int>(groups.size()); ++g) {
    const MCEngineSparseDesign::Group& gr = groups[U(g)];
    const int* rows = &fDesign.GetGroupRows()[U(gr.fRow0)];
    if (gr.fNRows == 1) {
      t[rows[0]] *= w.fvRinv[U(fvRinvOffset[U(g)])];
      continue;
    }
    tg.resize(gr.fNRows);
    for (int a = 0; a < gr.fNRows; ++a) tg[a] = t[rows[a]];
    tg = (Rinv(w, g) * tg).eval();
    for (int a = 0; a < gr.fNRows; ++a) t[rows[a]] = tg[a];
  }
}

void MCEngineSparseEvaluator::ResidualTimes(const Eigen::MatrixXd& S, Eigen::VectorXd& t) const {
  MCEngineRecordFree::CountRecordPass();
  const std::vector<MCEngineSparseDesign::Group>& groups = fDesign.GetGroups();
  Eigen::VectorXd tg;
  Eigen::MatrixXd R;
  for (int g = 0; g < static_cast<int>(groups.size()); ++g) {
    const MCEngineSparseDesign::Group& gr = groups[U(g)];
    const int* rows = &fDesign.GetGroupRows()[U(gr.fRow0)];
    if (gr.fNRows == 1) {
      const int r = rows[0];
      const int pos = fData.fvResPosition[U(r)];
      t[r] *= S(pos, pos) / fData.fvScaleWeight[U(r)];
      continue;
    }
    OverRows(g, S, R);
    tg.resize(gr.fNRows);
    for (int a = 0; a < gr.fNRows; ++a) tg[a] = t[rows[a]];
    tg = (R * tg).eval();
    for (int a = 0; a < gr.fNRows; ++a) t[rows[a]] = tg[a];
  }
}

void MCEngineSparseEvaluator::SolveFull(const Work& w, const Eigen::VectorXd& cz, const Eigen::VectorXd& cx,
                                        Eigen::VectorXd& a, Eigen::VectorXd& b) const {
  Eigen::VectorXd rz = cz;
  fFactor.SolveL(rz.data(), 1);
  if (fData.fRank > 0) {
    b = w.fS.solve(cx - w.fRZX.transpose() * rz);
  } else {
    b.resize(0);
  }
  a = rz - w.fRZX * b;
  fFactor.SolveLt(a.data(), 1);
}

Eigen::VectorXd MCEngineSparseEvaluator::ApplyP(const Work& w, const Eigen::VectorXd& t) const {
  // P = R^-1 - R^-1 [Z Lambda, X] M^-1 [Z Lambda, X]'R^-1 over the full equations M.
  Eigen::VectorXd u = t;
  ResidualSolve(w, u);
  Eigen::VectorXd cz, cx, a, b;
  DesignTransposeTimes(u, cz, cx);
  ApplyLambda(w, AsMatrix(cz), true);
  SolveFull(w, cz, cx, a, b);
  ApplyLambda(w, AsMatrix(a), false);
  Eigen::VectorXd r = DesignTimes(a, b);
  ResidualSolve(w, r);
  return u - r;
}

}  // namespace MCEngine_850
