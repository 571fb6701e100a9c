#include "output/MIXOutput.h"

#include <cmath>
#include <sstream>
#include <string>

#include "base/MIXCommandLayout.h"
#include "host/output/AddNotes.h"
#include "host/output/BpCategory.h"
#include "host/output/BpDimension.h"
#include "host/output/BpFormatSpec.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "output/MIXComOutputData.h"
#include "output/MIXCustomTestOutput.h"
#include "output/MIXJsonOutput.h"
#include "output/MIXParamEstimateOutput.h"
#include "output/MIXSplitResults.h"
#include "output/MIXTargetOutput.h"
#include "specs/MIXValidSpecs.h"

MIXOutput::MIXOutput(MIXValidSpecs* pValidSpecs, ProcedureDataSource& dataSource, BpProcedure* pProcedure,
                     MIXSplitResults* pFactory)
    : fpValidSpecs(pValidSpecs),
      fpDataSource(&dataSource),
      fpProcedure(pProcedure),
      fpFactory(pFactory),
      fpComOutputData(nullptr) {}

MIXOutput::~MIXOutput() {
  delete fpComOutputData;
  fpComOutputData = nullptr;
}

void MIXOutput::DisplayModelDimension() {}

void MIXOutput::DisplayIterationHistory() {}

void MIXOutput::DisplayOutput() {
  delete fpComOutputData;
  fpComOutputData = nullptr;
  if (fpFactory == nullptr || fpValidSpecs == nullptr || fpProcedure == nullptr) return;

  fpComOutputData = new MIXComOutputData(fpValidSpecs, fpFactory, *fpDataSource, fpProcedure);
  fpComOutputData->GenerateMaps();

  DisplayModelDimension();
  MIXTargetOutput(*fpValidSpecs, *fpDataSource, *fpProcedure, fpComOutputData).DisplayTargetModel();
  if (fpValidSpecs->GetPrintOptionHISTORY()) DisplayIterationHistory();
  DisplayInfoCriteria();

  MIXParamEstimateOutput estimates(fpComOutputData);
  estimates.DisplayFixedEffectsTable();
  if (fpValidSpecs->GetPrintOptionSOLUTION()) estimates.DisplayParamEstimates();
  if (fpValidSpecs->GetPrintOptionCORB()) estimates.DisplayCorrParamEst();
  if (fpValidSpecs->GetPrintOptionCOVB()) estimates.DisplayCovarParamEst();

  MIXCustomTestOutput(fpComOutputData).DisplayCustomTests();

  if (fpValidSpecs->GetUseStatJSON()) DisplayEBLUPs();
}

void MIXOutput::DisplayInfoCriteria() {
  // A split that has records but no fit (its settings or its component
  // failed) is shown without the table.
  if (fpFactory == nullptr) return;
  if (fpFactory->GetGLMMAlgorithm() == nullptr || fpFactory->GetStatus().IsError()) return;
  const MCGLMM_850::GLMMOutputStats* pStats = fpFactory->GetOutputStats();
  if (pStats == nullptr) return;
  DisplayInfoCriteria(*pStats);
}

