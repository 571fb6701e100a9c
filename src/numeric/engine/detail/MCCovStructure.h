#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineCovParam.h"
#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// A covariance structure Sigma(theta) over t positions (random side: the t
// columns of one subject; residual side: the t repeated-measures positions,
// or the t distinct points of a spatial structure), with its analytic first
// and second derivatives.
class MCCovStructure {
 public:
  explicit MCCovStructure(int dimension) : fDimension(dimension) {}
  virtual ~MCCovStructure() = default;

  int GetDimension() const { return fDimension; }

  virtual MCEngineCovType GetType() const = 0;
  virtual int GetNParams() const = 0;
  virtual MCEngineCovParam::Kind GetParamKind(int k) const = 0;
  virtual std::string GetParamLabel(int k, bool residualSide) const = 0;
  // The random effect a parameter belongs to (VC), else -1.
  virtual int GetParamEffect(int k) const;

  // Sigma is diagonal whatever the parameters.
  virtual bool IsDiagonal() const { return false; }
  // Sigma is linear in the parameters, so second derivatives vanish.
  virtual bool IsLinear() const { return true; }
  // On the residual side, the parameter that is an overall variance: Sigma is
  // that parameter times a matrix free of it, with every variance and
  // covariance parameter scaling along. -1 when there is none.
  virtual int GetScaleParam() const { return -1; }
  // Whether Sigma is linear in parameter k when the others are fixed at their
  // null values; only such parameters get moment starting values.
  virtual bool IsLinearParam(int k) const;

  virtual void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const = 0;
  virtual void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const = 0;
  virtual void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const;

  // Parameters that make Sigma the identity (residual side) or zero (random side).
  virtual void NullParams(bool residualSide, Eigen::VectorXd& theta) const = 0;
  // Moves starting values into the admissible region: variances at least
  // smallVariance, correlations inside (-1, 1), Sigma positive definite.
  virtual void Repair(Eigen::VectorXd& theta, double smallVariance) const;
  // Values worth trying, one parameter at a time, as the start of a
  // parameter that enters non-linearly; empty when there are none.
  virtual std::vector<double> GetStartCandidates(int k) const;
  // Among parameters that give the same Sigma, moves theta to the one that
  // is reported (the sign of a factor-analytic loading vector).
  virtual void Canonicalize(Eigen::VectorXd& theta) const;

  // Admissible interval of parameter k; infinite where there is no bound.
  // A variance may sit on its lower bound 0; the ends of the other intervals
  // are not attainable (correlations (-1, 1), ranges (0, inf)).
  virtual void GetBounds(int k, double& lower, double& upper) const;
  // Bounds: variances non-negative, every other parameter strictly inside
  // its interval.
  bool InBounds(const Eigen::VectorXd& theta) const;

  // The power of c^2 by which a parameter of this kind follows a change of
  // the response's units by the factor c: 1 for variances and covariances,
  // 1/2 for loadings, 0 for correlations and ranges.
  static double ScalePower(MCEngineCovParam::Kind kind);

 protected:
  // Sigma at theta has a Cholesky factor whose smallest diagonal entry is not
  // negligible against the largest standard deviation.
  bool IsClearlyPositiveDefinite(const Eigen::VectorXd& theta) const;

  int fDimension;
};

}  // namespace MCEngine_850
