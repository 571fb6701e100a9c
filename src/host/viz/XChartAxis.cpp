#include "host/viz/XChartAxis.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "host/data/OBS.h"
#include "host/output/ToString.h"
#include "host/viz/XChartLook.h"
#include "host/viz/XChartText.h"
#include "host/viz/XNumber.h"
#include "host/viz/XTextMetrics.h"

namespace {

const double kTick = 5.0;
const double kGap = 3.0;
const double kSlant = 0.70710678118654752;
const int kMaxLines = 4;

bool Contributes(const XChartLayer& layer) {
  if (layer.fKind == XChartLayer::NODE && layer.fpNode->Attribute("layout") == "circle") return false;
  if (layer.fKind == XChartLayer::EDGE && (layer.fpFrom != nullptr || layer.fpTo != nullptr)) return false;
  return true;
}

bool IsBar(const XChartLayer& layer) {
  return (layer.fKind == XChartLayer::INTERVAL && layer.fMark != "errorbar") || layer.fKind == XChartLayer::AREA;
}

bool WordsFit(const std::string& text, double width, double fontSize) {
  std::string word;
  for (char c : text + " ") {
    if (c == ' ' || c == '\n') {
      if (XTextMetrics::Width(word, fontSize) > width) return false;
      word.clear();
    } else {
      word += c;
    }
  }
  return true;
}

}  // namespace

XChartAxis::XChartAxis(const std::string& dimension, const XMarkupNode* coordinates) : fDimension(dimension) {
  if (coordinates != nullptr) {
    for (const XMarkupNode* axis : coordinates->Children("axis")) {
      if (axis->Attribute("dimension") == dimension) {
        fpNode = axis;
        break;
      }
    }
  }
  fbGrid = dimension == "y";
  if (fpNode == nullptr) return;
  fbVisible = fpNode->Attribute("visible", "true") == "true";
  fbGrid = fpNode->Attribute("grid", fbGrid ? "true" : "false") == "true";
  fbTicks = fpNode->Attribute("ticks", "auto") != "none";
  fLabelAngle = fpNode->Attribute("labelAngle", "auto");
  fSameAs = fpNode->Attribute("sameAs");
  fMargin = fpNode->Length("margin", 0.0);
  if (fpNode->FirstChild("title") != nullptr) fTitle = XChartText::Of(fpNode->FirstChild("title"));
}

void XChartAxis::Collect(const std::vector<XChartLayer>& layers, const std::vector<std::vector<XChartMark>>& marks,
                         const std::vector<double>& guides) {
  const bool x = fDimension == "x";
  std::set<std::string> seen;
  for (std::size_t i = 0; i < layers.size(); ++i) {
    const XChartLayer& layer = layers[i];
    const XChartColumn* column = x ? layer.fpX : layer.fpY;
    if (!Contributes(layer) || column == nullptr) continue;
    if (!fbUsed) {
      if (fpNode == nullptr || fpNode->FirstChild("title") == nullptr) fTitle = column->GetTitle();
      fbHasFormat = column->HasFormat() && !column->GetFormat().IsString();
      fFormat = column->GetFormat();
    }
    fbUsed = true;
    if (column->IsCategorical() && layer.fpBin == nullptr && layer.fpDistribution == nullptr) {
      fbCategorical = true;
      for (const XChartValue& value : column->Categories()) {
        if (!seen.insert(value.Key()).second) continue;
        fvKeys.push_back(value.Key());
        fvLabels.push_back(column->Display(value));
      }
    }
    auto add = [&](double value) {
      if (!std::isfinite(value)) return;
      fLow = fbAny ? std::min(fLow, value) : value;
      fHigh = fbAny ? std::max(fHigh, value) : value;
      fbAny = true;
    };
    for (const XChartMark& mark : marks[i]) {
      double value = 0.0;
      if (x) {
        if (mark.fX.AsNumber(value)) add(value);
        if (mark.fbXRange) {
          add(mark.fXLow);
          add(mark.fXHigh);
        }
        if (mark.fX2.AsNumber(value)) add(value);
        if (mark.fLabelX.AsNumber(value)) add(value);
      } else {
        if (mark.fY.AsNumber(value)) add(value);
        if (mark.fbYRange) {
          add(mark.fYLow);
          add(mark.fYHigh);
        }
        if (mark.fY2.AsNumber(value)) add(value);
        if (mark.fLabelY.AsNumber(value)) add(value);
        if (IsBar(layer) && !mark.fbYRange && layer.fSummarize != "range") add(0.0);
      }
    }
  }
  if (fbUsed) {
    for (double guide : guides) {
      if (std::isfinite(guide)) {
        fLow = fbAny ? std::min(fLow, guide) : guide;
        fHigh = fbAny ? std::max(fHigh, guide) : guide;
        fbAny = true;
      }
    }
  }
}