void MIXOutput::DisplayInfoCriteria(const MCGLMM_850::GLMMOutputStats& stats) {
  if (fpValidSpecs == nullptr || fpProcedure == nullptr) return;

  const double missing = MCCommon_850::MCMV::Missing();
  const int thetaType = static_cast<int>(fpValidSpecs->GetThetaEstType());
  double n = stats.GetTotalFreqWeight();
  const double nBeta = static_cast<double>(stats.GetRedundancyIndicatorsBeta().InSet().size());
  const double nTheta = static_cast<double>(stats.GetThetaParamEtimates().size());
  const double logLik = stats.GetLogLikehood();

  // An ordinal target's likelihood is a full one over its thresholds too.
  const double nThresholds = static_cast<double>(stats.GetThresholdStats().size());
  double d = 0.0;
  // Laplace and quadrature maximise the likelihood itself, whatever METHOD= says.
  const MCGLMM_850::GLMMTargetSpec& target = fpValidSpecs->GetTargetSpec();
  const bool likelihood = !target.IsLinear() && target.GetFitMethod() != GLMMConst_850::FIT_PSEUDO_LIKELIHOOD;
  const bool restricted = thetaType == static_cast<int>(GLMMConst_850::REML) && nThresholds == 0.0 && !likelihood;
  if (restricted) {
    d = nTheta;
    n -= nBeta;
  } else {
    d = nBeta + nTheta + nThresholds;
  }

  const double aic = logLik == missing ? missing : logLik + 2.0 * d;
  const double aicc = stats.GetAICC();
  const double caic = (!(n > 0.0) || logLik == missing) ? missing : logLik + d * (std::log(n) + 1.0);
  const double bic = stats.GetBIC();

  BpPivotTable table =
      fpProcedure->PivotTable(BpString("Information Criteria", true), BpString("Information Criteria", true), true);
  if (fpComOutputData != nullptr) fpComOutputData->AddTableCaption(table, false);
  table.Caption(BpString("Smaller is better ...", true));
  if (likelihood) table.Caption(BpString("The likelihood is maximised itself ...", true));

  const BpFormatSpec format(MIXComOutputData::GetTableFormat(MIXCommandLayout::CRITERIA_FORMAT));
  BpDimension statistics = table.Dimension(BpString("Statistics", true), 2);
  statistics.Position(0, 1, true, false);

  if (restricted) {
    statistics.Category(BpString("-2 Restricted Log Likelihood", true)).Cell(BpNumber(logLik, format));
  } else {
    statistics.Category(BpString("-2 Log Likelihood", true)).Cell(BpNumber(logLik, format));
  }
  statistics.Category(BpString("Akaike IC", true)).Cell(BpNumber(aic, format));
  statistics.Category(BpString("Hurvich Tsai IC", true)).Cell(BpNumber(aicc, format));
  statistics.Category(BpString("Bozdogan IC", true)).Cell(BpNumber(caic, format));
  statistics.Category(BpString("Bayesian IC", true)).Cell(BpNumber(bic, format));
}

void MIXOutput::AddToNotesTable() {
  if (fpValidSpecs == nullptr) return;
  if (fpValidSpecs->GetClassMissInclude()) {
    AddNotes(4, BpString("Definition of Missing", true), BpString("MISSING is INCLUDE ...", true));
  } else {
    AddNotes(4, BpString("Definition of Missing", true), BpString("MISSING is EXCLUDE ...", true));
  }
  AddNotes(4, BpString("Cases Used", true), BpString("Cases used ...", true));
  if (fpValidSpecs->GetZORVWeightIndex() >= 0) {
    AddNotes(0, BpString("Weight Handling", true),
             BpString("Weight values are rounded to the nearest whole numbers", true));
  } else {
    AddNotes(0, BpString("Weight Handling", true), BpString("not applicable", true));
  }
}

void MIXOutput::CompleteNotesTable() {
  if (fpValidSpecs == nullptr) return;
  if (fpValidSpecs->GetOutFOptionMODEL()) {
    AddNotes(2, BpString("Model File", true), BpString(fpValidSpecs->GetOutFModelFileName(), false, false));
  }
  if (fpValidSpecs->GetOutFOptionPARAMETER()) {
    AddNotes(2, BpString("Parameter File", true), BpString(fpValidSpecs->GetOutFParameterFileName(), false, false));
  }
}

void MIXOutput::DisplayEBLUPs() {
  if (fpValidSpecs == nullptr || !fpValidSpecs->GetUseStatJSON() || fpFactory == nullptr) return;
  MCGLMM_850::GLMMAlgorithm* pAlgorithm = fpFactory->GetGLMMAlgorithm();
  if (pAlgorithm == nullptr) return;

  std::ostringstream stream;
  const MCCommon_850::MCStatus status = pAlgorithm->ExportStatJSON(stream);
  if (status.IsError()) return;

  const std::string text = stream.str();
  MIXJsonOutput* pJsonOutput = new MIXJsonOutput(fpProcedure, fpDataSource, fpComOutputData, text);
  pJsonOutput->DisplayOutput();
  delete pJsonOutput;
}
