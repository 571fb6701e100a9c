#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMOutputStats.h"

namespace MCCommon_850 {
class RecordIterator;
}

namespace MCXML_850 {
class MCApplicInfo4XML;
class MCVarList;
}  // namespace MCXML_850

namespace MCGLMM_850 {

class GLMMPredictor;
class GLMMSettings;

// Fits a mixed model to the records of one split and answers for the fit.
// The algorithm refers to its settings and variable list, which must outlive
// it. Construction checks that the two agree: without a target, or with a
// variable position outside the variable list, the status is the error
// MC_SETTINGS_INVALID and Execute returns it without reading a record.
class GLMMAlgorithm {
 public:
  GLMMAlgorithm(const GLMMSettings& settings, const MCXML_850::MCVarList& varList);
  GLMMAlgorithm(const GLMMAlgorithm&) = delete;
  GLMMAlgorithm& operator=(const GLMMAlgorithm&) = delete;

  virtual ~GLMMAlgorithm();
  // Fits the model to the records, which must come sorted by the settings'
  // sort variables. The second argument is reserved and must be 0.
  virtual MCCommon_850::MCStatus Execute(MCCommon_850::RecordIterator* pRecords, int reserved);
  // Computes the score types set by SetCompScoreTypes (before Execute) for
  // one record, in that order, into scores; a score whose input is missing
  // is the system-missing value. details is left empty. Before a fit the
  // status is MC_SETTINGS_INVALID; after a failed fit, the fit's error.
  virtual MCCommon_850::MCStatus ScoreRecord(const double* record, std::vector<double>& scores,
                                             std::vector<std::vector<double>>& details);
  // Writes the fitted model as PMML. Before a fit the status is
  // MC_OUTPUT_FILE_ERROR, after a failed fit the fit's error, and nothing is
  // written; a stream that fails gives MC_OUTPUT_FILE_ERROR.
  virtual MCCommon_850::MCStatus ExportPMML(std::ostream& os, const MCXML_850::MCApplicInfo4XML* pInfo);
  virtual MCCommon_850::MCStatus GetStatus() const;
  // Warnings gathered while building and fitting the model, in order.
  virtual const std::vector<MCCommon_850::MCStatus>& GetWarnings() const;
  virtual void Display(std::ostream& os) const;

  void SetCompScoreTypes(const std::vector<GLMMConst_850::ScoreType>& types) { fvScoreTypes = types; }
  const std::vector<GLMMConst_850::ScoreType>& GetCompScoreTypes() const { return fvScoreTypes; }
  // The statistics of the fit, owned by the algorithm; null until a fit has
  // produced them.
  const GLMMOutputStats* GetOutputStats() const;
  // Writes the StatXML document of the fit; statuses as for ExportPMML.
  MCCommon_850::MCStatus ExportStatXML(std::ostream& os);
  // The tables of the random-effect predictions. Before a fit the status is
  // MC_OUTPUT_FILE_ERROR, after a failed fit the fit's error, and nothing is
  // written.
  MCCommon_850::MCStatus ExportStatJSON(std::ostream& os);

  const GLMMSettings& GetSettings() const { return *fpSettings; }
  const MCXML_850::MCVarList& GetVarList() const { return *fpVarList; }

 protected:
  // For the fitting code: the status, the warning list and the statistics.
  void SetStatus(const MCCommon_850::MCStatus& status) { fStatus = status; }
  void AddWarning(const MCCommon_850::MCStatus& status) { fvWarnings.push_back(status); }
  GLMMOutputStats& MutableOutputStats() { return fOutputStats; }
  void SetOutputAvailable(bool available) { fbOutputAvailable = available; }

 private:
  // MC_SETTINGS_INVALID when the settings and the variable list disagree.
  MCCommon_850::MCStatus CheckSettings() const;

  const GLMMSettings* fpSettings;
  const MCXML_850::MCVarList* fpVarList;
  MCCommon_850::MCStatus fStatus;
  std::vector<MCCommon_850::MCStatus> fvWarnings;
  std::vector<GLMMConst_850::ScoreType> fvScoreTypes;
  GLMMOutputStats fOutputStats;
  bool fbOutputAvailable;
  // Predictions from the fit, made when a block asks for its EBLUPs or when
  // scores are asked for (SetCompScoreTypes before Execute).
  std::unique_ptr<GLMMPredictor> fpPredictor;
};

}  // namespace MCGLMM_850
