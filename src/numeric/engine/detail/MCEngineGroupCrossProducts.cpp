#include "numeric/engine/detail/MCEngineGroupCrossProducts.h"

#include <cmath>

#include "numeric/engine/detail/MCEngineLowRankSums.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// tr(A B') for matrices of equal shape.
inline double SumOfProducts(const Eigen::MatrixXd& A, const Eigen::MatrixXd& B) { return A.cwiseProduct(B).sum(); }

}  // namespace

int MCEngineGroupCrossProducts::Reduce(const Eigen::MatrixXd& whitened, int nRandom, int nRecords,
                                       double sumLogWeights) {
  const int n = static_cast<int>(whitened.cols());
  Reduced r;
  r.fQ = nRandom;
  r.fC = n - nRandom;
  r.fM = nRecords;
  r.fSumLogW = sumLogWeights;
  r.fOffset = fvValues.size();
  const Eigen::HouseholderQR<Eigen::MatrixXd> qr(whitened);
  const Eigen::MatrixXd R = qr.matrixQR().topRows(n).triangularView<Eigen::Upper>();
  const Eigen::MatrixXd E = R.bottomRightCorner(r.fC, r.fC).transpose() * R.bottomRightCorner(r.fC, r.fC);
  fvValues.resize(r.fOffset + U(r.fQ) * U(r.fQ) + U(r.fQ) * U(r.fC) + U(r.fC) * U(r.fC));
  double* at = &fvValues[r.fOffset];
  Eigen::Map<Eigen::MatrixXd>(at, r.fQ, r.fQ) = R.topLeftCorner(r.fQ, r.fQ);
  at += U(r.fQ) * U(r.fQ);
  Eigen::Map<Eigen::MatrixXd>(at, r.fQ, r.fC) = R.topRightCorner(r.fQ, r.fC);
  at += U(r.fQ) * U(r.fC);
  Eigen::Map<Eigen::MatrixXd>(at, r.fC, r.fC) = E;
  fvGroups.push_back(r);
  return static_cast<int>(fvGroups.size()) - 1;
}

void MCEngineGroupCrossProducts::Transform(const Eigen::Map<const Eigen::MatrixXd>& R11, int pos,
                                           const Eigen::MatrixXd& D, Eigen::MatrixXd& out) {
  const Eigen::Index len = D.rows();
  fWork.noalias() = R11.middleCols(pos, len) * D;
  out.noalias() = fWork * R11.middleCols(pos, len).transpose();
}

bool MCEngineGroupCrossProducts::Accumulate(int group, double s, const Eigen::MatrixXd& G, double f, const int* idx,
                                            bool derivs, const std::vector<Term>& terms,
                                            const std::vector<Second>& seconds, MCEngineGroupSums& sums) {
  const Reduced& r = fvGroups[U(group)];
  const int Q = r.fQ, C = r.fC;
  const double* at = &fvValues[r.fOffset];
  const Eigen::Map<const Eigen::MatrixXd> R11(at, Q, Q);
  const Eigen::Map<const Eigen::MatrixXd> R12(at + U(Q) * U(Q), Q, C);
  const Eigen::Map<const Eigen::MatrixXd> E(at + U(Q) * U(Q) + U(Q) * U(C), C, C);
  if (!(s > 0.0)) return false;

  fWork.noalias() = R11 * G;
  fT.noalias() = fWork * R11.transpose();
  fT.diagonal().array() += s;
  fLlt.compute(fT);
  if (fLlt.info() != Eigen::Success) return false;
  double logDetT = 0.0;
  for (int i = 0; i < Q; ++i) {
    const double d = fLlt.matrixLLT()(i, i);
    if (!(d > 0.0) || !std::isfinite(d)) return false;
    logDetT += 2.0 * std::log(d);
  }
  sums.fLogDetV += f * ((r.fM - Q) * std::log(s) - r.fSumLogW + logDetT);
  // R12'T^-1 R12 as the cross product of the half solve L^-1 R12.
  fRt = R12;
  fLlt.matrixL().solveInPlace(fRt);
  fXX.noalias() = fRt.transpose() * fRt;
  fXX += E / s;
  MCEngineGroupSums::AddAt(sums.fMbar, idx, f, fXX);
  if (!derivs) return true;

  fA = fRt;
  fLlt.matrixU().solveInPlace(fA);
  fTinv.setIdentity(Q, Q);
  fLlt.solveInPlace(fTinv);
  fTA.noalias() = fTinv * fA;
  const double rest = r.fM - Q;
  if (fvDt.size() < terms.size()) {
    fvDt.resize(terms.size());
    fvTD.resize(terms.size());
    fvDA.resize(terms.size());
  }
  MCEngineLowRankSums* low = sums.fpLowRank;
  if (low != nullptr) {
    low->AddGroup(fA, idx, f);
    // H = T - s I, for the residual's products in terms of X~'V^-1 X~.
    fH = fT;
    fH.diagonal().array() -= s;
  }
  for (std::size_t a = 0; a < terms.size(); ++a) {
    const Term& t = terms[a];
    if (t.fpD != nullptr) {
      Transform(R11, t.fPos, *t.fpD, fvDt[a]);
      fvTD[a].noalias() = fTinv * fvDt[a];
      sums.fTrW[t.fParam] += f * fvTD[a].trace();
      if (low != nullptr) {
        low->AddMiddle(low->First(t.fParam), 1.0, fvDt[a]);
        continue;
      }
      fvDA[a].noalias() = fvDt[a] * fA;
      MCEngineGroupSums::AddAt(sums.fvAbar[U(t.fParam)], idx, f, fA.transpose() * fvDA[a]);
    } else {
      sums.fTrW[t.fParam] += f * t.fD * (rest / s + fTinv.trace());
      if (low != nullptr) {
        // A'A + E / s^2 = (X~'V^-1 X~ - A'H A) / s over the group.
        low->AddMiddle(low->First(t.fParam), -t.fD / s, fH);
        low->SetWhole(low->First(t.fParam), t.fD / s);
        continue;
      }
      fXX.noalias() = fA.transpose() * fA;
      fXX += E / (s * s);
      MCEngineGroupSums::AddAt(sums.fvAbar[U(t.fParam)], idx, f * t.fD, fXX);
    }
  }
  for (std::size_t a = 0; a < terms.size(); ++a) {
    for (std::size_t b = a; b < terms.size(); ++b) {
      if (low != nullptr) {
        AddPairFactors(terms[a], terms[b], a, b, r, s, f, *low, sums);
      } else {
        AddPair(terms[a], terms[b], a, b, r, E, s, f, idx, sums);
      }
    }
  }
  for (const Second& sec : seconds) {
    // Not into fWork, which the transform works in.
    Transform(R11, sec.fPos, *sec.fpD, fSecond);
    sums.fTrW2[sec.fIndex] += f * SumOfProducts(fTinv, fSecond);
    if (low != nullptr) {
      low->AddMiddle(low->Second(sec.fIndex), 1.0, fSecond);
      continue;
    }
    fXX.noalias() = fSecond * fA;
    MCEngineGroupSums::AddAt(sums.fvA2bar[U(sec.fIndex)], idx, f, fA.transpose() * fXX);
  }
  return true;
}

