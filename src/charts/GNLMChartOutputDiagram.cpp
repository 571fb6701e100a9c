// The diagram of model terms around the target node, which the fixed
// effects and fixed coefficients charts share: its data sources, the
// places of its nodes, the widths of its edges, and its finishing.
#include <algorithm>
#include <cmath>

#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XUtility.h"

using GNLMChartText::formatNumber;
using GNLMChartText::replaceFirst;

namespace {

const char* const kTargetSource = "targetPointSource";

}  // namespace

std::string GNLMChartOutput::Data::getTooltip() const {
  std::string text = fTargetName + "\n";
  if (fTargetHasLabel) text += fTargetLabel + "\n";
  if (const GNLMOutputStats::BuildSettingsData* settings = fStats->GetBuildSettings()) {
    std::string model = fDictionary->LookUp("Probability Distribution ^1, Link Function ^2 ...");
    replaceFirst(model, "^1", fStats->DistToDisplayString(settings->fDistribution, true));
    std::string link = fStats->LinkToDisplayString(settings->fLinkFunction, settings->fDistribution, true);
    if (settings->fLinkFunction == GNLMOutputStats::POWER) link += " (" + settings->fLinkParamText + ")";
    replaceFirst(model, "^2", link);
    replaceFirst(model, "\\n", "\n");
    text += model;
  }
  GNLMChartText::removeEscapes(text);
  return XUtility::ChartStringFromOLANG(text).toUTF8();
}

void GNLMChartOutput::Data::setTargetPointSource(VarDataProcessor& proc, unsigned long count) {
  using namespace GNLMChartDocument;
  Declare(proc, kTargetSource, {"X", "Y", "Type", "Nodes", "PointTooltip"});
  SetText(proc, kTargetSource, "Type", 0, "target");
  SetText(proc, kTargetSource, "Nodes", 0, fTargetName);
  SetText(proc, kTargetSource, "PointTooltip", 0, getTooltip());
  if (count == 0) return;
  SetNumber(proc, kTargetSource, "X", 0, static_cast<double>(count));
  SetNumber(proc, kTargetSource, "Y", 0, (static_cast<double>(count) + 1.0) * 0.5);
}

void GNLMChartOutput::Data::setPointEdgeSource(VarDataProcessor& proc) {
  GNLMChartDocument::Declare(proc, fPointSourceName, {"X", "Y", "Label_X", "Label_Y", "Type", "Nodes", "PointTooltip"});
  GNLMChartDocument::Declare(proc, fEdgeSourceName, {"FromX", "FromY", "ToX", "ToY", "Weight", "Weight2", "LineTooltip"});
}

std::vector<GNLMChartOutput::Data::PointCalc> GNLMChartOutput::Data::getPoints(unsigned long count,
                                                                                unsigned long& outCount) const {
  outCount = count == 0 ? 1 : count;
  std::vector<PointCalc> points;
  if (count == 0) return points;
  const double radius = static_cast<double>(outCount);
  const double mid = (static_cast<double>(count) + 1.0) * 0.5;
  for (unsigned long i = count; i >= 1; --i) {
    const double fromMid = 2.0 * std::fabs(static_cast<double>(i) - mid);
    PointCalc point;
    point.y = static_cast<double>(i);
    point.x = radius - std::sqrt(radius * radius - fromMid * fromMid);
    point.toX = radius;
    point.toY = mid;
    points.push_back(point);
  }
  return points;
}

double GNLMChartOutput::Data::getWeight(double sig) const {
  static const double kBounds[] = {0.0001, 0.0005, 0.001, 0.005, 0.01, 0.05, 0.1, 0.2};
  if (std::isnan(sig)) return 1.0;
  double weight = 9.0;
  for (double bound : kBounds) {
    if (sig < bound) return weight;
    weight -= 1.0;
  }
  return weight;
}

void GNLMChartOutput::Data::SendChart(unsigned long count, const std::string& titleKey, VarDataProcessor& proc,
                                      bool hideLegend) {
  std::string text;
  if (!GNLMChartDocument::FetchTemplate("GLMMFixedCoefficients.viztemplate", text)) return;
  // The ranges of the axes: room for the nodes' labels at the left, one
  // unit per node upwards.
  const std::size_t range = replaceFirst(text, "9.3", formatNumber(std::max(2.0, count * 4.0 / 3.0)));
  if (range != std::string::npos && count == 0) {
    const std::size_t end = text.find("/>", range);
    if (end != std::string::npos) text.insert(end, " min=\"0\" ");
  }
  replaceFirst(text, "7.0", formatNumber(std::max(1.0, static_cast<double>(count))));
  if (count >= 2 && count <= 8) {
    const std::size_t style = text.find("id=\"graphStyle");
    if (style != std::string::npos) text.insert(style + 15, " margin-bottom=\"30px\" ");
  }
  const ChartString title = XUtility::ChartStringFromOLANG(fDictionary->LookUp(titleKey));
  replaceFirst(text, "title1", title.toUTF8());
  embedHistogramInChart(text);
  if (fWeightRangeSet) {
    const std::size_t high = text.find("high=");
    if (high != std::string::npos) {
      text.replace(high + 6, 1, formatNumber(fMaxWeight));
      const std::size_t low = text.find("low=", high);
      if (low != std::string::npos) text.replace(low + 5, 1, formatNumber(fMinWeight));
    }
  }
  if (hideLegend) {
    const std::size_t legend = text.find("id=\"legendStyle\"");
    if (legend != std::string::npos) text.insert(legend - 1, " visible=\"false\" ");
  } else {
    replaceFirst(text, "Coefficient Estimate", translate("Coefficient Estimate"));
  }
  XDocument document(text);
  GNLMChartDocument::Open(document);
  GNLMChartDocument::Send(document, title, proc);
}
