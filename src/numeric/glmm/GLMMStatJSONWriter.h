#pragma once

#include <iosfwd>
#include <string>

#include "numeric/common/MCStatus.h"

namespace MCMath_850 {
class MCModelEffect;
}

namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

class GLMMOutputStats;
class GLMMSettings;

// Writes the StatJSON document of a fit: one table of the predictions of
// the random effects for each random block that asks for them and has
// predictions, under
// "glmm.RandomEffectsParameters.tables". Rows are the block's subjects (the
// values of its subject variables, nested in the order of the variables)
// and its columns (grouped under their effect); columns are the statistics.
// As our extension, the results of the custom tests follow under
// "glmm.CustomTests" (see docs/design.md for the shape).
class GLMMStatJSONWriter {
 public:
  GLMMStatJSONWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList, const GLMMOutputStats& stats);

  // MC_OUTPUT_FILE_ERROR when the stream fails.
  MCCommon_850::MCStatus Write(std::ostream& os) const;

  // How an effect is named in the tables: "Intercept", or its variables as
  // written, joined by "*", a nested factor followed by the factors it is
  // nested in, in parentheses.
  static std::string EffectName(const MCMath_850::MCModelEffect& effect, const MCXML_850::MCVarList& varList);
  // The text of a variable's value as the record holds it: the category's
  // text for a categorical variable, else the number.
  static std::string ValueText(const MCXML_850::MCVarList& varList, int var, double value);

 private:
  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  const GLMMOutputStats* fpStats;
};

}  // namespace MCGLMM_850
