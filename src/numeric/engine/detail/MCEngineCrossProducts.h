#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/detail/MCEngineSparseDesign.h"

namespace MCEngine_850 {

// Cross products of [Z X y] weighted, group by group of the residual, by a
// matrix over the group's records (R^-1, or R^-1 R_l R^-1 for a residual
// parameter), each group counted with its copies. Z'Z is held on the
// design's pairs of nodes.
struct MCEngineCrossProducts {
  std::vector<double> fvZZ;
  Eigen::MatrixXd fZX;
  Eigen::MatrixXd fXX;
  Eigen::VectorXd fZY;
  Eigen::VectorXd fXY;
  double fYY = 0.0;

  void Reset(const MCEngineSparseDesign& design, int p);
  // Adds group g's products under the weight matrix W (its rows by its rows;
  // a single record's weight when the group has one).
  void Add(const MCEngineSparseDesign& design, int g, const Eigen::MatrixXd& W, const std::vector<double>& y);
  void AddRecord(const MCEngineSparseDesign& design, int g, double w, const std::vector<double>& y);
};

}  // namespace MCEngine_850
