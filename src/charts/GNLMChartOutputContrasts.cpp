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
  const bool simple = contrasts.fContrastKind == 2;
  if (contrasts.fContrastKind == 0) {
    data.createPairwiseChart(custom);
    return;
  }
  if (contrasts.fContrastKind != 1 && !simple) return;
  const std::vector<Stats::CoordinatesData>& group = contrasts.fvGroup;
  const std::size_t gc = group.size();
  if (gc < 2) return;
  const ChartString title =
      XUtility::ChartStringFromOLANG(data.fDictionary->LookUp(simple ? "Simple Contrasts" : "Deviation Contrasts"));
  std::string line = data.translate(simple ? "Horizontal Line Simple" : "Horizontal Line Deviation");
  const std::string caption = data.createContrastsCaption(custom).toUTF8();
  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, kSource, {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"});

  const Stats::CoordinatesData& levels = group[gc - 2];
  const ZORV_Variable* factor = data.getVariable(levels.fField);
  const ZORV_Variable* reference = data.getVariable(group[gc - 1].fField);
  const ZORV_Variable* facets[2] = {gc >= 3 ? data.getVariable(group[0].fField) : nullptr,
                                    gc >= 4 ? data.getVariable(group[1].fField) : nullptr};
  // A simple contrast compares with a reference level; a deviation
  // contrast with the mean of all levels.
  std::string referenceLabel;
  if (simple && !group[gc - 1].fValues.empty()) referenceLabel = data.levelLabel(reference, group[gc - 1].fValues[0]);
  replaceAll(line, "^1", data.fTargetLabel);
  replaceAll(line, "^2", factor != nullptr ? variableCaption(*factor).toUTF8() : std::string());
  replaceAll(line, "^3", referenceLabel);

  const std::map<std::string, std::string> means = data.buildMeanValue(custom);
  std::map<std::string, Data::DeviationData> deviations;
  for (std::size_t r = 0; r < levels.fValues.size(); ++r) {
    Data::DeviationData panel;
    if (gc >= 3 && r < group[0].fValues.size()) panel.fFacetLevels[0] = group[0].fValues[r];
    if (gc >= 4 && r < group[1].fValues.size()) panel.fFacetLevels[1] = group[1].fValues[r];
    // The cell of the means: the facets' levels and the compared level, by
    // their fields' names.
    std::map<std::string, std::string> cell;
    for (std::size_t k = 0; k + 2 < gc && k < 2; ++k) cell[group[k].fField] = panel.fFacetLevels[k];
    cell[levels.fField] = levels.fValues[r];
    std::string cellKey;
    for (const auto& value : cell) cellKey += value.second;
    const auto found = means.find(cellKey);
    const double mean = found != means.end() ? NumberOf(found->second) : 0.0;
    // A contrast is the level's mean less the reference, so the first row
    // of a panel gives the reference line.
    const std::string panelKey = panel.fFacetLevels[0] + panel.fFacetLevels[1];
    if (deviations.find(panelKey) == deviations.end()) {
      panel.fLineValue = mean - NumberAt(contrasts.fContrastEstimate, r);
      deviations.emplace(panelKey, panel);
    }
    Data::DeviationData& deviation = deviations[panelKey];
    Data::CategoryDeviationValue value;
    value.fMean = mean;
    value.fLower = NumberAt(contrasts.fConfIntervalLower, r) + deviation.fLineValue;
    value.fUpper = NumberAt(contrasts.fConfIntervalUpper, r) + deviation.fLineValue;
    value.fSignificant = NumberAt(contrasts.fAdjustedSig, r) < contrasts.fAdjustedSigLevel;
    deviation.fCategories.emplace(levels.fValues[r], value);

    const bool isLower = mean - deviation.fLineValue <= 0.0;
    const char* key = nullptr;
    if (simple) {
      key = !value.fSignificant ? "Simple Same" : isLower ? "Simple Lower" : "Simple Higher";
    } else {
      key = !value.fSignificant ? "Deviation Same" : isLower ? "Deviation Lower" : "Deviation Higher";
    }
    std::string tooltip = data.translate(key);
    replaceFirst(tooltip, "^1", data.fTargetLabel);
    replaceFirst(tooltip, "^2", data.levelLabel(reference, levels.fValues[r]));
    replaceFirst(tooltip, "^3", referenceLabel);

    const long rows[2] = {static_cast<long>(2 * r), static_cast<long>(2 * r + 1)};
    SetNumber(proc, kSource, "value", rows[0], deviation.fLineValue);
    SetNumber(proc, kSource, "value", rows[1], mean);
    SetNumber(proc, kSource, "confMargin", rows[0], value.fLower);
    SetNumber(proc, kSource, "confMargin", rows[1], value.fUpper);
    for (long row : rows) {
      SetLevel(proc, "category", row, levels.fValues[r], factor);
      SetNumber(proc, kSource, "type", row, value.fSignificant ? 1.0 : 0.0);
      if (gc >= 3) SetLevel(proc, "facet1", row, panel.fFacetLevels[0], facets[0]);
      // A second facet of strings lands in the first facet's column; the
      // chart has always drawn it so.
      if (gc >= 4 && facets[1] != nullptr && facets[1]->IsString()) {
        SetText(proc, kSource, "facet1", row, panel.fFacetLevels[1]);
      } else if (gc >= 4) {
        SetNumber(proc, kSource, "facet2", row, NumberOf(panel.fFacetLevels[1]));
      }
      SetText(proc, kSource, "tooltip", row, tooltip);
    }
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
  replaceFirst(text, "FootnoteText", caption);
  data.updateLineGuides(text, deviations);
  if (!deviations.empty()) {
    const Data::DeviationData& first = deviations.begin()->second;
    if (first.fFacetLevels[0].empty()) {
      data.removeFaceting(text);
    } else if (first.fFacetLevels[1].empty()) {
      data.removeFacet2(text);
    }
  }

  XDocument document(text);
  GNLMChartDocument::Open(document);
  XGraph& graph = *document.getExternalGraph();
  if (factor != nullptr) {
    if (XVariable* category = graph.getVariable(ChartString(u"category"), 0)) {
      category->setLabel(variableCaption(*factor));
      category->setZORVVariable(*factor);
      category->addRelabels();
    }
  }
  if (facets[0] != nullptr) DescribeFacet(graph, u"facet1", *facets[0], 0);
  if (facets[1] != nullptr) DescribeFacet(graph, u"facet2", *facets[1], 0);
  if (XVariable* type = graph.getVariable(ChartString(u"type"), 0)) {
    type->addRelabel(0, XUtility::ChartStringFromOLANG(data.translate("Not Significant")));
    type->addRelabel(1, XUtility::ChartStringFromOLANG(data.translate("Significant")));
    type->setLabel(XUtility::ChartStringFromOLANG(data.translate("E62317")));
  }
  GNLMChartDocument::Send(document, title, proc);
}
