#include "viewer/GNLMEmmeansOutput.h"

#include <cfloat>

#include "base/MIXAssert.h"
#include "charts/GNLMChartOutput.h"
#include "host/data/ZORV_DataSource.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpDimension.h"
#include "host/output/BpError.h"
#include "host/output/BpHeading.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"
#include "host/text/NumericText.h"
#include "viewer/GNLMTableText.h"

using Stats = GNLMOutputStats;

namespace {

// The custom requests the output shows; beyond them the model says that
// it has been cut (kGLMM_C24).
const std::size_t kShownRequests = 20;

// A statistic's value of row r, the missing text where the array is short.
const std::string& ValueAt(const Stats::CoordinatesData& column, std::size_t r) {
  static const std::string kMissing = "__MISSING__";
  return r < column.fValues.size() ? column.fValues[r] : kMissing;
}

// A dimension of one factor of a table, with the place of the factor's
// values among the document's coordinates.
struct FactorDimension {
  BpDimension fDimension;
  const ZORV_Variable* fpVariable;
  std::size_t fElement;
};

// The rows of a factor at their order, named by the factor's label.
FactorDimension FactorRows(BpPivotTable& table, const ZORV_DataSource* pDataSource, int index, const std::string& name,
                           int order, std::size_t element) {
  BpDimension dimension = GNLMTableText::Dimension(
      table, *GNLMTableText::VariableText(pDataSource, index, name, BpVariable::LABEL), 0, order, false, false);
  return {dimension, GNLMTableText::Variable(pDataSource, index), element};
}

}  // namespace

GNLMEmmeansOutput::GNLMEmmeansOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource,
                                     const GNLMOutputStats* pStats)
    : fSysmis(-DBL_MAX),
      fProcedure(pProcedure),
      fDataSource(pDataSource),
      fStats(pStats),
      fpBuildSettings(pStats != nullptr ? pStats->GetBuildSettings() : nullptr),
      fpEMMEANSCustomCollect(pStats != nullptr ? pStats->GetEMMEANSCustomCollect() : nullptr) {}

GNLMEmmeansOutput::~GNLMEmmeansOutput() = default;

void GNLMEmmeansOutput::DisplayCustomEMMEANSOutput() {
  if (fpEMMEANSCustomCollect == nullptr || fpEMMEANSCustomCollect->empty() || fpBuildSettings == nullptr) return;
  displayGrandMeanTable();
  for (const Stats::EMMEANSCustomData& custom : *fpEMMEANSCustomCollect) displayEffectOutput(custom);
}

bool GNLMEmmeansOutput::displayGrandMeanTable() {
  const Stats::ModelDiagnosticsData* pDiagnostics = fStats->GetModelDiagnostics();
  if (pDiagnostics == nullptr) return false;
  BpPivotTable table = fProcedure->PivotTable(EMMEANSTitle(-1), BpString("GrandMeans", false), true);
  GNLMTableText::AddTargetNote(table, *fpBuildSettings, fDataSource);
  if (fpEMMEANSCustomCollect->size() >= kShownRequests && fStats->HasWarning(Stats::csKey_C24)) {
    table.Caption(BpString(Stats::csKey_C24, true));
  }
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);
  statistics.Category(BpString("Mean", true)).Cell(BpNumber(pDiagnostics->fGrandMean, BpProcedure::Coefficient()));
  statistics.Category(BpString("Std. Error", true))
      .Cell(BpNumber(pDiagnostics->fGrandMeanStdErr, BpProcedure::Coefficient()));
  GNLMTableText::AddInterval(statistics, fpBuildSettings->fCIn, pDiagnostics->fGrandMeanCILower,
                             pDiagnostics->fGrandMeanCIUpper);
  return true;
}

