#include "host/viz/XChartAesthetics.h"

#include <algorithm>
#include <cmath>

#include "host/viz/XChartLook.h"
#include "host/viz/XNumber.h"

namespace {

const char* const kShapes[] = {"circle", "square", "triangle", "diamond"};

bool Matches(const XChartColumn& column, const XChartValue& value, const std::string& text) {
  double a = 0.0;
  double b = 0.0;
  if (value.AsNumber(a) && XNumber::Parse(text, b)) return a == b;
  return value.fText == text || column.Display(value) == text;
}

}  // namespace

double XChartAesthetics::Numeric::Map(double value) const {
  if (!std::isfinite(value)) return fFrom;
  if (fHigh == fLow) return (fFrom + fTo) / 2.0;
  double t = (value - fLow) / (fHigh - fLow);
  if (fbLog && fLow > 0.0 && value > 0.0) t = std::log(value / fLow) / std::log(fHigh / fLow);
  t = std::clamp(t, 0.0, 1.0);
  return fFrom + t * (fTo - fFrom);
}

void XChartAesthetics::AddLegend(const XChartLayer::Aesthetic& aesthetic, const LegendSection& section) {
  if (!aesthetic.fbLegend || section.fvEntries.empty()) return;
  for (const XChartColumn* column : fvInLegend) {
    if (column == aesthetic.fpColumn) return;
  }
  fvInLegend.push_back(aesthetic.fpColumn);
  fvLegend.push_back(section);
}

void XChartAesthetics::AddCategorical(const XChartLayer::Aesthetic& aesthetic, LegendSection::Kind kind) {
  const XChartColumn* column = aesthetic.fpColumn;
  std::map<const XChartColumn*, Categorical>& scales = kind == LegendSection::COLOR ? fColors : fShapes;
  if (scales.count(column)) return;
  Categorical& scale = scales[column];
  LegendSection section;
  section.fKind = kind;
  section.fTitle = column->GetTitle();
  std::size_t next = 0;
  for (const XChartValue& value : column->Categories()) {
    LegendEntry entry;
    entry.fLabel = column->Display(value);
    if (kind == LegendSection::COLOR) {
      for (const XMarkupNode* map : aesthetic.fpNode->Children("map")) {
        if (Matches(*column, value, map->Attribute("value")))
          entry.fColor = XChartLook::ColorValue(map->Attribute("color"));
      }
      if (entry.fColor.empty()) entry.fColor = fvPalette[next++ % fvPalette.size()];
      entry.fShape = "square";
      scale.fByKey[value.Key()] = entry.fColor;
    } else {
      entry.fColor = XChartLook::kInk;
      entry.fShape = kShapes[next++ % 4];
      entry.fRadius = 4.5;
      scale.fByKey[value.Key()] = entry.fShape;
    }
    section.fvEntries.push_back(entry);
  }
  AddLegend(aesthetic, section);
}

void XChartAesthetics::AddNumeric(const XChartLayer::Aesthetic& aesthetic, LegendSection::Kind kind, double from,
                                  double to, const std::string& color) {
  const XChartColumn* column = aesthetic.fpColumn;
  if (fNumbers.count(column)) return;
  Numeric& scale = fNumbers[column];
  bool any = false;
  for (long row = 0; row < column->GetRowCount(); ++row) {
    double value = 0.0;
    if (!column->At(row).AsNumber(value)) continue;
    scale.fLow = any ? std::min(scale.fLow, value) : value;
    scale.fHigh = any ? std::max(scale.fHigh, value) : value;
    any = true;
  }
  double bound = 0.0;
  if (XNumber::Parse(aesthetic.fpNode->Attribute("low"), bound)) scale.fLow = bound;
  if (XNumber::Parse(aesthetic.fpNode->Attribute("high"), bound)) scale.fHigh = bound;
  scale.fFrom = from;
  scale.fTo = to;
  scale.fbLog = aesthetic.fpNode->Attribute("scale") == "log" && scale.fLow > 0.0;
  if (!any) return;
  LegendSection section;
  section.fKind = kind;
  section.fTitle = column->GetTitle();
  const double middle = scale.fbLog ? std::sqrt(scale.fLow * scale.fHigh) : (scale.fLow + scale.fHigh) / 2.0;
  const double values[] = {scale.fLow, middle, scale.fHigh};
  for (int i = 0; i < (scale.fLow == scale.fHigh ? 1 : 3); ++i) {
    LegendEntry entry;
    entry.fLabel = XNumber::General(values[i]);
    entry.fColor = color;
    entry.fShape = kind == LegendSection::WIDTH ? "line" : kind == LegendSection::SIZE ? "circle" : "square";
    const double mapped = scale.Map(values[i]);
    if (kind == LegendSection::TRANSPARENCY) entry.fAlpha = mapped;
    if (kind == LegendSection::SIZE) entry.fRadius = mapped;
    if (kind == LegendSection::WIDTH) entry.fWidth = mapped;
    section.fvEntries.push_back(entry);
  }
  AddLegend(aesthetic, section);
}

