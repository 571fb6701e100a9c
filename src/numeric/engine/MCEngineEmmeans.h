#pragma once

#include <map>
#include <vector>

#include "numeric/engine/MCEngineMeansColumn.h"
#include "numeric/engine/MCEngineMeansRequest.h"
#include "numeric/engine/MCEngineMeansTable.h"
#include "numeric/engine/MCEngineTarget.h"

namespace MCEngine_850 {

class MCEngineFitter;
class MCEngineInput;

// Estimated marginal means of a fitted model. The mean of a combination of
// levels is l beta, where l weights each column by the product, over the
// column's factors, of 1 for a factor of the table at the combination's
// level (0 at another level) and 1/k for any other factor of k levels, and
// by the product of its covariates' values. Standard errors come from the
// estimates' covariance, degrees of freedom from Satterthwaite's
// approximation, and tests and contrasts from the fitter's own tests.
class MCEngineEmmeans {
 public:
  // The fitter must have fitted the input without error and outlive this
  // object. Columns: one per column of the input's fixed design. The number
  // of levels of each factor is taken from the columns (the highest level
  // plus one) unless SetFactorLevels says otherwise. Confidence level in
  // percent.
  MCEngineEmmeans(const MCEngineFitter& fitter, const MCEngineInput& input,
                  const std::vector<MCEngineMeansColumn>& columns, double confidenceLevel);

  void SetFactorLevels(int factor, int nLevels) { fmFactorLevels[factor] = nLevels; }
  // A factor's number of levels; 0 for an unknown factor.
  int GetFactorLevels(int factor) const;
  // The covariate's values, one per record of the input: their mean over the
  // records the fit used, weighted by the frequency weights, is the value at
  // which the means hold the covariate unless a request sets another.
  void SetCovariateRecords(int covariate, const std::vector<double>& values);
  // The covariate's mean; missing when unknown.
  double GetCovariateMean(int covariate) const;

  // The target of a generalized model: its means are then also given on
  // the data's scale through the inverse of its link.
  void SetTarget(const MCEngineTarget& target) { fTarget = target; }

  // The table of a request; a request without factors gives the grand mean,
  // one cell over all levels of every factor.
  MCEngineMeansTable Compute(const MCEngineMeansRequest& request) const;

  // Tables with more cells than this are refused as invalid.
  static constexpr long kMaxCells = 100000;

 private:
  const MCEngineFitter* fpFitter;
  std::vector<MCEngineMeansColumn> fvColumns;
  bool fbColumnsValid;
  double fConfidenceLevel;
  MCEngineTarget fTarget;
  // The input records the fit used and their frequency weights.
  std::vector<int> fvUsedRecords;
  std::vector<double> fvUsedWeights;
  std::map<int, int> fmFactorLevels;
  std::vector<int> fvCovariateOrder;
  std::map<int, double> fmCovariateMeans;
};

}  // namespace MCEngine_850
