#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineCrossProducts.h"
#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"
#include "numeric/engine/detail/MCEngineRecordCopies.h"
#include "numeric/engine/detail/MCEngineSparseDesign.h"
#include "numeric/engine/detail/MCEngineSparseFactor.h"

namespace MCEngine_850 {

// Evaluates the likelihood through the mixed-model equations held sparse,
// for designs whose V does not split into small groups (crossed random
// effects, or nested ones under one large group).
//
// With G = Lambda Lambda' (one Lambda per block, shared by its subjects) the
// random part of the equations is M = Lambda'Z'R^-1 Z Lambda + I: sparse,
// positive definite whatever G is, and factored with the ordering and the
// symbolic analysis made once. The fixed part is the dense Schur complement
// X'V^-1 X. log|V| = log|R| + log|M|.
//
// The gradient needs, per block, the sum over its subjects of the diagonal
// blocks of Z'V^-1 Z (or Z'P Z). Since Z'V^-1 Z Lambda = Z'R^-1 Z Lambda
// M^-1, whose diagonal blocks use M^-1 only where Z'R^-1 Z is not zero, they
// come from the selected inverse of M. Lambda is made invertible by lifting
// a zero singular value to 1e-60 of the scale, so that a variance at 0 still
// has its derivative; the change of V is far below rounding.
//
// The iterations use the average information y'P V_k P V_l P y (one solve
// per parameter) as their Hessian; the observed Hessian, which the
// statistics need, is the difference quotient of the analytic gradient
// (central, with Richardson's extrapolation). No matrix over all random
// columns is ever formed densely.
//
// Under a residual of one variance over single records, crossProducts
// reduces the records to their cross products once, and no evaluation then
// visits them; false keeps the general evaluation, which visits them every
// time (the tests compare the two).
class MCEngineSparseEvaluator : public MCEngineEvaluator {
 public:
  MCEngineSparseEvaluator(const MCEngineData& data, const MCEngineModel& model, bool crossProducts);

  // False when the sparse factorisation could not be set up.
  bool IsReady() const { return fbReady; }
  // Floating-point operations of one numeric factorisation.
  double GetFactorFlops() const { return fFactor.GetFactorFlops(); }

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;
  bool IteratesWithExpected() const override { return true; }
  bool StartInformation(const Eigen::VectorXd& theta, Eigen::MatrixXd& info) override;

  // What predictions from the fit need at theta: Lambda per block, M^-1 on
  // the pairs of neighbouring nodes (laid out as the pair values, from the
  // selected inverse), M itself (laid out as the design's analysed pattern,
  // for a prediction that joins nodes no record joins),
  // Y = M^-1 Lambda'Z'R^-1 X, C = (X'V^-1 X)^-1, the fixed estimates and the
  // spherical random effects v.
  struct PredictionPoint {
    std::vector<Eigen::MatrixXd> fvLambda;
    std::vector<double> fvPairInverse;
    std::vector<double> fvM;
    Eigen::MatrixXd fY;
    Eigen::MatrixXd fC;
    Eigen::VectorXd fBeta;
    Eigen::VectorXd fV;
  };
  // At the parameters of the last observed Hessian, the point kept then.
  bool PredictionPointAt(const Eigen::VectorXd& theta, PredictionPoint& out);
  const MCEngineSparseDesign& GetDesign() const { return fDesign; }

  // The step of a difference quotient in parameter k: 1e-3 of the
  // parameter's size, at most a quarter of the way to a bound.
  static double DifferenceStep(const MCEngineModel& model, const Eigen::VectorXd& theta, int k);
  // Values of a function at theta + s and theta + s/2 on one side of theta.
  struct DifferenceSide {
    bool fbOK = false;
    Eigen::VectorXd fFull, fHalf;
  };
  // The derivative from both sides of theta at step h (central differences
  // with Richardson's extrapolation, O(h^4)), or from one side and the value
  // at theta when the other is missing. False when both are.
  static bool DifferenceQuotient(const DifferenceSide& up, const DifferenceSide& down, const Eigen::VectorXd& here,
                                 double h, Eigen::VectorXd& out);

