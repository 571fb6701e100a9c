#pragma once

#include <string>
#include <vector>

#include "host/viz/XChartAesthetics.h"
#include "host/viz/XChartRect.h"
#include "host/viz/XMarkupNode.h"
#include "host/viz/XSvgWriter.h"

// What surrounds a chart's graph: the title and subtitle above it, the
// caption and footnote below it, and the legend beside it; each text
// wrapped to the room it has.
class XChartFrame {
 public:
  // The texts of the chart and the legend's sections, for a chart that
  // wide, at its font size.
  void Layout(const XMarkupNode& chart, const std::vector<XChartAesthetics::LegendSection>& legend, double width,
              double fontSize);
  // Gives the legend a width of its own (a graph that takes a share of the
  // chart's width leaves the rest to it).
  void SetLegendWidth(double width);

  double GetTopHeight() const { return fTopHeight; }
  double GetBottomHeight() const { return fBottomHeight; }
  bool HasLegend() const { return fbLegend; }
  bool IsLegendBelow() const { return fbLegendBelow; }
  double GetLegendWidth() const { return fbLegend ? fLegendWidth : 0.0; }
  double GetLegendHeight() const;

  void DrawTitles(XSvgWriter& svg, double width) const;
  void DrawFooter(XSvgWriter& svg, double top) const;
  void DrawLegend(XSvgWriter& svg, double x, double y) const;

  static const double kMargin;

 private:
  struct Block {
    std::vector<std::string> fvLines;
    double fFontSize = 0.0;
    bool fbBold = false;
    std::string fClass;
    double Height() const;
  };
  Block MakeBlock(const XMarkupNode* holder, const std::string& cssClass, double scale, bool bold, double width) const;
  void WrapLegend();

  double fWidth = 0.0;
  double fFontSize = 12.0;
  Block fTitle;
  Block fSubtitle;
  Block fCaption;
  Block fFootnote;
  double fTopHeight = 0.0;
  double fBottomHeight = 0.0;
  bool fbLegend = false;
  bool fbLegendBelow = false;
  double fLegendWidth = 0.0;
  std::string fLegendTitle;
  std::vector<XChartAesthetics::LegendSection> fvLegend;
  // The legend's texts as wrapped: its title, then per section its title
  // and its entries.
  std::vector<std::string> fvLegendTitleLines;
  std::vector<std::vector<std::string>> fvSectionTitleLines;
  std::vector<std::vector<std::vector<std::string>>> fvEntryLines;
};
