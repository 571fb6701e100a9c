#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/detail/MCEngineData.h"

namespace MCEngine_850 {

// What the copies of records with a frequency weight of their own add to
// -2 log L beyond the record itself with its residual variance divided by
// the weight. k copies of a record are their mean, which carries the record's
// share of the random effects with variance r / k, and k - 1 contrasts
// between them, which are 0 with variance r each and independent of all else
// (r: the record's residual variance with its scale weight). So the copies
// add log k + (k - 1) log r to log |V| and nothing to the quadratic form or to
// X'V^-1 X. Records carry such weights only under a residual structure that
// couples no records, so r is a diagonal element of the structure.
class MCEngineRecordCopies {
 public:
  explicit MCEngineRecordCopies(const MCEngineData& data);

  bool IsEmpty() const { return fvCopies.empty(); }
  // The addition to log |V| at the residual structure S (over positions);
  // false when a variance the copies need is not positive.
  bool LogDet(const Eigen::MatrixXd& S, double& add) const;
  // The addition to tr(V^-1 V_k) for a residual parameter whose derivative
  // of S is dS; with a second derivative, that to tr(V^-1 V_kl).
  double Trace(const Eigen::MatrixXd& S, const Eigen::MatrixXd& dS) const;
  // The addition to tr(V^-1 V_k V^-1 V_l) for two residual parameters.
  double TraceOfProducts(const Eigen::MatrixXd& S, const Eigen::MatrixXd& dSk, const Eigen::MatrixXd& dSl) const;

 private:
  // Per position of the residual structure: the copies beyond the records
  // themselves (the sum of k - 1).
  std::vector<double> fvCopies;
  // The sum of log k - (k - 1) log w over the records (w the scale weight).
  double fConstant = 0.0;
};

}  // namespace MCEngine_850
