// The fixed effects and fixed coefficients diagrams: the model's terms as
// nodes on an arc, each joined to the target by an edge as wide as its
// significance is strong.
#include <algorithm>
#include <vector>

#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/data/ZORV_DataSource.h"
#include "host/output/ToString.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XUtility.h"

using Stats = GNLMOutputStats;
using GNLMChartDocument::SetNumber;
using GNLMChartDocument::SetText;

namespace {

// Only the first ten effects of the model have a node.
const int kLastEffect = 9;

// Significances and coefficients in tooltips.
const ZORV_Format kTooltipFormat(ZORV_Format::F, 40, 3);

std::string Local(const char* text) { return XUtility::ChartStringFromLocalCodePage(text).toUTF8(); }

// The kind of node of a term of one variable, by its measurement level.
const char* TypeOfLevel(int level) {
  switch (level) {
    case 1:
      return "categorical";
    case 2:
      return "ordinal";
    case 3:
      return "continuous";
    default:
      return "unknown";
  }
}

const char* TypeOfTerm(unsigned long fields, const ZORV_Variable* variable) {
  if (fields > 1) return "interaction";
  return variable != nullptr ? TypeOfLevel(variable->GetMeasurementLevel()) : "unknown";
}

// A node's place, its label's place beside it, and its edge to the target,
// on row `row` of the node and edge sources.
void WritePlace(VarDataProcessor& proc, const GNLMChartOutput::Data& data, long row,
                const GNLMChartOutput::Data::PointCalc& point, unsigned long outCount) {
  const double offset = outCount == 1 ? -0.4 : static_cast<double>(outCount) * -0.2;
  SetNumber(proc, data.fPointSourceName, "X", row, point.x);
  SetNumber(proc, data.fEdgeSourceName, "FromX", row, point.x);
  SetNumber(proc, data.fPointSourceName, "Y", row, point.y);
  SetNumber(proc, data.fEdgeSourceName, "FromY", row, point.y);
  SetNumber(proc, data.fPointSourceName, "Label_X", row, point.x + offset);
  SetNumber(proc, data.fPointSourceName, "Label_Y", row, point.y);
}

void WriteEdgeEnd(VarDataProcessor& proc, const GNLMChartOutput::Data& data, long row,
                  const GNLMChartOutput::Data::PointCalc& point) {
  SetNumber(proc, data.fEdgeSourceName, "ToX", row, point.toX);
  SetNumber(proc, data.fEdgeSourceName, "ToY", row, point.toY);
}

// The tested effects the diagram shows: among the first ten of the model,
// those with a significance.
std::vector<bool> MarkTestedEffects(const std::vector<Stats::EffectStatData>& tests, unsigned long& count) {
  std::vector<bool> marks(tests.size(), false);
  count = 0;
  for (std::size_t i = 0; i < tests.size(); ++i) {
    const Stats::EffectStatData& test = tests[i];
    marks[i] = test.fTestID <= kLastEffect && test.fSig > -0.0001 && test.fSig < 1.0;
    if (marks[i]) ++count;
  }
  return marks;
}

// The parameters the coefficients diagram shows: the intercept, and the
// parameters of the first ten effects that are not redundant.
std::vector<const Stats::ParamStatsData*> CollectCoefficients(const Stats::ParamCollectData& params) {
  std::vector<const Stats::ParamStatsData*> collected;
  for (const Stats::ParamEstimData& set : params.fvFixedParamEstim) {
    for (const Stats::ParamStatsData& param : set.fvParamStats) {
      if (param.fRegrParam.fIsIntercept && !(param.fSig >= 1.0)) {
        collected.push_back(&param);
      } else if (!param.fIsRedundant && param.fStatistic.fName == "fixedEffectIndex" &&
                 param.fStatisticValue <= kLastEffect) {
        collected.push_back(&param);
      }
    }
  }
  return collected;
}

}  // namespace

