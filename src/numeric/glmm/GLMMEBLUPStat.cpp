#include "numeric/glmm/GLMMEBLUPStat.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMEBLUPStat::GLMMEBLUPStat()
    : fBlock(0),
      fColumn(0),
      fPrediction(MCMV::Missing()),
      fStdError(MCMV::Missing()),
      fDF(MCMV::Missing()),
      fTStat(MCMV::Missing()),
      fSig(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()) {}

void GLMMEBLUPStat::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayI(os, "EBLUP block:", fBlock);
  DisplayDV(os, "Subject values:", fvSubjectValues);
  DisplayI(os, "Column:", fColumn);
  DisplayD(os, "Prediction:", fPrediction);
  DisplayD(os, "Std. error:", fStdError);
  DisplayD(os, "df:", fDF);
  DisplayD(os, "t:", fTStat);
  DisplayD(os, "Sig.:", fSig);
  DisplayD(os, "Lower bound:", fLowerBound);
  DisplayD(os, "Upper bound:", fUpperBound);
}

}  // namespace MCGLMM_850
