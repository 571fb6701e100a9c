// Charts of estimated marginal means: those of the most significant fixed
// effects, which the engine chose, and those of each block asked for. Each
// cell of means is two rows of data: the mean on both, the lower limit of
// its interval on the first and the upper on the second.
#include <algorithm>

#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/BpHeading.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/ToString.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"
#include "host/viz/XViZTemplate.h"

using Stats = GNLMOutputStats;
using GNLMChartDocument::SetNumber;
using GNLMChartDocument::SetNumberOrText;
using GNLMChartDocument::SetText;
using GNLMChartText::eraseThrough;
using GNLMChartText::parseNumber;
using GNLMChartText::replaceFirst;
using GNLMChartText::variableCaption;

namespace {

// At most this many charts of the most significant effects.
const std::size_t kMostSignificantCharts = 11;

const char* const kCustomSource = "source_0";

// The value of row `r` of an array; empty when it has none.
const std::string& ValueAt(const Stats::CoordinatesData& array, std::size_t r) {
  static const std::string kNone;
  return r < array.fValues.size() ? array.fValues[r] : kNone;
}

double NumberAt(const Stats::CoordinatesData& array, std::size_t r, bool& ok) {
  ok = r < array.fValues.size();
  if (!ok) return 0.0;
  return parseNumber(array.fValues[r], ok);
}

// Labels a chart's variable with the host variable's caption and its
// value labels.
void Describe(XGraph& graph, const char16_t* name, const ZORV_Variable& variable) {
  if (XVariable* chartVariable = graph.getVariable(ChartString(name), 0)) {
    chartVariable->setLabel(variableCaption(variable));
    chartVariable->setZORVVariable(variable);
    chartVariable->addRelabels();
  }
}

// The first two factors of a table of means, by label where they have
// one, and their variables where the data hold them.
struct Factors {
  std::string fNames[2];
  const ZORV_Variable* fVariables[2] = {nullptr, nullptr};
};

Factors FactorsOf(const GNLMChartOutput::Data& data, const Stats::EMMEANSEstimatesData& estimates) {
  Factors factors;
  for (std::size_t k = 0; k < 2 && k < estimates.fvGroup.size(); ++k) {
    factors.fNames[k] = estimates.fvGroup[k].fField;
    factors.fVariables[k] = data.getVariable(factors.fNames[k]);
    if (factors.fVariables[k] != nullptr && factors.fVariables[k]->GetLabel() != nullptr) {
      factors.fNames[k] = factors.fVariables[k]->GetLabel();
    }
  }
  return factors;
}

// "Target by A * B".
ChartString MostSignificantTitle(const GNLMChartOutput::Data& data, const Factors& factors) {
  std::string title = data.fDictionary->LookUp("^1 by ^2");
  const ZORV_Variable* target = data.targetVariable();
  replaceFirst(title, "^1", target != nullptr ? target->GetPreferredLabel() : data.fTargetName);
  replaceFirst(title, "^2",
               factors.fVariables[1] != nullptr ? factors.fNames[0] + " * " + factors.fNames[1] : factors.fNames[0]);
  return XUtility::ChartStringFromOLANG(title);
}

void WriteMostSignificantRows(VarDataProcessor& proc, const std::string& source,
                              const Stats::EMMEANSEstimatesData& estimates, const ZORV_Variable* first) {
  // A string factor's values stay text even where they look like numbers.
  int type = 0, width = 0, decimals = 0;
  if (first != nullptr) first->GetFormatEx(type, width, decimals);
  const bool isText = first != nullptr && type == ZORV_Format::A;
  const Stats::CoordinatesData& levels = estimates.fvGroup[0];
  for (std::size_t r = 0; r < levels.fValues.size(); ++r) {
    const long rows[2] = {static_cast<long>(2 * r), static_cast<long>(2 * r + 1)};
    for (long row : rows) {
      if (isText) {
        SetText(proc, source, "effect1", row, levels.fValues[r]);
      } else {
        SetNumberOrText(proc, source, "effect1", row, levels.fValues[r]);
      }
      if (estimates.fvGroup.size() > 1 && r < estimates.fvGroup[1].fValues.size()) {
        SetNumberOrText(proc, source, "effect2", row, estimates.fvGroup[1].fValues[r]);
      }
    }
    if (r >= estimates.fMean.fValues.size()) continue;
    // This chart writes what the reading gave, number or not.
    bool ok = false;
    for (long row : rows) SetNumber(proc, source, "target", row, parseNumber(estimates.fMean.fValues[r], ok));
    SetNumber(proc, source, "confMargin", rows[0], parseNumber(ValueAt(estimates.fConfIntervalLower, r), ok));
    SetNumber(proc, source, "confMargin", rows[1], parseNumber(ValueAt(estimates.fConfIntervalUpper, r), ok));
  }
}

// One chart of the means of a significant effect, by its first factor and
// coloured by its second.
void DrawMostSignificant(const GNLMChartOutput::Data& data, const Stats::EMMEANSEstimatesData& estimates) {
  const Factors factors = FactorsOf(data, estimates);
  const ChartString title = MostSignificantTitle(data, factors);
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMEmMeans");
  chart.addLabel(0, title.toUTF8());
  const std::string& source = data.fSourceName;
  const ZORV_Variable* const* variables = factors.fVariables;
  chart.addVariable("effect1", "effect1", true, "effect1Label", source,
                    variables[0] != nullptr ? &variables[0]->GetFormat() : nullptr, factors.fNames[0].c_str());
  chart.addVariable("effect2", "effect2", true, "", source,
                    variables[1] != nullptr ? &variables[1]->GetFormat() : nullptr,
                    estimates.fvGroup.size() > 1 ? factors.fNames[1].c_str() : nullptr);
  chart.addVariable("target", "target", false, "", source, &data.fTargetFormat, data.fTargetLabel.c_str());
  chart.addVariable("confMargin", "confMargin", false, "", source, &data.fTargetFormat, data.fTargetLabel.c_str());
  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, source, {"effect1", "effect2", "target", "confMargin"});
  WriteMostSignificantRows(proc, source, estimates, variables[0]);

