#pragma once

#include <iosfwd>
#include <optional>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMClassification.h"
#include "numeric/glmm/GLMMCustomTestStat.h"
#include "numeric/glmm/GLMMEBLUPStat.h"
#include "numeric/glmm/GLMMEmmeansMean.h"
#include "numeric/glmm/GLMMEmmeansStat.h"
#include "numeric/glmm/GLMMThetaParamStat.h"
#include "numeric/math/BetaParamStat.h"
#include "numeric/math/MCBitSet.h"
#include "numeric/math/MCModelTestStats.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/math/MCSymMatrix.h"
#include "numeric/math/MCTestStats.h"

namespace MCGLMM_850 {

// What a fit produced. The engine fills it through the setters; readers use
// the getters. Scalars start as the system-missing value, lists empty, and
// the matrix and the tests absent (their getters return null).
class GLMMOutputStats {
 public:
  GLMMOutputStats();

  // -2 log likelihood (restricted with REML).
  double GetLogLikehood() const { return fLogLikelihood; }
  void SetLogLikehood(double value) { fLogLikelihood = value; }
  double GetAICC() const { return fAICC; }
  void SetAICC(double value) { fAICC = value; }
  double GetBIC() const { return fBIC; }
  void SetBIC(double value) { fBIC = value; }
  // Sum of the frequency weights of the records used.
  double GetTotalFreqWeight() const { return fTotalFreqWeight; }
  void SetTotalFreqWeight(double value) { fTotalFreqWeight = value; }

  // The fixed parameters, and their statistics in the same order.
  const std::vector<MCMath_850::MCRegrParameter>& GetBetaParameters() const { return fvBetaParameters; }
  void SetBetaParameters(const std::vector<MCMath_850::MCRegrParameter>& params) { fvBetaParameters = params; }
  const std::vector<MCMath_850::BetaParamStat>& GetBetaParamStats() const { return fvBetaParamStats; }
  void SetBetaParamStats(const std::vector<MCMath_850::BetaParamStat>& stats) { fvBetaParamStats = stats; }
  // Of an ordinal target: the values of its categories in order, and the
  // thresholds theta_j of P(Y <= j) = F(theta_j - x'beta - u) that take the
  // intercept's place, one per category but the last. Empty otherwise.
  const std::vector<double>& GetTargetCategories() const { return fvTargetCategories; }
  void SetTargetCategories(const std::vector<double>& values) { fvTargetCategories = values; }
  const std::vector<MCMath_850::BetaParamStat>& GetThresholdStats() const { return fvThresholdStats; }
  void SetThresholdStats(const std::vector<MCMath_850::BetaParamStat>& stats) { fvThresholdStats = stats; }
  // Members are the fixed parameters that are not redundant.
  const MCMath_850::MCBitSet& GetRedundancyIndicatorsBeta() const { return fRedundancyIndicatorsBeta; }
  void SetRedundancyIndicatorsBeta(const MCMath_850::MCBitSet& set) { fRedundancyIndicatorsBeta = set; }
  // Covariance of the fixed estimates, one block; null when not computed.
  const MCMath_850::MCSymMatrix* GetCovarianceMatrixBeta() const;
  void SetCovarianceMatrixBeta(const MCMath_850::MCSymMatrix& matrix) { fCovarianceMatrixBeta = matrix; }
  void ClearCovarianceMatrixBeta() { fCovarianceMatrixBeta.reset(); }

  // Per random block, its parameters.
  const std::vector<std::vector<MCMath_850::MCRegrParameter>>& GetGammaBasicParameters() const {
    return fvvGammaBasicParameters;
  }
  void SetGammaBasicParameters(const std::vector<std::vector<MCMath_850::MCRegrParameter>>& params) {
    fvvGammaBasicParameters = params;
  }
  // Estimates of the covariance parameters: the random blocks' in block
  // order, then the residual block's.
  const std::vector<double>& GetThetaParamEtimates() const { return fvThetaParamEstimates; }
  void SetThetaParamEtimates(const std::vector<double>& estimates) { fvThetaParamEstimates = estimates; }
  // The covariance parameters with their statistics, in the same order.
  const std::vector<GLMMThetaParamStat>& GetThetaParamStats() const { return fvThetaParamStats; }
  void SetThetaParamStats(const std::vector<GLMMThetaParamStat>& stats) { fvThetaParamStats = stats; }
  // Asymptotic covariance of the covariance parameters (twice the inverse of
  // the observed Hessian of -2 log likelihood), one block in the same order;
  // the rows and columns of redundant parameters hold the system-missing
  // value. Null when it could not be computed.
  const MCMath_850::MCSymMatrix* GetCovarianceMatrixTheta() const;
  void SetCovarianceMatrixTheta(const MCMath_850::MCSymMatrix& matrix) { fCovarianceMatrixTheta = matrix; }
  void ClearCovarianceMatrixTheta() { fCovarianceMatrixTheta.reset(); }