void XChartAesthetics::Build(const std::vector<XChartLayer>& layers, const std::vector<std::string>& palette) {
  fvPalette = palette.empty() ? XChartLook::Palette() : palette;
  for (const XChartLayer& layer : layers) {
    if (layer.fColor.IsSet()) AddCategorical(layer.fColor, LegendSection::COLOR);
    if (layer.fShape.IsSet()) AddCategorical(layer.fShape, LegendSection::SHAPE);
    if (layer.fSize.IsSet()) {
      AddNumeric(layer.fSize, LegendSection::SIZE, XMarkupNode::LengthOf(layer.fSize.fpNode, "min", 3.0),
                 XMarkupNode::LengthOf(layer.fSize.fpNode, "max", 9.0), BaseColor(layer));
    }
    if (layer.fTransparency.IsSet()) {
      AddNumeric(layer.fTransparency, LegendSection::TRANSPARENCY, 0.25, 1.0, BaseColor(layer));
    }
    if (layer.fWidth.IsSet()) {
      AddNumeric(layer.fWidth, LegendSection::WIDTH, XMarkupNode::LengthOf(layer.fWidth.fpNode, "widthFrom", 1.0),
                 XMarkupNode::LengthOf(layer.fWidth.fpNode, "widthTo", 6.0), BaseColor(layer));
    }
  }
}

std::string XChartAesthetics::BaseColor(const XChartLayer& layer) const {
  if (layer.fpStyle != nullptr) {
    for (const char* name : {"color", "fill", "stroke"}) {
      const std::string color = XChartLook::ColorValue(layer.fpStyle->Attribute(name));
      if (!color.empty()) return color;
    }
  }
  return fvPalette.empty() ? std::string(XChartLook::kInk) : fvPalette[0];
}

std::string XChartAesthetics::Color(const XChartLayer& layer, const XChartMark& mark) const {
  if (layer.fColor.IsSet()) {
    auto scale = fColors.find(layer.fColor.fpColumn);
    if (scale != fColors.end()) {
      auto found = scale->second.fByKey.find(mark.fColor.Key());
      if (found != scale->second.fByKey.end()) return found->second;
    }
  }
  return BaseColor(layer);
}

std::string XChartAesthetics::Shape(const XChartLayer& layer, const XChartMark& mark) const {
  if (layer.fShape.IsSet()) {
    auto scale = fShapes.find(layer.fShape.fpColumn);
    if (scale != fShapes.end()) {
      auto found = scale->second.fByKey.find(mark.fShape.Key());
      if (found != scale->second.fByKey.end()) return found->second;
    }
  }
  const std::string own = layer.fMark;
  return own.empty() ? "circle" : own;
}

double XChartAesthetics::Radius(const XChartLayer& layer, const XChartMark& mark, double base) const {
  if (!layer.fSize.IsSet() || !std::isfinite(mark.fSize)) return base;
  auto scale = fNumbers.find(layer.fSize.fpColumn);
  return scale == fNumbers.end() ? base : scale->second.Map(mark.fSize);
}

double XChartAesthetics::Alpha(const XChartLayer& layer, const XChartMark& mark) const {
  double alpha = 1.0;
  if (layer.fpStyle != nullptr) XNumber::Parse(layer.fpStyle->Attribute("alpha"), alpha);
  if (layer.fTransparency.IsSet() && std::isfinite(mark.fAlpha)) {
    auto scale = fNumbers.find(layer.fTransparency.fpColumn);
    if (scale != fNumbers.end()) alpha *= scale->second.Map(mark.fAlpha);
  }
  return std::clamp(alpha, 0.0, 1.0);
}

double XChartAesthetics::StrokeWidth(const XChartLayer& layer, const XChartMark& mark, double base) const {
  if (layer.fpStyle != nullptr) base = XMarkupNode::LengthOf(layer.fpStyle, "stroke-width", base);
  if (!layer.fWidth.IsSet() || !std::isfinite(mark.fWidth)) return base;
  auto scale = fNumbers.find(layer.fWidth.fpColumn);
  return scale == fNumbers.end() ? base : scale->second.Map(mark.fWidth);
}
