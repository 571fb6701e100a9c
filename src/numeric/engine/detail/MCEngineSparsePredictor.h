#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <map>
#include <memory>
#include <vector>

#include "numeric/engine/detail/MCEngineSparseDesign.h"
#include "numeric/engine/detail/MCEngineSparseEvaluator.h"

namespace MCCommon_850 {
class MCQueryCancel;
}

namespace MCEngine_850 {

// Predictions of a fit from the sparse factor of its mixed-model equations.
//
// With G = Lambda Lambda', u = Lambda v and M = Lambda'Z'R^-1 Z Lambda + I,
// a prediction x'beta + z'u is x'beta + w'v for w = Lambda'z, and its
// prediction error variance, l C_mme l' for the equations in (beta, v), is
//   PEV = w'M^-1 w + k'C k,   k = x - Y'w,
// with Y = M^-1 Lambda'Z'R^-1 X (random columns by fixed columns) and
// C = (X'V^-1 X)^-1. The random columns of one record are neighbours in M,
// so the entries of M^-1 such a prediction needs lie on the factor's
// pattern and come from its selected inverse: nothing over all random
// columns is formed densely. A prediction that joins nodes no record joins
// needs entries off the pattern: w'M^-1 w = |L^-1 P w|^2 then comes from a
// numeric factorisation of M at each point the set-up kept (M is kept on
// its pattern for that), one per point and prediction.
//
// dPEV/dtheta_k would need entries of M^-1 off the pattern. The set-up
// instead keeps, at theta +- h and theta +- h/2 for each free parameter,
// what the PEV needs there (M^-1 on the pairs, Y, C and Lambda: the size of
// the equations' pattern each), and the derivative is the central
// difference with Richardson's extrapolation, as the observed Hessian of
// the sparse path takes it. Under a profiled scale the scale's derivative
// is not differenced: V is homogeneous (V(theta(c)) = c V(theta) with
// theta(c)_l = c^p_l theta_l, p_l the scale power), so is the PEV, and
// sum_l p_l theta_l dPEV/dtheta_l = PEV gives it from the others.
class MCEngineSparsePredictor {
 public:
  // A prediction's random part: the equations' column -> coefficient of u.
  using Columns = std::map<int, double>;
  struct Answer {
    double fEstimate = 0.0;
    bool fbPEV = false;
    double fPEV = 0.0;
    bool fbGradient = false;
    Eigen::VectorXd fGradient;  // over the free parameters
  };

  // At the fit's parameters theta, and at the difference points of the free
  // ones unless only the PEV is wanted; `given` fixed estimates, when not
  // null, stand for the GLS ones. False when the equations cannot be set
  // up or solved at theta, or when cancelled.
  // The evaluator is the fit's own when it went through the sparse
  // equations (its factor and layout serve again), else one made for this.
  bool Setup(MCEngineSparseEvaluator& evaluator, const MCEngineModel& model, const Eigen::VectorXd& theta,
             const std::vector<int>& free, bool derivatives, const Eigen::VectorXd* given,
             const MCCommon_850::MCQueryCancel* pCancel);
  // The equations' column of a block's subject's column.
  int GetColumn(int block, int subject, int column) const;
  const Eigen::VectorXd& GetBeta() const { return fBase.fBeta; }
  const Eigen::MatrixXd& GetC() const { return fBase.fC; }
  // The set-up's multiplications (factorisations, selected inverses and
  // the dense products with Y), and the entries of the largest dense matrix
  // it keeps.
  double GetSetupWork() const { return fSetupWork; }
  double GetLargestMatrix() const { return fLargestMatrix; }

  // x over the kept fixed columns.
  Answer Predict(const Eigen::VectorXd& x, const Columns& z) const;

 private:
  using Point = MCEngineSparseEvaluator::PredictionPoint;
  // The points on both sides of theta in one free parameter.
  struct Differences {
    double fStep = 0.0;
    bool fbUp = false, fbDown = false;
    Point fUp, fUpHalf, fDown, fDownHalf;
  };
  // Per node z reaches: Lambda'z over the node's columns.
  using NodeVectors = std::map<int, Eigen::VectorXd>;
  bool PointAt(MCEngineSparseEvaluator& evaluator, const Eigen::VectorXd& theta, Point& out);
  // The scale's place among the free parameters when every parameter with
  // a part in the homogeneity (p_l theta_l not 0) is free, else -1.
  int HomogeneousScale(const MCEngineModel& model, const Eigen::VectorXd& theta, const std::vector<int>& free);
  NodeVectors Spherical(const Point& point, const Columns& z) const;
  // The PEV at that point; false when M cannot be factored there.
  bool PEVAt(const Point& point, const Eigen::VectorXd& x, const Columns& z, double& pev) const;
  // w'M^-1 w from the selected inverse; false when w joins nodes that are
  // not neighbours.
  bool OnPattern(const Point& point, const NodeVectors& w, double& wMw) const;
  // w'M^-1 w from a factorisation of the point's M.
  bool ThroughFactor(const Point& point, const NodeVectors& w, double& wMw) const;

  std::unique_ptr<MCEngineSparseDesign> fpDesign;
  // Analysed at the first prediction off the pattern.
  mutable std::unique_ptr<MCEngineSparseFactor> fpFactor;
  Point fBase;
  // Per free parameter, in the order of the gradient; the scale's entry
  // is left empty when it follows from the others.
  std::vector<Differences> fvDifferences;
  // The free parameters' p_l theta_l, and the scale's place among them
  // when its derivative follows from homogeneity (else -1).
  Eigen::VectorXd fScaleWeights;
  int fScaleSlot = -1;
  double fFactorFlops = 0.0;
  double fSetupWork = 0.0;
  double fLargestMatrix = 0.0;
};

}  // namespace MCEngine_850
