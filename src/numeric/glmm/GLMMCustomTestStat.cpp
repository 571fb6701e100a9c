#include "numeric/glmm/GLMMCustomTestStat.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMCustomTestStat::RowData::RowData()
    : fEstimate(MCMV::Missing()),
      fStdError(MCMV::Missing()),
      fDF(MCMV::Missing()),
      fT(MCMV::Missing()),
      fSig(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()) {}

GLMMCustomTestStat::GLMMCustomTestStat()
    : fJointState(kComputed) {}

void GLMMCustomTestStat::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayS(os, "Custom test:", fLabel);
  for (const RowData& row : fvRows) {
    DisplayI(os, "Row state:", row.fState);
    DisplayB(os, "Random part:", row.fbRandomPart);
    DisplayDV(os, "L:", row.fvFixedCoefficients);
    DisplayD(os, "K:", row.fK);
    DisplayD(os, "Estimate:", row.fEstimate);
    DisplayD(os, "Std. error:", row.fStdError);
    DisplayD(os, "df:", row.fDF);
    DisplayD(os, "t:", row.fT);
    DisplayD(os, "Sig.:", row.fSig);
    DisplayD(os, "Lower bound:", row.fLowerBound);
    DisplayD(os, "Upper bound:", row.fUpperBound);
  }
  DisplayI(os, "Joint state:", fJointState);
  fJoint.Display(os);
}

}  // namespace MCGLMM_850