  std::string text;
  std::string unused;
  chart.convert(text, unused);
  replaceFirst(text, "YAxisLabel", data.fTargetLabel);
  // One factor: nothing to tell apart by colour.
  if (variables[1] == nullptr) eraseThrough(text, "<legend", "</legend>");
  XDocument document(text);
  GNLMChartDocument::Open(document);
  XGraph& graph = *document.getExternalGraph();
  if (variables[0] != nullptr) Describe(graph, u"effect1", *variables[0]);
  if (variables[1] != nullptr) Describe(graph, u"effect2", *variables[1]);
  GNLMChartDocument::Send(document, title, proc);
}

// Two rows a cell that has a mean: the mean on both, the lower limit on the
// first and the upper on the second (on both when only it reads).
void WriteCustomRows(VarDataProcessor& proc, const Stats::EMMEANSCustomData& custom) {
  const std::vector<Stats::CoordinatesData>& group = custom.fEstimates.fvGroup;
  const std::size_t cells = group.empty() ? 0 : group[0].fValues.size();
  for (std::size_t r = 0; r < cells; ++r) {
    bool ok = false;
    const double mean = NumberAt(custom.fEstimates.fMean, r, ok);
    if (!ok) continue;
    bool lowerOk = false;
    bool upperOk = false;
    const double lower = NumberAt(custom.fEstimates.fConfIntervalLower, r, lowerOk);
    const double upper = NumberAt(custom.fEstimates.fConfIntervalUpper, r, upperOk);
    const long rows[2] = {static_cast<long>(2 * r), static_cast<long>(2 * r + 1)};
    for (long row : rows) {
      SetNumber(proc, kCustomSource, "targetValue", row, mean);
      SetNumberOrText(proc, kCustomSource, "effect1", row, group[0].fValues[r]);
      const char* const effects[2] = {"effect2", "effect3"};
      for (std::size_t k = 1; k <= 2; ++k) {
        if (k < group.size()) {
          SetNumberOrText(proc, kCustomSource, effects[k - 1], row, ValueAt(group[k], r));
        } else {
          SetText(proc, kCustomSource, effects[k - 1], row, "");
        }
      }
    }
    if (lowerOk) SetNumber(proc, kCustomSource, "confMargin", rows[0], lower);
    if (upperOk) SetNumber(proc, kCustomSource, "confMargin", rows[1], upper);
    if (upperOk && !lowerOk) SetNumber(proc, kCustomSource, "confMargin", rows[0], upper);
  }
}

