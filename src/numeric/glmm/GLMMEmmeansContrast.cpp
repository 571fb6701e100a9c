#include "numeric/glmm/GLMMEmmeansContrast.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMEmmeansContrast::GLMMEmmeansContrast()
    : fCategory(-1),
      fReference(-1),
      fbEstimable(false),
      fEstimate(MCMV::Missing()),
      fStdError(MCMV::Missing()),
      fTStat(MCMV::Missing()),
      fDF(MCMV::Missing()),
      fSig(MCMV::Missing()),
      fAdjustedSig(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()) {}

void GLMMEmmeansContrast::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMEmmeansContrast::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayIV(os, "Contrast within categories:", fvCategories);
  DisplayI(os, "Category:", fCategory);
  DisplayI(os, "Reference:", fReference);
  DisplayDV(os, "Coefficients:", fvCoefficients);
  DisplayB(os, "Estimable:", fbEstimable);
  DisplayD(os, "Estimate:", fEstimate);
  DisplayD(os, "Standard error:", fStdError);
  DisplayD(os, "t:", fTStat);
  DisplayD(os, "Degrees of freedom:", fDF);
  DisplayD(os, "Significance:", fSig);
  DisplayD(os, "Adjusted significance:", fAdjustedSig);
  DisplayD(os, "Lower bound:", fLowerBound);
  DisplayD(os, "Upper bound:", fUpperBound);
}

}  // namespace MCGLMM_850