void GNLMChartOutput::createFixedEffectsChart() {
  Data& data = *fpData;
  const Stats::ModelDiagnosticsData* diagnostics = data.fStats->GetModelDiagnostics();
  if (diagnostics == nullptr) return;
  // The fitted distribution of the target, which both diagrams lay over
  // the target's histogram.
  data.fDistMean = diagnostics->fTargetDist.fMean;
  data.fDistShape = diagnostics->fTargetDist.fShape;
  data.fDistRate = diagnostics->fTargetDist.fRate;
  data.fDistR = diagnostics->fTargetDist.fR;
  data.fDistP = diagnostics->fTargetDist.fP;
  const Stats::BuildSettingsData* settings = data.fStats->GetBuildSettings();
  if (settings == nullptr) return;
  VarDataProcessor proc;
  const Stats::EffectTestData* tests = data.fStats->GetEffectTest();
  if (tests == nullptr) {
    // A model without tests still shows the diagram's frame.
    data.SendChart(0, "Fixed Effects", proc, true);
    return;
  }
  unsigned long count = 0;
  const std::vector<bool> marks = MarkTestedEffects(tests->fvFixedEffects, count);
  if (count == 0) return;

  data.setTargetPointSource(proc, count);
  data.setPointEdgeSource(proc);
  unsigned long outCount = 0;
  const std::vector<Data::PointCalc> points = data.getPoints(count, outCount);
  const std::string sigText = data.translate("E62317") + " = ";
  // The marked effects among the first `count` records have nodes; the
  // record's index is also the row and the place of its node.
  for (std::size_t i = 0; i < count; ++i) {
    if (!marks[i]) continue;
    const Stats::EffectStatData& test = tests->fvFixedEffects[i];
    if (test.fTestID < 0 || static_cast<std::size_t>(test.fTestID) >= settings->fvFixedEffectList.size()) continue;
    const Stats::ModelEffectData& effect = settings->fvFixedEffectList[static_cast<std::size_t>(test.fTestID)];
    if (effect.fvFieldIndices.empty()) continue;

    // The node names the effect's variables, A*B; the tooltip gives each
    // with its label, the further ones in parentheses.
    std::string node;
    std::string tooltip;
    const ZORV_Variable* variable = nullptr;
    for (std::size_t j = 0; j < effect.fvFieldIndices.size(); ++j) {
      const int index = effect.fvFieldIndices[j];
      variable = data.fDataSource != nullptr && index >= 0 && index < data.fDataSource->ColumnCount()
                     ? data.fDataSource->GetVariable(index)
                     : nullptr;
      if (variable == nullptr) continue;
      if (j > 0) {
        node += "*";
        tooltip += "(";
      }
      node += Local(variable->GetName());
      tooltip += Local(variable->GetName());
      if (variable->GetLabel() != nullptr) tooltip += "\n" + Local(variable->GetLabel());
      if (j > 0) tooltip += ")";
    }
    const long row = static_cast<long>(i);
    const double weight = data.getWeight(test.fSig);
    WritePlace(proc, data, row, points[i], outCount);
    SetText(proc, data.fPointSourceName, "Type", row, TypeOfTerm(effect.fvFieldIndices.size(), variable));
    SetText(proc, data.fPointSourceName, "Nodes", row, node);
    SetText(proc, data.fPointSourceName, "PointTooltip", row, tooltip);
    WriteEdgeEnd(proc, data, row, points[i]);
    SetNumber(proc, data.fEdgeSourceName, "Weight", row, weight);
    data.fWeightRangeSet = true;
    data.fMinWeight = std::min(data.fMinWeight, weight);
    data.fMaxWeight = std::max(data.fMaxWeight, weight);
    SetText(proc, data.fEdgeSourceName, "LineTooltip", row,
            sigText + GNLMChartText::formatValue(test.fSig, kTooltipFormat));
  }
  data.SendChart(count, "Fixed Effects", proc, true);
}

