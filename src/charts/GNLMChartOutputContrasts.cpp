// The deviation and simple contrasts of a block of marginal means: a bar
// from the panel's reference line to each level's mean, coloured by whether
// the difference is significant. In the contrasts' group the last two
// arrays are the compared level and the reference level of one factor; the
// arrays before them are facets, at most two.
#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/data/ZORV_Variable.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"
#include "host/viz/XViZTemplate.h"

using Stats = GNLMOutputStats;
using GNLMChartDocument::SetNumber;
using GNLMChartDocument::SetText;
using GNLMChartText::parseNumber;
using GNLMChartText::replaceAll;
using GNLMChartText::replaceFirst;
using GNLMChartText::variableCaption;

namespace {

const char* const kSource = "source";

// The adjustment's significance level in captions.
const ZORV_Format kLevelFormat(ZORV_Format::F, 40, 2);

double NumberOf(const std::string& text) {
  bool ok = false;
  return parseNumber(text, ok);
}

double NumberAt(const Stats::CoordinatesData& array, std::size_t r) {
  return r < array.fValues.size() ? NumberOf(array.fValues[r]) : 0.0;
}

// A facet's or a category's value: its text for a string variable, else
// its number (the text when it reads as none).
void SetLevel(VarDataProcessor& proc, const char* name, long row, const std::string& value,
              const ZORV_Variable* variable) {
  if (variable != nullptr && variable->IsString()) {
    SetText(proc, kSource, name, row, value);
  } else {
    GNLMChartDocument::SetNumberOrText(proc, kSource, name, row, value);
  }
}

// Labels a facet of the chart with its variable, whose values head the
// panels as "Caption = value".
void DescribeFacet(XGraph& graph, const char16_t* name, const ZORV_Variable& variable, int instance) {
  XVariable* facet = graph.getVariable(ChartString(name), instance);
  if (facet == nullptr) return;
  facet->setLabel(variableCaption(variable));
  facet->setZORVVariable(variable);
  facet->addRelabels();
  facet->setFormatBasedOnZORVVariable(variable);
  facet->SetFormatPrefix(variableCaption(variable) + ChartString(u" = "));
}

// The host variables of a contrast chart's arrays.
struct ContrastVariables {
  const ZORV_Variable* fFactor = nullptr;     // the compared levels'
  const ZORV_Variable* fReference = nullptr;  // the reference levels'
  const ZORV_Variable* fFacets[2] = {nullptr, nullptr};
};

ContrastVariables VariablesOf(const GNLMChartOutput::Data& data, const std::vector<Stats::CoordinatesData>& group) {
  const std::size_t gc = group.size();
  ContrastVariables variables;
  variables.fFactor = data.getVariable(group[gc - 2].fField);
  variables.fReference = data.getVariable(group[gc - 1].fField);
  if (gc >= 3) variables.fFacets[0] = data.getVariable(group[0].fField);
  if (gc >= 4) variables.fFacets[1] = data.getVariable(group[1].fField);
  return variables;
}

// The panel of row `r`: its facets' levels, empty where there is no facet.
GNLMChartOutput::Data::DeviationData PanelOf(const std::vector<Stats::CoordinatesData>& group, std::size_t r) {
  GNLMChartOutput::Data::DeviationData panel;
  for (std::size_t k = 0; k < 2 && k + 2 < group.size(); ++k) {
    if (r < group[k].fValues.size()) panel.fFacetLevels[k] = group[k].fValues[r];
  }
  return panel;
}

const char* TooltipKey(bool simple, bool significant, bool lower) {
  if (simple) return !significant ? "Simple Same" : lower ? "Simple Lower" : "Simple Higher";
  return !significant ? "Deviation Same" : lower ? "Deviation Lower" : "Deviation Higher";
}

// Rows 2r and 2r + 1: from the panel's reference line to the level's
// mean, and the contrast's interval moved onto the line.
void WriteLevelRows(VarDataProcessor& proc, std::size_t r, const std::string& level,
                    const GNLMChartOutput::Data::DeviationData& panel,
                    const GNLMChartOutput::Data::CategoryDeviationValue& value, const std::string& tooltip,
                    const ContrastVariables& variables, std::size_t gc) {
  const long rows[2] = {static_cast<long>(2 * r), static_cast<long>(2 * r + 1)};
  SetNumber(proc, kSource, "value", rows[0], panel.fLineValue);
  SetNumber(proc, kSource, "value", rows[1], value.fMean);
  SetNumber(proc, kSource, "confMargin", rows[0], value.fLower);
  SetNumber(proc, kSource, "confMargin", rows[1], value.fUpper);
  for (long row : rows) {
    SetLevel(proc, "category", row, level, variables.fFactor);
    SetNumber(proc, kSource, "type", row, value.fSignificant ? 1.0 : 0.0);
    if (gc >= 3) SetLevel(proc, "facet1", row, panel.fFacetLevels[0], variables.fFacets[0]);
    // A second facet of strings lands in the first facet's column; the
    // chart has always drawn it so.
    if (gc >= 4 && variables.fFacets[1] != nullptr && variables.fFacets[1]->IsString()) {
      SetText(proc, kSource, "facet1", row, panel.fFacetLevels[1]);
    } else if (gc >= 4) {
      SetNumber(proc, kSource, "facet2", row, NumberOf(panel.fFacetLevels[1]));
    }
    SetText(proc, kSource, "tooltip", row, tooltip);
  }
}

// The facets the first panel does not have go from the markup.
void CutFacets(const GNLMChartOutput::Data& data, std::string& text,
               const std::map<std::string, GNLMChartOutput::Data::DeviationData>& panels) {
  if (panels.empty()) return;
  const GNLMChartOutput::Data::DeviationData& first = panels.begin()->second;
  if (first.fFacetLevels[0].empty()) {
    data.removeFaceting(text);
  } else if (first.fFacetLevels[1].empty()) {
    data.removeFacet2(text);
  }
}

void DescribeContrastVariables(XGraph& graph, const GNLMChartOutput::Data& data, const ContrastVariables& variables) {
  if (variables.fFactor != nullptr) {
    if (XVariable* category = graph.getVariable(ChartString(u"category"), 0)) {
      category->setLabel(variableCaption(*variables.fFactor));
      category->setZORVVariable(*variables.fFactor);
      category->addRelabels();
    }
  }
  if (variables.fFacets[0] != nullptr) DescribeFacet(graph, u"facet1", *variables.fFacets[0], 0);
  if (variables.fFacets[1] != nullptr) DescribeFacet(graph, u"facet2", *variables.fFacets[1], 0);
  if (XVariable* type = graph.getVariable(ChartString(u"type"), 0)) {
    type->addRelabel(0, XUtility::ChartStringFromOLANG(data.translate("Not Significant")));
    type->addRelabel(1, XUtility::ChartStringFromOLANG(data.translate("Significant")));
    type->setLabel(XUtility::ChartStringFromOLANG(data.translate("E62317")));
  }
}

}  // namespace