bool GNLMEmmeansOutput::displayEffectOutput(const Stats::EMMEANSCustomData& custom) {
  if (custom.fEMMEANSIndex < 0) return false;
  BpHeading heading = fProcedure->Heading(EMMEANSTitle(custom.fEMMEANSIndex));
  unsigned long index = 0;
  if (HasWarning(custom.fvWarningList, Stats::csKey_C25, index)) {
    ShowBlockWarning(custom, Stats::csKey_C25);
    return false;
  }
  displayEstimatesTable(&heading, custom);
  {
    GNLMChartOutput charts(fProcedure, fDataSource, *fStats);
    charts.createCustomEffectsChart(custom);
    displayContrastsOutput(&heading, custom);
    displayOverallTestResultsTable(&heading, custom);
  }
  return true;
}

// "Estimated Marginal Means 2: the message" as a warning.
void GNLMEmmeansOutput::ShowBlockWarning(const Stats::EMMEANSCustomData& custom, const std::string& key) {
  BpComposite text("^1 ^2: ^3", false);
  text.Add(BpString("EMMEANS", true));
  text.Add(BpNumber(custom.fEMMEANSIndex + 1, BpProcedure::Count()));
  text.Add(BpString(key, true));
  text.Finish();
  BpError(text, BpErrorShowOutput, BpErrorLevelWarning);
}

bool GNLMEmmeansOutput::displayOverallTestResultsTable(BpHeading* pHeading, const Stats::EMMEANSCustomData& custom) {
  const std::vector<Stats::EMMEANSOverallTestData>& tests = custom.fvOverallTests;
  if (tests.empty()) return false;
  BpPivotTable table =
      pHeading->PivotTable(BpString("Overall Test Results", true), BpString("OverallTestResults", false), true);
  const Stats::EMMEANSData& request = fpBuildSettings->fvEMMEANS[static_cast<std::size_t>(custom.fEMMEANSIndex)];
  const int compare = FieldIndex(request.fCompareFactor);
  const std::size_t nEffect = request.fFactors.fvFieldIndices.size();
  const std::size_t nFactor = tests.front().fFieldIndices.size();
  MIX_ASSERT(nFactor == nEffect - 1, "nFactor == nEffect - 1");

  std::vector<FactorDimension> factors;
  int place = static_cast<int>(nFactor);
  for (std::size_t i = 0; i < nFactor; ++i) {
    const int index = tests.front().fFieldIndices[i];
    if (index == compare) continue;
    factors.push_back(FactorRows(table, fDataSource, index, tests.front().fFieldNames[i], place--, i));
  }
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);

  for (const Stats::EMMEANSOverallTestData& test : tests) {
    for (FactorDimension& factor : factors) {
      factor.fDimension.Category(*GNLMTableText::ValueText(fDataSource, test.fFieldIndices[factor.fElement],
                                                           test.fSubjectValues[factor.fElement], BpDataValue::AS_SET));
    }
    statistics.Category(BpString("F", true)).Cell(BpNumber(test.fFStatistic, BpProcedure::Coefficient()));
    statistics.Category(BpString("df1", true)).Cell(BpNumber(test.fDf1, BpProcedure::Count()));
    statistics.Category(BpString("df2", true)).Cell(BpNumber(test.fDf2, BpProcedure::Count()));
    statistics.Category(BpString("Sig.", true)).Cell(BpNumber(test.fSig, BpProcedure::Coefficient()));
  }
  return true;
}

