#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/engine/detail/MCEngineEvaluator.h"
#include "numeric/engine/detail/MCEngineModel.h"
#include "numeric/engine/detail/MCEngineRecordCopies.h"

namespace MCEngine_850 {

// Evaluates the likelihood group by group: V is block diagonal over the
// independent groups of records, and each group's V_i is factored on its own.
// Sums over groups give the log determinant, X'V^-1 X and the trace terms of
// the derivatives; no matrix larger than a group is formed.
class MCEngineSubjectEvaluator : public MCEngineEvaluator {
 public:
  MCEngineSubjectEvaluator(const MCEngineData& data, const MCEngineModel& model);

  bool Evaluate(const Eigen::VectorXd& theta, Level level, bool reml, MCEngineEvaluation& out) override;

  // Records times (fixed columns reached + 1)^2, summed over the groups.
  double GetProductEntries() const;

  // The middle of the empirical covariance of the fixed estimates:
  // sum over groups of f_i X_i' V_i^-1 e_i e_i' V_i^-1 X_i, with e = y - X beta,
  // over the kept columns. False when a V_i is not positive definite.
  bool EmpiricalMeat(const Eigen::VectorXd& theta, const Eigen::VectorXd& beta, Eigen::MatrixXd& meat) const;

 private:
  // The records of one random subject inside a group, with the columns of
  // the block that are not zero on them.
  struct RandomGroup {
    int fBlock = 0;
    int fRowOffset = 0;
    int fNRows = 0;
    int fColOffset = 0;
    int fNCols = 0;
    int fZOffset = 0;  // column-major fNRows x fNCols
  };
  // The records of one residual subject inside a group.
  struct ResidualGroup {
    int fRowOffset = 0;
    int fNRows = 0;
  };
  struct Component {
    int fStart = 0;
    int fM = 0;
    double fWeight = 1.0;
    int fGroup0 = 0, fGroup1 = 0;
    int fRes0 = 0, fRes1 = 0;
    // The fixed columns not zero on the group's records, then the response
    // as column rank (in fvXCols).
    int fXCol0 = 0, fXCol1 = 0;
  };

  void BuildGroups();
  void FindFixedColumns(Component& comp);
  // The group's records on its fixed columns, the response last.
  void FillDesign(const Component& c, Eigen::MatrixXd& Xb) const;
  void AddRandom(const RandomGroup& g, const Eigen::MatrixXd& G, Eigen::MatrixXd& V) const;
  void AddResidual(const Component& c, const Eigen::MatrixXd& S, Eigen::MatrixXd& V) const;

  const MCEngineData& fData;
  const MCEngineModel& fModel;
  MCEngineRecordCopies fCopies;
  bool fbResidualDiagonal = true;
  std::vector<Component> fvComponents;
  std::vector<RandomGroup> fvGroups;
  std::vector<ResidualGroup> fvResGroups;
  std::vector<int> fvRows;
  std::vector<int> fvCols;
  std::vector<double> fvZ;
  std::vector<int> fvResRows;
  std::vector<int> fvXCols;
};

}  // namespace MCEngine_850
