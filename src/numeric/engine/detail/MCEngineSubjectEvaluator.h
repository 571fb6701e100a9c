#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineGroupCrossProducts.h"
#include "numeric/engine/detail/MCEngineLowRankSums.h"
#include "numeric/engine/detail/MCEngineModel.h"
#include "numeric/engine/detail/MCEngineRecordCopies.h"

namespace MCEngine_850 {

// Evaluates the likelihood group by group: V is block diagonal over the
// independent groups of records, and each group's V_i is factored on its own.
// Sums over groups give the log determinant, X'V^-1 X and the trace terms of
// the derivatives; no matrix larger than a group is formed. Under an
// identity residual structure (the residual s W^-1, W the fixed weights)
// groups are reduced to their cross products once and evaluated from them
// (MCEngineGroupCrossProducts); crossProducts false keeps every group on
// the general evaluation, which the tests compare with.
class MCEngineSubjectEvaluator : public MCEngineEvaluator {
 public:
  MCEngineSubjectEvaluator(const MCEngineData& data, const MCEngineModel& model, bool crossProducts = true);

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;

  // Records times (fixed columns reached + 1)^2, summed over the groups.
  double GetProductEntries() const;
  // The records the last evaluation read (a work count): those of the groups
  // not reduced to their cross products, times 1.
  double GetRecordsVisited() const { return fRecordsVisited; }
  // The groups reduced to their cross products.
  int GetReducedGroups() const { return fNReduced; }
  // The evaluations with derivatives that kept the groups' products as
  // factors.
  int GetStepsByFactors() const { return fStepsByFactors; }
  // The pairs of parameters whose products the last evaluation with
  // derivatives held: those some group holds both of.
  double GetPairProducts() const { return fPairProducts; }

  // The middle of the empirical covariance of the fixed estimates:
  // sum over groups of f_i X_i' V_i^-1 e_i e_i' V_i^-1 X_i, with e = y - X beta,
  // over the kept columns. False when a V_i is not positive definite.
  bool EmpiricalMeat(const Eigen::VectorXd& theta, const Eigen::VectorXd& beta, Eigen::MatrixXd& meat) const;

 private:
  // The records of one random subject inside a group, with the columns of
  // the block that are not zero on them.
  struct RandomGroup {
    int fBlock = 0;
    int fRowOffset = 0;
    int fNRows = 0;
    int fColOffset = 0;
    int fNCols = 0;
    int fZOffset = 0;  // column-major fNRows x fNCols
  };
  // The records of one residual subject inside a group.
  struct ResidualGroup {
    int fRowOffset = 0;
    int fNRows = 0;
  };
  struct Component {
    int fStart = 0;
    int fM = 0;
    double fWeight = 1.0;
    int fGroup0 = 0, fGroup1 = 0;
    int fRes0 = 0, fRes1 = 0;
    // The fixed columns not zero on the group's records, then the response
    // as column rank (in fvXCols).
    int fXCol0 = 0, fXCol1 = 0;
    // The group's number among the reduced ones, -1 when it is not.
    int fCross = -1;
  };

  // A group's random effects as pieces of low rank: the random columns of
  // all its subjects side by side (Z, block after block), with W = V^-1,
  // ZW = W Z, M = Z' W Z and U = Z' W [X y] over the group's own fixed
  // columns. A random parameter's derivative of V is Z D Z' with D nonzero
  // on its block's columns only, so its trace terms and the products of a
  // pair of them cost the pair's columns, not the group's records squared.
  struct LowRank {
    Eigen::MatrixXd fZW, fM, fU;
    // Per block, the first column of its subjects in Z and their count (0
    // when the block has no subject in the group), and its groups.
    std::vector<int> fvPos, fvLen, fvGroup0;
  };