bool GNLMEmmeansOutput::displayEstimatesTable(BpHeading* pHeading, const Stats::EMMEANSCustomData& custom) {
  BpPivotTable table = pHeading->PivotTable(BpString("Estimates", true), BpString("Estimates", false), true);
  AddEstimatesCaption(table, custom);
  const Stats::EMMEANSEstimatesData& estimates = custom.fEstimates;
  const std::size_t nFactor = estimates.fvGroup.size();
  const std::size_t nEffect =
      fpBuildSettings->fvEMMEANS[static_cast<std::size_t>(custom.fEMMEANSIndex)].fFactors.fvFieldIndices.size();
  MIX_ASSERT(nFactor > 0 && nEffect == nFactor, "nFactor > 0 && nEffect == nFactor");

  std::vector<FactorDimension> factors;
  for (std::size_t k = 0; k < nFactor; ++k) {
    const Stats::CoordinatesData& element = estimates.fvGroup[k];
    factors.push_back(
        FactorRows(table, fDataSource, FieldIndex(element.fField), element.fField, static_cast<int>(nFactor - k), k));
  }
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);

  for (std::size_t r = 0; r < estimates.fvGroup.front().fValues.size(); ++r) {
    for (FactorDimension& factor : factors) {
      factor.fDimension.Category(*FactorValue(factor.fpVariable, ValueAt(estimates.fvGroup[factor.fElement], r)));
    }
    const auto cell = [&](const Stats::CoordinatesData& column) {
      return BpNumber(String2Numeric(ValueAt(column, r)), BpProcedure::Coefficient());
    };
    statistics.Category(BpString("Mean", true)).Cell(cell(estimates.fMean));
    statistics.Category(BpString("Std. Error", true)).Cell(cell(estimates.fStdErr));
    GNLMTableText::AddInterval(statistics, fpBuildSettings->fCIn,
                               String2Numeric(ValueAt(estimates.fConfIntervalLower, r)),
                               String2Numeric(ValueAt(estimates.fConfIntervalUpper, r)));
  }
  return true;
}

// "Continuous predictors are fixed at x=2.5,z=1": the covariates' values
// in the formats of their variables.
void GNLMEmmeansOutput::AddEstimatesCaption(BpPivotTable& table, const Stats::EMMEANSCustomData& custom) {
  if (custom.fvFieldValues.empty()) return;
  BpComposite caption("Continuous predictors fixed at [%1=%2:,^1=^2:]1", true);
  caption.Sublist();
  for (const Stats::SimpleFiledValueData& field : custom.fvFieldValues) {
    const int index = FieldIndex(field.fFieldName);
    caption.Add(*GNLMTableText::VariableText(fDataSource, index, field.fFieldName, BpVariable::NAME));
    const OBS* pValue = field.fValue.GetObsValue();
    caption.Add(BpNumber(pValue != nullptr ? pValue->fNum : String2Numeric(field.fValue.GetStringValue()),
                         fProcedure->Mean(index)));
  }
  caption.EndSublist();
  caption.Finish();
  table.Caption(caption);
}

