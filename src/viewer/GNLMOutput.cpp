#include "viewer/GNLMOutput.h"

#include <cfloat>
#include <sstream>

#include "host/output/BP_ToFront.h"
#include "viewer/GNLMExports.h"
#include "viewer/GNLMJsonOutput.h"

GNLMOutput::GNLMOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pOutputStats)
    : fSysmis(-DBL_MAX),
      fpProcedure(pProcedure),
      fpDataSource(pDataSource),
      fpOutputStats(pOutputStats),
      fpBuildSettings(pOutputStats != nullptr ? pOutputStats->GetBuildSettings() : nullptr),
      fpJsonOutput(nullptr) {}

void GNLMOutput::DisplayOutput() {
  if (display_result_model) DisplayResultModel();
  DisplayEBLUPTable();
}

void GNLMOutput::DisplayEBLUPTable() {
  if (fpJsonOutput != nullptr) fpJsonOutput->DisplayOutput();
}

void GNLMOutput::DisplayResultModel() {
  if (fpOutputStats == nullptr) return;
  std::ostringstream text;
  fpOutputStats->Display(text);
  BP_ToFrontText(text.str());
}
