#pragma once

#include <memory>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineCovParam.h"
#include "numeric/engine/MCEngineCovType.h"

namespace MCEngine_850 {

class MCCovStructure;

// A covariance structure seen from outside the engine: its parameters, their
// labels and kinds, and the matrix with its first and second derivatives as
// row-major t x t vectors.
class MCEngineCovariance {
 public:
  // columnEffects is used by VC only (the effect of each column). A spatial
  // structure places its dimension points at points (row-major, one or more
  // coordinates each); without them, point i lies at coordinate i on a line.
  MCEngineCovariance(MCEngineCovType type, int dimension, const std::vector<int>& columnEffects = {},
                     const std::vector<double>& points = {});
  ~MCEngineCovariance();
  MCEngineCovariance(const MCEngineCovariance&) = delete;
  MCEngineCovariance& operator=(const MCEngineCovariance&) = delete;

  // False for a type the engine does not provide.
  bool IsAvailable() const { return fpStructure != nullptr; }
  int GetDimension() const;
  int GetNParams() const;
  std::string GetParamLabel(int k, bool residualSide) const;
  MCEngineCovParam::Kind GetParamKind(int k) const;
  // Index of the overall variance that is profiled on the residual side, or -1.
  int GetScaleParam() const;
  // The admissible interval of parameter k (infinite ends where unbounded).
  void GetParamBounds(int k, double& lower, double& upper) const;

  std::vector<double> Matrix(const std::vector<double>& theta) const;
  std::vector<double> Derivative(const std::vector<double>& theta, int k) const;
  std::vector<double> SecondDerivative(const std::vector<double>& theta, int k, int l) const;

 private:
  std::unique_ptr<MCCovStructure> fpStructure;
};

}  // namespace MCEngine_850
