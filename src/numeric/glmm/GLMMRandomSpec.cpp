#include "numeric/glmm/GLMMRandomSpec.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"

namespace MCGLMM_850 {

GLMMRandomSpec::GLMMRandomSpec()
    : fCovarianceType(GLMMConst_850::VC), fIndex(-1), fbComputeEBLUPs(false) {}

void GLMMRandomSpec::Reset(bool repeated) {
  *this = GLMMRandomSpec();
  fCovarianceType = GLMMConst_850::DefaultCovarType(repeated);
}

void GLMMRandomSpec::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMRandomSpec::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin GLMMRandomSpec display.");
  DisplayI(os, "Block index:", fIndex);
  GLMMComponentDisplay_850::DisplayC(os, "Covariance type:", fCovarianceType);
  DisplayIV(os, "Subject variables:", fvSubjectVars);
  DisplayB(os, "Compute EBLUPs:", fbComputeEBLUPs);
  DisplayI(os, "Effects:", GetNEffects());
  for (const MCMath_850::MCModelEffect& effect : fvEffects) effect.Display(os);
  DisplayText(os, "End GLMMRandomSpec display.");
}

}  // namespace MCGLMM_850