  // Tests of the fixed effects; null when not computed.
  const MCMath_850::MCModelTestStats* GetTypeITestStats() const;
  void SetTypeITestStats(const MCMath_850::MCModelTestStats& tests) { fTypeITestStats = tests; }
  const MCMath_850::MCModelTestStats* GetTypeIIITestStats() const;
  void SetTypeIIITestStats(const MCMath_850::MCModelTestStats& tests) { fTypeIIITestStats = tests; }

  // Warnings and errors met while the model was built.
  const std::vector<MCCommon_850::MCStatus>& GetBuildModelWarnings() const { return fvBuildModelWarnings; }
  void AddBuildModelWarning(const MCCommon_850::MCStatus& status) { fvBuildModelWarnings.push_back(status); }

  // Estimated marginal means. One table per request of the settings, in
  // request order (GetNEmmeansRequests of them), then the component's own
  // tables of the fixed effects made of factors, most significant first.
  const std::vector<GLMMEmmeansStat>& GetEmmeansStats() const { return fvEmmeansStats; }
  void SetEmmeansStats(const std::vector<GLMMEmmeansStat>& stats) { fvEmmeansStats = stats; }
  int GetNEmmeansRequests() const;
  // The mean over all cells of the fixed effects, covariates at their means;
  // null when not computed.
  const GLMMEmmeansMean* GetGrandMean() const;
  void SetGrandMean(const GLMMEmmeansMean& mean) { fGrandMean = mean; }

  // Predictions of the random effects of the blocks that ask for them:
  // block by block, subjects in ascending order of their values, and within
  // a subject the block's columns in order.
  const std::vector<GLMMEBLUPStat>& GetEBLUPStats() const { return fvEBLUPStats; }
  void SetEBLUPStats(const std::vector<GLMMEBLUPStat>& stats) { fvEBLUPStats = stats; }

  // The results of the settings' custom tests, in their order.
  const std::vector<GLMMCustomTestStat>& GetCustomTestStats() const { return fvCustomTestStats; }
  void SetCustomTestStats(const std::vector<GLMMCustomTestStat>& stats) { fvCustomTestStats = stats; }

  // The test of all fixed effects together against the intercept alone
  // (all of them when there is no intercept); null when not computed.
  const MCMath_850::MCTestStats* GetCorrectedModelTest() const;
  void SetCorrectedModelTest(const MCMath_850::MCTestStats& test) { fCorrectedModelTest = test; }

