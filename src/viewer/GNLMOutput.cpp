#include "viewer/GNLMOutput.h"

#include <cfloat>
#include <sstream>

#include "charts/GNLMChartOutput.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpDimension.h"
#include "host/output/BpError.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "viewer/GNLMEmmeansOutput.h"
#include "viewer/GNLMExports.h"
#include "viewer/GNLMJsonOutput.h"
#include "viewer/GNLMParamEstimatesOutput.h"
#include "viewer/GNLMTableText.h"

using Stats = GNLMOutputStats;

namespace {

// The data structure table shows at most this many records of the first
// subject; the document holds no more.
const int kShownRecords = 10;

double Percent(double count, double total) { return total == 0.0 ? 0.0 : 100.0 * count / total; }

}  // namespace

GNLMOutput::GNLMOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pOutputStats)
    : fSysmis(-DBL_MAX),
      fpProcedure(pProcedure),
      fpDataSource(pDataSource),
      fpOutputStats(pOutputStats),
      fpBuildSettings(pOutputStats != nullptr ? pOutputStats->GetBuildSettings() : nullptr),
      fpJsonOutput(nullptr) {}

void GNLMOutput::DisplayOutput() {
  if (fpOutputStats == nullptr || fpProcedure == nullptr) return;
  if (display_result_model) DisplayResultModel();
  DisplayModelSummaryTable();
  DisplayDataStructureTable();
  GNLMChartOutput charts(fpProcedure, fpDataSource, *fpOutputStats);
  charts.createPredictedByObservedChart();
  DisplayClassificationTable();
  GNLMParamEstimatesOutput estimates(fpProcedure, fpDataSource, fpOutputStats);
  estimates.DisplayFixedEffectsTable();
  charts.createFixedEffectsChart();
  estimates.DisplayParamEstimTable();
  charts.createFixedCoefficientsChart();
  estimates.DisplayRandomEffectCovarTables();
  estimates.DisplayCovarParamTable();
  DisplayEBLUPTable();
  estimates.DisplayEffectEstimTable();
  charts.createEMMeansChart();
  GNLMEmmeansOutput means(fpProcedure, fpDataSource, fpOutputStats);
  means.DisplayCustomEMMEANSOutput();
}

void GNLMOutput::DisplayEBLUPTable() {
  if (fpJsonOutput != nullptr) fpJsonOutput->DisplayOutput();
}

void GNLMOutput::DisplayModelSummaryTable() {
  if (fpOutputStats == nullptr || fpBuildSettings == nullptr) return;
  const Stats::ModelDiagnosticsData* pDiagnostics = fpOutputStats->GetModelDiagnostics();
  if (pDiagnostics == nullptr) return;
  const Stats::BuildSettingsData& settings = *fpBuildSettings;

  BpPivotTable table = fpProcedure->PivotTable(BpString("Model Summary", true), BpString("ModelSummary", false), false);
  table.MinDataColumnWidth(150);
  BpDimension content = GNLMTableText::Dimension(table, BpString("Content", true), 0, 1, true, false);

  const auto target =
      GNLMTableText::VariableText(fpDataSource, settings.fTargetIndex, settings.fTargetField, BpVariable::AS_SET);
  if (settings.fUseTrials) {
    BpGroup group = content.Group(BpString("Target", true), true, 2);
    group.Category(BpString("Events", true)).Cell(*target);
    BpCategory trials = group.Category(BpString("Trials", true));
    if (settings.fTrialsIndex < 0) {
      trials.Cell(BpNumber(settings.fTrialsValue, BpProcedure::SigDigit(settings.fTrialsValue)));
    } else {
      trials.Cell(
          *GNLMTableText::VariableText(fpDataSource, settings.fTrialsIndex, settings.fTrialsField, BpVariable::AS_SET));
    }
  } else {
    content.Category(BpString("Target", true)).Cell(*target);
  }
  if (settings.fDistribution == Stats::NOMINAL || settings.fDistribution == Stats::ORDINAL) {
    content.Category(BpString("Measurement Level", true))
        .Cell(BpString(settings.fDistribution == Stats::NOMINAL ? "Nominal" : "Ordinal", true));
  }
  content.Category(BpString("Probability Distribution", true))
      .Cell(BpString(fpOutputStats->DistToDisplayString(settings.fDistribution, false), true));
  BpCategory link = content.Category(BpString("Link Function", true));
  if (settings.fLinkParam == fSysmis) {
    link.Cell(
        BpString(fpOutputStats->LinkToDisplayString(settings.fLinkFunction, settings.fDistribution, false), true));
  } else {
    BpComposite text(GNLMOutputStats::LinkWithParamKey(settings.fLinkFunction, settings.fDistribution), true);
    text.Add(BpNumber(settings.fLinkParam, BpProcedure::SigDigit(settings.fLinkParam)));
    text.Finish();
    link.Cell(text);
  }
  BpGroup criteria = content.Group(BpString("Information Criterion", true), true, 2);
  criteria.Category(BpString("Akaike Corrected", true)).Cell(BpNumber(pDiagnostics->fAICC, BpProcedure::GeneralStat()));
  criteria.Category(BpString("Bayesian", true)).Cell(BpNumber(pDiagnostics->fBIC, BpProcedure::GeneralStat()));

  BpComposite caption("Information Criteria, log likelhood ^1 ...", true);
  caption.Add(BpNumber(pDiagnostics->fMinus2LogLikelihood, BpProcedure::GeneralStat()));
  caption.Finish();
  table.Caption(caption);
}

