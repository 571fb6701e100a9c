#include "host/viz/XChartMarks.h"

#include <cmath>
#include <map>

#include "host/viz/XNumber.h"

namespace {

double NumberOf(const XChartColumn* column, long row) {
  double value = XChartMark::kNone;
  if (column != nullptr && column->At(row).AsNumber(value)) return value;
  return XChartMark::kNone;
}

const XChartValue& ValueOf(const XChartColumn* column, long row) {
  static const XChartValue kEmpty;
  return column != nullptr ? column->At(row) : kEmpty;
}

// The rows of a layer by panel (-1: every panel).
std::map<int, std::vector<long>> RowsByPanel(const XChartLayer& layer, const XChartPanels& panels, long rows) {
  std::map<int, std::vector<long>> out;
  for (long row = 0; row < rows; ++row) {
    const int panel = panels.PanelOf(layer, row);
    if (panel == -2) continue;
    out[panel].push_back(row);
  }
  return out;
}

long RowCountOf(const XChartLayer& layer) {
  long rows = 0;
  for (const XChartColumn* column :
       {layer.fpX, layer.fpY, layer.fpX2, layer.fpY2, layer.fpFrom, layer.fpTo, layer.fpKey}) {
    if (column != nullptr) rows = std::max(rows, column->GetRowCount());
  }
  return rows;
}

XChartMark RowMark(const XChartLayer& layer, long row, int panel) {
  XChartMark mark;
  mark.fPanel = panel;
  mark.fRow = row;
  mark.fX = ValueOf(layer.fpX, row);
  mark.fY = ValueOf(layer.fpY, row);
  mark.fX2 = ValueOf(layer.fpX2, row);
  mark.fY2 = ValueOf(layer.fpY2, row);
  mark.fFrom = ValueOf(layer.fpFrom, row);
  mark.fTo = ValueOf(layer.fpTo, row);
  mark.fKey = ValueOf(layer.fpKey, row);
  mark.fColor = ValueOf(layer.fColor.fpColumn, row);
  mark.fShape = ValueOf(layer.fShape.fpColumn, row);
  mark.fSize = NumberOf(layer.fSize.fpColumn, row);
  mark.fAlpha = NumberOf(layer.fTransparency.fpColumn, row);
  mark.fWidth = NumberOf(layer.fWidth.fpColumn, row);
  mark.fLabel = layer.Label(row);
  mark.fLabelX = ValueOf(layer.fpLabelX, row);
  mark.fLabelY = ValueOf(layer.fpLabelY, row);
  mark.fTooltip = layer.Tooltip(row);
  return mark;
}

// Whether a row has what its mark needs to be placed.
bool Placed(const XChartLayer& layer, const XChartMark& mark) {
  switch (layer.fKind) {
    case XChartLayer::EDGE:
      if (layer.fpFrom != nullptr || layer.fpTo != nullptr) return !mark.fFrom.IsEmpty() && !mark.fTo.IsEmpty();
      return !mark.fX.IsEmpty() && !mark.fY.IsEmpty() && !mark.fX2.IsEmpty() && !mark.fY2.IsEmpty();
    case XChartLayer::NODE:
      if (layer.fpNode->Attribute("layout") == "circle") return !mark.fKey.IsEmpty();
      return !mark.fX.IsEmpty() && !mark.fY.IsEmpty();
    default:
      return !mark.fX.IsEmpty() && !mark.fY.IsEmpty();
  }
}

std::vector<XChartMark> Summarized(const XChartLayer& layer, const std::vector<XChartMark>& marks) {
  struct Group {
    XChartMark fMark;
    double fMin = 0.0;
    double fMax = 0.0;
    double fSum = 0.0;
    int fCount = 0;
  };
  std::vector<Group> groups;
  std::map<std::string, std::size_t> index;
  for (const XChartMark& mark : marks) {
    double y = 0.0;
    if (!mark.fY.AsNumber(y)) continue;
    const std::string key =
        std::to_string(mark.fPanel) + "\x1f" + mark.fX.Key() + "\x1f" + mark.fColor.Key() + "\x1f" + mark.fShape.Key();
    auto found = index.find(key);
    if (found == index.end()) {
      index[key] = groups.size();
      groups.push_back({mark, y, y, 0.0, 0});
      found = index.find(key);
    }
    Group& group = groups[found->second];
    group.fMin = std::min(group.fMin, y);
    group.fMax = std::max(group.fMax, y);
    group.fSum += y;
    ++group.fCount;
  }
  std::vector<XChartMark> out;
  for (Group& group : groups) {
    XChartMark mark = group.fMark;
    if (layer.fSummarize == "sum") {
      mark.fY = XChartValue::Number(group.fSum);
    } else {
      mark.fY = XChartValue::Number(group.fSum / group.fCount);
    }
    if (layer.fSummarize == "range" && (layer.fKind == XChartLayer::INTERVAL || layer.fKind == XChartLayer::AREA)) {
      mark.fbYRange = true;
      mark.fYLow = group.fMin;
      mark.fYHigh = group.fMax;
    }
    out.push_back(mark);
  }
  return out;
}

void DataOf(const XChartLayer& layer, const std::vector<long>& rows, std::vector<double>& values,
            std::vector<double>& weights) {
  for (long row : rows) {
    const double x = NumberOf(layer.fpX, row);
    if (!std::isfinite(x)) continue;
    values.push_back(x);
    weights.push_back(layer.fpY != nullptr ? NumberOf(layer.fpY, row) : 1.0);
  }
}

std::vector<XChartMark> BinMarks(const XChartLayer& layer, const std::vector<long>& rows, int panel) {
  std::vector<double> values;
  std::vector<double> weights;
  DataOf(layer, rows, values, weights);
  double count = 0.0;
  XNumber::Parse(layer.fpBin->Attribute("binCount"), count);
  std::vector<XChartMark> out;
  for (const XChartStatistics::Bin& bin : XChartStatistics::Binned(values, weights, static_cast<int>(count))) {
    XChartMark mark;
    mark.fPanel = panel;
    mark.fbXRange = true;
    mark.fXLow = bin.fLow;
    mark.fXHigh = bin.fHigh;
    mark.fX = XChartValue::Number((bin.fLow + bin.fHigh) / 2.0);
    mark.fY = XChartValue::Number(bin.fTotal);
    mark.fbYRange = true;
    mark.fYLow = 0.0;
    mark.fYHigh = bin.fTotal;
    mark.fTooltip = XNumber::General(bin.fLow) + " \xE2\x80\x93 " + XNumber::General(bin.fHigh) + ": " +
                    XNumber::General(bin.fTotal);
    out.push_back(mark);
  }
  return out;
}

std::vector<XChartMark> CurveMarks(const XChartLayer& layer, const std::vector<long>& rows, int panel,
                                   const std::vector<XChartStatistics::Bin>& bins) {
  std::vector<double> values;
  std::vector<double> weights;
  DataOf(layer, rows, values, weights);
  std::vector<XChartMark> out;
  if (values.empty()) return out;
  const XMarkupNode& statistic = *layer.fpDistribution;
  const std::string distribution = statistic.Attribute("distribution", "normal");
  double a = XChartMark::kNone;
  double b = XChartMark::kNone;
  const bool hasA = XNumber::Parse(statistic.Attribute("parameter"), a);
  const bool hasB = XNumber::Parse(statistic.Attribute("secondaryParameter"), b);
  if (distribution == "normal" && !(hasA && hasB)) {
    // Without its parameters the normal curve is fitted to the data.
    XChartStatistics::Moments(values, weights, a, b);
  }
  double total = 0.0;
  double low = values[0];
  double high = values[0];
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (weights[i] > 0.0) total += weights[i];
    low = std::min(low, values[i]);
    high = std::max(high, values[i]);
  }
  double scale = 1.0;
  if (!bins.empty()) {
    scale = total * (bins[0].fHigh - bins[0].fLow);
    low = bins.front().fLow;
    high = bins.back().fHigh;
  }
  auto add = [&](double x) {
    const double density = XChartStatistics::Density(distribution, a, b, x);
    if (!std::isfinite(density)) return;
    XChartMark mark;
    mark.fPanel = panel;
    mark.fX = XChartValue::Number(x);
    mark.fY = XChartValue::Number(density * scale);
    out.push_back(mark);
  };
  if (XChartStatistics::IsDiscrete(distribution)) {
    for (double k = std::max(0.0, std::ceil(low)); k <= high && out.size() < 2000; k += 1.0) add(k);
  } else {
    const int steps = 120;
    for (int i = 0; i <= steps; ++i) add(low + (high - low) * i / steps);
  }
  return out;
}

}  // namespace

