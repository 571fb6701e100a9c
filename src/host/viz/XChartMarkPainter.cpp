#include "host/viz/XChartMarkPainter.h"

#include <algorithm>
#include <cmath>

#include "host/viz/XChartLook.h"
#include "host/viz/XChartText.h"
#include "host/viz/XNumber.h"
#include "host/viz/XTextMetrics.h"

namespace {

const double kPi = 3.14159265358979323846;

std::string Num(double value) { return XSvgWriter::Num(value); }

bool Finite(double a, double b) { return std::isfinite(a) && std::isfinite(b); }

}  // namespace

XChartMarkPainter::XChartMarkPainter(const XChartAesthetics& aesthetics, const XChartAxis& x, const XChartAxis& y,
                                     double fontSize)
    : fAesthetics(aesthetics), fX(x), fY(y), fFontSize(fontSize) {}

void XChartMarkPainter::DrawShape(XSvgWriter& svg, const std::string& shape, double x, double y, double r,
                                  XSvgWriter::Attributes attributes, const std::string& tooltip) {
  if (shape == "square") {
    attributes.insert(attributes.begin(),
                      {{"x", Num(x - r)}, {"y", Num(y - r)}, {"width", Num(2 * r)}, {"height", Num(2 * r)}});
    svg.Element("rect", attributes, tooltip);
  } else if (shape == "triangle") {
    const std::string points = Num(x) + "," + Num(y - r * 1.15) + " " + Num(x + r * 1.1) + "," + Num(y + r * 0.85) +
                               " " + Num(x - r * 1.1) + "," + Num(y + r * 0.85);
    attributes.insert(attributes.begin(), {"points", points});
    svg.Element("polygon", attributes, tooltip);
  } else if (shape == "diamond") {
    const double d = r * 1.25;
    const std::string points = Num(x) + "," + Num(y - d) + " " + Num(x + d) + "," + Num(y) + " " + Num(x) + "," +
                               Num(y + d) + " " + Num(x - d) + "," + Num(y);
    attributes.insert(attributes.begin(), {"points", points});
    svg.Element("polygon", attributes, tooltip);
  } else {
    attributes.insert(attributes.begin(), {{"cx", Num(x)}, {"cy", Num(y)}, {"r", Num(r)}});
    svg.Element("circle", attributes, tooltip);
  }
}

void XChartMarkPainter::NodeSize(const XChartLayer& layer, double& width, double& height) {
  const bool box = layer.fMark == "box";
  width = XMarkupNode::LengthOf(layer.fpNode, "width", box ? 120.0 : 14.0);
  height = XMarkupNode::LengthOf(layer.fpNode, "height", box ? 80.0 : width);
}

std::vector<std::string> XChartMarkPainter::Groups(const std::vector<XChartMark>& marks) const {
  std::vector<std::string> groups;
  for (const XChartMark& mark : marks) {
    const std::string key = mark.fColor.Key();
    if (std::find(groups.begin(), groups.end(), key) == groups.end()) groups.push_back(key);
  }
  return groups;
}

double XChartMarkPainter::DodgeOffset(const XChartLayer& layer, const XChartMark& mark,
                                      const std::vector<std::string>& groups) const {
  if (!layer.fbDodge || !fX.IsCategorical() || groups.size() < 2) return 0.0;
  const auto found = std::find(groups.begin(), groups.end(), mark.fColor.Key());
  const double index = static_cast<double>(found - groups.begin());
  const double share = fX.GetBandwidth() * 0.7 / static_cast<double>(groups.size());
  return (index - (static_cast<double>(groups.size()) - 1.0) / 2.0) * share;
}

