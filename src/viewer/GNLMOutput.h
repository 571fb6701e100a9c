#pragma once

#include "results/GNLMOutputStats.h"

class BpProcedure;
class GNLMJsonOutput;
class ZORV_DataSource;

// Conducts the model viewer's output of one model, in a fixed order, from
// the result model alone.
class GNLMOutput {
 public:
  GNLMOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pOutputStats);

  // The tables of predicted random effects, when a StatJSON document came.
  void AddJsonOutput(GNLMJsonOutput* pJsonOutput) { fpJsonOutput = pJsonOutput; }

  // The whole output of the model. With the debug switch
  // display_result_model it begins with a dump of the result model.
  void DisplayOutput();
  void DisplayEBLUPTable();

 private:
  void DisplayResultModel();

  double fSysmis;
  BpProcedure* fpProcedure;
  ZORV_DataSource* fpDataSource;
  const GNLMOutputStats* fpOutputStats;
  const GNLMOutputStats::BuildSettingsData* fpBuildSettings;
  GNLMJsonOutput* fpJsonOutput;
};