ChartString GNLMChartOutput::Data::createContrastsCaption(const Stats::EMMEANSCustomData& custom) const {
  const Stats::BuildSettingsData* settings = fStats->GetBuildSettings();
  std::string text;
  switch (settings != nullptr ? settings->fPAdjustment : 3) {
    case 0:
      text = fDictionary->LookUp("Least Significant significance adjust ^1");
      break;
    case 1:
      text = fDictionary->LookUp("Sequential Bonferroni significance adjust ^1") + "\n" +
             fDictionary->LookUp("Confidence interval bounds are approximate.");
      break;
    case 2:
      text = fDictionary->LookUp("Sequential Sidak significance adjust ^1") + "\n" +
             fDictionary->LookUp("Confidence interval bounds are approximate.");
      break;
    default:
      break;
  }
  replaceFirst(text, "^1", GNLMChartText::formatValue(custom.fContrasts.fAdjustedSigLevel, kLevelFormat));
  return XUtility::ChartStringFromOLANG(text);
}

void GNLMChartOutput::createContrastsChart(const Stats::EMMEANSCustomData& custom) {
  Data& data = *fpData;
  const Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  if (contrasts.fvGroup.empty() || data.fStats->GetBuildSettings() == nullptr || custom.fvOverallTests.empty()) {
    return;
  }
  if (contrasts.fContrastKind == 0) {
    data.createPairwiseChart(custom);
    return;
  }
  const bool simple = contrasts.fContrastKind == 2;
  const std::vector<Stats::CoordinatesData>& group = contrasts.fvGroup;
  const std::size_t gc = group.size();
  if ((contrasts.fContrastKind != 1 && !simple) || gc < 2) return;
  const ChartString title =
      XUtility::ChartStringFromOLANG(data.fDictionary->LookUp(simple ? "Simple Contrasts" : "Deviation Contrasts"));
  const ContrastVariables variables = VariablesOf(data, group);
  // A simple contrast compares with a reference level; a deviation
  // contrast with the mean of all levels.
  std::string referenceLabel;
  if (simple && !group[gc - 1].fValues.empty()) {
    referenceLabel = data.levelLabel(variables.fReference, group[gc - 1].fValues[0]);
  }
  std::string line = data.translate(simple ? "Horizontal Line Simple" : "Horizontal Line Deviation");
  replaceAll(line, "^1", data.fTargetLabel);
  replaceAll(line, "^2", variables.fFactor != nullptr ? variableCaption(*variables.fFactor).toUTF8() : std::string());
  replaceAll(line, "^3", referenceLabel);

  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, kSource, {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"});
  const Stats::CoordinatesData& levels = group[gc - 2];
  const std::map<std::string, std::string> means = data.buildMeanValue(custom);
  std::map<std::string, Data::DeviationData> panels;
  for (std::size_t r = 0; r < levels.fValues.size(); ++r) {
    Data::DeviationData panel = PanelOf(group, r);
    std::map<std::string, std::string> cell;
    for (std::size_t k = 0; k < 2 && k + 2 < gc; ++k) cell[group[k].fField] = panel.fFacetLevels[k];
    cell[levels.fField] = levels.fValues[r];
    const auto found = means.find(Data::cellKey(cell));
    const double mean = found != means.end() ? NumberOf(found->second) : 0.0;
    // A contrast is the level's mean less the reference, so the first row
    // of a panel gives the reference line.
    const std::string panelKey = panel.fFacetLevels[0] + panel.fFacetLevels[1];
    if (panels.find(panelKey) == panels.end()) {
      panel.fLineValue = mean - NumberAt(contrasts.fContrastEstimate, r);
      panels.emplace(panelKey, panel);
    }
    Data::DeviationData& deviation = panels[panelKey];
    Data::CategoryDeviationValue value;
    value.fMean = mean;
    value.fLower = NumberAt(contrasts.fConfIntervalLower, r) + deviation.fLineValue;
    value.fUpper = NumberAt(contrasts.fConfIntervalUpper, r) + deviation.fLineValue;
    value.fSignificant = NumberAt(contrasts.fAdjustedSig, r) < contrasts.fAdjustedSigLevel;
    deviation.fCategories.emplace(levels.fValues[r], value);

    std::string tooltip = data.translate(TooltipKey(simple, value.fSignificant, mean - deviation.fLineValue <= 0.0));
    replaceFirst(tooltip, "^1", data.fTargetLabel);
    replaceFirst(tooltip, "^2", data.levelLabel(variables.fReference, levels.fValues[r]));
    replaceFirst(tooltip, "^3", referenceLabel);
    WriteLevelRows(proc, r, levels.fValues[r], deviation, value, tooltip, variables, gc);
  }

  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMSimpleContrasts");
  for (const char* name : {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"}) {
    const std::string column = name;
    chart.addVariable(column, column, column != "value" && column != "confMargin", "", kSource, nullptr, "");
  }
  std::string text;
  std::string unused;
  chart.convert(text, unused);
  replaceFirst(text, "TitleText", title.toUTF8());
  replaceFirst(text, "CaptionText", line);
  replaceFirst(text, "FootnoteText", data.createContrastsCaption(custom).toUTF8());
  data.updateLineGuides(text, panels);
  CutFacets(data, text, panels);

  XDocument document(text);
  GNLMChartDocument::Open(document);
  DescribeContrastVariables(*document.getExternalGraph(), data, variables);
  GNLMChartDocument::Send(document, title, proc);
}
