#include "numeric/glmm/GLMMOutputStats.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMOutputStats::GLMMOutputStats()
    : fLogLikelihood(MCMV::Missing()),
      fAICC(MCMV::Missing()),
      fBIC(MCMV::Missing()),
      fTotalFreqWeight(MCMV::Missing()),
      fTargetMean(MCMV::Missing()),
      fTargetStdDeviation(MCMV::Missing()),
      fNCommonSubjects(-1),
      fFirstSubjectNRecords(0) {}

const MCMath_850::MCTestStats* GLMMOutputStats::GetCorrectedModelTest() const {
  return fCorrectedModelTest ? &*fCorrectedModelTest : nullptr;
}

const MCMath_850::MCSymMatrix* GLMMOutputStats::GetCovarianceMatrixBeta() const {
  return fCovarianceMatrixBeta ? &*fCovarianceMatrixBeta : nullptr;
}

const MCMath_850::MCSymMatrix* GLMMOutputStats::GetCovarianceMatrixTheta() const {
  return fCovarianceMatrixTheta ? &*fCovarianceMatrixTheta : nullptr;
}

const MCMath_850::MCModelTestStats* GLMMOutputStats::GetTypeITestStats() const {
  return fTypeITestStats ? &*fTypeITestStats : nullptr;
}

const MCMath_850::MCModelTestStats* GLMMOutputStats::GetTypeIIITestStats() const {
  return fTypeIIITestStats ? &*fTypeIIITestStats : nullptr;
}

int GLMMOutputStats::GetNEmmeansRequests() const {
  int n = 0;
  for (const GLMMEmmeansStat& stat : fvEmmeansStats) n += stat.GetRequestIndex() >= 0 ? 1 : 0;
  return n;
}

const GLMMEmmeansMean* GLMMOutputStats::GetGrandMean() const { return fGrandMean ? &*fGrandMean : nullptr; }

void GLMMOutputStats::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMOutputStats::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin GLMMOutputStats display.");
  DisplayD(os, "-2 log likelihood:", fLogLikelihood);
  DisplayD(os, "AICC:", fAICC);
  DisplayD(os, "BIC:", fBIC);
  DisplayD(os, "Total frequency weight:", fTotalFreqWeight);
  DisplayI(os, "Fixed parameters:", static_cast<long>(fvBetaParameters.size()));
  for (const MCMath_850::MCRegrParameter& param : fvBetaParameters) param.Display(os);
  for (const MCMath_850::BetaParamStat& stat : fvBetaParamStats) stat.Display(os);
  DisplayIV(os, "Parameters not redundant:", fRedundancyIndicatorsBeta.InSet());
  if (fCovarianceMatrixBeta) {
    DisplayText(os, "Covariance of the fixed estimates:");
    fCovarianceMatrixBeta->Display(os);
  } else {
    DisplayText(os, "Covariance of the fixed estimates is not available.");
  }
  DisplayI(os, "Random blocks:", static_cast<long>(fvvGammaBasicParameters.size()));
  for (const std::vector<MCMath_850::MCRegrParameter>& block : fvvGammaBasicParameters) {
    DisplayI(os, "Random parameters:", static_cast<long>(block.size()));
    for (const MCMath_850::MCRegrParameter& param : block) param.Display(os);
  }
  DisplayDV(os, "Covariance parameter estimates:", fvThetaParamEstimates);
  DisplayI(os, "Covariance parameters:", static_cast<long>(fvThetaParamStats.size()));
  for (const GLMMThetaParamStat& stat : fvThetaParamStats) stat.Display(os);
  if (fCovarianceMatrixTheta) {
    DisplayText(os, "Covariance of the covariance parameters:");
    fCovarianceMatrixTheta->Display(os);
  } else {
    DisplayText(os, "Covariance of the covariance parameters is not available.");
  }
  if (fTypeITestStats) {
    DisplayText(os, "Type I tests:");
    fTypeITestStats->Display(os);
  } else {
    DisplayText(os, "Type I tests are not available.");
  }
  if (fTypeIIITestStats) {
    DisplayText(os, "Type III tests:");
    fTypeIIITestStats->Display(os);
  } else {
    DisplayText(os, "Type III tests are not available.");
  }
  DisplayI(os, "Build warnings:", static_cast<long>(fvBuildModelWarnings.size()));
  for (const MCCommon_850::MCStatus& status : fvBuildModelWarnings) status.Display(os);
  DisplayI(os, "Marginal means tables:", static_cast<long>(fvEmmeansStats.size()));
  for (const GLMMEmmeansStat& stat : fvEmmeansStats) stat.Display(os);
  if (fGrandMean) {
    DisplayText(os, "Grand mean:");
    fGrandMean->Display(os);
  }
  DisplayI(os, "Random effect predictions:", static_cast<long>(fvEBLUPStats.size()));
  for (const GLMMEBLUPStat& stat : fvEBLUPStats) stat.Display(os);
  if (!fvCustomTestStats.empty()) DisplayI(os, "Custom tests:", static_cast<long>(fvCustomTestStats.size()));
  for (const GLMMCustomTestStat& stat : fvCustomTestStats) stat.Display(os);
  if (fCorrectedModelTest) {
    DisplayText(os, "Test of the corrected model:");
    fCorrectedModelTest->Display(os);
  }
  DisplayDV(os, "Target bins:", fvTargetBinValues);
  DisplayDV(os, "Target bin frequencies:", fvTargetBinFrequencies);
  DisplayD(os, "Target mean:", fTargetMean);
  DisplayD(os, "Target standard deviation:", fTargetStdDeviation);
  DisplayI(os, "Observed and predicted points:", static_cast<long>(fvObservedPoints.size()));
  DisplayI(os, "Common subjects:", fNCommonSubjects);
  DisplayIV(os, "Subject variables:", fvSubjectVars);
  DisplayDV(os, "First subject:", fvFirstSubjectValues);
  DisplayI(os, "First subject's records:", fFirstSubjectNRecords);
  DisplayDV(os, "First subject's targets:", fvFirstSubjectTargets);
  DisplayText(os, "End GLMMOutputStats display.");
}

}  // namespace MCGLMM_850
