#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/detail/MCEngineGroupSums.h"

namespace MCEngine_850 {

// The evaluation of groups whose residual is s W^-1, W the records' fixed
// weights and s one variance: the groups' records are read once per fit and
// every evaluation works in the space of a group's Q random columns.
//
// Set-up: the QR factorisation of W^1/2 [Z X~] (X~ = [X y]) gives
//   W^1/2 Z = O R11,  W^1/2 X~ = O R12 + O2 R22,  O'O = I, O'O2 = 0,
// kept as R11 (Q x Q), R12 (Q x c) and E = R22'R22 (c x c).
// Evaluation at G (the group's random columns' covariance) and s:
//   V = W^-1/2 (s I + O H O') W^-1/2, H = R11 G R11', T = s I + H,
//   V^-1 = W^1/2 ((I - O O') / s + O T^-1 O') W^1/2,
// so that, with A = T^-1 R12 and m the group's records,
//   log|V| = (m - Q) log s - sum log w + log|T|,
//   X~'V^-1 X~ = R12'T^-1 R12 + E / s.
// A random parameter's derivative V_k = Z D_k Z' becomes O D~_k O' with
// D~_k = R11 D_k R11'; the residual's V_r = d W^-1 becomes d I. Then
//   tr(V^-1 V_k) = tr(T^-1 D~_k),  X~'V^-1 V_k V^-1 X~ = A'D~_k A,
//   tr(V^-1 V_r) = d ((m - Q) / s + tr T^-1),
//   X~'V^-1 V_r V^-1 X~ = d (A'A + E / s^2),
// and for pairs (k, l random; r, r' the residual's)
//   tr(V^-1 V_k V^-1 V_l) = tr(T^-1 D~_k T^-1 D~_l),  product A'D~_k T^-1 D~_l A,
//   tr(V^-1 V_k V^-1 V_r) = d tr(T^-1 D~_k T^-1),     product d A'D~_k T^-1 A,
//   tr(V^-1 V_r V^-1 V_r') = d d' ((m - Q) / s^2 + tr T^-2),
//                                          product d d' (A'T^-1 A + E / s^3).
// With fewer records than columns the factorisation runs on rows padded
// with zeros: padded rows would add nothing but log s and 1 / s terms, which
// the formulas' m (the real records) leaves out. T is positive definite
// exactly when V is, whether or not G or Z'W Z is singular. With the sums'
// low-rank factors set, the products are kept there as A with the middles
// D~_k, D~_k T^-1 D~_l and so on; the residual's E terms, which have no
// such factor, go through X~'V^-1 X~ = A'T A + E / s. No step visits
// the group's records or forms an m x m matrix, and once the buffers have
// the group's sizes none allocates (but the copy that places the products
// of a group that reaches only some fixed columns among all of them).
class MCEngineGroupCrossProducts {
 public:
  // A parameter of the group: a random one with its derivative D over the
  // group's random columns fPos.. (fpD not null), or the residual's with
  // its derivative d.
  struct Term {
    int fParam = 0;
    int fPos = 0;
    const Eigen::MatrixXd* fpD = nullptr;
    double fD = 0.0;
  };
  // A random second derivative of the group: its index among the second
  // pairs and its matrix over the columns fPos...
  struct Second {
    int fIndex = 0;
    int fPos = 0;
    const Eigen::MatrixXd* fpD = nullptr;
  };

  // Reduces a group from W^1/2 [Z X~] (Q random columns first, at least as
  // many rows as columns, padded with zeros) and returns its number.
  int Reduce(const Eigen::MatrixXd& whitened, int nRandom, int nRecords, double sumLogWeights);
  int GetNRandom(int group) const { return fvGroups[static_cast<std::size_t>(group)].fQ; }

  // Adds the group's log|V| and X~'V^-1 X~ at G and s, times f, into sums
  // (over the columns idx); with derivatives, its terms (in ascending order
  // of their parameters) and second derivatives. False when T is not
  // positive definite.
  bool Accumulate(int group, double s, const Eigen::MatrixXd& G, double f, const int* idx, bool derivs,
                  const std::vector<Term>& terms, const std::vector<Second>& seconds, MCEngineGroupSums& sums);

 private:
  struct Reduced {
    int fQ = 0;
    int fC = 0;
    int fM = 0;
    double fSumLogW = 0.0;
    std::size_t fOffset = 0;
  };
  void AddPair(const Term& a, const Term& b, std::size_t ia, std::size_t ib, const Reduced& r,
               const Eigen::Map<const Eigen::MatrixXd>& E, double s, double f, const int* idx,
               MCEngineGroupSums& sums);
  // The pair's trace into sums and its product as a factor's middle into low.
  void AddPairFactors(const Term& a, const Term& b, std::size_t ia, std::size_t ib, const Reduced& r, double s,
                      double f, MCEngineLowRankSums& low, MCEngineGroupSums& sums);
  // D~ = R11 D R11' for D over the columns pos.. into out.
  void Transform(const Eigen::Map<const Eigen::MatrixXd>& R11, int pos, const Eigen::MatrixXd& D,
                 Eigen::MatrixXd& out);

  std::vector<Reduced> fvGroups;
  std::vector<double> fvValues;

  // Buffers reused from group to group.
  Eigen::MatrixXd fT, fH, fWork, fSecond, fTinv, fRt, fA, fTA, fXX;
  Eigen::LLT<Eigen::MatrixXd> fLlt;
  std::vector<Eigen::MatrixXd> fvDt, fvTD, fvDA;
};

}  // namespace MCEngine_850