void XChartMarkPainter::PlaceNodes(const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel,
                                   const XChartRect& rect, NodePlaces& places) const {
  double width = 0.0;
  double height = 0.0;
  NodeSize(layer, width, height);
  const double radius = std::max(width, height) / 2.0;
  std::vector<const XChartMark*> nodes;
  for (const XChartMark& mark : marks) {
    if (InPanel(mark, panel)) nodes.push_back(&mark);
  }
  if (layer.fpNode->Attribute("layout") != "circle") {
    for (const XChartMark* mark : nodes) {
      const double x = fX.Map(mark->fX);
      const double y = fY.Map(mark->fY);
      if (Finite(x, y))
        places[mark->fKey.IsEmpty() ? mark->fX.Key() + "|" + mark->fY.Key() : mark->fKey.Key()] = {x, y, radius};
    }
    return;
  }
  std::stable_sort(nodes.begin(), nodes.end(),
                   [](const XChartMark* a, const XChartMark* b) { return XChartValue::Before(a->fKey, b->fKey); });
  double widest = 0.0;
  for (const XChartMark* mark : nodes) {
    for (const std::string& line : XChartText::Lines(mark->fLabel))
      widest = std::max(widest, XTextMetrics::Width(line, fFontSize));
  }
  const double cx = rect.fX + rect.fWidth / 2.0;
  const double cy = rect.fY + rect.fHeight / 2.0;
  const double half = std::min(rect.fWidth / 2.0 - std::min(widest, rect.fWidth * 0.22) - radius - 8.0,
                               rect.fHeight / 2.0 - fFontSize * 1.5 - radius - 4.0);
  const double ring = std::max(half, 0.0);
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const double angle = -kPi / 2.0 + 2.0 * kPi * static_cast<double>(i) / static_cast<double>(nodes.size());
    const double r = nodes.size() == 1 ? 0.0 : ring;
    places[nodes[i]->fKey.Key()] = {cx + r * std::cos(angle), cy + r * std::sin(angle), radius};
  }
}

void XChartMarkPainter::DrawMarks(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                  int panel, const NodePlaces& places) const {
  switch (layer.fKind) {
    case XChartLayer::POINT:
      DrawPoints(svg, layer, marks, panel);
      break;
    case XChartLayer::LINE:
      DrawLines(svg, layer, marks, panel, false);
      break;
    case XChartLayer::AREA:
      DrawLines(svg, layer, marks, panel, true);
      break;
    case XChartLayer::INTERVAL:
      DrawIntervals(svg, layer, marks, panel);
      break;
    case XChartLayer::EDGE:
      DrawEdges(svg, layer, marks, panel, places);
      break;
    case XChartLayer::NODE:
      break;
  }
}

void XChartMarkPainter::DrawPoints(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                   int panel) const {
  const double base = XMarkupNode::LengthOf(layer.fpNode, "size", 4.0);
  const std::vector<std::string> groups = Groups(marks);
  svg.Open("g", {{"class", "mark point"}});
  for (const XChartMark& mark : marks) {
    if (!InPanel(mark, panel)) continue;
    const double x = fX.Map(mark.fX) + DodgeOffset(layer, mark, groups);
    const double y = fY.Map(mark.fY);
    if (!Finite(x, y)) continue;
    DrawShape(svg, fAesthetics.Shape(layer, mark), x, y, fAesthetics.Radius(layer, mark, base),
              {{"fill", fAesthetics.Color(layer, mark)},
               {"fill-opacity", Num(fAesthetics.Alpha(layer, mark))},
               {"stroke", "#ffffff"},
               {"stroke-width", "0.5"}},
              mark.fTooltip);
  }
  svg.Close("g");
}

void XChartMarkPainter::DrawLines(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                  int panel, bool bArea) const {
  const std::vector<std::string> groups = Groups(marks);
  svg.Open("g", {{"class", bArea ? "mark area" : "mark line"}});
  for (const std::string& group : groups) {
    std::vector<const XChartMark*> members;
    for (const XChartMark& mark : marks) {
      if (InPanel(mark, panel) && mark.fColor.Key() == group) members.push_back(&mark);
    }
    if (members.empty()) continue;
    std::stable_sort(members.begin(), members.end(), [&](const XChartMark* a, const XChartMark* b) {
      if (fX.IsCategorical()) return fX.IndexOf(a->fX) < fX.IndexOf(b->fX);
      double p = 0.0;
      double q = 0.0;
      a->fX.AsNumber(p);
      b->fX.AsNumber(q);
      return p < q;
    });
    std::string points;
    std::string lows;
    const double floor = fY.MapNumber(std::clamp(0.0, fY.Linear().GetLow(), fY.Linear().GetHigh()));
    int count = 0;
    for (const XChartMark* mark : members) {
      const double x = fX.Map(mark->fX) + DodgeOffset(layer, *mark, groups);
      double value = 0.0;
      if (!mark->fY.AsNumber(value)) continue;
      const double y = fY.MapNumber(mark->fbYRange ? mark->fYHigh : value);
      if (!Finite(x, y)) continue;
      points += (points.empty() ? "" : " ") + Num(x) + "," + Num(y);
      const double low = mark->fbYRange ? fY.MapNumber(mark->fYLow) : floor;
      lows = Num(x) + "," + Num(low) + (lows.empty() ? "" : " ") + lows;
      ++count;
    }
    if (count == 0) continue;
    const XChartMark& first = *members.front();
    const std::string color = fAesthetics.Color(layer, first);
    const double alpha = fAesthetics.Alpha(layer, first);
    if (bArea) {
      svg.Element("polygon",
                  {{"points", points + " " + lows},
                   {"fill", color},
                   {"fill-opacity", Num(alpha * 0.4)},
                   {"stroke", color},
                   {"stroke-width", "1"}},
                  first.fTooltip);
    } else if (count == 1) {
      DrawShape(svg, "circle", fX.Map(first.fX), fY.Map(first.fY), 2.5, {{"fill", color}}, first.fTooltip);
    } else {
      XSvgWriter::Attributes attributes = {{"points", points},
                                           {"fill", "none"},
                                           {"stroke", color},
                                           {"stroke-opacity", Num(alpha)},
                                           {"stroke-width", Num(fAesthetics.StrokeWidth(layer, first, 2.0))},
                                           {"stroke-linejoin", "round"}};
      if (layer.fpStyle != nullptr && layer.fpStyle->HasAttribute("dash")) {
        attributes.push_back({"stroke-dasharray", layer.fpStyle->Attribute("dash")});
      }
      svg.Element("polyline", attributes, first.fTooltip);
    }
  }
  svg.Close("g");
}

