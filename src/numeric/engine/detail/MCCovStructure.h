#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <string>

#include "numeric/engine/MCEngineCovParam.h"
#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

// A covariance structure Sigma(theta) over t positions (random side: the t
// columns of one subject; residual side: the t repeated-measures positions),
// with its analytic first and second derivatives.
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
  // Bounds: variances non-negative, correlations strictly inside (-1, 1).
  bool InBounds(const Eigen::VectorXd& theta) const;

 protected:
  int fDimension;
};

}  // namespace MCEngine_850
