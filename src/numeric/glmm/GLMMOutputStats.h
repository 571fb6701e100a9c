#pragma once

#include <iosfwd>
#include <optional>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMEBLUPStat.h"
#include "numeric/glmm/GLMMEmmeansMean.h"
#include "numeric/glmm/GLMMEmmeansStat.h"
#include "numeric/glmm/GLMMThetaParamStat.h"
#include "numeric/math/BetaParamStat.h"
#include "numeric/math/MCBitSet.h"
#include "numeric/math/MCModelTestStats.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/math/MCSymMatrix.h"

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

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  double fLogLikelihood;
  double fAICC;
  double fBIC;
  double fTotalFreqWeight;
  std::vector<MCMath_850::MCRegrParameter> fvBetaParameters;
  std::vector<MCMath_850::BetaParamStat> fvBetaParamStats;
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
};

}  // namespace MCGLMM_850