void GNLMChartOutput::createFixedCoefficientsChart() {
  Data& data = *fpData;
  VarDataProcessor proc;
  const Stats::ParamCollectData* params = data.fStats->GetParamCollect();
  if (params == nullptr) return;
  const std::vector<const Stats::ParamStatsData*> collected = CollectCoefficients(*params);
  const std::string positive = data.translate("Positive");
  const std::string negative = data.translate("Negative");
  if (collected.empty()) return;

  const unsigned long count = collected.size();
  data.setTargetPointSource(proc, count);
  data.setPointEdgeSource(proc);
  data.fWeightRangeSet = true;
  unsigned long outCount = 0;
  const std::vector<Data::PointCalc> points = data.getPoints(count, outCount);
  const std::string coefficientText = data.translate("Coefficient") + " = ";
  const std::string sigText = data.translate("E62317") + " = ";
  for (std::size_t i = 0; i < collected.size(); ++i) {
    const Stats::ParamStatsData& param = *collected[i];
    const long row = static_cast<long>(i);
    WritePlace(proc, data, row, points[i], outCount);
    const double weight = data.getWeight(param.fSig);
    SetNumber(proc, data.fEdgeSourceName, "Weight", row, weight);
    data.fMinWeight = std::min(data.fMinWeight, weight);
    data.fMaxWeight = std::max(data.fMaxWeight, weight);
    const bool isPositive = param.fEstimate == data.fSysmis || param.fEstimate >= 0.0;
    SetText(proc, data.fEdgeSourceName, "Weight2", row, isPositive ? positive : negative);
    SetText(proc, data.fEdgeSourceName, "LineTooltip", row,
            coefficientText + GNLMChartText::formatValue(param.fEstimate, kTooltipFormat) + "\n" + sigText +
                GNLMChartText::formatValue(param.fSig, kTooltipFormat));
    WriteEdgeEnd(proc, data, row, points[i]);

    if (param.fRegrParam.fIsIntercept) {
      SetText(proc, data.fPointSourceName, "Type", row, "intercept");
      SetText(proc, data.fPointSourceName, "Nodes", row, data.translate("Intercept"));
      SetText(proc, data.fPointSourceName, "PointTooltip", row, "");
      continue;
    }
    SetText(proc, data.fPointSourceName, "Nodes", row, param.fParamLabel);
    const Stats::RegrParamData& term = param.fRegrParam;
    const unsigned long terms = term.fvCovariates.size() + term.fvFactors.size();
    std::string type = terms >= 2 ? "interaction" : "unknown";
    if (term.fvFactors.empty()) {
      // A covariate: the label names the variable.
      if (const ZORV_Variable* variable = data.getVariable(param.fParamLabel)) {
        std::string tooltip = param.fParamLabel;
        if (variable->GetLabel() != nullptr) tooltip += "\n" + Local(variable->GetLabel());
        SetText(proc, data.fPointSourceName, "PointTooltip", row, tooltip);
        type = TypeOfTerm(terms, variable);
      }
    } else if (const ZORV_Variable* variable = data.getVariable(term.fvFactors.front().fField)) {
      // A factor's category: the variable with its value, and their labels.
      const Stats::FactorData& factor = term.fvFactors.front();
      if (const OBS* value = factor.fValue.GetObsValue()) {
        std::string tooltip = factor.fField + " = " + ToString(value, variable->GetFormat());
        const bool hasLabel = variable->GetLabel() != nullptr;
        if (hasLabel) tooltip += "\n" + Local(variable->GetLabel()) + " = ";
        const char* valueLabel = variable->GetValueLabels().GetLabel(value, variable->GetType());
        if (valueLabel != nullptr) tooltip += hasLabel ? Local(valueLabel) : " (" + Local(valueLabel) + ")";
        SetText(proc, data.fPointSourceName, "PointTooltip", row, tooltip);
      }
      type = TypeOfTerm(terms, variable);
    }
    SetText(proc, data.fPointSourceName, "Type", row, type);
  }
  data.SendChart(count, "Fixed Coefficients", proc, false);
}
