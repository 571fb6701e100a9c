#pragma once

#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/engine/MCEngineTarget.h"
#include "numeric/math/MCRegrParameter.h"

namespace MCCommon_850 {
class RecordIterator;
}

namespace MCEngine_850 {
class MCEngineFitter;
class MCEngineInput;
}  // namespace MCEngine_850

namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

class GLMMOutputStats;
class GLMMSettings;

// Estimated marginal means of a fit: the tables that the settings' requests
// ask for, in their order, then one table for each fixed effect made of
// factors only, the effect with the most significant Type III test first
// (ties and effects without a test in model order), and the grand mean.
// Covariates stand at their mean over the records the fit used, weighted by
// frequency, unless a request gives a value. The means of a generalized
// target (SetTarget) come on the data's scale too.
class GLMMEmmeansBuilder {
 public:
  GLMMEmmeansBuilder(const GLMMSettings& settings, const MCXML_850::MCVarList& varList);

  void SetTarget(const MCEngine_850::MCEngineTarget& target) { fTarget = target; }

  // After a fit without error of input (built from the records, one fixed
  // parameter per column): fills the means into stats. A request whose
  // compare factor has at most one category gets the warning
  // MC_EMMEANS_ONE_LEVEL, with the request's number (counted from 1) as
  // datum 0, both in its table and in warnings.
  void Build(const MCEngine_850::MCEngineFitter& fitter, const MCEngine_850::MCEngineInput& input,
             const std::vector<MCMath_850::MCRegrParameter>& betaParameters, MCCommon_850::RecordIterator* pRecords,
             GLMMOutputStats& stats, std::vector<MCCommon_850::MCStatus>& warnings) const;

 private:
  // Number of categories of a factor as the design counts them; 0 for a
  // variable without categories.
  int NCategories(int var) const;

  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  MCEngine_850::MCEngineTarget fTarget;
};

}  // namespace MCGLMM_850
