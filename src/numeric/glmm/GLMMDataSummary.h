#pragma once

namespace MCCommon_850 {
class RecordIterator;
}
namespace MCEngine_850 {
class MCEngineFitter;
}
namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

class GLMMDesignBuilder;
class GLMMOutputStats;
class GLMMSettings;

// What the result documents show of the data of a fit: the target's
// distribution, observed against predicted values, the common subjects and
// the first subject's records, taken from the records the fit used. A
// record of frequency weight k counts as its k copies everywhere, and where
// the weight copies whole groups of records their subjects count k times.
class GLMMDataSummary {
 public:
  static void Fill(const GLMMSettings& settings, const MCXML_850::MCVarList& varList, const GLMMDesignBuilder& builder,
                   const MCEngine_850::MCEngineFitter& fitter, MCCommon_850::RecordIterator* pRecords,
                   GLMMOutputStats& out);
};

}  // namespace MCGLMM_850
