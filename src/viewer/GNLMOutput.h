#pragma once

#include "results/GNLMOutputStats.h"

class BpDimension;
class BpProcedure;
class GNLMJsonOutput;
class ZORV_DataSource;

// Conducts the model viewer's output of one model from the result model
// alone, in a fixed order: model summary, data structure, predicted by
// observed chart, classification, fixed effects table and chart, fixed
// coefficients table and chart, random effect covariances, covariance
// parameters, predicted random effects, marginal means chart, and the
// tables of the requested marginal means. It writes the first three tables
// itself.
class GNLMOutput {
 public:
  GNLMOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pOutputStats);

  // The tables of predicted random effects, when a StatJSON document came.
  void AddJsonOutput(GNLMJsonOutput* pJsonOutput) { fpJsonOutput = pJsonOutput; }

  // The whole output of the model. With the debug switch
  // display_result_model it begins with a dump of the result model.
  void DisplayOutput();
  void DisplayEBLUPTable();

  // The target, its distribution and link, and the information criteria.
  void DisplayModelSummaryTable();
  // The first subject's records, and the number of levels of the subject
  // and repeated measures fields. Without subject fields, no table.
  void DisplayDataStructureTable();
  // Observed against predicted categories of a categorical target.
  void DisplayClassificationTable();

 private:
  void DisplayResultModel();
  void AddDataStructureRecords(BpDimension& records, BpDimension& variables) const;
  void AddDataStructureLevels(BpDimension& records, BpDimension& variables) const;

  double fSysmis;
  BpProcedure* fpProcedure;
  ZORV_DataSource* fpDataSource;
  const GNLMOutputStats* fpOutputStats;
  const GNLMOutputStats::BuildSettingsData* fpBuildSettings;
  GNLMJsonOutput* fpJsonOutput;
};
