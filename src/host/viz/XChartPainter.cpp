#include "host/viz/XChartPainter.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "host/viz/XChartAesthetics.h"
#include "host/viz/XChartAxis.h"
#include "host/viz/XChartFrame.h"
#include "host/viz/XChartLayer.h"
#include "host/viz/XChartLook.h"
#include "host/viz/XChartMarkPainter.h"
#include "host/viz/XChartMarks.h"
#include "host/viz/XChartPanels.h"
#include "host/viz/XChartTable.h"
#include "host/viz/XChartText.h"
#include "host/viz/XExpression.h"
#include "host/viz/XNumber.h"
#include "host/viz/XSvgWriter.h"
#include "host/viz/XTextMetrics.h"

namespace {

const double kPanelGap = 14.0;
const double kMinPanelHeight = 110.0;
const double kMinEmbeddedPanel = 24.0;
// A facet's heading takes at most this many lines.
const std::size_t kMaxHeaderLines = 2;

// The lines of a panel's heading: each facet's label wrapped to the panel's
// width, on at most two lines, the second cut short where it is still too
// long, so that the level at the end of "Variable = level" shows whenever
// it can.
std::vector<std::string> HeaderLines(const XChartPanels::Panel& panel, double cellWidth, double fontSize) {
  std::vector<std::string> lines;
  const double width = cellWidth - 6.0;
  for (const std::string* label : {&panel.fLabel1, &panel.fLabel2}) {
    if (label->empty()) continue;
    const std::vector<std::string> wrapped = XTextMetrics::Wrap(*label, width, fontSize);
    for (std::size_t i = 0; i < wrapped.size() && i < kMaxHeaderLines; ++i) {
      std::string text = wrapped[i];
      if (i + 1 == kMaxHeaderLines) {
        for (std::size_t j = i + 1; j < wrapped.size(); ++j) text += " " + wrapped[j];
      }
      lines.push_back(XTextMetrics::Truncate(text, width, fontSize));
    }
  }
  return lines;
}

std::vector<std::string> PaletteOf(const XMarkupNode& chart) {
  std::vector<std::string> palette;
  const std::string text = chart.Attribute("palette");
  std::size_t start = 0;
  while (!text.empty()) {
    const std::size_t comma = text.find(',', start);
    std::string item = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
    item.erase(0, item.find_first_not_of(' '));
    item.erase(item.find_last_not_of(' ') + 1);
    const std::string color = XChartLook::ColorValue(item);
    if (!color.empty()) palette.push_back(color);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return palette;
}

// A line guide of the graph, read.
struct Guide {
  const XMarkupNode* fpNode = nullptr;
  XExpression fHide;
  bool fbHasHide = false;
};

// Everything one drawing needs, built step by step.
class Drawing {
 public:
  Drawing(const XMarkupNode& chart, bool embedded) : fChart(chart), fbEmbedded(embedded) {}

  bool Prepare(const OmChartData& data, double width, double height, XMarkupError& error);
  void SetWholeNumbers(bool bWhole) { fbWholeNumbers = bWhole; }
  std::string Draw();

 private:
  bool BuildLayers(XMarkupError& error);
  void BuildGuides();
  void Layout();
  void FitLabels();
  void FitAxis(XChartAxis& axis, bool horizontal, double length);
  void DrawPanel(XSvgWriter& svg, int panel);
  void DrawGuides(XSvgWriter& svg, int panel);
  void DrawEmbedded(const XMarkupNode& embedded, const XChartRect& box, XSvgWriter& svg) const;

  const XMarkupNode& fChart;
  bool fbEmbedded;
  bool fbWholeNumbers = false;
  const XMarkupNode* fpGraph = nullptr;
  XChartTable fTable;
  std::vector<XChartLayer> fvLayers;
  std::vector<std::vector<XChartMark>> fvMarks;
  std::vector<std::string> fvFacetNames;
  std::vector<Guide> fvGuides;
  XChartPanels fPanels;
  XChartAesthetics fAesthetics;
  XChartFrame fFrame;
  std::unique_ptr<XChartAxis> fpX;
  std::unique_ptr<XChartAxis> fpY;

  double fWidth = XChartLook::kWidth;
  double fHeight = XChartLook::kHeight;
  double fFontSize = XChartLook::kFontSize;
  std::string fFontFamily = XChartLook::kFontFamily;
  std::string fBackground = XChartLook::kBackground;
  // Margins asked by the graph's style, and the share of the width it takes.
  double fMarginTop = 0.0;
  double fMarginRight = 0.0;
  double fMarginBottom = 0.0;
  double fMarginLeft = 0.0;
  double fGraphShare = 0.0;
  // The layout.
  double fPlotLeft = 0.0;
  double fPlotTop = 0.0;
  double fCellWidth = 0.0;
  double fCellHeight = 0.0;
  double fHeaderHeight = 0.0;
  double fGap = kPanelGap;
  double fYTitleWidth = 0.0;
  double fXTitleHeight = 0.0;
  double fLegendX = 0.0;
  double fLegendY = 0.0;
  double fFooterTop = 0.0;
};

bool Drawing::Prepare(const OmChartData& data, double width, double height, XMarkupError& error) {
  fWidth = width > 0 ? width : XMarkupNode::LengthOf(&fChart, "width", XChartLook::kWidth);
  fHeight = height > 0 ? height : XMarkupNode::LengthOf(&fChart, "height", XChartLook::kHeight);
  fWidth = std::clamp(fWidth, 40.0, 4000.0);
  fHeight = std::clamp(fHeight, 30.0, 4000.0);
  fFontSize = std::clamp(XMarkupNode::LengthOf(&fChart, "font-size", XChartLook::kFontSize), 6.0, 40.0);
  if (fbEmbedded) fFontSize = std::min(fFontSize, 9.0);
  if (fChart.HasAttribute("font-family")) fFontFamily = fChart.Attribute("font-family");
  if (fChart.HasAttribute("background")) fBackground = XChartLook::ColorValue(fChart.Attribute("background"));

  if (!fTable.Build(fChart, data, error)) return false;
  fpGraph = fChart.FirstChild("graph");
  if (fpGraph != nullptr) {
    if (const XMarkupNode* style = fpGraph->FirstChild("style")) {
      fMarginTop = XMarkupNode::LengthOf(style, "margin-top", 0.0);
      fMarginRight = XMarkupNode::LengthOf(style, "margin-right", 0.0);
      fMarginBottom = XMarkupNode::LengthOf(style, "margin-bottom", 0.0);
      fMarginLeft = XMarkupNode::LengthOf(style, "margin-left", 0.0);
      std::string share = style->Attribute("width");
      if (!share.empty() && share.back() == '%') share.pop_back();
      XNumber::Parse(share, fGraphShare);
    }
    if (const XMarkupNode* faceting = fpGraph->FirstChild("faceting")) {
      for (const XMarkupNode* reference : faceting->Children("variableReference")) {
        fvFacetNames.push_back(reference->Attribute("variable"));
      }
    }
    if (!BuildLayers(error)) return false;
  }
  fAesthetics.Build(fvLayers, PaletteOf(fChart));
  fFrame.Layout(fChart, fbEmbedded ? std::vector<XChartAesthetics::LegendSection>() : fAesthetics.GetLegend(), fWidth,
                fFontSize);
  if (fGraphShare > 0 && fFrame.HasLegend() && !fFrame.IsLegendBelow()) {
    fFrame.SetLegendWidth(fWidth * (1.0 - fGraphShare / 100.0) - XChartFrame::kMargin - 12.0);
  }
  BuildGuides();
  const XMarkupNode* coordinates = fpGraph != nullptr ? fpGraph->FirstChild("coordinates") : nullptr;
  fpX = std::make_unique<XChartAxis>("x", coordinates);
  fpY = std::make_unique<XChartAxis>("y", coordinates);

  // Panels first: how many columns fit decides how the panels wrap.
  int wrap = 0;
  if (fpGraph != nullptr) {
    if (const XMarkupNode* layout = fpGraph->FirstChild("facetLayout")) {
      for (const XMarkupNode* level : layout->Children("facetLevel")) {
        double value = 0.0;
        if (level->Attribute("level") == "1" && XNumber::Parse(level->Attribute("wrap"), value))
          wrap = static_cast<int>(value);
        if (level->Attribute("level") == "1") fGap = XMarkupNode::LengthOf(level, "gap", kPanelGap);
      }
    }
  }
  const double room = fWidth - fFrame.GetLegendWidth() - 2 * XChartFrame::kMargin - 60.0;
  fPanels.Build(fvLayers, static_cast<int>(fvFacetNames.size()), wrap, std::max(1, static_cast<int>(room / 190.0)));
  fPanels.SetFacetNames(fvFacetNames);

  std::vector<XChartStatistics::Bin> bins;
  for (const XChartLayer& layer : fvLayers) {
    if (layer.fpBin != nullptr) {
      bins = XChartMarks::BinsOf(layer);
      break;
    }
  }
  for (const XChartLayer& layer : fvLayers) fvMarks.push_back(XChartMarks::Build(layer, fPanels, bins));

  std::vector<double> xGuides;
  std::vector<double> yGuides;
  for (const Guide& guide : fvGuides) {
    double value = 0.0;
    if (XNumber::Parse(guide.fpNode->Attribute("y"), value)) yGuides.push_back(value);
    if (XNumber::Parse(guide.fpNode->Attribute("x"), value)) xGuides.push_back(value);
  }
  fpX->Collect(fvLayers, fvMarks, xGuides);
  fpY->Collect(fvLayers, fvMarks, yGuides);
  fpX->Finish();
  fpY->Finish();
  if (fbWholeNumbers) fpX->Linear().SetMinimumStep(1.0);
  if (fpY->SameAs() == "x") fpY->TakeDomain(*fpX);
  if (fpX->SameAs() == "y") fpX->TakeDomain(*fpY);
  Layout();
  FitLabels();
  return true;
}

bool Drawing::BuildLayers(XMarkupError& error) {
  for (const XMarkupNode* element : fpGraph->Children()) {
    if (!XChartLayer::IsMark(element->fName)) continue;
    XChartLayer layer;
    if (!layer.Build(*element, *fpGraph, fTable, fvFacetNames, error)) return false;
    fvLayers.push_back(layer);
  }
  return true;
}

void Drawing::BuildGuides() {
  if (fpGraph == nullptr) return;
  for (const XMarkupNode* node : fpGraph->Children("lineGuide")) {
    Guide guide;
    guide.fpNode = node;
    std::string problem;
    guide.fbHasHide =
        node->HasAttribute("hideWhen") && XExpression::Parse(node->Attribute("hideWhen"), guide.fHide, problem);
    fvGuides.push_back(std::move(guide));
  }
}

void Drawing::Layout() {
  const double margin = fbEmbedded ? 2.0 : XChartFrame::kMargin;
  const double line = XTextMetrics::LineHeight(fFontSize);
  const int columns = std::max(1, fPanels.GetColumns());
  const int rows = std::max(1, fPanels.GetRows());
  fYTitleWidth = fpY->IsVisible() && !fpY->GetTitle().empty() ? line + 4.0 : 0.0;
  fXTitleHeight = fpX->IsVisible() && !fpX->GetTitle().empty() ? line + 6.0 : 0.0;
  const double legendRight = fFrame.HasLegend() && !fFrame.IsLegendBelow() ? fFrame.GetLegendWidth() + 16.0 : 0.0;
  const double legendBelow = fFrame.HasLegend() && fFrame.IsLegendBelow() ? fFrame.GetLegendHeight() + 8.0 : 0.0;
  double right = fGraphShare > 0 && legendRight > 0 ? fWidth * fGraphShare / 100.0 : fWidth - margin - legendRight;
  right -= fMarginRight;
  const double top =
      (fbEmbedded ? margin + fFrame.GetTopHeight() - XChartFrame::kMargin : fFrame.GetTopHeight()) + fMarginTop;
  const double maxLabel = std::min(220.0, fHeight * 0.45);

  double yDepth = 0.0;
  double overhang = 0.0;
  for (int pass = 0; pass < 3; ++pass) {
    fPlotLeft = margin + fMarginLeft + fYTitleWidth + yDepth + overhang;
    const double plotWidth = std::max(right - fPlotLeft, 10.0);
    fCellWidth = std::max((plotWidth - (columns - 1) * fGap) / columns, 10.0);
    if (fPanels.IsFaceted()) {
      std::size_t lines = 0;
      for (int p = 0; p < fPanels.GetCount(); ++p) {
        lines = std::max(lines, HeaderLines(fPanels.Get(p), fCellWidth, fFontSize).size());
      }
      fHeaderHeight = lines > 0 ? line * static_cast<double>(lines) + 6.0 : 0.0;
    }
    fpX->SetRange(0.0, fCellWidth);
    fpX->LayoutLabels(fCellWidth, fFontSize, maxLabel);
    const double xDepth = fpX->LabelDepth(fFontSize);
    overhang = std::max(0.0, fpX->LabelOverhang(fFontSize) - yDepth - fYTitleWidth);
    const double bottomText = fbEmbedded ? margin : fFrame.GetBottomHeight();
    double bottom = fHeight - bottomText - fMarginBottom - legendBelow;
    fPlotTop = top;
    double plotHeight = bottom - top - xDepth - fXTitleHeight;
    fCellHeight = (plotHeight - rows * fHeaderHeight - (rows - 1) * fGap) / rows;
    const double minimum = fbEmbedded ? kMinEmbeddedPanel : kMinPanelHeight;
    if (fCellHeight < minimum && !fbEmbedded) {
      fHeight += (minimum - fCellHeight) * rows;
      fCellHeight = minimum;
    }
    const double legendBottom = fPlotTop + fFrame.GetLegendHeight() + fFrame.GetBottomHeight();
    if (!fbEmbedded && legendRight > 0 && legendBottom > fHeight) fHeight = legendBottom;
    fCellHeight = std::max(fCellHeight, 8.0);
    fpY->SetRange(fCellHeight, 0.0);
    fpY->LayoutLabels(fCellHeight, fFontSize, fWidth * 0.25);
    yDepth = fpY->LabelDepth(fFontSize);
  }
  fLegendX = fGraphShare > 0 && legendRight > 0 ? fWidth * fGraphShare / 100.0 + 12.0
                                                : fWidth - margin - fFrame.GetLegendWidth();
  fLegendY = fPlotTop;
  const double gridBottom = fPlotTop + rows * (fHeaderHeight + fCellHeight) + (rows - 1) * fGap;
  if (fFrame.IsLegendBelow()) {
    fLegendX = margin;
    fLegendY = gridBottom + fpX->LabelDepth(fFontSize) + fXTitleHeight + 8.0;
  }
  fFooterTop = std::max(gridBottom + fpX->LabelDepth(fFontSize) + fXTitleHeight + legendBelow,
                        fLegendY + (fFrame.IsLegendBelow() ? fFrame.GetLegendHeight() : 0.0)) +
               6.0;
  if (!fbEmbedded) fHeight = std::max(fHeight, fFooterTop + fFrame.GetBottomHeight() - XChartFrame::kMargin + 4.0);
}

// Widens a continuous axis's range, where it is not fixed, until the labels
// of points and the nodes fit in the panel.
void Drawing::FitAxis(XChartAxis& axis, bool horizontal, double length) {
  if (!axis.IsUsed() || axis.IsCategorical()) return;
  XChartMarkPainter painter(fAesthetics, *fpX, *fpY, fFontSize);
  for (int pass = 0; pass < 4; ++pass) {
    double before = 0.0;  // pixels wanted below the low end of the range
    double after = 0.0;   // pixels wanted above the high end
    for (std::size_t i = 0; i < fvLayers.size(); ++i) {
      const XChartLayer& layer = fvLayers[i];
      const bool node = layer.fKind == XChartLayer::NODE && layer.fpNode->Attribute("layout") != "circle";
      if (layer.fpLabel == nullptr && !node) continue;
      double nodeWidth = 0.0;
      double nodeHeight = 0.0;
      if (node) XChartMarkPainter::NodeSize(layer, nodeWidth, nodeHeight);
      for (const XChartMark& mark : fvMarks[i]) {
        double x = 0.0;
        double y = 0.0;
        double low = 0.0;
        double high = 0.0;
        if (node) {
          x = fpX->Map(mark.fX);
          y = fpY->Map(mark.fY);
          const double label = mark.fLabel.empty() ? 0.0 : XTextMetrics::LineHeight(fFontSize);
          const bool box = layer.fMark == "box";
          const double labelWidth = XTextMetrics::Width(mark.fLabel, fFontSize);
          low = horizontal ? (box ? nodeWidth / 2.0 : nodeWidth / 2.0) : nodeHeight / 2.0;
          high = horizontal ? (box ? nodeWidth / 2.0 : nodeWidth / 2.0 + 4.0 + labelWidth) : nodeHeight / 2.0 + label;
          if (box && !horizontal) {
            low = nodeHeight / 2.0;
            high = nodeHeight / 2.0 + label;
          }
        } else {
          if (!painter.LabelAnchor(layer, mark, x, y)) continue;
          const XChartMarkPainter::Extent extent = painter.LabelExtent(layer, mark);
          low = horizontal ? extent.fLeft : extent.fDown;
          high = horizontal ? extent.fRight : extent.fUp;
        }
        const double pixel = horizontal ? x : y;
        if (!std::isfinite(pixel)) continue;
        if (horizontal) {
          before = std::max(before, low - pixel);
          after = std::max(after, pixel + high - length);
        } else {
          // Pixels run downwards: the low end of the range is at the bottom.
          before = std::max(before, pixel + low - length);
          after = std::max(after, high - pixel);
        }
      }
    }
    if (before <= 0.5 && after <= 0.5) return;
    XLinearScale& scale = axis.Linear();
    const double span = scale.GetHigh() - scale.GetLow();
    const double perPixel = span / std::max(length, 1.0);
    double low = scale.GetLow();
    double high = scale.GetHigh();
    if (before > 0.5 && !axis.IsLowFixed()) low -= (before + 2.0) * perPixel * 1.15;
    if (after > 0.5 && !axis.IsHighFixed()) high += (after + 2.0) * perPixel * 1.15;
    if (low == scale.GetLow() && high == scale.GetHigh()) return;
    scale.SetDomain(low, high);
  }
}

void Drawing::FitLabels() {
  FitAxis(*fpX, true, fCellWidth);
  FitAxis(*fpY, false, fCellHeight);
  fpX->LayoutLabels(fCellWidth, fFontSize, std::min(220.0, fHeight * 0.45));
  fpY->LayoutLabels(fCellHeight, fFontSize, fWidth * 0.25);
}

void Drawing::DrawEmbedded(const XMarkupNode& embedded, const XChartRect& box, XSvgWriter& svg) const {
  const XMarkupNode* chart = embedded.FirstChild("chart");
  if (chart == nullptr || box.fWidth < 20 || box.fHeight < 20) return;
  std::string drawing;
  XMarkupError error;
  // A storage code of 1 is an integer field.
  const bool whole = embedded.Attribute("fieldType") == "1";
  if (XChartPainter::PaintInto(*chart, box, whole, drawing, error)) svg.Raw(drawing);
}

void Drawing::DrawGuides(XSvgWriter& svg, int panel) {
  for (const Guide& guide : fvGuides) {
    if (guide.fbHasHide &&
        guide.fHide.Evaluate([&](const std::string& name) { return fPanels.LevelText(panel, name); })) {
      continue;
    }
    const XMarkupNode* style = guide.fpNode->FirstChild("style");
    std::string color = style != nullptr ? XChartLook::ColorValue(style->Attribute("stroke")) : std::string();
    if (color.empty()) color = "#555555";
    XSvgWriter::Attributes paint = {
        {"stroke", color}, {"stroke-width", XSvgWriter::Num(XMarkupNode::LengthOf(style, "stroke-width", 1.5))}};
    if (style != nullptr && style->HasAttribute("dash"))
      paint.push_back({"stroke-dasharray", style->Attribute("dash")});
    double value = 0.0;
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double slope = 0.0;
    if (XNumber::Parse(guide.fpNode->Attribute("y"), value) && guide.fpNode->Attribute("axis", "y") == "y") {
      if (!fpY->IsUsed() || fpY->IsCategorical()) continue;
      x1 = 0.0;
      x2 = fCellWidth;
      y1 = y2 = fpY->MapNumber(value);
    } else if (XNumber::Parse(guide.fpNode->Attribute("x"), value)) {
      if (!fpX->IsUsed() || fpX->IsCategorical()) continue;
      y1 = 0.0;
      y2 = fCellHeight;
      x1 = x2 = fpX->MapNumber(value);
    } else if (XNumber::Parse(guide.fpNode->Attribute("slope"), slope)) {
      if (!fpX->IsUsed() || fpX->IsCategorical() || !fpY->IsUsed() || fpY->IsCategorical()) continue;
      double intercept = 0.0;
      XNumber::Parse(guide.fpNode->Attribute("intercept"), intercept);
      const double low = fpX->Linear().GetLow();
      const double high = fpX->Linear().GetHigh();
      x1 = fpX->MapNumber(low);
      x2 = fpX->MapNumber(high);
      y1 = fpY->MapNumber(intercept + slope * low);
      y2 = fpY->MapNumber(intercept + slope * high);
    } else {
      continue;
    }
    XSvgWriter::Attributes attributes = {{"class", "guide"},
                                         {"x1", XSvgWriter::Num(x1)},
                                         {"y1", XSvgWriter::Num(y1)},
                                         {"x2", XSvgWriter::Num(x2)},
                                         {"y2", XSvgWriter::Num(y2)}};
    attributes.insert(attributes.end(), paint.begin(), paint.end());
    svg.Element("line", attributes);
  }
}

void Drawing::DrawPanel(XSvgWriter& svg, int panel) {
  const XChartPanels::Panel& place = fPanels.Get(panel);
  const double x = fPlotLeft + place.fColumn * (fCellWidth + fGap);
  const double y = fPlotTop + place.fRow * (fCellHeight + fHeaderHeight + fGap) + fHeaderHeight;
  const XChartRect local = {0.0, 0.0, fCellWidth, fCellHeight};
  svg.Open("g",
           {{"class", "panel"}, {"transform", "translate(" + XSvgWriter::Num(x) + " " + XSvgWriter::Num(y) + ")"}});
  if (fHeaderHeight > 0) {
    const std::vector<std::string> lines = HeaderLines(place, fCellWidth, fFontSize);
    svg.Element("rect", {{"class", "panel-header"},
                         {"x", "0"},
                         {"y", XSvgWriter::Num(-fHeaderHeight)},
                         {"width", XSvgWriter::Num(fCellWidth)},
                         {"height", XSvgWriter::Num(fHeaderHeight - 2.0)},
                         {"fill", "#eeeeee"}});
    if (!lines.empty()) {
      svg.Text(fCellWidth / 2.0, -fHeaderHeight + 2.0 + fFontSize, lines, XTextMetrics::LineHeight(fFontSize),
               {{"class", "panel-label"}, {"text-anchor", "middle"}, {"fill", XChartLook::kInk}});
    }
  }
  fpY->DrawGrid(svg, local);
  fpX->DrawGrid(svg, local);

  XChartMarkPainter painter(fAesthetics, *fpX, *fpY, fFontSize);
  XChartMarkPainter::NodePlaces places;
  for (std::size_t i = 0; i < fvLayers.size(); ++i) {
    if (fvLayers[i].fKind == XChartLayer::NODE) painter.PlaceNodes(fvLayers[i], fvMarks[i], panel, local, places);
  }
  // Marks are clipped to the panel; labels and nodes are laid out to fit.
  svg.Open("svg", {{"class", "plot"},
                   {"x", "0"},
                   {"y", "0"},
                   {"width", XSvgWriter::Num(fCellWidth)},
                   {"height", XSvgWriter::Num(fCellHeight)},
                   {"overflow", "hidden"}});
  for (std::size_t i = 0; i < fvLayers.size(); ++i) painter.DrawMarks(svg, fvLayers[i], fvMarks[i], panel, places);
  DrawGuides(svg, panel);
  svg.Close("svg");

  bool lowest = true;
  for (int other = 0; other < fPanels.GetCount(); ++other) {
    const XChartPanels::Panel& below = fPanels.Get(other);
    if (below.fColumn == place.fColumn && below.fRow > place.fRow) lowest = false;
  }
  fpX->Draw(svg, local, lowest, fFontSize);
  fpY->Draw(svg, local, place.fColumn == 0, fFontSize);
  for (std::size_t i = 0; i < fvLayers.size(); ++i) {
    painter.DrawLabels(svg, fvLayers[i], fvMarks[i], panel, local, places,
                       [this](const XMarkupNode& embedded, const XChartRect& box, XSvgWriter& out) {
                         DrawEmbedded(embedded, box, out);
                       });
  }
  svg.Close("g");
}

std::string Drawing::Draw() {
  XSvgWriter svg;
  const std::string width = XSvgWriter::Num(fWidth);
  const std::string height = XSvgWriter::Num(fHeight);
  const std::string title = XChartText::Of(fChart.FirstChild("title"));
  svg.Open("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                   {"class", fbEmbedded ? "embedded-chart" : "glmix-chart"},
                   {"width", width},
                   {"height", height},
                   {"viewBox", "0 0 " + width + " " + height},
                   {"role", "img"},
                   {"aria-label", title},
                   {"font-family", fFontFamily},
                   {"font-size", XSvgWriter::Num(fFontSize)}});
  svg.Element("rect", {{"class", "background"},
                       {"x", "0"},
                       {"y", "0"},
                       {"width", width},
                       {"height", height},
                       {"fill", fBackground.empty() ? std::string(XChartLook::kBackground) : fBackground}});
  fFrame.DrawTitles(svg, fWidth);
  const int rows = std::max(1, fPanels.GetRows());
  const int columns = std::max(1, fPanels.GetColumns());
  const double gridHeight = rows * (fCellHeight + fHeaderHeight) + (rows - 1) * fGap;
  const double gridWidth = columns * fCellWidth + (columns - 1) * fGap;
  if (fYTitleWidth > 0) {
    const double cx = (fbEmbedded ? 2.0 : XChartFrame::kMargin) + fMarginLeft + fFontSize;
    const double cy = fPlotTop + gridHeight / 2.0;
    svg.Text(cx, cy, {XTextMetrics::Truncate(fpY->GetTitle(), gridHeight, fFontSize)}, fFontSize,
             {{"class", "axis-title"},
              {"text-anchor", "middle"},
              {"fill", XChartLook::kInk},
              {"transform", "rotate(-90 " + XSvgWriter::Num(cx) + " " + XSvgWriter::Num(cy) + ")"}});
  }
  if (fpGraph != nullptr) {
    for (int panel = 0; panel < fPanels.GetCount(); ++panel) DrawPanel(svg, panel);
  }
  if (fXTitleHeight > 0) {
    const double y = fPlotTop + gridHeight + fpX->LabelDepth(fFontSize) + fFontSize + 2.0;
    svg.Text(fPlotLeft + gridWidth / 2.0, y, {XTextMetrics::Truncate(fpX->GetTitle(), gridWidth, fFontSize)}, fFontSize,
             {{"class", "axis-title"}, {"text-anchor", "middle"}, {"fill", XChartLook::kInk}});
  }
  fFrame.DrawLegend(svg, fLegendX, fLegendY);
  if (!fbEmbedded) fFrame.DrawFooter(svg, fFooterTop);
  svg.Close("svg");
  return svg.GetText();
}

}  // namespace

bool XChartPainter::Paint(const XMarkupNode& chart, const OmChartData& data, std::string& svg, XMarkupError& error) {
  Drawing drawing(chart, false);
  if (!drawing.Prepare(data, 0.0, 0.0, error)) return false;
  svg = drawing.Draw();
  return true;
}

bool XChartPainter::PaintInto(const XMarkupNode& chart, const XChartRect& box, bool bWholeNumbers, std::string& svg,
                              XMarkupError& error) {
  Drawing drawing(chart, true);
  drawing.SetWholeNumbers(bWholeNumbers);
  if (!drawing.Prepare(OmChartData(), box.fWidth, box.fHeight, error)) return false;
  std::string inner = drawing.Draw();
  // The drawing keeps its own coordinates and is placed at the box.
  const std::string open = "<svg ";
  if (inner.compare(0, open.size(), open) == 0) {
    inner.insert(open.size(), "x=\"" + XSvgWriter::Num(box.fX) + "\" y=\"" + XSvgWriter::Num(box.fY) + "\" ");
  }
  svg = inner;
  return true;
}
