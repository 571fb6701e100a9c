#include "numeric/glmm/GLMMAlgorithm.h"

#include <ostream>
#include <stdexcept>

#include "numeric/common/RecordIterator.h"
#include "numeric/display/MCDisplay.h"
#include "numeric/glmm/GLMMComponentDisplay.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;

GLMMAlgorithm::GLMMAlgorithm(const GLMMSettings& settings, const MCXML_850::MCVarList& varList)
    : fpSettings(&settings), fpVarList(&varList), fbOutputAvailable(false) {
  fStatus = CheckSettings();
}

GLMMAlgorithm::~GLMMAlgorithm() = default;

MCStatus GLMMAlgorithm::CheckSettings() const {
  const int nVars = fpVarList->Size();
  auto inList = [nVars](int index) { return index >= 0 && index < nVars; };
  auto allInList = [&inList](const std::vector<int>& indices) {
    for (int index : indices) {
      if (!inList(index)) return false;
    }
    return true;
  };
  auto optionalInList = [&inList](int index) { return index < 0 || inList(index); };
  auto blockInList = [&allInList](const GLMMRandomSpec& spec) {
    if (!allInList(spec.GetSubjectVars())) return false;
    for (const MCMath_850::MCModelEffect& effect : spec.GetEffects()) {
      if (!allInList(effect.GetVarsIndicesForTheEffectInSetting())) return false;
    }
    return true;
  };

  const GLMMSettings& s = *fpSettings;
  bool ok = inList(s.GetDependent()) && allInList(s.GetFactors()) && allInList(s.GetCovariates()) &&
            optionalInList(s.GetFrequencyWeightVar()) && optionalInList(s.GetRegrWeightVar()) &&
            optionalInList(s.GetOffset()) && allInList(s.GetSpatialVars()) && blockInList(s.GetRepeated());
  for (const MCMath_850::MCModelEffect& effect : s.GetModelEffects()) {
    ok = ok && allInList(effect.GetVarsIndicesForTheEffectInSetting());
  }
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) ok = ok && blockInList(spec);
  return ok ? MCStatus() : MCStatus(MCCommon_850::MC_SETTINGS_INVALID, false);
}

MCStatus GLMMAlgorithm::Execute(MCCommon_850::RecordIterator*, int) {
  if (fStatus.IsError()) return fStatus;
  throw std::logic_error("GLMMAlgorithm::Execute: not implemented yet");
}

MCStatus GLMMAlgorithm::ScoreRecord(const double*, std::vector<double>&, std::vector<std::vector<double>>&) {
  throw std::logic_error("GLMMAlgorithm::ScoreRecord: not implemented yet");
}

MCStatus GLMMAlgorithm::ExportPMML(std::ostream&, const MCXML_850::MCApplicInfo4XML*) {
  throw std::logic_error("GLMMAlgorithm::ExportPMML: not implemented yet");
}

MCStatus GLMMAlgorithm::ExportStatXML(std::ostream&) {
  throw std::logic_error("GLMMAlgorithm::ExportStatXML: not implemented yet");
}

MCStatus GLMMAlgorithm::ExportStatJSON(std::ostream&) {
  throw std::logic_error("GLMMAlgorithm::ExportStatJSON: not implemented yet");
}

MCStatus GLMMAlgorithm::GetStatus() const { return fStatus; }

const std::vector<MCStatus>& GLMMAlgorithm::GetWarnings() const { return fvWarnings; }

const GLMMOutputStats* GLMMAlgorithm::GetOutputStats() const {
  return fbOutputAvailable ? &fOutputStats : nullptr;
}

void GLMMAlgorithm::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin GLMMAlgorithm display.");
  fStatus.Display(os);
  DisplayI(os, "Warnings:", static_cast<long>(fvWarnings.size()));
  for (const MCStatus& warning : fvWarnings) warning.Display(os);
  DisplayI(os, "Score types:", static_cast<long>(fvScoreTypes.size()));
  for (GLMMConst_850::ScoreType type : fvScoreTypes) GLMMComponentDisplay_850::DisplayC(os, "Score:", type);
  fpSettings->Display(os);
  fpVarList->Display(os);
  if (fbOutputAvailable) {
    fOutputStats.Display(os);
  } else {
    DisplayText(os, "No output statistics are available.");
  }
  DisplayText(os, "End GLMMAlgorithm display.");
}

}  // namespace MCGLMM_850
