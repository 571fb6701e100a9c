#include "numeric/glmm/GLMMSettings.h"

#include <algorithm>
#include <ostream>

#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"

namespace MCGLMM_850 {

GLMMSettings::GLMMSettings()
    : fThetaEstType(GLMMConst_850::REML),
      fDegreesFreedomType(GLMMConst_850::DF_SATTERTHWAITE),
      fMaxFisherIterNum(2),
      fbUse4Mixed(false) {
  fRepeated.Reset(true);
}

GLMMSettings::~GLMMSettings() = default;

int GLMMSettings::GetSortDataVariables(std::vector<int>& sortVars) const {
  sortVars.clear();
  auto addAll = [&sortVars](const std::vector<int>& vars) {
    for (int var : vars) {
      if (std::find(sortVars.begin(), sortVars.end(), var) == sortVars.end()) sortVars.push_back(var);
    }
  };
  addAll(fRepeated.GetSubjectVars());
  for (const GLMMRandomSpec& spec : fvRandomSpecs) addAll(spec.GetSubjectVars());
  return static_cast<int>(sortVars.size());
}

void GLMMSettings::Display(std::ostream& os) const {
  GZLM_NAMESPACE_850::GZLSettings::Display(os);
  using namespace MCDisplay_850;
  DisplayI(os, "Random blocks:", GetNRandomSpecs());
  for (const GLMMRandomSpec& spec : fvRandomSpecs) spec.Display(os);
  DisplayText(os, "Residual block:");
  fRepeated.Display(os);
  DisplayIV(os, "Spatial coordinates:", fvSpatialVars);
  if (!fvCustomTests.empty()) DisplayI(os, "Custom tests:", static_cast<long>(fvCustomTests.size()));
  for (const CustomTest& test : fvCustomTests) test.Display(os);
  if (!fTargetSpec.IsLinear()) fTargetSpec.Display(os);
  GLMMComponentDisplay_850::DisplayC(os, "Covariance parameter estimation:", fThetaEstType);
  GLMMComponentDisplay_850::DisplayC(os, "Degrees of freedom:", fDegreesFreedomType);
  DisplayI(os, "Fisher scoring iterations:", fMaxFisherIterNum);
  DisplayI(os, "Scores:", static_cast<long>(fvScoringTypes.size()));
  for (GLMMConst_850::ScoreType type : fvScoringTypes) GLMMComponentDisplay_850::DisplayC(os, "Score:", type);
  DisplayB(os, "Mixed procedure:", fbUse4Mixed);
}

}  // namespace MCGLMM_850
