#pragma once

#include <utility>
#include <vector>

#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"
#include "numeric/engine/detail/MCEngineRecordCopies.h"

namespace MCEngine_850 {

// Evaluates the likelihood through Henderson's mixed-model equations, for
// designs whose V does not split into small groups (crossed random effects).
// G = Lambda Lambda' enters as Lambda, so a singular G is allowed. Dense for
// now: the work grows with the cube of the number of random-effect columns.
// A group's frequency weight counts its residual blocks that many times,
// which copies the group only when no random effect reaches it; the fitter
// sends weighted groups that random effects reach to the group-by-group path.
class MCEngineMMEEvaluator : public MCEngineEvaluator {
 public:
  MCEngineMMEEvaluator(const MCEngineData& data, const MCEngineModel& model);

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;

  // Columns of the random-effect design over all blocks and subjects.
  int GetNRandomColumns() const { return fNZ; }

 private:
  // What one evaluation builds, step by step. W = [X Z] over the kept fixed
  // columns and all random columns, and [W y] with the response last.
  struct Work {
    bool fbDerivs = false;
    bool fbHessian = false;
    bool fbReml = false;
    // G = Lambda Lambda', one factor per block (the same for every subject
    // of the block).
    std::vector<Eigen::MatrixXd> fvLambda;
    // The residual structure over positions, its first derivatives and its
    // non-zero second derivatives (with their pairs of parameters).
    Eigen::MatrixXd fSR;
    std::vector<Eigen::MatrixXd> fvdR;
    std::vector<std::pair<int, int>> fvSecondR;
    std::vector<Eigen::MatrixXd> fvd2R;
    // Cross products of [W y] weighted by R^-1 (fQbar) and by the R
    // derivatives, with the traces of R^-1 R_k and their products.
    double fLogDetR = 0.0;
    Eigen::MatrixXd fQbar;
    std::vector<Eigen::MatrixXd> fvAR, fvBR, fvA2R;
    Eigen::VectorXd ftR, ft2R;
    Eigen::MatrixXd ftRR;
    // The equations: their inverse over W (Kmat) and the factor of the
    // random part Lambda'Z'R^-1 Z Lambda + I.
    Eigen::MatrixXd fKmat;
    Eigen::LLT<Eigen::MatrixXd> fLz;
    Eigen::VectorXd fSolution;
  };
  // One residual group's matrices, kept between groups to spare allocations.
  struct GroupWork {
    std::vector<int> fvIndex;  // its columns of [W y]
    Eigen::MatrixXd fD, fR, fRinv, fT;
    std::vector<Eigen::MatrixXd> fvRl, fvUl, fvRinvUl;
    Eigen::LLT<Eigen::MatrixXd> fLlt;
  };
  // What every derivative uses, from the solved equations (P the REML
  // projection, or V^-1 under ML).
  struct Shared {
    Eigen::MatrixXd fKz;        // Lambda (Lambda'Z'R^-1 Z Lambda + I)^-1 Lambda'
    Eigen::MatrixXd fOmegaZ;    // Z'P Z under REML
    Eigen::MatrixXd fOmegaMLZ;  // Z'V^-1 Z
    Eigen::MatrixXd fF, fFz;    // I - Q Kmat, and its random part under ML
    Eigen::MatrixXd fHzx;       // Z'V^-1 X
    Eigen::MatrixXd fTx;        // V^-1 X = R^-1 W Tx
    Eigen::VectorXd fs;         // Z'P y
    Eigen::VectorXd fbbar;      // (-solution, 1)
    const Eigen::MatrixXd& OmegaT(bool reml) const { return reml ? fOmegaZ : fOmegaMLZ; }
  };
  // The random blocks' parameters: G_k, applied block-wise, Y_k = OmegaT G_k
  // and v_k = G_k s.
  struct RandomPieces {
    std::vector<Eigen::MatrixXd> fvdG, fvY;
    std::vector<Eigen::VectorXd> fvv;
  };
  // The residual's parameters: A_l = [W y]'R^-1 R_l R^-1 [W y] over W, its
  // products with the solution and with Kmat or Kz.
  struct ResidualPieces {
    std::vector<Eigen::MatrixXd> fvARw, fvKA, fvFAF;
    std::vector<Eigen::VectorXd> fvaR, fvFaR;
  };

  bool FactorG(const Eigen::VectorXd& theta, Work& w) const;
  void BuildResidual(const Eigen::VectorXd& theta, Work& w) const;
  void StartCrossProducts(Work& w) const;
  // Adds residual group g; false when its R is not positive definite.
  bool AddResidualGroup(std::size_t g, Work& w, GroupWork& gw) const;
  void GroupDesign(const std::vector<int>& rows, GroupWork& gw) const;
  // The rows' block of a matrix over positions, with the scale weights.
  void OverRows(const std::vector<int>& rows, const Eigen::MatrixXd& S, Eigen::MatrixXd& out) const;
  // Adds what the copies of weighted records contribute.
  bool AddRecordCopies(Work& w) const;
  // Solves the equations: -2 log L's pieces in out.
  bool Solve(Work& w, MCEngineEvaluation& out) const;
  // The gradient and the expected and (at kHessian) observed Hessians.
  void Derivatives(const Eigen::VectorXd& theta, const Work& w, MCEngineEvaluation& out) const;
  Shared SharedPieces(const Work& w) const;
  RandomPieces RandomDerivatives(const Eigen::VectorXd& theta, const Work& w, const Shared& sh) const;
  ResidualPieces ResidualDerivatives(const Work& w, const Shared& sh) const;
  // The traces, quadratic forms and A_k of every parameter, and the gradient.
  void Gradient(const Work& w, const Shared& sh, const RandomPieces& rp, const ResidualPieces& res,
                MCEngineEvaluation& out) const;
  void Hessians(const Work& w, const Shared& sh, const RandomPieces& rp, const ResidualPieces& res,
                MCEngineEvaluation& out) const;
  // The observed Hessian's terms from second derivatives of non-linear
  // structures.
  void AddSecondDerivatives(const Eigen::VectorXd& theta, const Work& w, const Shared& sh,
                            MCEngineEvaluation& out) const;

  // Products with block-diagonal matrices over the random columns: one small
  // matrix d per block, repeated for each of the block's subjects.
  void RightMultiply(const Eigen::MatrixXd& M, int b, const Eigen::MatrixXd& d, Eigen::MatrixXd& out) const;
  void LeftMultiply(int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M, Eigen::MatrixXd& out) const;
  Eigen::MatrixXd RightMultiplyLambda(const Work& w, const Eigen::MatrixXd& M, bool transpose) const;
  Eigen::MatrixXd LeftMultiplyLambda(const Work& w, const Eigen::MatrixXd& M, bool transpose) const;
  // sum over block b's subjects of tr(d M_ss), and d x per subject.
  double BlockTrace(int b, const Eigen::MatrixXd& d, const Eigen::MatrixXd& M) const;
  Eigen::VectorXd BlockApply(int b, const Eigen::MatrixXd& d, const Eigen::VectorXd& x) const;

  const MCEngineData& fData;
  const MCEngineModel& fModel;
  MCEngineRecordCopies fCopies;
  bool fbResidualDiagonal = true;
  int fNZ = 0;
  std::vector<int> fvBlockOffset;
  std::vector<int> fvZStart;
  std::vector<int> fvZIndex;
  std::vector<double> fvZValue;
  std::vector<std::vector<int>> fvResGroups;
  std::vector<double> fvResGroupWeight;
};

}  // namespace MCEngine_850