  // What the documents show of the records the fit used. The target's
  // histogram: bin midpoints and their frequencies, and the target's mean
  // and standard deviation.
  const std::vector<double>& GetTargetBinValues() const { return fvTargetBinValues; }
  const std::vector<double>& GetTargetBinFrequencies() const { return fvTargetBinFrequencies; }
  void SetTargetBins(const std::vector<double>& values, const std::vector<double>& frequencies) {
    fvTargetBinValues = values;
    fvTargetBinFrequencies = frequencies;
  }
  double GetTargetMean() const { return fTargetMean; }
  void SetTargetMean(double value) { fTargetMean = value; }
  double GetTargetStdDeviation() const { return fTargetStdDeviation; }
  void SetTargetStdDeviation(double value) { fTargetStdDeviation = value; }
  // Observed against predicted (with the random effects) target values:
  // one point per record, or per cell of a grid when there are many records,
  // each with its frequency. Empty when the predictions are not available.
  const std::vector<double>& GetObservedPoints() const { return fvObservedPoints; }
  const std::vector<double>& GetPredictedPoints() const { return fvPredictedPoints; }
  const std::vector<double>& GetPointFrequencies() const { return fvPointFrequencies; }
  void SetPredictedByObserved(const std::vector<double>& observed, const std::vector<double>& predicted,
                              const std::vector<double>& frequencies) {
    fvObservedPoints = observed;
    fvPredictedPoints = predicted;
    fvPointFrequencies = frequencies;
  }
  // The classification table of a categorical target; empty for others.
  const GLMMClassification& GetClassification() const { return fClassification; }
  void SetClassification(const GLMMClassification& table) { fClassification = table; }
  // Distinct combinations of all subject variables of the residual and the
  // random blocks among the records used; 1 without subject variables, -1
  // before a fit.
  int GetNCommonSubjects() const { return fNCommonSubjects; }
  void SetNCommonSubjects(int n) { fNCommonSubjects = n; }
  // The first common subject of the records used: its subject variables
  // (empty without subjects) and their values, the number of its records,
  // and for its first records the repeated effect's variables' values (one
  // vector per variable of GetRepeatedVars) and the target's values.
  const std::vector<int>& GetSubjectVars() const { return fvSubjectVars; }
  const std::vector<double>& GetFirstSubjectValues() const { return fvFirstSubjectValues; }
  void SetFirstSubject(const std::vector<int>& vars, const std::vector<double>& values) {
    fvSubjectVars = vars;
    fvFirstSubjectValues = values;
  }
  int GetFirstSubjectNRecords() const { return fFirstSubjectNRecords; }
  void SetFirstSubjectNRecords(int n) { fFirstSubjectNRecords = n; }
  const std::vector<int>& GetRepeatedVars() const { return fvRepeatedVars; }
  const std::vector<std::vector<double>>& GetFirstSubjectRepeated() const { return fvvFirstSubjectRepeated; }
  void SetFirstSubjectRepeated(const std::vector<int>& vars, const std::vector<std::vector<double>>& values) {
    fvRepeatedVars = vars;
    fvvFirstSubjectRepeated = values;
  }
  const std::vector<double>& GetFirstSubjectTargets() const { return fvFirstSubjectTargets; }
  void SetFirstSubjectTargets(const std::vector<double>& values) { fvFirstSubjectTargets = values; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  double fLogLikelihood;
  double fAICC;
  double fBIC;
  double fTotalFreqWeight;
  std::vector<MCMath_850::MCRegrParameter> fvBetaParameters;
  std::vector<MCMath_850::BetaParamStat> fvBetaParamStats;
  std::vector<double> fvTargetCategories;
  std::vector<MCMath_850::BetaParamStat> fvThresholdStats;
  MCMath_850::MCBitSet fRedundancyIndicatorsBeta;
  std::optional<MCMath_850::MCSymMatrix> fCovarianceMatrixBeta;
  std::vector<std::vector<MCMath_850::MCRegrParameter>> fvvGammaBasicParameters;
  std::vector<double> fvThetaParamEstimates;
  std::vector<GLMMThetaParamStat> fvThetaParamStats;
  std::optional<MCMath_850::MCSymMatrix> fCovarianceMatrixTheta;
  std::optional<MCMath_850::MCModelTestStats> fTypeITestStats;
  std::optional<MCMath_850::MCModelTestStats> fTypeIIITestStats;
  std::vector<MCCommon_850::MCStatus> fvBuildModelWarnings;
  std::vector<GLMMEmmeansStat> fvEmmeansStats;
  std::optional<GLMMEmmeansMean> fGrandMean;
  std::vector<GLMMEBLUPStat> fvEBLUPStats;
  std::vector<GLMMCustomTestStat> fvCustomTestStats;
  std::optional<MCMath_850::MCTestStats> fCorrectedModelTest;
  std::vector<double> fvTargetBinValues;
  std::vector<double> fvTargetBinFrequencies;
  double fTargetMean;
  double fTargetStdDeviation;
  std::vector<double> fvObservedPoints;
  std::vector<double> fvPredictedPoints;
  std::vector<double> fvPointFrequencies;
  GLMMClassification fClassification;
  int fNCommonSubjects;
  std::vector<int> fvSubjectVars;
  std::vector<double> fvFirstSubjectValues;
  int fFirstSubjectNRecords;
  std::vector<int> fvRepeatedVars;
  std::vector<std::vector<double>> fvvFirstSubjectRepeated;
  std::vector<double> fvFirstSubjectTargets;
};

}  // namespace MCGLMM_850
