#pragma once

#include <iosfwd>

#include "numeric/common/MCStatus.h"

namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

class GLMMOutputStats;
class GLMMSettings;
class GLMMXMLWriter;

// Writes the StatXML document of a fit: the settings of the model build
// (target, distribution and link, intercept, confidence level, fixed
// effects, random and residual blocks, requested marginal means), the label
// maps of the fixed and random parameters, the model diagnostics (fit
// statistics, design sizes, grand mean, tests of fixed effects, random
// effect covariance matrices, marginal means, custom tests (our extension),
// the target's distribution,
// observed against predicted values, the first subject's records), the
// parameter estimates of the fixed effects, the residual and each random
// block, and the model's messages.
//
// GLMMStatXMLWriter.cpp writes the document's frame, the build settings, the
// label maps and the training summary; GLMMStatXMLWriterDiagnostics.cpp the
// model diagnostics. GLMMStatXMLParts holds what both write.
class GLMMStatXMLWriter {
 public:
  GLMMStatXMLWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList, const GLMMOutputStats& stats);

  // MC_OUTPUT_FILE_ERROR when the stream fails.
  MCCommon_850::MCStatus Write(std::ostream& os) const;

 private:
  void WriteBuildSettings(GLMMXMLWriter& xml) const;
  void WriteTargetSettings(GLMMXMLWriter& xml) const;
  void WriteRandomSpecs(GLMMXMLWriter& xml) const;
  void WriteMeansRequests(GLMMXMLWriter& xml) const;
  void WriteStringMaps(GLMMXMLWriter& xml) const;
  void WriteModelDiagnostics(GLMMXMLWriter& xml) const;
  void WriteTargetDistribution(GLMMXMLWriter& xml) const;
  void WriteClassificationTable(GLMMXMLWriter& xml) const;
  void WritePredictedByObserved(GLMMXMLWriter& xml) const;
  void WriteEffectTests(GLMMXMLWriter& xml) const;
  void WriteFirstSubjectRecords(GLMMXMLWriter& xml) const;
  void WriteRandomEffectCovariances(GLMMXMLWriter& xml) const;
  void WriteMarginalMeans(GLMMXMLWriter& xml) const;
  void WriteCustomTests(GLMMXMLWriter& xml) const;
  void WriteTrainingSummary(GLMMXMLWriter& xml) const;

  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  const GLMMOutputStats* fpStats;
};

}  // namespace MCGLMM_850