void XChartMarkPainter::DrawIntervals(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                      int panel) const {
  const bool whisker = layer.fMark == "errorbar";
  double share = whisker ? 0.3 : 0.6;
  XNumber::Parse(layer.fpNode->Attribute("barWidth"), share);
  const std::vector<std::string> groups = Groups(marks);
  const double dodged = layer.fbDodge && groups.size() > 1 ? static_cast<double>(groups.size()) : 1.0;
  const double floor = std::clamp(0.0, fY.Linear().GetLow(), fY.Linear().GetHigh());
  svg.Open("g", {{"class", whisker ? "mark errorbar" : "mark interval"}});
  for (const XChartMark& mark : marks) {
    if (!InPanel(mark, panel)) continue;
    double left = 0.0;
    double right = 0.0;
    if (mark.fbXRange) {
      left = fX.MapNumber(mark.fXLow);
      right = fX.MapNumber(mark.fXHigh);
      if (right - left > 2.0) {
        left += 0.5;
        right -= 0.5;
      }
    } else {
      const double centre = fX.Map(mark.fX) + DodgeOffset(layer, mark, groups);
      const double width = fX.IsCategorical() ? fX.GetBandwidth() * share / dodged : 10.0;
      left = centre - width / 2.0;
      right = centre + width / 2.0;
    }
    double value = 0.0;
    mark.fY.AsNumber(value);
    const double top = fY.MapNumber(mark.fbYRange ? mark.fYHigh : value);
    const double bottom = fY.MapNumber(mark.fbYRange ? mark.fYLow : floor);
    if (!Finite(left, right) || !Finite(top, bottom)) continue;
    const std::string color = fAesthetics.Color(layer, mark);
    const std::string alpha = Num(fAesthetics.Alpha(layer, mark));
    if (whisker) {
      const double centre = (left + right) / 2.0;
      const double cap = std::min((right - left) / 2.0, 8.0);
      const std::string path = "M" + Num(centre) + " " + Num(top) + "V" + Num(bottom) + "M" + Num(centre - cap) + " " +
                               Num(top) + "H" + Num(centre + cap) + "M" + Num(centre - cap) + " " + Num(bottom) + "H" +
                               Num(centre + cap);
      svg.Element("path",
                  {{"d", path},
                   {"fill", "none"},
                   {"stroke", color},
                   {"stroke-opacity", alpha},
                   {"stroke-width", Num(fAesthetics.StrokeWidth(layer, mark, 1.5))}},
                  mark.fTooltip);
    } else {
      const double y = std::min(top, bottom);
      const double height = std::max(std::fabs(bottom - top), 1.0);
      svg.Element("rect",
                  {{"x", Num(std::min(left, right))},
                   {"y", Num(y)},
                   {"width", Num(std::fabs(right - left))},
                   {"height", Num(height)},
                   {"fill", color},
                   {"fill-opacity", alpha}},
                  mark.fTooltip);
    }
  }
  svg.Close("g");
}