std::vector<XChartStatistics::Bin> XChartMarks::BinsOf(const XChartLayer& layer) {
  std::vector<XChartStatistics::Bin> bins;
  if (layer.fpBin == nullptr) return bins;
  std::vector<long> rows;
  for (long row = 0; row < RowCountOf(layer); ++row) rows.push_back(row);
  std::vector<double> values;
  std::vector<double> weights;
  DataOf(layer, rows, values, weights);
  double count = 0.0;
  XNumber::Parse(layer.fpBin->Attribute("binCount"), count);
  return XChartStatistics::Binned(values, weights, static_cast<int>(count));
}

std::vector<XChartMark> XChartMarks::Build(const XChartLayer& layer, const XChartPanels& panels,
                                           const std::vector<XChartStatistics::Bin>& bins) {
  std::vector<XChartMark> out;
  for (const auto& entry : RowsByPanel(layer, panels, RowCountOf(layer))) {
    std::vector<XChartMark> marks;
    if (layer.fpBin != nullptr) {
      marks = BinMarks(layer, entry.second, entry.first);
    } else if (layer.fpDistribution != nullptr) {
      marks = CurveMarks(layer, entry.second, entry.first, bins);
    } else {
      for (long row : entry.second) {
        XChartMark mark = RowMark(layer, row, entry.first);
        if (Placed(layer, mark)) marks.push_back(mark);
      }
      if (!layer.fSummarize.empty()) marks = Summarized(layer, marks);
    }
    out.insert(out.end(), marks.begin(), marks.end());
  }
  return out;
}