void MCEngineGroupCrossProducts::AddPairFactors(const Term& a, const Term& b, std::size_t ia, std::size_t ib,
                                                const Reduced& r, double s, double f, MCEngineLowRankSums& low,
                                                MCEngineGroupSums& sums) {
  const int product = low.Pair(a.fParam, b.fParam);
  double& trace = sums.fTrWW(a.fParam, b.fParam);
  const bool ra = a.fpD != nullptr, rb = b.fpD != nullptr;
  if (ra && rb) {
    trace += f * fvTD[ia].cwiseProduct(fvTD[ib].transpose()).sum();
    fWork.noalias() = fvDt[ia] * fvTD[ib];
    low.AddMiddle(product, 1.0, fWork);
  } else if (ra) {
    trace += f * b.fD * SumOfProducts(fvTD[ia], fTinv);
    low.AddMiddle(product, b.fD, fvTD[ia].transpose());
  } else if (rb) {
    trace += f * a.fD * SumOfProducts(fvTD[ib], fTinv);
    low.AddMiddle(product, a.fD, fvTD[ib]);
  } else {
    // A'T^-1 A + E / s^3 = A'(T^-1 - T / s^2) A + X~'V^-1 X~ / s^2.
    const double d = a.fD * b.fD;
    trace += f * d * ((r.fM - r.fQ) / (s * s) + SumOfProducts(fTinv, fTinv));
    fWork = fTinv - fT / (s * s);
    low.AddMiddle(product, d, fWork);
    low.SetWhole(product, d / (s * s));
  }
}

void MCEngineGroupCrossProducts::AddPair(const Term& a, const Term& b, std::size_t ia, std::size_t ib,
                                         const Reduced& r, const Eigen::Map<const Eigen::MatrixXd>& E, double s,
                                         double f, const int* idx, MCEngineGroupSums& sums) {
  const int k = a.fParam, l = b.fParam;
  Eigen::MatrixXd& B = sums.PairProduct(k, l);
  double& trace = sums.fTrWW(k, l);
  const bool ra = a.fpD != nullptr, rb = b.fpD != nullptr;
  if (ra && rb) {
    trace += f * fvTD[ia].cwiseProduct(fvTD[ib].transpose()).sum();
    fWork.noalias() = fTinv * fvDA[ib];
    MCEngineGroupSums::AddAt(B, idx, f, fvDA[ia].transpose() * fWork);
  } else if (ra) {
    trace += f * b.fD * SumOfProducts(fvTD[ia], fTinv);
    MCEngineGroupSums::AddAt(B, idx, f * b.fD, fvDA[ia].transpose() * fTA);
  } else if (rb) {
    trace += f * a.fD * SumOfProducts(fvTD[ib], fTinv);
    MCEngineGroupSums::AddAt(B, idx, f * a.fD, fTA.transpose() * fvDA[ib]);
  } else {
    const double d = a.fD * b.fD;
    trace += f * d * ((r.fM - r.fQ) / (s * s) + SumOfProducts(fTinv, fTinv));
    fXX.noalias() = fA.transpose() * fTA;
    fXX += E / (s * s * s);
    MCEngineGroupSums::AddAt(B, idx, f * d, fXX);
  }
}

}  // namespace MCEngine_850