void XChartAxis::Finish() {
  if (fbCategorical) {
    fBand.SetCategories(fvKeys);
    return;
  }
  double low = fbAny ? fLow : 0.0;
  double high = fbAny ? fHigh : 1.0;
  double pad = 0.05;
  if (fpNode != nullptr) XNumber::Parse(fpNode->Attribute("pad", "0.05"), pad);
  const double span = high > low ? high - low : (low == 0.0 ? 1.0 : std::fabs(low) * 0.2);
  double fixed = 0.0;
  fbLowFixed = fpNode != nullptr && XNumber::Parse(fpNode->Attribute("min"), fixed);
  if (fbLowFixed) {
    low = fixed;
  } else if (!(fLow == 0.0 && fbAny && fHigh > 0.0)) {
    // A range that starts at a bar's base stays on it.
    low -= span * pad;
  }
  fbHighFixed = fpNode != nullptr && XNumber::Parse(fpNode->Attribute("max"), fixed);
  high = fbHighFixed ? fixed : high + span * pad;
  fLinear.SetDomain(low, high);
}

void XChartAxis::TakeDomain(const XChartAxis& other) {
  if (fbCategorical || other.fbCategorical) return;
  fLinear.SetDomain(other.fLinear.GetLow(), other.fLinear.GetHigh());
  fbLowFixed = other.fbLowFixed;
  fbHighFixed = other.fbHighFixed;
}

void XChartAxis::SetRange(double from, double to) {
  const double inset = std::min(fMargin, std::fabs(to - from) / 4.0) * (to >= from ? 1.0 : -1.0);
  fLinear.SetRange(from + inset, to - inset);
  fStart = from;
  fBand.SetRange(from, to);
}

int XChartAxis::IndexOf(const XChartValue& value) const { return fBand.IndexOf(value.Key()); }

double XChartAxis::Map(const XChartValue& value) const {
  if (fbCategorical) {
    const int index = IndexOf(value);
    return index < 0 ? XChartMark::kNone : fBand.Center(index);
  }
  double number = 0.0;
  return value.AsNumber(number) ? fLinear.Map(number) : XChartMark::kNone;
}

double XChartAxis::MapNumber(double value) const { return fbCategorical ? XChartMark::kNone : fLinear.Map(value); }

double XChartAxis::GetBandwidth() const { return fbCategorical ? std::fabs(fBand.GetBandwidth()) : 0.0; }

std::string XChartAxis::NumberLabel(double value, double step) const {
  const int decimals = XLinearScale::DecimalsOf(step);
  if (fbHasFormat && fFormat.fType != ZORV_Format::F && fFormat.fType != ZORV_Format::E) {
    OBS cell;
    cell.fNum = value;
    const std::string text = ToString(&cell, ZORV_Format(fFormat.fType, 40, static_cast<std::uint8_t>(decimals)));
    if (!text.empty() && text.find('*') == std::string::npos) return text;
  }
  return XNumber::Fixed(value, decimals);
}

