#pragma once

#include <iosfwd>
#include <optional>
#include <vector>

#include "numeric/common/MCStatus.h"
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
  // Estimates of the covariance parameters.
  const std::vector<double>& GetThetaParamEtimates() const { return fvThetaParamEstimates; }
  void SetThetaParamEtimates(const std::vector<double>& estimates) { fvThetaParamEstimates = estimates; }

  // Tests of the fixed effects; null when not computed.
  const MCMath_850::MCModelTestStats* GetTypeITestStats() const;
  void SetTypeITestStats(const MCMath_850::MCModelTestStats& tests) { fTypeITestStats = tests; }
  const MCMath_850::MCModelTestStats* GetTypeIIITestStats() const;
  void SetTypeIIITestStats(const MCMath_850::MCModelTestStats& tests) { fTypeIIITestStats = tests; }

  // Warnings and errors met while the model was built.
  const std::vector<MCCommon_850::MCStatus>& GetBuildModelWarnings() const { return fvBuildModelWarnings; }
  void AddBuildModelWarning(const MCCommon_850::MCStatus& status) { fvBuildModelWarnings.push_back(status); }

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
  std::optional<MCMath_850::MCModelTestStats> fTypeITestStats;
  std::optional<MCMath_850::MCModelTestStats> fTypeIIITestStats;
  std::vector<MCCommon_850::MCStatus> fvBuildModelWarnings;
};

}  // namespace MCGLMM_850
