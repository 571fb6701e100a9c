// The pairwise contrasts of a block of marginal means as a network: a node
// per level of the compared factor and an edge per pair whose difference
// was tested, coloured by whether it is significant, in one panel per
// combination of up to two facets. A node is identified by its panel's
// levels and its own, so that each panel has nodes of its own.
#include <algorithm>
#include <numeric>

#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/data/ZORV_Variable.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"

using Stats = GNLMOutputStats;
using GNLMChartDocument::SetNumber;
using GNLMChartDocument::SetNumberOrText;
using GNLMChartDocument::SetText;
using GNLMChartText::parseNumber;
using GNLMChartText::replaceFirst;
using GNLMChartText::variableCaption;

namespace {

const char* const kNodes = "nodeSource_1";
const char* const kEdges = "edgeSource_1";

const std::string& ValueAt(const Stats::CoordinatesData& array, std::size_t r) {
  static const std::string kNone;
  return r < array.fValues.size() ? array.fValues[r] : kNone;
}

// The rows in the order of the reference levels' texts; rows of equal
// texts keep their order.
std::vector<std::size_t> RowsByLevel(const Stats::CoordinatesData& levels) {
  std::vector<std::size_t> rows(levels.fValues.size());
  std::iota(rows.begin(), rows.end(), 0);
  std::stable_sort(rows.begin(), rows.end(),
                   [&levels](std::size_t a, std::size_t b) { return levels.fValues[a] < levels.fValues[b]; });
  return rows;
}

// The key by which a node's label replaces its identifier: the identifier
// as the number it reads as, without leading zeros ("007" is 7).
std::string RelabelKey(const std::string& identifier) {
  const std::size_t digits = identifier.find_first_not_of('0');
  if (digits == std::string::npos) return identifier.empty() ? identifier : "0";
  return identifier.substr(digits);
}

// The value label of a level, by its text for a string variable and by its
// number otherwise; null when it has none.
const char* LevelValueLabel(const GNLMChartOutput::Data& data, const ZORV_Variable& variable,
                            const std::string& value) {
  if (variable.IsString()) return data.getValueLabel(variable, value);
  bool ok = false;
  const double number = parseNumber(value, ok);
  return ok ? data.getValueLabel(variable, number) : nullptr;
}

// A level named in a tooltip: its value label when it is a number that has
// one, else its text.
std::string TooltipLevel(const GNLMChartOutput::Data& data, const ZORV_Variable* variable, const std::string& value) {
  if (variable == nullptr) return value;
  bool ok = false;
  const double number = parseNumber(value, ok);
  const char* label = ok ? data.getValueLabel(*variable, number) : nullptr;
  return label != nullptr ? XUtility::ChartStringFromLocalCodePage(label).toUTF8() : value;
}

void DescribeFacet(XGraph& graph, const char16_t* name, const ZORV_Variable& variable) {
  for (int instance = 0; instance < 2; ++instance) {
    if (XVariable* facet = graph.getVariable(ChartString(name), instance)) {
      facet->setLabel(variableCaption(variable));
      facet->setZORVVariable(variable);
      facet->addRelabels();
    }
  }
}

// The nodes of the network, by identifier, with their panels' levels, and
// the labels that replace identifiers.
struct Network {
  std::map<std::string, std::string> fFacet1Of;
  std::map<std::string, std::string> fFacet2Of;
  std::map<std::string, std::string> fRelabels;

