#include "host/viz/XChartFrame.h"

#include <algorithm>

#include "host/viz/XChartLook.h"
#include "host/viz/XChartText.h"
#include "host/viz/XTextMetrics.h"

namespace {

const double kSwatch = 12.0;
const double kSwatchGap = 6.0;
const double kEntryGap = 4.0;
const double kSectionGap = 8.0;

double StyleSize(const XMarkupNode* holder, double fallback) {
  const double size =
      XMarkupNode::LengthOf(holder != nullptr ? holder->FirstChild("style") : nullptr, "font-size", fallback);
  return size > 0 ? size : fallback;
}

}  // namespace

const double XChartFrame::kMargin = 12.0;

double XChartFrame::Block::Height() const {
  return fvLines.empty() ? 0.0 : XTextMetrics::LineHeight(fFontSize) * static_cast<double>(fvLines.size()) + 4.0;
}

XChartFrame::Block XChartFrame::MakeBlock(const XMarkupNode* holder, const std::string& cssClass, double scale,
                                          bool bold, double width) const {
  Block block;
  block.fClass = cssClass;
  block.fbBold = bold;
  block.fFontSize = StyleSize(holder, fFontSize * scale);
  const std::string text = XChartText::Of(holder);
  if (text.find_first_not_of(" \n") != std::string::npos) {
    block.fvLines = XTextMetrics::Wrap(text, width, block.fFontSize, bold);
  }
  return block;
}

void XChartFrame::Layout(const XMarkupNode& chart, const std::vector<XChartAesthetics::LegendSection>& legend,
                         double width, double fontSize) {
  fWidth = width;
  fFontSize = fontSize;
  const double inner = std::max(width - 2 * kMargin, fontSize * 4);
  fTitle = MakeBlock(chart.FirstChild("title"), "chart-title", 1.35, true, inner);
  fSubtitle = MakeBlock(chart.FirstChild("subtitle"), "chart-subtitle", 1.05, false, inner);
  fCaption = MakeBlock(chart.FirstChild("caption"), "chart-caption", 1.0, false, inner);
  fFootnote = MakeBlock(chart.FirstChild("footnote"), "chart-footnote", 0.9, false, inner);
  fTopHeight = kMargin + fTitle.Height() + fSubtitle.Height();
  fBottomHeight = kMargin + fCaption.Height() + fFootnote.Height();

  const XMarkupNode* node = chart.FirstChild("legend");
  const XMarkupNode* style = node != nullptr ? node->FirstChild("style") : nullptr;
  fbLegend = node != nullptr && !legend.empty() && (style == nullptr || style->Attribute("visible", "true") == "true");
  fvLegend = legend;
  fbLegendBelow = node != nullptr && node->Attribute("position") == "bottom";
  fLegendTitle = node != nullptr ? XChartText::Of(node->FirstChild("title")) : std::string();
  if (!fbLegend) return;
  double widest = XTextMetrics::Width(fLegendTitle, fontSize, true);
  for (const auto& section : fvLegend) {
    widest = std::max(widest, XTextMetrics::Width(section.fTitle, fontSize, true));
    for (const auto& entry : section.fvEntries) {
      widest = std::max(widest, kSwatch + kSwatchGap + XTextMetrics::Width(entry.fLabel, fontSize));
    }
  }
  fLegendWidth = fbLegendBelow ? inner : std::clamp(widest + 4.0, 60.0, std::max(60.0, width * 0.3));
  WrapLegend();
}

void XChartFrame::SetLegendWidth(double width) {
  if (!fbLegend || fbLegendBelow) return;
  fLegendWidth = std::max(width, 40.0);
  WrapLegend();
}

void XChartFrame::WrapLegend() {
  const double text = std::max(fLegendWidth - kSwatch - kSwatchGap, fFontSize * 2);
  fvLegendTitleLines = fLegendTitle.empty() ? std::vector<std::string>()
                                            : XTextMetrics::Wrap(fLegendTitle, fLegendWidth, fFontSize, true);
  fvSectionTitleLines.clear();
  fvEntryLines.clear();
  const bool sectionTitles = fvLegend.size() > 1 || fLegendTitle.empty();
  for (const auto& section : fvLegend) {
    fvSectionTitleLines.push_back(sectionTitles && !section.fTitle.empty()
                                      ? XTextMetrics::Wrap(section.fTitle, fLegendWidth, fFontSize, true)
                                      : std::vector<std::string>());
    std::vector<std::vector<std::string>> entries;
    for (const auto& entry : section.fvEntries) entries.push_back(XTextMetrics::Wrap(entry.fLabel, text, fFontSize));
    fvEntryLines.push_back(entries);
  }
}

