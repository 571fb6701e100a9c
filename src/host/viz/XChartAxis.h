#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"
#include "host/viz/XBandScale.h"
#include "host/viz/XChartLayer.h"
#include "host/viz/XChartMark.h"
#include "host/viz/XChartRect.h"
#include "host/viz/XLinearScale.h"
#include "host/viz/XMarkupNode.h"
#include "host/viz/XSvgWriter.h"

// One axis of a chart (x or y): whether the marks place anything on it,
// categorical or continuous, its range of values from the marks and the
// <axis> settings, its ticks and their labels laid out so that they
// neither overlap nor leave the drawing, and its drawing.
class XChartAxis {
 public:
  // How category labels under an x axis are set.
  enum LabelMode { HORIZONTAL, WRAPPED, SLANTED, VERTICAL };

  // `dimension` is "x" or "y"; `coordinates` the graph's <coordinates>, or
  // null.
  XChartAxis(const std::string& dimension, const XMarkupNode* coordinates);

  // The range of values from the marks of all layers (and the values of
  // line guides along this axis).
  void Collect(const std::vector<XChartLayer>& layers, const std::vector<std::vector<XChartMark>>& marks,
               const std::vector<double>& guides);
  // Fixes the domain: the <axis> bounds, else the marks' range padded.
  void Finish();
  // The y axis that takes the x axis's domain (sameAs).
  void TakeDomain(const XChartAxis& other);
  const std::string& SameAs() const { return fSameAs; }

  bool IsUsed() const { return fbUsed; }
  bool IsCategorical() const { return fbCategorical; }
  bool IsVisible() const { return fbUsed && fbVisible; }
  bool IsLowFixed() const { return fbLowFixed; }
  bool IsHighFixed() const { return fbHighFixed; }
  const std::string& GetTitle() const { return fTitle; }

  // Pixels of the panel the axis runs along.
  void SetRange(double from, double to);
  // The pixel of a value: a category's centre or a number's place; not a
  // number when the value has no place on the axis.
  double Map(const XChartValue& value) const;
  double MapNumber(double value) const;
  double GetBandwidth() const;
  int IndexOf(const XChartValue& value) const;
  XLinearScale& Linear() { return fLinear; }
  const XLinearScale& Linear() const { return fLinear; }

  // The labels of the ticks for a panel of that length, fitted: numbers
  // thinned until they do not touch, categories set horizontally, wrapped,
  // slanted or vertical.
  void LayoutLabels(double length, double fontSize, double maxLabel);
  // The room the labels take across the axis, and, for an x axis, how far
  // slanted labels reach left of the first tick.
  double LabelDepth(double fontSize) const;
  double LabelOverhang(double fontSize) const;
  // Draws the axis along a panel: line, ticks, labels when asked, grid.
  void Draw(XSvgWriter& svg, const XChartRect& panel, bool bLabels, double fontSize) const;
  void DrawGrid(XSvgWriter& svg, const XChartRect& panel) const;

 private:
  struct Tick {
    double fPixel = 0.0;
    std::vector<std::string> fvLines;
  };
  std::vector<Tick> Ticks() const;
  std::string NumberLabel(double value, double step) const;

  std::string fDimension;
  const XMarkupNode* fpNode = nullptr;
  std::string fSameAs;
  bool fbUsed = false;
  bool fbCategorical = false;
  bool fbVisible = true;
  bool fbGrid = false;
  bool fbTicks = true;
  std::string fLabelAngle;
  double fMargin = 0.0;  // pixels kept free inside the panel at both ends
  double fStart = 0.0;   // the pixel where the panel begins
  std::string fTitle;
  bool fbHasFormat = false;
  ZORV_Format fFormat;
  double fLow = 0.0;
  double fHigh = 0.0;
  bool fbAny = false;
  bool fbLowFixed = false;
  bool fbHighFixed = false;
  std::vector<std::string> fvKeys;
  std::vector<std::string> fvLabels;
  XLinearScale fLinear;
  XBandScale fBand;
  // Label layout.
  LabelMode fMode = HORIZONTAL;
  int fTickCount = 5;
  std::vector<std::vector<std::string>> fvFitted;  // category labels as set
  double fLabelWidest = 0.0;
  int fLabelLines = 1;
};