  void AddNode(const std::string& id, const std::string& f1, const std::string& f2) {
    fFacet1Of.emplace(id, f1);
    fFacet2Of.emplace(id, f2);
  }
};

// An edge on row `e`. The weight is written for a node identified by a
// number only; the chart has always drawn it so.
void WriteEdge(VarDataProcessor& proc, long e, const std::string& from, const std::string& to, double sig,
               bool significant, const std::string& f1, const std::string& f2) {
  SetNumberOrText(proc, kEdges, "from", e, from);
  if (SetNumberOrText(proc, kEdges, "to", e, to)) {
    SetNumber(proc, kEdges, "weight", e, 1.0 / ((1.0 - sig) * (1.0 - sig)));
    SetNumber(proc, kEdges, "weightInPopup", e, sig);
  }
  SetNumber(proc, kEdges, "type", e, significant ? 1.0 : 0.0);
  SetNumberOrText(proc, kEdges, "facet1", e, f1);
  SetNumberOrText(proc, kEdges, "facet2", e, f2);
}

void WriteNodes(VarDataProcessor& proc, const Network& network) {
  long n = 0;
  for (const auto& node : network.fFacet1Of) {
    SetNumberOrText(proc, kNodes, "node", n, node.first);
    SetNumberOrText(proc, kNodes, "facet1", n, node.second);
    SetNumberOrText(proc, kNodes, "facet2", n, network.fFacet2Of.at(node.first));
    ++n;
  }
}

// The tooltip of the pair on row `row` of levels `a` and `b`: it names the
// level of the higher mean first.
std::string PairTooltip(const GNLMChartOutput::Data& data, const ZORV_Variable* variable,
                        const Stats::CoordinatesData& estimates, std::size_t row, const std::string& a,
                        const std::string& b, bool significant) {
  std::string first = a;
  std::string second = b;
  bool ok = false;
  const double estimate = parseNumber(ValueAt(estimates, row), ok);
  if (row < estimates.fValues.size() && ok && estimate < 0.0) std::swap(first, second);
  std::string tooltip = data.fDictionary->LookUp(significant ? "Simple Higher" : "Simple Same");
  replaceFirst(tooltip, "^1", data.fTargetLabel);
  replaceFirst(tooltip, "^2", TooltipLevel(data, variable, second));
  replaceFirst(tooltip, "^3", TooltipLevel(data, variable, first));
  return XUtility::ChartStringFromOLANG(tooltip).toUTF8();
}

void PatchTexts(const GNLMChartOutput::Data& data, std::string& text, const ChartString& title,
                const std::string& footnote) {
  replaceFirst(text, "TitleText", title.toUTF8());
  std::string subtitle = data.fDictionary->LookUp("Target\\: ^1");
  replaceFirst(subtitle, "^1", data.fTargetLabel);
  GNLMChartText::removeEscapes(subtitle);
  replaceFirst(text, "subTitleText", subtitle);
  replaceFirst(text, "FootnoteText", footnote);
}

void DescribeNetworkVariables(XGraph& graph, const GNLMChartOutput::Data& data, const ZORV_Variable* variable,
                              const std::vector<Stats::CoordinatesData>& group, const Network& network) {
  if (variable != nullptr) {
    if (XVariable* node = graph.getVariable(ChartString(u"node"), 0)) {
      node->setLabel(variableCaption(*variable));
      node->setZORVVariable(*variable);
    }
  }
  if (XVariable* type = graph.getVariable(ChartString(u"type"), 0)) {
    type->addRelabel(0, XUtility::ChartStringFromOLANG(data.translate("Not Significant")));
    type->addRelabel(1, XUtility::ChartStringFromOLANG(data.translate("Significant")));
  }
  const ZORV_Variable* facet1 = group.size() >= 3 ? data.getVariable(group[0].fField) : nullptr;
  const ZORV_Variable* facet2 = group.size() >= 4 ? data.getVariable(group[1].fField) : nullptr;
  if (facet1 != nullptr) DescribeFacet(graph, u"facet1", *facet1);
  if (facet2 != nullptr) DescribeFacet(graph, u"facet2", *facet2);
  for (const auto& relabel : network.fRelabels) {
    for (const char16_t* name : {u"node", u"from", u"to"}) {
      if (XVariable* chartVariable = graph.getVariable(ChartString(name), 0)) {
        chartVariable->addRelabel(XUtility::ChartStringFromUTF8(relabel.first),
                                  XUtility::ChartStringFromOLANG(relabel.second));
      }
    }
  }
}

}  // namespace

void GNLMChartOutput::Data::createPairwiseChart(const Stats::EMMEANSCustomData& custom) {
  const Stats::EMMEANSContrastsData& contrasts = custom.fContrasts;
  if (contrasts.fvGroup.empty() || fStats->GetBuildSettings() == nullptr || custom.fvOverallTests.empty()) return;
  const std::vector<Stats::CoordinatesData>& group = contrasts.fvGroup;
  const std::size_t gc = group.size();
  if (gc < 2) return;
  const Stats::CoordinatesData& levelsA = group[gc - 1];
  const Stats::CoordinatesData& levelsB = group[gc - 2];
  const ChartString title = XUtility::ChartStringFromOLANG(fDictionary->LookUp("Pairwise Contrasts"));
  const ZORV_Variable* variable = getVariable(levelsA.fField);
  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, kNodes, {"node", "facet1", "facet2"});
  GNLMChartDocument::Declare(proc, kEdges, {"from", "to", "weight", "weightInPopup", "type", "facet1", "facet2", "tooltip"});

  Network network;
  long e = 0;
  for (std::size_t row : RowsByLevel(levelsA)) {
    bool ok = false;
    const double sig = parseNumber(ValueAt(contrasts.fAdjustedSig, row), ok);
    // A pair whose adjusted significance is 1 has no edge.
    if (sig == 1.0) continue;
    const std::string f1 = gc >= 3 ? ValueAt(group[0], row) : std::string();
    const std::string f2 = gc >= 4 ? ValueAt(group[1], row) : std::string();
    const std::string& a = ValueAt(levelsA, row);
    const std::string& b = ValueAt(levelsB, row);
    const std::string idA = f1 + f2 + a;
    const std::string idB = f1 + f2 + b;
    network.AddNode(idA, f1, f2);
    network.AddNode(idB, f1, f2);
    const bool significant = !(contrasts.fAdjustedSigLevel <= sig);
    WriteEdge(proc, e, idA, idB, sig, significant, f1, f2);
    SetText(proc, kEdges, "tooltip", e,
            PairTooltip(*this, variable, contrasts.fContrastEstimate, row, a, b, significant));
    if (variable != nullptr) {
      if (const char* label = LevelValueLabel(*this, *variable, a)) network.fRelabels.emplace(RelabelKey(idA), label);
      if (const char* label = LevelValueLabel(*this, *variable, b)) network.fRelabels.emplace(RelabelKey(idB), label);
    }
    ++e;
  }
  WriteNodes(proc, network);

  std::string text;
  if (!GNLMChartDocument::FetchTemplate("GLMMPairwiseContrasts.viztemplate", text)) return;
  PatchTexts(*this, text, title, createContrastsCaption(custom).toUTF8());
  if (gc < 3) {
    removeFaceting(text);
  } else if (gc < 4) {
    removeFacet2(text);
  }
  XDocument document(text);
  DescribeNetworkVariables(*document.getExternalGraph(), *this, variable, group, network);
  GNLMChartDocument::Open(document);
  GNLMChartDocument::Send(document, title, proc);
}