double XChartFrame::GetLegendHeight() const {
  if (!fbLegend) return 0.0;
  const double line = XTextMetrics::LineHeight(fFontSize);
  double height = line * static_cast<double>(fvLegendTitleLines.size());
  for (std::size_t s = 0; s < fvLegend.size(); ++s) {
    if (s > 0 || !fvLegendTitleLines.empty()) height += kSectionGap;
    height += line * static_cast<double>(fvSectionTitleLines[s].size());
    for (const auto& lines : fvEntryLines[s])
      height += std::max(kSwatch, line * static_cast<double>(lines.size())) + kEntryGap;
  }
  return height;
}

void XChartFrame::DrawTitles(XSvgWriter& svg, double width) const {
  double y = kMargin;
  for (const Block* block : {&fTitle, &fSubtitle}) {
    if (block->fvLines.empty()) continue;
    const double line = XTextMetrics::LineHeight(block->fFontSize);
    XSvgWriter::Attributes attributes = {{"class", block->fClass},
                                         {"text-anchor", "middle"},
                                         {"font-size", XSvgWriter::Num(block->fFontSize)},
                                         {"fill", XChartLook::kInk}};
    if (block->fbBold) attributes.push_back({"font-weight", "bold"});
    svg.Text(width / 2.0, y + block->fFontSize, block->fvLines, line, attributes);
    y += block->Height();
  }
}

void XChartFrame::DrawFooter(XSvgWriter& svg, double top) const {
  double y = top;
  for (const Block* block : {&fCaption, &fFootnote}) {
    if (block->fvLines.empty()) continue;
    const double line = XTextMetrics::LineHeight(block->fFontSize);
    svg.Text(kMargin, y + block->fFontSize, block->fvLines, line,
             {{"class", block->fClass}, {"font-size", XSvgWriter::Num(block->fFontSize)}, {"fill", XChartLook::kInk}});
    y += block->Height();
  }
}

void XChartFrame::DrawLegend(XSvgWriter& svg, double x, double y) const {
  if (!fbLegend) return;
  const double line = XTextMetrics::LineHeight(fFontSize);
  svg.Open("g", {{"class", "legend"}});
  if (!fvLegendTitleLines.empty()) {
    svg.Text(x, y + fFontSize, fvLegendTitleLines, line,
             {{"class", "legend-title"}, {"font-weight", "bold"}, {"fill", XChartLook::kInk}});
    y += line * static_cast<double>(fvLegendTitleLines.size());
  }
  for (std::size_t s = 0; s < fvLegend.size(); ++s) {
    if (s > 0 || !fvLegendTitleLines.empty()) y += kSectionGap;
    if (!fvSectionTitleLines[s].empty()) {
      svg.Text(x, y + fFontSize, fvSectionTitleLines[s], line,
               {{"class", "legend-title"}, {"font-weight", "bold"}, {"fill", XChartLook::kInk}});
      y += line * static_cast<double>(fvSectionTitleLines[s].size());
    }
    const auto& section = fvLegend[s];
    for (std::size_t e = 0; e < section.fvEntries.size(); ++e) {
      const auto& entry = section.fvEntries[e];
      const auto& lines = fvEntryLines[s][e];
      const double cy = y + kSwatch / 2.0;
      if (entry.fShape == "line") {
        svg.Element("line", {{"x1", XSvgWriter::Num(x)},
                             {"y1", XSvgWriter::Num(cy)},
                             {"x2", XSvgWriter::Num(x + kSwatch)},
                             {"y2", XSvgWriter::Num(cy)},
                             {"stroke", entry.fColor},
                             {"stroke-width", XSvgWriter::Num(entry.fWidth)}});
      } else if (entry.fShape == "circle" || entry.fShape == "triangle" || entry.fShape == "diamond") {
        const double r = entry.fRadius > 0 ? std::min(entry.fRadius, kSwatch / 2.0) : kSwatch / 2.5;
        svg.Element("circle", {{"cx", XSvgWriter::Num(x + kSwatch / 2.0)},
                               {"cy", XSvgWriter::Num(cy)},
                               {"r", XSvgWriter::Num(r)},
                               {"fill", entry.fColor},
                               {"fill-opacity", XSvgWriter::Num(entry.fAlpha)}});
      } else {
        svg.Element("rect", {{"x", XSvgWriter::Num(x)},
                             {"y", XSvgWriter::Num(y)},
                             {"width", XSvgWriter::Num(kSwatch)},
                             {"height", XSvgWriter::Num(kSwatch)},
                             {"fill", entry.fColor},
                             {"fill-opacity", XSvgWriter::Num(entry.fAlpha)}});
      }
      svg.Text(x + kSwatch + kSwatchGap, y + fFontSize * 0.85, lines, line,
               {{"class", "legend-label"}, {"fill", XChartLook::kInk}});
      y += std::max(kSwatch, line * static_cast<double>(lines.size())) + kEntryGap;
    }
  }
  svg.Close("g");
}