bool GNLMEmmeansOutput::displayContrastsOutput(BpHeading* pHeading, const Stats::EMMEANSCustomData& custom) {
  const Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  if (contrasts.fvGroup.empty()) return false;
  static const char* const kTitles[] = {"Pairwise Contrasts", "Deviation Contrasts", "Simple Contrasts"};
  static const char* const kDimensions[] = {"^1 Pairwise Contrasts", "^1 Deviation Contrasts", "^1 Simple Contrasts"};
  if (contrasts.fContrastKind < 0 || contrasts.fContrastKind > 2) return false;
  const std::size_t kind = static_cast<std::size_t>(contrasts.fContrastKind);
  unsigned long warningIndex = 0;
  if (HasWarning(custom.fvWarningList, Stats::csKey_C19, warningIndex)) {
    const Stats::EMMEANSCustomData& emmeansData = custom;
    MIX_ASSERT(emmeansData.fvWarningList[warningIndex].fWarningParameters.size() == 1,
               "emmeansData.fvWarningList[warningIndex].fWarningParameters.size() == 1");
    ShowBlockWarning(custom, Stats::csKey_C19);
    return false;
  }

  BpPivotTable table = pHeading->PivotTable(BpString(kTitles[kind], true), BpString("Contrasts", false), true);
  AddAdjustmentCaption(table, custom);
  const Stats::EMMEANSData& request = fpBuildSettings->fvEMMEANS[static_cast<std::size_t>(custom.fEMMEANSIndex)];
  const int compare = FieldIndex(request.fCompareFactor);
  const std::size_t nFactor = contrasts.fvGroup.size();
  const std::size_t nEffect = request.fFactors.fvFieldIndices.size();
  if (nFactor > 1) MIX_ASSERT(nFactor >= 2 && nEffect + 1 == nFactor, "nFactor >= 2 && nEffect + 1 == nFactor");

  std::vector<FactorDimension> factors;
  int place = static_cast<int>(nEffect);
  for (std::size_t k = 0; k < nFactor; ++k) {
    const Stats::CoordinatesData& element = contrasts.fvGroup[k];
    const int index = FieldIndex(element.fField);
    if (index == compare) continue;
    factors.push_back(FactorRows(table, fDataSource, index, element.fField, place--, k));
  }
  const ZORV_Variable* pCompared = GNLMTableText::Variable(fDataSource, compare);
  BpComposite name(kDimensions[kind], true);
  name.Add(*GNLMTableText::VariableText(fDataSource, compare, request.fCompareFactor, BpVariable::LABEL));
  name.Finish();
  BpDimension comparisons = GNLMTableText::Dimension(table, name, 0, 1, false, false);
  BpDimension statistics = GNLMTableText::Dimension(table, BpString("Statistics", true), 1, 1, true, false);

  // The compared levels stand last among the coordinates: the level, then
  // the one it is compared with.
  const std::size_t level = nEffect >= 1 && nEffect - 1 < nFactor ? nEffect - 1 : nFactor - 1;
  const std::size_t reference = nFactor - 1;
  for (std::size_t r = 0; r < contrasts.fvGroup.front().fValues.size(); ++r) {
    for (FactorDimension& factor : factors) {
      factor.fDimension.Category(*FactorValue(factor.fpVariable, ValueAt(contrasts.fvGroup[factor.fElement], r)));
    }
    BpComposite pair("^1 - ^2", true);
    pair.Add(*FactorValue(pCompared, ValueAt(contrasts.fvGroup[level], r)));
    if (kind == 1) {
      pair.Add(BpString("Mean", true));
    } else {
      pair.Add(*FactorValue(pCompared, ValueAt(contrasts.fvGroup[reference], r)));
    }
    pair.Finish();
    comparisons.Category(pair);
    const auto cell = [&](const Stats::CoordinatesData& column, const BpFormatSpec& format) {
      return BpNumber(String2Numeric(ValueAt(column, r)), format);
    };
    statistics.Category(BpString("Contrast Estimate", true))
        .Cell(cell(contrasts.fContrastEstimate, BpProcedure::Coefficient()));
    statistics.Category(BpString("Std. Error", true)).Cell(cell(contrasts.fStdErr, BpProcedure::Coefficient()));
    statistics.Category(BpString("t", true)).Cell(cell(contrasts.fTTest, BpProcedure::Coefficient()));
    statistics.Category(BpString("df", true)).Cell(cell(contrasts.fDf, BpProcedure::Count()));
    statistics.Category(BpString("Adj. Sig.", true)).Cell(cell(contrasts.fAdjustedSig, BpProcedure::Coefficient()));
    GNLMTableText::AddInterval(statistics, fpBuildSettings->fCIn,
                               String2Numeric(ValueAt(contrasts.fConfIntervalLower, r)),
                               String2Numeric(ValueAt(contrasts.fConfIntervalUpper, r)));
  }

  GNLMChartOutput charts(fProcedure, fDataSource, *fStats);
  charts.createContrastsChart(custom);
  return true;
}

// The request's own adjustment when the document gives one, else the
// build settings'.
void GNLMEmmeansOutput::AddAdjustmentCaption(BpPivotTable& table, const Stats::EMMEANSCustomData& custom) const {
  const int own = fpBuildSettings->fvEMMEANS[static_cast<std::size_t>(custom.fEMMEANSIndex)].fPAdjustment;
  const int adjustment = own >= 0 ? own : fpBuildSettings->fPAdjustment;
  switch (adjustment) {
    case 0:
      table.Caption(BpString("Least Significant significance adjust", true));
      return;
    case 1:
    case 2: {
      BpComposite caption("[%1:\n^1:]1", true);
      caption.Sublist();
      caption.Add(BpString(
          adjustment == 1 ? "Sequential Bonferroni significance adjust" : "Sequential Sidak significance adjust",
          true));
      caption.Add(BpString("Confidence interval bounds are approximate.", true));
      caption.EndSublist();
      caption.Finish();
      table.Caption(caption);
      return;
    }
    default:
      return;
  }
}