// The title, the footnote and the tooltip's names; the facets, and the
// colours and legend, go when there is no factor for them.
void PatchCustomTemplate(const GNLMChartOutput::Data& data, std::string& text,
                         const Stats::EMMEANSCustomData& custom, const std::vector<const ZORV_Variable*>& variables,
                         bool removeFaceting, bool removeColor) {
  const std::size_t title = text.find(">TitleText");
  if (title != std::string::npos) text.replace(title + 1, 9, "Estimates");
  replaceFirst(text, "FootnoteText", data.GetFixedPredFootnote(custom).toUTF8());
  const std::size_t popup =
      replaceFirst(text, "popup1", variables.empty() ? std::string() : variableCaption(*variables[0]).toUTF8());
  if (popup != std::string::npos) replaceFirst(text, "popup2", data.translate("Estimated Mean"), popup);
  if (removeFaceting) data.removeFaceting(text);
  if (removeColor) {
    eraseThrough(text, "<color", "/>");
    eraseThrough(text, "<legend id=\"legend\">", "</legend>");
    // The graph takes the legend's room.
    const std::size_t share = text.find("75%");
    if (share != std::string::npos) text.replace(share, 2, "99");
  }
}

void DescribeCustomVariables(XGraph& graph, const std::vector<const ZORV_Variable*>& variables) {
  if (variables.empty()) return;
  const ZORV_Variable& first = *variables[0];
  if (XVariable* effect = graph.getVariable(ChartString(u"effect1"), 0)) {
    effect->setLabel(variableCaption(first));
    // A nominal or ordinal factor has categories; a scale one a range.
    const int level = first.GetMeasurementLevel();
    effect->setCategorical(level == 1 || level == 2);
    if (level == 1 || level == 2) {
      effect->setZORVVariable(first);
      effect->addRelabels();
    }
  }
  if (variables.size() > 1) Describe(graph, u"effect2", *variables[1]);
  if (variables.size() > 2) {
    Describe(graph, u"effect3", *variables[2]);
    if (XVariable* effect = graph.getVariable(ChartString(u"effect3"), 0)) {
      // The panels' headings take the format of the second factor.
      effect->setFormatBasedOnZORVVariable(*variables[1]);
      effect->SetFormatPrefix(variableCaption(*variables[2]) + ChartString(u" = "));
    }
  }
}

}  // namespace

void GNLMChartOutput::createEMMeansChart() {
  const Data& data = *fpData;
  const Stats::BuildSettingsData* settings = data.fStats->GetBuildSettings();
  if (settings == nullptr) return;
  const std::vector<Stats::EMMEANSEstimatesData>* collection = data.fStats->GetEMMEANSSignifCollect();
  if (settings->fvFixedEffectList.empty() || collection == nullptr || data.fProcedure == nullptr) return;
  // Every chart goes under this heading, open until the last is sent.
  const BpHeading heading =
      data.fProcedure->Heading(BpString("Estimated Marginal Means for Top Significant Fixed Effects", true));
  const std::size_t charts = std::min(collection->size(), kMostSignificantCharts);
  for (std::size_t c = 0; c < charts; ++c) {
    if (!(*collection)[c].fvGroup.empty()) DrawMostSignificant(data, (*collection)[c]);
  }
}