 private:
  // What one evaluation builds, step by step.
  struct Work {
    bool fbDerivs = false;
    bool fbReml = false;
    // Evaluated from the cross products under W: d/s, and e'R^-1 e.
    bool fbRecordFree = false;
    double fDs = 0.0;
    double fERE = 0.0;
    std::vector<Eigen::MatrixXd> fvLambda, fvLambdaInv;
    Eigen::MatrixXd fSR;
    std::vector<Eigen::MatrixXd> fvdR;
    std::vector<double> fvRinv;  // per group, its rows by its rows
    double fLogDetR = 0.0;
    MCEngineCrossProducts fQ;
    std::vector<MCEngineCrossProducts> fvB;  // per residual parameter
    Eigen::VectorXd fTraceR;                 // tr(R^-1 R_l)
    std::vector<double> fvM;                 // M on the analysed pattern
    // The solved equations: L^-1 P Lambda'Z'R^-1 X, the Schur complement's
    // factor and inverse, the estimates and the spherical random effects v.
    Eigen::MatrixXd fRZX;
    Eigen::LLT<Eigen::MatrixXd> fS;
    Eigen::MatrixXd fC;
    Eigen::VectorXd fBeta;
    Eigen::VectorXd fV;
    // The random effects Lambda v, and P y = R^-1 (y - X beta - Z Lambda v).
    Eigen::VectorXd fU;
    Eigen::VectorXd fE;
  };
  // What the derivatives share: Y = M^-1 Lambda'Z'R^-1 X, Z'V^-1 X, Z'P y
  // and, per block, the sum of the diagonal blocks of Z'V^-1 Z (Z'P Z under
  // REML).
  struct Shared {
    Eigen::MatrixXd fY;
    Eigen::MatrixXd fHx;
    Eigen::VectorXd fs;
    std::vector<Eigen::MatrixXd> fvD;
  };

  bool Compute(const Eigen::VectorXd& theta, Level level, bool reml, bool information, MCEngineEvaluation& out);
  // The equations solved at theta into fLast, reusing the last point's
  // factor when theta is that point; the value's part of out.
  bool Solved(const Eigen::VectorXd& theta, bool reml, bool derivs, MCEngineEvaluation& out);
  static void CopyValue(const MCEngineEvaluation& from, MCEngineEvaluation& to);
  bool FactorG(const Eigen::VectorXd& theta, Work& w) const;
  void BuildResidual(const Eigen::VectorXd& theta, Work& w) const;
  // R^-1 per group, log|R| and the cross products; false when an R is not
  // positive definite.
  bool ResidualGroups(Work& w) const;
  // The same from the cross products under W when the residual is one
  // variance at theta; false when it is not.
  bool ScaledResidual(Work& w) const;
  // The cross products under W of [Z X y - X b0], once.
  void FormUnitProducts();
  // Z'P y from the cross products.
  Eigen::VectorXd RandomTimesPy(const Work& w) const;
  // The fixed estimates, with b0 back where the record-free evaluation took it out.
  Eigen::VectorXd Estimates(const Work& w) const;
  void AverageInformationFromProducts(const Eigen::VectorXd& theta, const Work& w, const Shared& sh,
                                      MCEngineEvaluation& out);
  // The rows' block of a matrix over positions, with the scale weights.
  void OverRows(int g, const Eigen::MatrixXd& S, Eigen::MatrixXd& out) const;
  Eigen::Map<const Eigen::MatrixXd> Rinv(const Work& w, int g) const;
  bool SolveEquations(Work& w, MCEngineEvaluation& out);

