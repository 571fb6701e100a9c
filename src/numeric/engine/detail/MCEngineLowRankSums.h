#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <vector>

namespace MCEngine_850 {

// The groups' products X~'V^-1 V_k V^-1 X~ (X~ = [X y]), their pairs' and
// their second derivatives', kept as factors instead of summed over all
// fixed columns: each is
//   P = sum over groups of f A' M A  +  c X~'V^-1 X~,
// A = T^-1 R12 the group's Q x c factor (its random columns by its own
// fixed columns and the response), M a Q x Q middle and c a number the
// same for every group (the residual's terms only; see
// MCEngineGroupCrossProducts). With C = (X'V^-1 X)^-1 and S = A C A' over
// all groups' random columns (Q_total x Q_total), what the steps of the
// fit read from them costs p^2 Q_total, not p^3:
//   tr(C P) = sum f tr(M S_gg) + c p,    b'P b = sum f a'M a + c b'X~'V^-1 X~ b,
//   tr(C P_k C P_l) = tr(F M_k S F M_l S) + c_l t_k + c_k t_l + c_k c_l p,
// with b = [-beta; 1], a = A b and t_k = tr(C P_k) - c_k p. Worth it when
// the fixed columns outnumber the random ones of all groups by far: a fixed
// factor of many levels beside the random effects of few subjects.
class MCEngineLowRankSums {
 public:
  // An evaluation of K parameters with `seconds` second-derivative
  // products: the K first-order products, the pairs k <= l, the seconds.
  void Start(int K, int seconds);
  int First(int k) const { return k; }
  int Pair(int k, int l) const;
  int Second(int index) const { return fK + fK * (fK + 1) / 2 + index; }

  // A group: A over the columns idx (the response's, p, last), weight f.
  void AddGroup(const Eigen::MatrixXd& A, const int* idx, double f);
  // Adds scale * middle to the product's middle in the group last added.
  void AddMiddle(int product, double scale, const Eigen::MatrixXd& middle);
  // The product's part c X~'V^-1 X~.
  void SetWhole(int product, double c) { fvWhole[static_cast<std::size_t>(product)] = c; }
  // Whether some group holds the product.
  bool Holds(int product) const { return fvHeld[static_cast<std::size_t>(product)] != 0; }

  // After the last group: lower the Cholesky factor of X'V^-1 X (p x p),
  // xvx X~'V^-1 X~ and bvec = [-beta; 1]. Computes what follows.
  void Finish(const Eigen::MatrixXd& lower, const Eigen::MatrixXd& xvx, const Eigen::VectorXd& bvec);
  double Trace(int product) const { return fvTrace[static_cast<std::size_t>(product)]; }
  double Quad(int product) const { return fvQuad[static_cast<std::size_t>(product)]; }
  // L^-1 times the first-order product's rows of the fixed columns times
  // b, so that (P_k b)' C (P_l b) is the dot product of two of them.
  const Eigen::VectorXd& HalfSolvedDirection(int k) const { return fvDirection[static_cast<std::size_t>(k)]; }
  double TraceOfPair(int k, int l) const;

 private:
  struct Group {
    int fQ = 0, fC = 0;
    int fAt = 0;  // its first random column among all groups'
    const int* fpIdx = nullptr;
    double fWeight = 1.0;
    std::size_t fOffset = 0;  // of A in fvA
  };
  Eigen::Map<const Eigen::MatrixXd> FactorOf(const Group& g) const;
  const Eigen::MatrixXd& Middle(std::size_t group, int product) const {
    return fvMiddle[group * static_cast<std::size_t>(fProducts) + static_cast<std::size_t>(product)];
  }
  // S = A C A' over all groups' random columns, by one solve with L.
  void FormS(const Eigen::MatrixXd& lower);
  void FormDirections(const Eigen::MatrixXd& lower, const Eigen::MatrixXd& xvx, const Eigen::VectorXd& bvec,
                      const std::vector<Eigen::VectorXd>& a);

  int fK = 0, fProducts = 0, fP = 0, fQTotal = 0;
  std::vector<Group> fvGroups;
  std::vector<double> fvA;
  std::vector<Eigen::MatrixXd> fvMiddle;  // group by group, product by product
  std::vector<double> fvWhole, fvTrace, fvQuad;
  std::vector<char> fvHeld;
  std::vector<Eigen::VectorXd> fvDirection;
  // F M_k S per first-order product, for the traces of pairs.
  std::vector<Eigen::MatrixXd> fvMS;
  Eigen::MatrixXd fS;
};

}  // namespace MCEngine_850
