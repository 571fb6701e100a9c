#pragma once

#include <iosfwd>

#include "numeric/common/MCStatus.h"

namespace MCXML_850 {
class MCApplicInfo4XML;
class MCVarList;
}  // namespace MCXML_850

namespace MCGLMM_850 {

class GLMMOutputStats;
class GLMMSettings;

// Writes the model file of a fit as a PMML general regression model: the
// header with the application's name, version and copyright; the data
// dictionary of every variable of the variable list (type, measurement
// level, label, and the categories of a categorical variable in code
// order); the mining schema with each variable's role; the fixed parameters
// with their effects, categories, estimates and covariance; and, in an
// extension of the model, the random and residual blocks with their
// structures and covariance parameter estimates.
class GLMMPMMLWriter {
 public:
  GLMMPMMLWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList, const GLMMOutputStats& stats);

  // MC_OUTPUT_FILE_ERROR when the stream fails. A null info writes an
  // empty application.
  MCCommon_850::MCStatus Write(std::ostream& os, const MCXML_850::MCApplicInfo4XML* pInfo) const;

 private:
  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  const GLMMOutputStats* fpStats;
};

}  // namespace MCGLMM_850
