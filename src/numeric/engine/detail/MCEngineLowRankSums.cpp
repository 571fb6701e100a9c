#include "numeric/engine/detail/MCEngineLowRankSums.h"

#include "numeric/engine/detail/MCEngineGroupSums.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

void MCEngineLowRankSums::Start(int K, int seconds) {
  fK = K;
  fProducts = K + K * (K + 1) / 2 + seconds;
  fP = 0;
  fQTotal = 0;
  fvGroups.clear();
  fvA.clear();
  fvMiddle.clear();
  fvWhole.assign(U(fProducts), 0.0);
  fvHeld.assign(U(fProducts), 0);
}

int MCEngineLowRankSums::Pair(int k, int l) const {
  return fK + static_cast<int>(MCEngineGroupSums::PairIndex(k, l, fK));
}

void MCEngineLowRankSums::AddGroup(const Eigen::MatrixXd& A, const int* idx, double f) {
  Group g;
  g.fQ = static_cast<int>(A.rows());
  g.fC = static_cast<int>(A.cols());
  g.fAt = fQTotal;
  g.fpIdx = idx;
  g.fWeight = f;
  g.fOffset = fvA.size();
  fvA.insert(fvA.end(), A.data(), A.data() + A.size());
  fvGroups.push_back(g);
  fQTotal += g.fQ;
  fvMiddle.resize(fvMiddle.size() + U(fProducts));
}

void MCEngineLowRankSums::AddMiddle(int product, double scale, const Eigen::MatrixXd& middle) {
  Eigen::MatrixXd& m = fvMiddle[(fvGroups.size() - 1) * U(fProducts) + U(product)];
  if (m.size() == 0) {
    m = scale * middle;
  } else {
    m += scale * middle;
  }
  fvHeld[U(product)] = 1;
}

Eigen::Map<const Eigen::MatrixXd> MCEngineLowRankSums::FactorOf(const Group& g) const {
  return Eigen::Map<const Eigen::MatrixXd>(&fvA[g.fOffset], g.fQ, g.fC);
}

void MCEngineLowRankSums::FormS(const Eigen::MatrixXd& lower) {
  // A' over the fixed columns (the response's column left out), then
  // L^-1 A', whose cross product is A C A'.
  Eigen::MatrixXd half = Eigen::MatrixXd::Zero(fP, fQTotal);
  for (const Group& g : fvGroups) {
    const auto A = FactorOf(g);
    for (int j = 0; j + 1 < g.fC; ++j) {
      for (int i = 0; i < g.fQ; ++i) half(g.fpIdx[j], g.fAt + i) = A(i, j);
    }
  }
  lower.triangularView<Eigen::Lower>().solveInPlace(half);
  fS.setZero(fQTotal, fQTotal);
  fS.selfadjointView<Eigen::Lower>().rankUpdate(half.transpose());
  fS.triangularView<Eigen::StrictlyUpper>() = fS.transpose();
}

void MCEngineLowRankSums::FormDirections(const Eigen::MatrixXd& lower, const Eigen::MatrixXd& xvx,
                                         const Eigen::VectorXd& bvec, const std::vector<Eigen::VectorXd>& a) {
  const Eigen::VectorXd whole = xvx.topRows(fP) * bvec;
  fvDirection.assign(U(fK), Eigen::VectorXd());
  for (int k = 0; k < fK; ++k) {
    Eigen::VectorXd d = fvWhole[U(k)] * whole;
    for (std::size_t gi = 0; gi < fvGroups.size(); ++gi) {
      const Eigen::MatrixXd& m = Middle(gi, First(k));
      if (m.size() == 0) continue;
      const Group& g = fvGroups[gi];
      const Eigen::VectorXd ma = g.fWeight * (FactorOf(g).transpose() * (m * a[gi]));
      for (int j = 0; j + 1 < g.fC; ++j) d[g.fpIdx[j]] += ma[j];
    }
    lower.triangularView<Eigen::Lower>().solveInPlace(d);
    fvDirection[U(k)] = std::move(d);
  }
}

void MCEngineLowRankSums::Finish(const Eigen::MatrixXd& lower, const Eigen::MatrixXd& xvx,
                                 const Eigen::VectorXd& bvec) {
  fP = static_cast<int>(lower.rows());
  FormS(lower);
  // a = A b for each group, b over its own columns.
  std::vector<Eigen::VectorXd> a(fvGroups.size());
  for (std::size_t gi = 0; gi < fvGroups.size(); ++gi) {
    const Group& g = fvGroups[gi];
    Eigen::VectorXd b(g.fC);
    for (int j = 0; j < g.fC; ++j) b[j] = bvec[g.fpIdx[j]];
    a[gi] = FactorOf(g) * b;
  }
  const double bxb = bvec.dot(xvx * bvec);
  fvTrace.assign(U(fProducts), 0.0);
  fvQuad.assign(U(fProducts), 0.0);
  fvMS.assign(U(fK), Eigen::MatrixXd());
  for (int k = 0; k < fK; ++k) fvMS[U(k)].setZero(fQTotal, fQTotal);
  for (int product = 0; product < fProducts; ++product) {
    double trace = fvWhole[U(product)] * fP, quad = fvWhole[U(product)] * bxb;
    for (std::size_t gi = 0; gi < fvGroups.size(); ++gi) {
      const Eigen::MatrixXd& m = Middle(gi, product);
      if (m.size() == 0) continue;
      const Group& g = fvGroups[gi];
      trace += g.fWeight * m.cwiseProduct(fS.block(g.fAt, g.fAt, g.fQ, g.fQ).transpose()).sum();
      quad += g.fWeight * a[gi].dot(m * a[gi]);
      if (product < fK) fvMS[U(product)].middleRows(g.fAt, g.fQ).noalias() = g.fWeight * m * fS.middleRows(g.fAt, g.fQ);
    }
    fvTrace[U(product)] = trace;
    fvQuad[U(product)] = quad;
  }
  FormDirections(lower, xvx, bvec, a);
}

double MCEngineLowRankSums::TraceOfPair(int k, int l) const {
  const double ck = fvWhole[U(k)], cl = fvWhole[U(l)];
  const double tk = fvTrace[U(k)] - ck * fP, tl = fvTrace[U(l)] - cl * fP;
  return fvMS[U(k)].cwiseProduct(fvMS[U(l)].transpose()).sum() + cl * tk + ck * tl + ck * cl * fP;
}

}  // namespace MCEngine_850