void GNLMChartOutput::createCustomEffectsChart(const Stats::EMMEANSCustomData& custom) {
  const Data& data = *fpData;
  if (data.fStats->GetBuildSettings() == nullptr) return;
  if (data.HasWarning(custom.fvWarningList, Stats::csKey_C20) ||
      data.HasWarning(custom.fvWarningList, Stats::csKey_C25)) {
    return;
  }
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMCustomEffects");
  chart.addVariable("targetValue", "targetValue", false, "", kCustomSource, &data.fTargetFormat,
                    data.fTargetLabel.c_str());
  for (const char* effect : {"effect1", "effect2", "effect3"}) {
    chart.addVariable(effect, effect, true, "", kCustomSource, nullptr, nullptr);
  }
  chart.addVariable("confMargin", "confMargin", false, "", kCustomSource, &data.fTargetFormat,
                    data.fTargetLabel.c_str());
  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, kCustomSource, {"targetValue", "effect1", "effect2", "effect3", "confMargin"});

  // The first factor runs along the axis, the second tells lines apart by
  // colour, the third makes panels. Without its request the table is empty.
  std::vector<const ZORV_Variable*> variables;
  bool removeFaceting = false;
  bool removeColor = false;
  const std::vector<Stats::CoordinatesData>& group = custom.fEstimates.fvGroup;
  if (custom.fEMMEANSIndex >= 0) {
    for (const Stats::CoordinatesData& element : group) {
      if (const ZORV_Variable* variable = data.getVariable(element.fField)) variables.push_back(variable);
    }
    removeFaceting = group.size() <= 2;
    removeColor = group.size() <= 1;
    WriteCustomRows(proc, custom);
  }
  std::string text;
  std::string unused;
  chart.convert(text, unused);
  if (text.empty()) return;
  PatchCustomTemplate(data, text, custom, variables, removeFaceting, removeColor);

  const ChartString description =
      XUtility::ChartStringFromOLANG(data.fDictionary->LookUp("Estimated Means: Custom Effects"));
  XDocument document(text);
  GNLMChartDocument::Open(document);
  document.applyCTemplate(false);
  document.SetChartData(&proc);
  document.SetDescription(description.xc_str());
  DescribeCustomVariables(*document.getExternalGraph(), variables);
  GNLMChartDocument::Send(document, description, proc);
}

std::map<std::string, std::string> GNLMChartOutput::Data::buildMeanValue(const Stats::EMMEANSCustomData& custom) const {
  std::map<std::string, std::string> means;
  const std::vector<Stats::CoordinatesData>& group = custom.fEstimates.fvGroup;
  if (group.empty()) return means;
  const std::size_t factors = std::min<std::size_t>(group.size(), 3);
  for (std::size_t r = 0; r < group[0].fValues.size(); ++r) {
    std::map<std::string, std::string> cell;
    for (std::size_t k = 0; k < factors; ++k) {
      if (r < group[k].fValues.size()) cell[group[k].fField] = group[k].fValues[r];
    }
    means.emplace(cellKey(cell), ValueAt(custom.fEstimates.fMean, r));
  }
  return means;
}

std::string GNLMChartOutput::Data::cellKey(const std::map<std::string, std::string>& valuesByField) {
  std::string key;
  for (const auto& value : valuesByField) key += value.second;
  return key;
}

ChartString GNLMChartOutput::Data::GetFixedPredFootnote(const Stats::EMMEANSCustomData& custom) const {
  if (custom.fvFieldValues.empty()) return ChartString();
  std::string pattern = fDictionary->LookUp("Continuous predictors fixed at [%1=%2:,^1=^2:]1");
  // The list is written here, not by the pattern language.
  replaceFirst(pattern, "[%1=%2:,^1=^2:]1", "999");
  std::string list;
  for (const Stats::SimpleFiledValueData& pair : custom.fvFieldValues) {
    // A mean's value: two more decimals than the variable shows.
    ZORV_Format format(ZORV_Format::F, 40, 2);
    if (const ZORV_Variable* variable = getVariable(pair.fFieldName)) {
      format = variable->GetFormat();
      if (format.fType != ZORV_Format::A && format.fType != ZORV_Format::AHEX) {
        const int decimals = std::min(format.fDecimals + 2, 16);
        const int width = std::min(format.fWidth + (format.fDecimals == 0 ? 3 : 2), 40);
        format.fDecimals = static_cast<std::uint8_t>(decimals);
        format.fWidth = static_cast<std::uint16_t>(width);
      }
    }
    if (!list.empty()) list += ", ";
    const OBS* value = pair.fValue.GetObsValue();
    list += pair.fFieldName + " = " + (value != nullptr ? ToString(value, format) : pair.fValue.GetStringValue());
  }
  ChartString footnote = XUtility::ChartStringFromOLANG(pattern);
  footnote.replaceSubstring(ChartString(u"999"), XUtility::ChartStringFromLocalCodePage(list));
  return footnote;
}