  Shared SharedPieces(const Work& w);
  void RandomGradient(const Eigen::VectorXd& theta, const Work& w, const Shared& sh, MCEngineEvaluation& out) const;
  void ResidualGradient(const Work& w, const Shared& sh, bool keepA, MCEngineEvaluation& out) const;
  void AverageInformation(const Eigen::VectorXd& theta, const Work& w, const Shared& sh, MCEngineEvaluation& out);
  void RandomA(const Eigen::VectorXd& theta, const Shared& sh, MCEngineEvaluation& out) const;
  void KeepPredictionPoint(const Eigen::VectorXd& theta);
  // From the last point solved and its selected inverse.
  void FillPredictionPoint(PredictionPoint& out) const;
  static bool SameUpToRounding(const Eigen::VectorXd& a, const Eigen::VectorXd& b);
  // The observed Hessian from differences of the gradient.
  bool ObservedHessian(const Eigen::VectorXd& theta, bool reml, const MCEngineEvaluation& here, Eigen::MatrixXd& H);
  // The profiled scale r's row and column of H from the other columns.
  void ScaleColumn(const Eigen::VectorXd& theta, const MCEngineEvaluation& at, int r, Eigen::MatrixXd& H) const;
  bool GradientAt(const Eigen::VectorXd& theta, bool reml, Eigen::VectorXd& g);

  // Products over the random columns.
  void ApplyLambda(const Work& w, Eigen::Ref<Eigen::MatrixXd> M, bool transpose) const;
  // Z'R^-1 Z (held on pairs) times M.
  Eigen::MatrixXd PairTimes(const std::vector<double>& pairs, const Eigen::MatrixXd& M) const;
  // sum over pairs of weight * <M^-1 block, Lambda_a' N_p Lambda_b>: tr(M^-1 Lambda'N Lambda).
  double TraceWithInverse(const Work& w, const std::vector<double>& pairs) const;
  // Per block, the sum over its nodes of the diagonal blocks of Z'R^-1 Z Lambda M^-1.
  std::vector<Eigen::MatrixXd> DiagonalOfInverseProduct(const Work& w) const;

  // Over records: Z u + X b; Z'R^-1-free transposes; R^-1 t and R_l t per group.
  Eigen::VectorXd DesignTimes(const Eigen::VectorXd& u, const Eigen::VectorXd& b) const;
  void DesignTransposeTimes(const Eigen::VectorXd& t, Eigen::VectorXd& tz, Eigen::VectorXd& tx) const;
  void ResidualSolve(const Work& w, Eigen::VectorXd& t) const;
  void ResidualTimes(const Eigen::MatrixXd& S, Eigen::VectorXd& t) const;
  // a'b over the records with their groups' copies.
  double WeightedDot(const Eigen::VectorXd& a, const Eigen::VectorXd& b) const;
  // P t for a vector over the records.
  Eigen::VectorXd ApplyP(const Work& w, const Eigen::VectorXd& t) const;
  // Solves the full equations [M, L RZX; .., X'R^-1 X] [a; b] = [cz; cx].
  void SolveFull(const Work& w, const Eigen::VectorXd& cz, const Eigen::VectorXd& cx, Eigen::VectorXd& a,
                 Eigen::VectorXd& b) const;

  const MCEngineData& fData;
  const MCEngineModel& fModel;
  MCEngineRecordCopies fCopies;
  MCEngineSparseDesign fDesign;
  MCEngineSparseFactor fFactor;
  bool fbReady = false;
  bool fbResidualDiagonal = true;
  std::vector<long> fvRinvOffset;  // per group
  std::vector<long> fvPairInverse;  // per pair value, its place in the selected inverse
  Eigen::VectorXd fvRecordWeight;   // the copies of each record's group
  // The record-free evaluation's products under W, b0, sum f and sum f log w.
  bool fbRecordFree = false;
  MCEngineCrossProducts fUnit;
  Eigen::VectorXd fShift;
  double fSumCopies = 0.0;
  double fSumLogWeights = 0.0;
  // The last point solved, whose factor fFactor holds.
  Work fLast;
  Eigen::VectorXd fLastTheta;
  bool fbLastReml = false;
  bool fbHaveLast = false;
  MCEngineEvaluation fLastValue;
  // What predictions need at the last observed Hessian's parameters.
  PredictionPoint fKeptPoint;
  Eigen::VectorXd fKeptTheta;
  bool fbKeptPoint = false;
};

}  // namespace MCEngine_850
