#include "numeric/glmm/GLMMEmmeansMean.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMEmmeansMean::GLMMEmmeansMean()
    : fbEstimable(false),
      fMean(MCMV::Missing()),
      fStdError(MCMV::Missing()),
      fDF(MCMV::Missing()),
      fLowerBound(MCMV::Missing()),
      fUpperBound(MCMV::Missing()),
      fbDataScale(false),
      fDataMean(MCMV::Missing()),
      fDataStdError(MCMV::Missing()),
      fDataLowerBound(MCMV::Missing()),
      fDataUpperBound(MCMV::Missing()) {}

void GLMMEmmeansMean::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMEmmeansMean::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayIV(os, "Mean of categories:", fvCategories);
  DisplayB(os, "Estimable:", fbEstimable);
  DisplayD(os, "Mean:", fMean);
  DisplayD(os, "Standard error:", fStdError);
  DisplayD(os, "Degrees of freedom:", fDF);
  DisplayD(os, "Lower bound:", fLowerBound);
  DisplayD(os, "Upper bound:", fUpperBound);
  if (!fbDataScale) return;
  DisplayD(os, "Mean on the data scale:", fDataMean);
  DisplayD(os, "Standard error on the data scale:", fDataStdError);
  DisplayD(os, "Lower bound on the data scale:", fDataLowerBound);
  DisplayD(os, "Upper bound on the data scale:", fDataUpperBound);
}

}  // namespace MCGLMM_850
