#pragma once

#include <limits>
#include <string>

#include "host/viz/XChartValue.h"

// One thing a layer draws, in the values of its data: a point, a vertex of
// a line or area, a bar or whisker, an edge or a node, with what its
// aesthetics say of it.
struct XChartMark {
  static constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

  int fPanel = -1;  // -1: every panel
  long fRow = -1;   // the (first) row it stands for; -1 for a computed mark
  XChartValue fX;
  XChartValue fY;
  bool fbXRange = false;  // a bin: from fXLow to fXHigh
  double fXLow = 0.0;
  double fXHigh = 0.0;
  bool fbYRange = false;  // a bar or whisker: from fYLow to fYHigh
  double fYLow = 0.0;
  double fYHigh = 0.0;
  XChartValue fX2;  // the far end of an edge
  XChartValue fY2;
  XChartValue fFrom;  // an edge between nodes, by their keys
  XChartValue fTo;
  XChartValue fKey;  // a node's key
  XChartValue fColor;
  XChartValue fShape;
  double fSize = kNone;
  double fAlpha = kNone;
  double fWidth = kNone;
  std::string fLabel;
  XChartValue fLabelX;
  XChartValue fLabelY;
  std::string fTooltip;
};