void GNLMOutput::DisplayClassificationTable() {
  if (fpOutputStats == nullptr || fpBuildSettings == nullptr) return;
  const Stats::ModelDiagnosticsData* pDiagnostics = fpOutputStats->GetModelDiagnostics();
  const Stats::ClassifMatrixData* pMatrix = fpOutputStats->GetClassifMatrix();
  if (pDiagnostics == nullptr || pMatrix == nullptr) return;
  const Stats::BuildSettingsData& settings = *fpBuildSettings;

  BpComposite title("Classification, overall ^1 ...", true);
  const double accuracy = pDiagnostics->fClassificationAccuracy;
  title.Add(BpNumber(accuracy == fSysmis ? accuracy : 100.0 * accuracy, BpProcedure::Percent()));
  title.Finish();
  BpPivotTable table = fpProcedure->PivotTable(title, BpString("Classification", false), true);
  GNLMTableText::AddTargetNote(table, settings, fpDataSource);
  BpDimension observed = GNLMTableText::Dimension(table, BpString("Observed", true), 0, 2, false, false);
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", false), 0, 1, true, false);
  BpDimension predicted = GNLMTableText::Dimension(table, BpString("Predicted", true), 1, 1, false, false);

  // A category of the target: "Non-Event" and "Event" for events of trials,
  // else the label's value. Rows and labels are read only as far as the
  // document has them.
  auto label = [&](std::size_t k) -> std::unique_ptr<BpCellText> {
    if (settings.fUseTrials) return std::unique_ptr<BpCellText>(new BpString(k == 0 ? "Non-Event" : "Event", true));
    if (k >= pMatrix->fLabels.size()) return std::unique_ptr<BpCellText>(new BpString(std::string(), false));
    return GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex, pMatrix->fLabels[k], BpDataValue::AS_SET);
  };
  const std::size_t n = pMatrix->fNumRows > 0 ? static_cast<std::size_t>(pMatrix->fNumRows) : 0;
  for (std::size_t i = 0; i < n && i < pMatrix->fRows.size(); ++i) {
    const Stats::ClassifRowData& row = pMatrix->fRows[i];
    observed.Category(*label(i));
    for (std::size_t j = 0; j < n; ++j) {
      predicted.Category(*label(j));
      const double count = j < row.fValues.size() ? row.fValues[j] : fSysmis;
      statistics.Category(BpString("E60868", true)).Cell(BpNumber(count, BpProcedure::Count()));
      statistics.Category(BpString("% within Observed", true))
          .Cell(BpNumber(count == fSysmis ? count : Percent(count, row.fRowSum), BpProcedure::Percent()));
    }
  }
}

void GNLMOutput::DisplayDataStructureTable() {
  if (fpOutputStats == nullptr || fpBuildSettings == nullptr) return;
  const Stats::StructuredData* pStructured = fpOutputStats->GetStructuredData();
  const bool noSubject = fpOutputStats->HasWarning(Stats::csKey_C26);
  if (pStructured == nullptr || pStructured->fSubjectData.fFieldNames.empty()) {
    if (noSubject) {
      BpComposite text("^1: ^2", false);
      text.Add(BpString("Data Structure", true));
      text.Add(BpString("Subject field not used ...", true));
      text.Finish();
      BpError(text, BpErrorShowOutput, BpErrorLevelWarning);
    }
    return;
  }
  const Stats::BuildSettingsData& settings = *fpBuildSettings;

  BpPivotTable table =
      fpProcedure->PivotTable(BpString("Data Structure", true), BpString("DataStructure", false), true);
  GNLMTableText::AddTargetNote(table, settings, fpDataSource);
  if (pStructured->fTotalFreq > kShownRecords) {
    BpComposite caption("Only the first ^1 records are displayed.", true);
    caption.Add(BpNumber(kShownRecords, BpProcedure::Count()));
    caption.Finish();
    table.Caption(caption);
  }
  if (noSubject) {
    BpComposite note("[%1:\n^1:]1", true);
    note.Sublist();
    note.Add(GNLMTableText::TargetNote(settings, fpDataSource));
    note.Add(BpString("Subject field not used ...", true));
    note.EndSublist();
    note.Finish();
    table.Note(BpAnnotation(note.Replicate(), -1, false));
  }
  BpDimension records = GNLMTableText::Dimension(table, BpString("Record", true), 0, 1, true, true);
  BpDimension data = GNLMTableText::Dimension(table, BpString("Data", true), 0, 2, true, false);
  BpDimension variables = GNLMTableText::Dimension(table, BpString("Variables", true), 1, 1, true, false);

  data.Category(BpString("Data for First Subject", true));
  AddDataStructureRecords(records, variables);
  data.Category(BpString("Total Number of Levels", true));
  AddDataStructureLevels(records, variables);
}

