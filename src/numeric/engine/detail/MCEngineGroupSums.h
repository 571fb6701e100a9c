#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <cstddef>
#include <vector>

namespace MCEngine_850 {

class MCEngineLowRankSums;

// What the evaluation by groups adds up over the independent groups, with
// W = V^-1 and X~ = [X y] over all kept columns and the response: log|V|,
// X~'W X~, tr(W V_k), X~'W V_k W X~, tr(W V_k W V_l), X~'W V_k W V_l W X~
// (for k <= l, held only for the pairs some group holds both of) and, for
// the second derivatives of non-linear structures, tr(W V_kl) and
// X~'W V_kl W X~.
struct MCEngineGroupSums {
  double fLogDetV = 0.0;
  Eigen::MatrixXd fMbar;
  Eigen::VectorXd fTrW;
  Eigen::MatrixXd fTrWW;
  std::vector<Eigen::MatrixXd> fvAbar;
  std::vector<Eigen::MatrixXd> fvBbar;
  Eigen::VectorXd fTrW2;
  std::vector<Eigen::MatrixXd> fvA2bar;
  // When set, the groups reduced to their cross products keep their
  // products there as factors, and fvAbar, fvBbar and fvA2bar stay empty.
  MCEngineLowRankSums* fpLowRank = nullptr;

  // The place of the pair k <= l in the upper triangle of K x K, row by row.
  static std::size_t PairIndex(int k, int l, int K) {
    const auto u = [](int i) { return static_cast<std::size_t>(i); };
    return u(k) * u(K) - u(k) * (u(k) - 1) / 2 + u(l - k);
  }
  // big(idx[a], idx[b]) += f product(a, b): a group's product over its own
  // columns into the product over all columns. A group that reaches every
  // column adds in place, with no copy of the product.
  template <typename Product>
  static void AddAt(Eigen::MatrixXd& big, const int* idx, double f, const Product& product) {
    if (product.rows() == big.rows()) {
      big.noalias() += f * product;
      return;
    }
    const Eigen::MatrixXd small = product;
    const Eigen::Index n = small.rows();
    for (Eigen::Index b = 0; b < n; ++b) {
      double* col = &big(0, idx[b]);
      for (Eigen::Index a = 0; a < n; ++a) col[idx[a]] += f * small(a, b);
    }
  }
  // The pair's product, set to zero the first time a group holds the pair.
  Eigen::MatrixXd& PairProduct(int k, int l) {
    Eigen::MatrixXd& B = fvBbar[PairIndex(k, l, static_cast<int>(fTrW.size()))];
    if (B.size() == 0) B.setZero(fMbar.rows(), fMbar.cols());
    return B;
  }
};

}  // namespace MCEngine_850
