#include "numeric/glmm/GLMMEmmeansStat.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

GLMMEmmeansStat::GLMMEmmeansStat()
    : fRequestIndex(-1),
      fEffectIndex(-1),
      fbValid(true),
      fCompareFactor(-1),
      fContrastType(MCMath_850::MCConst::CONTRAST_NONE),
      fPAdjust(MCMath_850::MCConst::PADJUST_LSD),
      fRefCateg(-1),
      fConfidenceLevel(MCCommon_850::MCMV::Missing()) {}

void GLMMEmmeansStat::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMEmmeansStat::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin GLMMEmmeansStat display.");
  DisplayI(os, "Request:", fRequestIndex);
  DisplayI(os, "Effect:", fEffectIndex);
  DisplayB(os, "Valid:", fbValid);
  DisplayIV(os, "Factors:", fvFactors);
  DisplayI(os, "Compare factor:", fCompareFactor);
  DisplayC(os, "Contrast type:", fContrastType);
  DisplayC(os, "Significance adjustment:", fPAdjust);
  DisplayI(os, "Reference category:", fRefCateg);
  DisplayD(os, "Confidence level:", fConfidenceLevel);
  DisplayIV(os, "Covariates:", fvCovariates);
  DisplayDV(os, "Covariate values:", fvCovariateValues);
  DisplayI(os, "Means:", static_cast<long>(fvMeans.size()));
  for (const GLMMEmmeansMean& mean : fvMeans) mean.Display(os);
  DisplayI(os, "Contrasts:", static_cast<long>(fvContrasts.size()));
  for (const GLMMEmmeansContrast& contrast : fvContrasts) contrast.Display(os);
  DisplayI(os, "Tests:", static_cast<long>(fvTests.size()));
  for (const GLMMEmmeansTest& test : fvTests) test.Display(os);
  DisplayI(os, "Warnings:", static_cast<long>(fvWarnings.size()));
  for (const MCCommon_850::MCStatus& status : fvWarnings) status.Display(os);
  DisplayText(os, "End GLMMEmmeansStat display.");
}

}  // namespace MCGLMM_850
