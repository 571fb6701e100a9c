#include "numeric/glmm/GLMMEmmeansTest.h"

#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/display/MCDisplay.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;

GLMMEmmeansTest::GLMMEmmeansTest()
    : fbValid(false), fF(MCMV::Missing()), fDF1(MCMV::Missing()), fDF2(MCMV::Missing()), fSig(MCMV::Missing()) {}

void GLMMEmmeansTest::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void GLMMEmmeansTest::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayIV(os, "Test within categories:", fvCategories);
  DisplayB(os, "Valid:", fbValid);
  DisplayD(os, "F:", fF);
  DisplayD(os, "Numerator df:", fDF1);
  DisplayD(os, "Denominator df:", fDF2);
  DisplayD(os, "Significance:", fSig);
}

}  // namespace MCGLMM_850