void GNLMOutput::AddDataStructureRecords(BpDimension& records, BpDimension& variables) const {
  const Stats::StructuredData& structured = *fpOutputStats->GetStructuredData();
  const Stats::SimpleSubjectData& subject = structured.fSubjectData;
  const Stats::BuildSettingsData& settings = *fpBuildSettings;
  // The records are numbered from 0.
  for (std::size_t r = 0; r < structured.fvTargetValues.size(); ++r) {
    records.Category(BpNumber(static_cast<double>(r), BpProcedure::Count()));
    BpGroup subjects = variables.Group(BpString("Subjects", true), true, 2);
    for (std::size_t k = 0; k < subject.fFieldNames.size(); ++k) {
      const int index = subject.fFieldIndices[k];
      subjects.Category(*GNLMTableText::VariableText(fpDataSource, index, subject.fFieldNames[k], BpVariable::AS_SET))
          .Cell(*GNLMTableText::ValueText(fpDataSource, index, subject.fSubjectValues[k], BpDataValue::AS_SET));
    }
    if (!structured.fvRepMeasVars.empty()) {
      BpGroup repeated = variables.Group(BpString("Repeated Measures", true), true, 2);
      for (const Stats::RepMeasVarData& measure : structured.fvRepMeasVars) {
        BpCategory column = repeated.Category(
            *GNLMTableText::VariableText(fpDataSource, measure.fRepMeasInd, measure.fField, BpVariable::AS_SET));
        if (r < measure.fValues.size()) {
          column.Cell(
              *GNLMTableText::ValueText(fpDataSource, measure.fRepMeasInd, measure.fValues[r], BpDataValue::AS_SET));
        }
      }
    }
    BpGroup target = variables.Group(BpString("Target", true), true, 2);
    target
        .Category(*GNLMTableText::VariableText(fpDataSource, settings.fTargetIndex, settings.fTargetField,
                                               BpVariable::AS_SET))
        .Cell(*GNLMTableText::ValueText(fpDataSource, settings.fTargetIndex, structured.fvTargetValues[r],
                                        BpDataValue::AS_SET));
    if (settings.fTrialsIndex >= 0) {
      BpCategory trials = target.Category(
          *GNLMTableText::VariableText(fpDataSource, settings.fTrialsIndex, settings.fTrialsField, BpVariable::AS_SET));
      if (r < structured.fvTrialsValues.size()) {
        trials.Cell(*GNLMTableText::ValueText(fpDataSource, settings.fTrialsIndex, structured.fvTrialsValues[r],
                                              BpDataValue::AS_SET));
      }
    }
  }
  if (settings.fUseTrials && settings.fTrialsIndex < 0) {
    BpGroup target = variables.Group(BpString("Target", true), true, 2);
    BpCategory category = target.Category(
        *GNLMTableText::VariableText(fpDataSource, settings.fTargetIndex, settings.fTargetField, BpVariable::AS_SET));
    BpComposite note("Number of Trials = ^1", true);
    note.Add(BpNumber(settings.fTrialsValue, BpProcedure::Count()));
    note.Finish();
    category.Note(BpAnnotation(note.Replicate(), -1, false));
  }
}

void GNLMOutput::AddDataStructureLevels(BpDimension& records, BpDimension& variables) const {
  const Stats::StructuredData& structured = *fpOutputStats->GetStructuredData();
  const Stats::SimpleSubjectData& subject = structured.fSubjectData;
  records.Category(BpString("Levels", true));
  BpGroup subjects = variables.Group(BpString("Subjects", true), true, 2);
  for (std::size_t k = 0; k < subject.fFieldNames.size(); ++k) {
    subjects
        .Category(*GNLMTableText::VariableText(fpDataSource, subject.fFieldIndices[k], subject.fFieldNames[k],
                                               BpVariable::AS_SET))
        .Cell(BpNumber(subject.fNumCategories[k], BpProcedure::Count()));
  }
  if (structured.fvRepMeasVars.empty()) return;
  BpGroup repeated = variables.Group(BpString("Repeated Measures", true), true, 2);
  for (const Stats::RepMeasVarData& measure : structured.fvRepMeasVars) {
    // A repeated measure that is not categorical (a covariate ordering the
    // records) has no number of levels.
    const double levels = measure.fNumCategories > 0 ? measure.fNumCategories : fSysmis;
    repeated
        .Category(*GNLMTableText::VariableText(fpDataSource, measure.fRepMeasInd, measure.fField, BpVariable::AS_SET))
        .Cell(BpNumber(levels, BpProcedure::Count()));
  }
}

void GNLMOutput::DisplayResultModel() {
  std::ostringstream text;
  fpOutputStats->Display(text);
  BP_ToFrontText(text.str());
}