void XChartMarkPainter::DrawEdges(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                  int panel, const NodePlaces& places) const {
  const bool byNodes = layer.fpFrom != nullptr || layer.fpTo != nullptr;
  svg.Open("g", {{"class", "mark edge"}, {"stroke-linecap", "round"}});
  for (const XChartMark& mark : marks) {
    if (!InPanel(mark, panel)) continue;
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    if (byNodes) {
      auto from = places.find(mark.fFrom.Key());
      auto to = places.find(mark.fTo.Key());
      if (from == places.end() || to == places.end()) continue;
      x1 = from->second.fX;
      y1 = from->second.fY;
      x2 = to->second.fX;
      y2 = to->second.fY;
    } else {
      x1 = fX.Map(mark.fX);
      y1 = fY.Map(mark.fY);
      x2 = fX.Map(mark.fX2);
      y2 = fY.Map(mark.fY2);
    }
    if (!Finite(x1, y1) || !Finite(x2, y2)) continue;
    svg.Element("line",
                {{"x1", Num(x1)},
                 {"y1", Num(y1)},
                 {"x2", Num(x2)},
                 {"y2", Num(y2)},
                 {"stroke", fAesthetics.Color(layer, mark)},
                 {"stroke-opacity", Num(fAesthetics.Alpha(layer, mark))},
                 {"stroke-width", Num(fAesthetics.StrokeWidth(layer, mark, 2.0))}},
                mark.fTooltip);
  }
  svg.Close("g");
}

bool XChartMarkPainter::LabelAnchor(const XChartLayer& layer, const XChartMark& mark, double& x, double& y) const {
  if (layer.fpLabelX != nullptr || layer.fpLabelY != nullptr) {
    x = layer.fpLabelX != nullptr ? fX.Map(mark.fLabelX) : fX.Map(mark.fX);
    y = layer.fpLabelY != nullptr ? fY.Map(mark.fLabelY) : fY.Map(mark.fY);
    return Finite(x, y);
  }
  x = fX.Map(mark.fX);
  y = fY.Map(mark.fY);
  if (!Finite(x, y)) return false;
  const double gap = XMarkupNode::LengthOf(layer.fpNode, "size", 4.0) + 4.0;
  const std::string position = layer.fpLabel != nullptr ? layer.fpLabel->Attribute("position", "right") : "right";
  if (position == "right") x += gap;
  if (position == "left") x -= gap;
  if (position == "above") y -= gap + fFontSize * 0.5;
  if (position == "below") y += gap + fFontSize * 0.5;
  return true;
}

XChartMarkPainter::Extent XChartMarkPainter::LabelExtent(const XChartLayer& layer, const XChartMark& mark) const {
  Extent extent;
  if (mark.fLabel.empty()) return extent;
  double width = 0.0;
  const std::vector<std::string> lines = XChartText::Lines(mark.fLabel);
  for (const std::string& line : lines) width = std::max(width, XTextMetrics::Width(line, fFontSize));
  const std::string position = layer.fpLabel != nullptr ? layer.fpLabel->Attribute("position", "right") : "right";
  const std::string anchor = layer.fpLabel != nullptr && layer.fpLabel->HasAttribute("anchor")
                                 ? layer.fpLabel->Attribute("anchor")
                             : position == "left" ? "end"
                                                  : (position == "right" ? "start" : "middle");
  extent.fLeft = anchor == "start" ? 0.0 : anchor == "end" ? width : width / 2.0;
  extent.fRight = width - extent.fLeft;
  extent.fUp = extent.fDown = XTextMetrics::LineHeight(fFontSize) * static_cast<double>(lines.size()) / 2.0;
  return extent;
}

