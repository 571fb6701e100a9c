#pragma once

#include <Eigen/Dense>
#include <memory>
#include <vector>

#include "numeric/engine/detail/MCCovStructure.h"

namespace MCEngine_850 {

// The covariance parameters of a model: the random blocks' structures in
// order, then the residual structure, as one natural parameter vector theta.
// When the residual structure has an overall variance s, the iterations work
// on psi, the other parameters with every variance and covariance divided by
// s, and s is concentrated out of the likelihood.
class MCEngineModel {
 public:
  MCEngineModel() = default;

  void Setup(std::vector<std::unique_ptr<MCCovStructure>> blocks, std::unique_ptr<MCCovStructure> residual);

  int GetNBlocks() const { return static_cast<int>(fvBlocks.size()); }
  const MCCovStructure& GetBlock(int b) const { return *fvBlocks[static_cast<std::size_t>(b)]; }
  const MCCovStructure& GetResidual() const { return *fpResidual; }

  int GetNParams() const { return fNParams; }
  int GetBlockOffset(int b) const { return fvOffsets[static_cast<std::size_t>(b)]; }
  int GetResidualOffset() const { return fvOffsets.back(); }
  // The block of natural parameter k, or -1 for the residual block.
  int GetBlockOf(int k) const { return fvBlockOf[static_cast<std::size_t>(k)]; }
  int GetLocalIndex(int k) const { return fvLocal[static_cast<std::size_t>(k)]; }
  MCEngineCovParam::Kind GetKind(int k) const;
  // The power of the residual scale (and of c^2 for a response in units
  // times c) that parameter k carries: 1 for variances and covariances, 1/2
  // for loadings, 0 for correlations and ranges.
  double GetScalePower(int k) const { return MCCovStructure::ScalePower(GetKind(k)); }
  bool IsScaleLike(int k) const { return GetScalePower(k) != 0.0; }
  // The admissible interval of parameter k, the same in the working
  // coordinates: scaled parameters have bounds of 0 or none.
  void GetBounds(int k, double& lower, double& upper) const;
  // A variance at 0, or a correlation within 1e-6 of an end of its interval.
  bool IsAtBound(int k, double value) const;
  // A correlation at an end of its interval with the gradient of -2 log L
  // pushing it outwards.
  bool IsHeldAtBound(int k, double value, double gradient) const;
  // Moves theta to the reported one of equivalent parameter vectors.
  void Canonicalize(Eigen::VectorXd& theta) const;

  bool IsProfiled() const { return fScaleIndex >= 0; }
  // Natural index of the residual scale when profiled, else -1.
  int GetScaleIndex() const { return fScaleIndex; }
  int GetNWorking() const { return static_cast<int>(fvWorkingToNatural.size()); }
  int GetWorkingToNatural(int w) const { return fvWorkingToNatural[static_cast<std::size_t>(w)]; }

  Eigen::VectorXd ToNatural(const Eigen::VectorXd& psi, double scale) const;
  Eigen::VectorXd ToWorking(const Eigen::VectorXd& theta) const;
  Eigen::VectorXd Segment(const Eigen::VectorXd& theta, int block) const;

  // Every structure's bounds hold.
  bool InBounds(const Eigen::VectorXd& theta) const;

  // A factor Lambda of block b's G at theta, G = Lambda Lambda', from G's
  // eigen-decomposition with every singular value at least `lift` (0 keeps
  // G exact; a tiny lift makes Lambda invertible), and with lambdaInv its
  // inverse. False when G is not positive semidefinite.
  bool FactorBlock(const Eigen::VectorXd& theta, int b, double lift, Eigen::MatrixXd& lambda,
                   Eigen::MatrixXd* lambdaInv) const;

  // Gradient and Hessian of -2 log L in the working coordinates, from those in
  // the natural ones at theta = ToNatural(psi, scale) with scale at its
  // profiled optimum. The observed form adds the curvature of the
  // transformation; the expected form does not.
  void ToWorkingDerivatives(const Eigen::VectorXd& psi, double scale, const Eigen::VectorXd& g,
                            const Eigen::MatrixXd& H, bool observed, Eigen::VectorXd& gw,
                            Eigen::MatrixXd& Hw) const;

 private:
  std::vector<std::unique_ptr<MCCovStructure>> fvBlocks;
  std::unique_ptr<MCCovStructure> fpResidual;
  std::vector<int> fvOffsets;
  std::vector<int> fvBlockOf;
  std::vector<int> fvLocal;
  std::vector<int> fvWorkingToNatural;
  std::vector<int> fvNaturalToWorking;
  int fNParams = 0;
  int fScaleIndex = -1;
};

}  // namespace MCEngine_850