void XChartAxis::LayoutLabels(double length, double fontSize, double maxLabel) {
  fvFitted.clear();
  fLabelWidest = 0.0;
  fLabelLines = 1;
  fMode = HORIZONTAL;
  length = std::fabs(length);
  const bool x = fDimension == "x";
  if (!fbCategorical) {
    const double room = x ? 70.0 : 36.0;
    fTickCount = std::clamp(static_cast<int>(length / room), 2, 10);
    for (; fTickCount > 2; --fTickCount) {
      const std::vector<double> values = fLinear.Ticks(fTickCount);
      if (values.size() < 2) break;
      const double spacing = length / (fLinear.GetHigh() - fLinear.GetLow()) * (values[1] - values[0]);
      double need = XTextMetrics::LineHeight(fontSize);
      if (x) {
        need = 0.0;
        for (double value : values)
          need = std::max(need, XTextMetrics::Width(NumberLabel(value, values[1] - values[0]), fontSize));
        need += 8.0;
      }
      if (spacing >= need) break;
    }
    const std::vector<double> values = fLinear.Ticks(fTickCount);
    const double step = values.size() > 1 ? values[1] - values[0] : fLinear.TickStep(fTickCount);
    for (double value : values)
      fLabelWidest = std::max(fLabelWidest, XTextMetrics::Width(NumberLabel(value, step), fontSize));
    return;
  }
  const int n = std::max(1, static_cast<int>(fvLabels.size()));
  const double band = length / n - 4.0;
  double widest = 0.0;
  for (const std::string& label : fvLabels) widest = std::max(widest, XTextMetrics::Width(label, fontSize));
  if (!x) {
    for (const std::string& label : fvLabels) fvFitted.push_back({XTextMetrics::Truncate(label, maxLabel, fontSize)});
    for (const auto& lines : fvFitted) fLabelWidest = std::max(fLabelWidest, XTextMetrics::Width(lines[0], fontSize));
    return;
  }
  std::string angle = fLabelAngle;
  if (angle == "auto" || angle.empty()) {
    bool wraps = band > fontSize;
    for (const std::string& label : fvLabels) {
      if (!wraps) break;
      wraps = WordsFit(label, band, fontSize) &&
              static_cast<int>(XTextMetrics::Wrap(label, band, fontSize).size()) <= kMaxLines;
    }
    angle = widest <= band ? "0" : wraps ? "wrap" : band >= fontSize * 1.3 ? "45" : "90";
  }
  fMode = angle == "0" ? HORIZONTAL : angle == "wrap" ? WRAPPED : angle == "45" ? SLANTED : VERTICAL;
  for (const std::string& label : fvLabels) {
    std::vector<std::string> lines;
    if (fMode == WRAPPED) {
      lines = XTextMetrics::Wrap(label, band, fontSize);
    } else if (fMode == HORIZONTAL) {
      lines = {XTextMetrics::Truncate(label, std::max(band, fontSize), fontSize)};
    } else {
      lines = {XTextMetrics::Truncate(label, maxLabel, fontSize)};
    }
    fLabelLines = std::max(fLabelLines, static_cast<int>(lines.size()));
    for (const std::string& line : lines) fLabelWidest = std::max(fLabelWidest, XTextMetrics::Width(line, fontSize));
    fvFitted.push_back(lines);
  }
}

double XChartAxis::LabelDepth(double fontSize) const {
  if (!IsVisible()) return 0.0;
  const double start = kTick + kGap;
  if (!fbTicks) return start;
  if (fDimension == "y") return start + fLabelWidest;
  switch (fMode) {
    case HORIZONTAL:
    case WRAPPED:
      return start + XTextMetrics::LineHeight(fontSize) * fLabelLines;
    case SLANTED:
      return start + (fLabelWidest + fontSize) * kSlant + 2.0;
    case VERTICAL:
      return start + fLabelWidest + fontSize * 0.5;
  }
  return start;
}

double XChartAxis::LabelOverhang(double fontSize) const {
  if (!IsVisible() || !fbTicks || fDimension != "x") return 0.0;
  double overhang = 0.0;
  const std::vector<Tick> ticks = Ticks();
  for (const Tick& tick : ticks) {
    double width = 0.0;
    for (const std::string& line : tick.fvLines) width = std::max(width, XTextMetrics::Width(line, fontSize));
    const double reach = fMode == SLANTED ? width * kSlant : fMode == VERTICAL ? 0.0 : width / 2.0;
    overhang = std::max(overhang, reach - (tick.fPixel - fStart));
  }
  return std::max(0.0, overhang);
}

std::vector<XChartAxis::Tick> XChartAxis::Ticks() const {
  std::vector<Tick> ticks;
  if (fbCategorical) {
    for (int i = 0; i < fBand.GetCount(); ++i) {
      Tick tick;
      tick.fPixel = fBand.Center(i);
      if (static_cast<std::size_t>(i) < fvFitted.size()) tick.fvLines = fvFitted[static_cast<std::size_t>(i)];
      ticks.push_back(tick);
    }
    return ticks;
  }
  const std::vector<double> values = fLinear.Ticks(fTickCount);
  const double step = values.size() > 1 ? values[1] - values[0] : fLinear.TickStep(fTickCount);
  for (double value : values) ticks.push_back({fLinear.Map(value), {NumberLabel(value, step)}});
  return ticks;
}