  // Whether the steps' evaluations keep the groups' products as factors
  // (MCEngineLowRankSums): every group reduced, no copies of weighted
  // records, and the random columns of all groups few beside the fixed ones.
  bool StepsByFactors() const;
  // The likelihood's derivatives from the factors, after the groups.
  void DerivativesByFactors(const MCEngineGroupSums& sums, const Eigen::MatrixXd& lower, bool reml, bool hessian,
                            const std::vector<std::pair<int, int>>& secondPairs, MCEngineEvaluation& out);
  void BuildGroups();
  // The places of the blocks' columns in the group's Z into lr (not its
  // products); returns the group's random columns.
  int Layout(const Component& c, LowRank& lr) const;
  // Reduces the groups whose cross products hold no more numbers than
  // their records' rows of [Z X y] do.
  void ReduceGroups();
  // The reduced group's terms at the structures G and their derivatives,
  // s the residual variance. False when V is not positive definite.
  bool AddCrossProducts(const Component& c, double s, const std::vector<Eigen::MatrixXd>& G,
                        const std::vector<Eigen::MatrixXd>& dS, const std::vector<std::pair<int, int>>& secondPairs,
                        const std::vector<Eigen::MatrixXd>& d2S, bool derivs, MCEngineGroupSums& sums);
  // False when stopped.
  bool FormLowRank(const Component& c, const Eigen::MatrixXd& W, const Eigen::MatrixXd& Xb, LowRank& lr) const;
  // The products of random parameters k <= l over a group, with Dk and
  // Lk = Dk U of each: tr(W Vk W Vl) = sum((Dk Mkl) .* (Mkl Dl)) into
  // trWW(k, l) and X~'W Vk W Vl W X~ = Lk' Mkl Ll into B, Mkl the rows of
  // k's block and the columns of l's in M.
  void AddRandomPair(int k, int l, const LowRank& lr, const std::vector<Eigen::MatrixXd>& Dk,
                     const std::vector<Eigen::MatrixXd>& Lk, double f, const int* idx, Eigen::MatrixXd& trWW,
                     Eigen::MatrixXd& B) const;
  // D for the block's parameter whose structure derivative is dG: dG over
  // each subject's columns, block diagonal over the block's subjects.
  void BlockDerivative(const Component& c, int b, const Eigen::MatrixXd& dG, const LowRank& lr,
                       Eigen::MatrixXd& D) const;
  void FindFixedColumns(Component& comp);
  // The group's records on its fixed columns, the response last.
  void FillDesign(const Component& c, Eigen::MatrixXd& Xb) const;
  void AddRandom(const RandomGroup& g, const Eigen::MatrixXd& G, Eigen::MatrixXd& V) const;
  void AddResidual(const Component& c, const Eigen::MatrixXd& S, Eigen::MatrixXd& V) const;

  const MCEngineData& fData;
  const MCEngineModel& fModel;
  MCEngineRecordCopies fCopies;
  bool fbResidualDiagonal = true;
  std::vector<Component> fvComponents;
  std::vector<RandomGroup> fvGroups;
  std::vector<ResidualGroup> fvResGroups;
  std::vector<int> fvRows;
  std::vector<int> fvCols;
  std::vector<double> fvZ;
  std::vector<int> fvResRows;
  std::vector<int> fvXCols;
  double fPairProducts = 0.0;
  double fRecordsVisited = 0.0;
  bool fbCrossProducts = false;
  int fNReduced = 0;
  int fReducedRandom = 0;
  int fStepsByFactors = 0;  // the reduced groups' random columns, summed
  MCEngineLowRankSums fLowRank;
  MCEngineGroupCrossProducts fCross;
  // Buffers of the reduced groups' evaluation, reused from group to group.
  LowRank fLayout;
  Eigen::MatrixXd fGc, fBlockG;
  std::vector<Eigen::MatrixXd> fvDk, fvD2;
  std::vector<MCEngineGroupCrossProducts::Term> fvTerms;
  std::vector<MCEngineGroupCrossProducts::Second> fvSeconds;
};

}  // namespace MCEngine_850