void GNLMEmmeansOutput::computeSuffix() {
  MIX_ASSERT(fpBuildSettings, "fpBuildSettings");
  const std::vector<Stats::EMMEANSData>& requests = fpBuildSettings->fvEMMEANS;
  fvSuffix.assign(requests.size(), 0);
  std::vector<std::string> earlier;
  for (std::size_t i = 0; i < requests.size(); ++i) {
    std::string text;
    for (const std::string& name : requests[i].fFactors.fvFieldNames) text += (text.empty() ? "" : "*") + name;
    for (std::size_t j = 0; j < earlier.size(); ++j) {
      if (earlier[j] != text) continue;
      if (fvSuffix[j] == 0) fvSuffix[j] = 1;
      fvSuffix[i] = fvSuffix[j] + 1;
    }
    earlier.push_back(text);
  }
}

BpComposite GNLMEmmeansOutput::EMMEANSTitle(int index) {
  MIX_ASSERT(fpBuildSettings, "fpBuildSettings");
  if (index < 0) {
    BpComposite title("EMMEANS Grand Mean ...", true);
    title.Finish();
    return title;
  }
  const int nEMMEANS = static_cast<int>(fpBuildSettings->fvEMMEANS.size());
  MIX_ASSERT(index < nEMMEANS, "index < nEMMEANS");
  BpComposite title(nEMMEANS == 1 ? "EMMEANS Effect ^1 ..." : "EMMEANS Effect ^1 block ^2 ...", true);
  std::string effect;
  CreateEffectMap(fpBuildSettings->fvEMMEANS[static_cast<std::size_t>(index)].fFactors, effect);
  title.Add(BpString(effect, false));
  if (nEMMEANS > 1) title.Add(BpNumber(index + 1, BpProcedure::Count()));
  title.Finish();
  return title;
}

bool GNLMEmmeansOutput::CreateEffectMap(const Stats::ModelEffectData& effect, std::string& out) {
  out.clear();
  if (effect.fvFieldIndices.empty()) return false;
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < effect.fvFieldIndices.size(); ++i) {
    const ZORV_Variable* pVariable = GNLMTableText::Variable(fDataSource, effect.fvFieldIndices[i]);
    if (pVariable != nullptr) {
      texts.push_back(pVariable->GetPreferredLabel());
    } else {
      texts.push_back(i < effect.fvFieldNames.size() ? effect.fvFieldNames[i] : std::string());
    }
  }
  out = Stats::JoinEffectFields(effect, texts);
  return true;
}

const OBS* GNLMEmmeansOutput::String2ObsValue(const std::string& text, const ZORV_Variable& variable) {
  fObsValue.SetCompleteValue(text, variable);
  return fObsValue.GetObsValue();
}

double GNLMEmmeansOutput::String2Numeric(const std::string& text) {
  if (text == "__MISSING__") return fSysmis;
  return String2Double(text);
}

bool GNLMEmmeansOutput::HasWarning(const std::vector<Stats::WarningMsgData>& warnings, const std::string& key,
                                   unsigned long& index) const {
  for (std::size_t i = 0; i < warnings.size(); ++i) {
    if (warnings[i].fPattern == key) {
      index = static_cast<unsigned long>(i);
      return true;
    }
  }
  return false;
}

// A factor value as a data value of its variable; the document's text as
// it stands when it does not code for the variable.
std::unique_ptr<BpCellText> GNLMEmmeansOutput::FactorValue(const ZORV_Variable* pVariable, const std::string& text) {
  const OBS* pValue = pVariable != nullptr ? String2ObsValue(text, *pVariable) : nullptr;
  if (pValue == nullptr) return std::unique_ptr<BpCellText>(new BpString(text, false));
  return std::unique_ptr<BpCellText>(new BpDataValue(*pVariable, pValue, BpDataValue::AS_SET));
}

int GNLMEmmeansOutput::FieldIndex(const std::string& name) const {
  return fDataSource != nullptr ? fDataSource->FindVarIndex(name.c_str(), 0) : -1;
}