void XChartAxis::DrawGrid(XSvgWriter& svg, const XChartRect& panel) const {
  if (!IsVisible() || !fbGrid || fbCategorical) return;
  const bool x = fDimension == "x";
  for (const Tick& tick : Ticks()) {
    XSvgWriter::Attributes line = x ? XSvgWriter::Attributes{{"x1", XSvgWriter::Num(tick.fPixel)},
                                                             {"y1", XSvgWriter::Num(panel.fY)},
                                                             {"x2", XSvgWriter::Num(tick.fPixel)},
                                                             {"y2", XSvgWriter::Num(panel.Bottom())}}
                                    : XSvgWriter::Attributes{{"x1", XSvgWriter::Num(panel.fX)},
                                                             {"y1", XSvgWriter::Num(tick.fPixel)},
                                                             {"x2", XSvgWriter::Num(panel.Right())},
                                                             {"y2", XSvgWriter::Num(tick.fPixel)}};
    line.push_back({"stroke", XChartLook::kGridInk});
    line.push_back({"stroke-width", "1"});
    svg.Element("line", line);
  }
}

void XChartAxis::Draw(XSvgWriter& svg, const XChartRect& panel, bool bLabels, double fontSize) const {
  if (!IsVisible()) return;
  const bool x = fDimension == "x";
  svg.Open("g", {{"class", std::string("axis ") + fDimension}, {"stroke-linecap", "square"}});
  const double base = x ? panel.Bottom() : panel.fX;
  if (x) {
    svg.Element("line", {{"class", "axis-line"},
                         {"x1", XSvgWriter::Num(panel.fX)},
                         {"y1", XSvgWriter::Num(base)},
                         {"x2", XSvgWriter::Num(panel.Right())},
                         {"y2", XSvgWriter::Num(base)},
                         {"stroke", XChartLook::kInk}});
  } else {
    svg.Element("line", {{"class", "axis-line"},
                         {"x1", XSvgWriter::Num(base)},
                         {"y1", XSvgWriter::Num(panel.fY)},
                         {"x2", XSvgWriter::Num(base)},
                         {"y2", XSvgWriter::Num(panel.Bottom())},
                         {"stroke", XChartLook::kInk}});
  }
  if (fbTicks) {
    const double lineHeight = XTextMetrics::LineHeight(fontSize);
    const std::vector<Tick> ticks = Ticks();
    for (std::size_t i = 0; i < ticks.size(); ++i) {
      const Tick& tick = ticks[i];
      const std::string p = XSvgWriter::Num(tick.fPixel);
      if (x) {
        svg.Element("line", {{"x1", p},
                             {"y1", XSvgWriter::Num(base)},
                             {"x2", p},
                             {"y2", XSvgWriter::Num(base + kTick)},
                             {"stroke", XChartLook::kInk}});
      } else {
        svg.Element("line", {{"x1", XSvgWriter::Num(base - kTick)},
                             {"y1", p},
                             {"x2", XSvgWriter::Num(base)},
                             {"y2", p},
                             {"stroke", XChartLook::kInk}});
      }
      if (!bLabels || tick.fvLines.empty()) continue;
      // A label cut short shows the whole of it as its tooltip.
      const std::string tooltip =
          fbCategorical && i < fvLabels.size() && tick.fvLines.size() == 1 && tick.fvLines[0] != fvLabels[i]
              ? fvLabels[i]
              : std::string();
      if (!x) {
        svg.Text(base - kTick - kGap, tick.fPixel + fontSize * 0.35, tick.fvLines, lineHeight,
                 {{"class", "tick-label"}, {"text-anchor", "end"}, {"fill", XChartLook::kInk}}, tooltip);
        continue;
      }
      const double top = base + kTick + kGap;
      switch (fMode) {
        case HORIZONTAL:
        case WRAPPED:
          svg.Text(tick.fPixel, top + fontSize * 0.85, tick.fvLines, lineHeight,
                   {{"class", "tick-label"}, {"text-anchor", "middle"}, {"fill", XChartLook::kInk}}, tooltip);
          break;
        case SLANTED:
          svg.Text(tick.fPixel, top + fontSize * 0.7, tick.fvLines, lineHeight,
                   {{"class", "tick-label"},
                    {"text-anchor", "end"},
                    {"fill", XChartLook::kInk},
                    {"transform", "rotate(-45 " + p + " " + XSvgWriter::Num(top) + ")"}},
                   tooltip);
          break;
        case VERTICAL:
          svg.Text(tick.fPixel + fontSize * 0.35, top, tick.fvLines, lineHeight,
                   {{"class", "tick-label"},
                    {"text-anchor", "end"},
                    {"fill", XChartLook::kInk},
                    {"transform", "rotate(-90 " + XSvgWriter::Num(tick.fPixel + fontSize * 0.35) + " " +
                                      XSvgWriter::Num(top) + ")"}},
                   tooltip);
          break;
      }
    }
  }
  svg.Close("g");
}