void XChartMarkPainter::DrawLabels(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks,
                                   int panel, const XChartRect& rect, const NodePlaces& places,
                                   const EmbeddedPainter& embed) const {
  const double line = XTextMetrics::LineHeight(fFontSize);
  if (layer.fKind == XChartLayer::NODE) {
    double width = 0.0;
    double height = 0.0;
    NodeSize(layer, width, height);
    const bool box = layer.fMark == "box";
    const bool circle = layer.fpNode->Attribute("layout") == "circle";
    svg.Open("g", {{"class", "mark node"}});
    for (const XChartMark& mark : marks) {
      if (!InPanel(mark, panel)) continue;
      const std::string key = mark.fKey.IsEmpty() ? mark.fX.Key() + "|" + mark.fY.Key() : mark.fKey.Key();
      auto place = places.find(key);
      if (place == places.end()) continue;
      double x = place->second.fX;
      double y = place->second.fY;
      const std::string color = fAesthetics.Color(layer, mark);
      const std::vector<std::string> lines = XChartText::Lines(mark.fLabel);
      if (box) {
        // A box stays inside its panel, below its label.
        const double w = std::min(width, rect.fWidth);
        const double h = std::min(height, std::max(rect.fHeight - line * static_cast<double>(lines.size()), 10.0));
        const double left = std::clamp(x - w / 2.0, rect.fX, rect.Right() - w);
        const double top =
            std::clamp(y - h / 2.0, rect.fY + line * static_cast<double>(lines.size()), rect.Bottom() - h);
        svg.Element("rect",
                    {{"x", Num(left)},
                     {"y", Num(top)},
                     {"width", Num(w)},
                     {"height", Num(h)},
                     {"fill", "#ffffff"},
                     {"stroke", color},
                     {"stroke-width", "1.5"},
                     {"rx", "3"}},
                    mark.fTooltip);
        if (const XMarkupNode* embedded = layer.fpNode->FirstChild("embeddedChart")) {
          if (layer.fpNode->Attribute("chartSlot") == "true") embed(*embedded, {left + 2, top + 2, w - 4, h - 4}, svg);
        }
        if (!mark.fLabel.empty()) {
          std::vector<std::string> shown;
          for (const std::string& text : lines)
            shown.push_back(XTextMetrics::Truncate(text, rect.fWidth, fFontSize, true));
          svg.Text(
              left + w / 2.0, top - line * static_cast<double>(lines.size()) + fFontSize, shown, line,
              {{"class", "node-label"}, {"text-anchor", "middle"}, {"font-weight", "bold"}, {"fill", XChartLook::kInk}},
              mark.fTooltip);
        }
        continue;
      }
      const double r = std::max(width, height) / 2.0;
      svg.Element("circle",
                  {{"cx", Num(x)},
                   {"cy", Num(y)},
                   {"r", Num(r)},
                   {"fill", color},
                   {"stroke", "#ffffff"},
                   {"stroke-width", "1"}},
                  mark.fTooltip);
      if (mark.fLabel.empty()) continue;
      std::string anchor = "start";
      double tx = x + r + 4.0;
      double ty = y;
      if (circle) {
        const double cx = rect.fX + rect.fWidth / 2.0;
        const double cy = rect.fY + rect.fHeight / 2.0;
        const double dx = x - cx;
        const double dy = y - cy;
        const double length = std::hypot(dx, dy);
        const double ux = length > 0 ? dx / length : 0.0;
        const double uy = length > 0 ? dy / length : -1.0;
        tx = x + ux * (r + 5.0);
        ty = y + uy * (r + 5.0) + (uy > 0.3 ? fFontSize * 0.5 : uy < -0.3 ? -fFontSize * 0.4 : 0.0);
        anchor = ux > 0.3 ? "start" : ux < -0.3 ? "end" : "middle";
      }
      const double maxWidth = anchor == "start" ? rect.Right() - tx : anchor == "end" ? tx - rect.fX : rect.fWidth;
      std::vector<std::string> shown;
      for (const std::string& text : lines)
        shown.push_back(XTextMetrics::Truncate(text, std::max(maxWidth, fFontSize * 3), fFontSize));
      svg.Text(tx, ty - line * (static_cast<double>(shown.size()) - 1.0) / 2.0 + fFontSize * 0.35, shown, line,
               {{"class", "node-label"}, {"text-anchor", anchor}, {"fill", XChartLook::kInk}}, mark.fTooltip);
    }
    svg.Close("g");
    return;
  }
  if (layer.fpLabel == nullptr) return;
  svg.Open("g", {{"class", "point-labels"}});
  for (const XChartMark& mark : marks) {
    if (!InPanel(mark, panel) || mark.fLabel.empty()) continue;
    double x = 0.0;
    double y = 0.0;
    if (!LabelAnchor(layer, mark, x, y)) continue;
    const Extent extent = LabelExtent(layer, mark);
    const std::string anchor = extent.fLeft == 0.0 ? "start" : extent.fRight == 0.0 ? "end" : "middle";
    const std::vector<std::string> lines = XChartText::Lines(mark.fLabel);
    svg.Text(x, y - line * (static_cast<double>(lines.size()) - 1.0) / 2.0 + fFontSize * 0.35, lines, line,
             {{"class", "point-label"}, {"text-anchor", anchor}, {"fill", XChartLook::kInk}}, mark.fTooltip);
  }
  svg.Close("g");
}
