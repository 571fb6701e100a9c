#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/math/MCTestStats.h"

namespace MCGLMM_850 {

// The results of one custom test L b (+ M u) = K: each row's estimate with
// its standard error, Satterthwaite degrees of freedom, t test of the row
// against its K value and confidence bounds, and the joint F test of all
// rows. A row carries the coefficients of L over every fixed parameter (in
// the order of the fit's parameters, redundant ones included) as the test
// was read. Statistics that could not be computed hold the system-missing
// value, and the row's or the test's state says why.
class GLMMCustomTestStat {
 public:
  // Why a row or the joint test has no statistics.
  enum State {
    kComputed = 0,
    // L b is not a function of the estimable parameters.
    kNotEstimable = 1,
    // A term of the row has more or fewer values than the term has parameters
    // in this fit (or, in the all-values form, the row does not have one
    // value per parameter).
    kWrongLength = 2,
    // The random part names more subjects than the block has, or a block the
    // fit could not predict.
    kRandomPartInvalid = 3,
    // The joint test of several rows with a random part (the engine gives no
    // covariance between predictions).
    kJointWithRandomPart = 4,
    // The estimate's variance is zero or could not be computed.
    kNoVariance = 5
  };

  struct RowData {
    State fState = kComputed;
    bool fbRandomPart = false;
    std::vector<double> fvFixedCoefficients;
    double fK = 0.0;
    double fEstimate;
    double fStdError;
    double fDF;
    double fT;
    double fSig;
    double fLowerBound;
    double fUpperBound;
    RowData();
  };

  GLMMCustomTestStat();

  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(const std::string& label) { fLabel = label; }

  const std::vector<RowData>& GetRows() const { return fvRows; }
  void AddRow(const RowData& row) { fvRows.push_back(row); }

  State GetJointState() const { return fJointState; }
  void SetJointState(State state) { fJointState = state; }
  // F, its numerator and denominator df, and its significance.
  const MCMath_850::MCTestStats& GetJoint() const { return fJoint; }
  void SetJoint(const MCMath_850::MCTestStats& joint) { fJoint = joint; }

  void Display(std::ostream& os) const;

 private:
  std::string fLabel;
  std::vector<RowData> fvRows;
  State fJointState;
  MCMath_850::MCTestStats fJoint;
};

}  // namespace MCGLMM_850
