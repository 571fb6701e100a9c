#include "charts/GNLMChartOutputData.h"

#include <cfloat>

#include "charts/GNLMChartText.h"
#include "host/data/ZORV_DataSource.h"
#include "host/files/PathFactory.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/XUtility.h"

using GNLMChartText::eraseThrough;
using GNLMChartText::escapeChartText;
using GNLMChartText::formatNumber;

GNLMChartOutput::Data::Data(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats& stats)
    : fProcedure(pProcedure), fStats(&stats), fDataSource(pDataSource), fDictionary(nullptr), fSysmis(-DBL_MAX) {
  fDistMean = fDistShape = fDistRate = fDistR = fDistP = fSysmis;
  const std::string strings = PathFactory::getPathInstance(PathFactory::PRESENTATION)->GetStringTablePath();
  fDictionary = new FacSTDictionary(strings);
  fDictionary->SetProcedure("Generalized Linear Mixed Models");
  fDictionary->SetGlobalStringTable(strings);

  const GNLMOutputStats::BuildSettingsData* settings = stats.GetBuildSettings();
  if (settings == nullptr) return;
  fTargetIndex = settings->fTargetIndex;
  const ZORV_Variable* target = targetVariable();
  if (target == nullptr) return;
  fTargetFormat = target->GetFormat();
  fTargetName = XUtility::ChartStringFromLocalCodePage(target->GetName()).toUTF8();
  if (target->GetLabel() != nullptr) {
    fTargetLabel = XUtility::ChartStringFromLocalCodePage(target->GetLabel()).toUTF8();
  } else {
    fTargetHasLabel = false;
    fTargetLabel = fTargetName;
  }
  escapeChartText(fTargetLabel);
}

GNLMChartOutput::Data::~Data() { delete fDictionary; }

bool GNLMChartOutput::Data::HasWarning(const std::vector<GNLMOutputStats::WarningMsgData>& warnings,
                                       const std::string& key) const {
  for (const GNLMOutputStats::WarningMsgData& warning : warnings) {
    if (warning.fPattern == key) return true;
  }
  return false;
}

const char* GNLMChartOutput::Data::getValueLabel(const ZORV_Variable& variable, const std::string& value) const {
  return variable.GetValueLabels().GetLabel(value);
}

const char* GNLMChartOutput::Data::getValueLabel(const ZORV_Variable& variable, double value) const {
  return variable.GetValueLabels().GetLabel(value);
}

const ZORV_Variable* GNLMChartOutput::Data::getVariable(const std::string& name) const {
  if (fDataSource == nullptr) return nullptr;
  const int index = fDataSource->FindVarIndex(name.c_str(), 0);
  return index < 0 ? nullptr : fDataSource->GetVariable(index);
}

const ZORV_Variable* GNLMChartOutput::Data::targetVariable() const {
  if (fDataSource == nullptr || fTargetIndex < 0 || fTargetIndex >= fDataSource->ColumnCount()) return nullptr;
  return fDataSource->GetVariable(fTargetIndex);
}

std::string GNLMChartOutput::Data::translate(const std::string& key) const {
  return XUtility::ChartStringFromOLANG(fDictionary->LookUp(key)).toUTF8();
}

std::string GNLMChartOutput::Data::levelLabel(const ZORV_Variable* variable, const std::string& value) const {
  const char* label = nullptr;
  if (variable != nullptr && variable->IsString()) {
    label = getValueLabel(*variable, value);
  } else if (variable != nullptr) {
    bool ok = false;
    const double number = GNLMChartText::parseNumber(value, ok);
    if (ok) label = getValueLabel(*variable, number);
  }
  std::string text = label != nullptr ? XUtility::ChartStringFromLocalCodePage(label).toUTF8() : value;
  escapeChartText(text);
  return text;
}

void GNLMChartOutput::Data::removeFaceting(std::string& text) const {
  const std::size_t start = text.find("<faceting");
  if (start != std::string::npos && text.find("</facetLayout>") != std::string::npos) {
    eraseThrough(text, "<faceting", "</facetLayout>", start);
  }
}

void GNLMChartOutput::Data::removeFacet2(std::string& text) const {
  const std::size_t first = text.find("<variableReference");
  if (first == std::string::npos) return;
  const std::size_t second = text.find("<variableReference", first + 2);
  if (second == std::string::npos || !eraseThrough(text, "<variableReference", "</variableReference>", second)) {
    return;
  }
  const std::size_t level = text.find("<facetLevel ", second);
  if (level == std::string::npos) return;
  const std::size_t next = text.find("<facetLevel ", level + 2);
  if (next != std::string::npos) eraseThrough(text, "<facetLevel ", "</facetLevel>", next);
}

void GNLMChartOutput::Data::updateLineGuides(std::string& text, std::map<std::string, DeviationData>& deviations) const {
  std::size_t position = text.find("<lineGuide");
  if (position == std::string::npos) return;
  for (const auto& entry : deviations) {
    const std::size_t height = text.find("y=", position);
    if (height == std::string::npos) break;
    text.replace(height + 3, 2, formatNumber(entry.second.fLineValue));
    position = text.find("whenText", height);
    if (position == std::string::npos) break;
    // The guide shows in its own panel only: it hides where a facet's
    // level differs from the panel's.
    std::string levels[2] = {entry.second.fFacetLevels[0], entry.second.fFacetLevels[1]};
    for (std::string& level : levels) escapeChartText(level);
    std::string condition = "false";
    if (!levels[0].empty()) {
      condition = "facet1!=&quot;" + levels[0] + "&quot;";
      if (!levels[1].empty()) condition += "||facet2!=&quot;" + levels[1] + "&quot;";
    }
    text.replace(position, 8, condition);
  }
  // The slots left over go, all at once.
  const std::size_t spare = text.find("whenText");
  if (spare == std::string::npos) return;
  const std::size_t first = text.rfind("<lineGuide", spare);
  const std::size_t last = text.rfind("</lineGuide>");
  if (first != std::string::npos && last != std::string::npos && last > first) {
    text.erase(first, last + 12 - first);
  }
}
