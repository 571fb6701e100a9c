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

// What a node shows: its name, its kind, and its tooltip if it has one.
struct Node {
  std::string fName;
  std::string fType = "unknown";
  bool fbTooltip = false;
  std::string fTooltip;
};

void WriteNode(VarDataProcessor& proc, const GNLMChartOutput::Data& data, long row, const Node& node) {
  SetText(proc, data.fPointSourceName, "Type", row, node.fType);
  SetText(proc, data.fPointSourceName, "Nodes", row, node.fName);
  if (node.fbTooltip) SetText(proc, data.fPointSourceName, "PointTooltip", row, node.fTooltip);
}

// An edge's weight, and the diagrams' range of weights that takes it in.
void WriteWeight(VarDataProcessor& proc, GNLMChartOutput::Data& data, long row, double sig) {
  const double weight = data.getWeight(sig);
  SetNumber(proc, data.fEdgeSourceName, "Weight", row, weight);
  data.fMinWeight = std::min(data.fMinWeight, weight);
  data.fMaxWeight = std::max(data.fMaxWeight, weight);
}

// An effect's node names its variables, A*B; the tooltip gives each with
// its label, the further ones in parentheses.
Node EffectNode(const GNLMChartOutput::Data& data, const Stats::ModelEffectData& effect) {
  Node node;
  node.fbTooltip = true;
  const ZORV_Variable* variable = nullptr;
  for (std::size_t j = 0; j < effect.fvFieldIndices.size(); ++j) {
    const int index = effect.fvFieldIndices[j];
    variable = data.fDataSource != nullptr && index >= 0 && index < data.fDataSource->ColumnCount()
                   ? data.fDataSource->GetVariable(index)
                   : nullptr;
    if (variable == nullptr) continue;
    if (j > 0) {
      node.fName += "*";
      node.fTooltip += "(";
    }
    node.fName += Local(variable->GetName());
    node.fTooltip += Local(variable->GetName());
    if (variable->GetLabel() != nullptr) node.fTooltip += "\n" + Local(variable->GetLabel());
    if (j > 0) node.fTooltip += ")";
  }
  node.fType = TypeOfTerm(effect.fvFieldIndices.size(), variable);
  return node;
}

// A coefficient's node is named by its label. The tooltip of a covariate
// names it with its label; that of a factor's category gives the factor's
// value and their labels.
Node CoefficientNode(const GNLMChartOutput::Data& data, const Stats::ParamStatsData& param) {
  Node node;
  if (param.fRegrParam.fIsIntercept) {
    node.fName = data.translate("Intercept");
    node.fType = "intercept";
    node.fbTooltip = true;
    return node;
  }
  node.fName = param.fParamLabel;
  const Stats::RegrParamData& term = param.fRegrParam;
  const unsigned long terms = term.fvCovariates.size() + term.fvFactors.size();
  if (terms >= 2) node.fType = "interaction";
  if (term.fvFactors.empty()) {
    if (const ZORV_Variable* variable = data.getVariable(param.fParamLabel)) {
      node.fbTooltip = true;
      node.fTooltip = param.fParamLabel;
      if (variable->GetLabel() != nullptr) node.fTooltip += "\n" + Local(variable->GetLabel());
      node.fType = TypeOfTerm(terms, variable);
    }
  } else if (const ZORV_Variable* variable = data.getVariable(term.fvFactors.front().fField)) {
    const Stats::FactorData& factor = term.fvFactors.front();
    if (const OBS* value = factor.fValue.GetObsValue()) {
      node.fbTooltip = true;
      node.fTooltip = factor.fField + " = " + ToString(value, variable->GetFormat());
      const bool hasLabel = variable->GetLabel() != nullptr;
      if (hasLabel) node.fTooltip += "\n" + Local(variable->GetLabel()) + " = ";
      const char* valueLabel = variable->GetValueLabels().GetLabel(value, variable->GetType());
      if (valueLabel != nullptr) node.fTooltip += hasLabel ? Local(valueLabel) : " (" + Local(valueLabel) + ")";
    }
    node.fType = TypeOfTerm(terms, variable);
  }
  return node;
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
    const long row = static_cast<long>(i);
    WritePlace(proc, data, row, points[i], outCount);
    WriteNode(proc, data, row, EffectNode(data, effect));
    WriteEdgeEnd(proc, data, row, points[i]);
    WriteWeight(proc, data, row, test.fSig);
    data.fWeightRangeSet = true;
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
    WriteWeight(proc, data, row, param.fSig);
    const bool isPositive = param.fEstimate == data.fSysmis || param.fEstimate >= 0.0;
    SetText(proc, data.fEdgeSourceName, "Weight2", row, isPositive ? positive : negative);
    SetText(proc, data.fEdgeSourceName, "LineTooltip", row,
            coefficientText + GNLMChartText::formatValue(param.fEstimate, kTooltipFormat) + "\n" + sigText +
                GNLMChartText::formatValue(param.fSig, kTooltipFormat));
    WriteEdgeEnd(proc, data, row, points[i]);
    WriteNode(proc, data, row, CoefficientNode(data, param));
  }
  data.SendChart(count, "Fixed Coefficients", proc, false);
}
