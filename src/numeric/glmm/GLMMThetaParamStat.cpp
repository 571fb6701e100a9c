#include "numeric/glmm/GLMMThetaParamStat.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMThetaParamStat::GLMMThetaParamStat()
    : fBlockIndex(kResidualBlock),
      fEffectIndex(-1),
      fKind(VARIANCE),
      fEstimate(MCMV::Missing()),
      fbRedundant(false),
      fStdError(MCMV::Missing()),
      fWaldZ(MCMV::Missing()),
      fSig(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()) {}

const char* GLMMThetaParamStat::GetName(ParamKind kind) {
  switch (kind) {
    case VARIANCE: return "VARIANCE";
    case COVARIANCE: return "COVARIANCE";
    case CORRELATION: return "CORRELATION";
    case LOADING: return "LOADING";
    case RANGE: return "RANGE";
  }
  return "UNKNOWN";
}

void GLMMThetaParamStat::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMThetaParamStat::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayI(os, "Block:", fBlockIndex);
  DisplayI(os, "Effect:", fEffectIndex);
  DisplayS(os, "Label:", fLabel);
  DisplayEnum(os, "Kind:", GetName(fKind), fKind);
  DisplayD(os, "Estimate:", fEstimate);
  DisplayB(os, "Redundant:", fbRedundant);
  DisplayD(os, "Standard error:", fStdError);
  DisplayD(os, "Wald Z:", fWaldZ);
  DisplayD(os, "Significance:", fSig);
  DisplayD(os, "Lower bound:", fLowerBound);
  DisplayD(os, "Upper bound:", fUpperBound);
}

}  // namespace MCGLMM_850
