#pragma once

#include <vector>

#include "numeric/engine/detail/MCCovSpatialKernel.h"
#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// A spatial structure over t points: sigma^2 f(d_ij; phi), with d_ij the
// Euclidean distance between points i and j and f(0) = 1, the distance
// function of one of the spatial types (MCCovSpatialKernel). Parameters: phi,
// then sigma^2. The points are given by their coordinates, row-major t x c.
class MCCovSpatial : public MCCovStructure {
 public:
  MCCovSpatial(int dimension, const std::vector<double>& points, const MCCovSpatialKernel& kernel);

  MCEngineCovType GetType() const override { return fKernel.fType; }
  int GetNParams() const override { return 2; }
  MCEngineCovParam::Kind GetParamKind(int k) const override;
  std::string GetParamLabel(int k, bool residualSide) const override;
  bool IsLinear() const override { return false; }
  int GetScaleParam() const override { return 1; }
  void Build(const Eigen::VectorXd& theta, Eigen::MatrixXd& sigma) const override;
  void Derivative(const Eigen::VectorXd& theta, int k, Eigen::MatrixXd& d) const override;
  void SecondDerivative(const Eigen::VectorXd& theta, int k, int l, Eigen::MatrixXd& d) const override;
  void NullParams(bool residualSide, Eigen::VectorXd& theta) const override;
  void Repair(Eigen::VectorXd& theta, double smallVariance) const override;
  std::vector<double> GetStartCandidates(int k) const override;
  void GetBounds(int k, double& lower, double& upper) const override;

 private:
  // order 0: f; 1: df/dphi; 2: d2f/dphi2. The diagonal of f is 1, of its
  // derivatives 0.
  void Kernel(double phi, int order, Eigen::MatrixXd& out) const;

  const MCCovSpatialKernel& fKernel;
  Eigen::MatrixXd fDistances;
  double fMinDistance = 0.0;  // smallest positive distance, 0 when there is none
  double fMaxDistance = 0.0;
};

}  // namespace MCEngine_850
