#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/cf/CFStatVariableValue.h"
#include "host/output/BpComposite.h"
#include "results/GNLMOutputStats.h"

class BpCellText;
class BpHeading;
class BpPivotTable;
class BpProcedure;
class ZORV_DataSource;
class ZORV_Variable;
union OBS;

// The tables of the requested estimated marginal means: the grand mean,
// then for each request a heading with its estimates, its contrasts and
// the overall tests of the compared factor, the charts between them. The
// documents give the cells' factor values and statistics as text.
class GNLMEmmeansOutput {
 public:
  GNLMEmmeansOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pStats);
  ~GNLMEmmeansOutput();
  GNLMEmmeansOutput(const GNLMEmmeansOutput&) = delete;
  GNLMEmmeansOutput& operator=(const GNLMEmmeansOutput&) = delete;

  // Nothing without requests; else the grand mean, then each request.
  void DisplayCustomEMMEANSOutput();
  bool displayGrandMeanTable();
  // The heading of one request and what stands under it; a request that
  // could not be answered is a warning instead.
  bool displayEffectOutput(const GNLMOutputStats::EMMEANSCustomData& custom);
  bool displayOverallTestResultsTable(BpHeading* pHeading, const GNLMOutputStats::EMMEANSCustomData& custom);
  bool displayEstimatesTable(BpHeading* pHeading, const GNLMOutputStats::EMMEANSCustomData& custom);
  // The contrasts table and its chart.
  bool displayContrastsOutput(BpHeading* pHeading, const GNLMOutputStats::EMMEANSCustomData& custom);
  // Numbers requests of the same term 1, 2, 3 (a lone term keeps 0).
  void computeSuffix();
  // The title of a request's heading; a negative index for the grand mean.
  BpComposite EMMEANSTitle(int index);
  // The label of a request's term: its fields' labels (names when they
  // have none) joined as the term is written.
  bool CreateEffectMap(const GNLMOutputStats::ModelEffectData& effect, std::string& out);
  // A factor value of the document coded for the variable; null when it
  // does not read as one. Valid until the next call.
  const OBS* String2ObsValue(const std::string& text, const ZORV_Variable& variable);
  // A statistic of the document; "__MISSING__" is the missing value.
  double String2Numeric(const std::string& text);
  // Whether a message of the list has the key, and the first one's place.
  bool HasWarning(const std::vector<GNLMOutputStats::WarningMsgData>& warnings, const std::string& key,
                  unsigned long& index) const;

  const std::vector<int>& GetSuffix() const { return fvSuffix; }

 private:
  std::unique_ptr<BpCellText> FactorValue(const ZORV_Variable* pVariable, const std::string& text);
  int FieldIndex(const std::string& name) const;
  void ShowBlockWarning(const GNLMOutputStats::EMMEANSCustomData& custom, const std::string& key);
  void AddEstimatesCaption(BpPivotTable& table, const GNLMOutputStats::EMMEANSCustomData& custom);
  void AddAdjustmentCaption(BpPivotTable& table, const GNLMOutputStats::EMMEANSCustomData& custom) const;

  double fSysmis;
  BpProcedure* fProcedure;
  ZORV_DataSource* fDataSource;
  const GNLMOutputStats* fStats;
  const GNLMOutputStats::BuildSettingsData* fpBuildSettings;
  const std::vector<GNLMOutputStats::EMMEANSCustomData>* fpEMMEANSCustomCollect;
  std::vector<int> fvSuffix;
  CFStatVariableValue fObsValue;
};
