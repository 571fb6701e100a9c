#pragma once

#include <string>

#include "host/output/OmChartData.h"
#include "host/viz/XChartRect.h"
#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// Draws a chart document, checked against the markup's grammar, with its
// data, as one SVG element: titles, the graph's panels with their axes,
// marks, labels and line guides, the legend, the caption and footnote. The
// drawing is laid out from measured text so that labels stay inside it,
// and is the same text for the same chart.
class XChartPainter {
 public:
  // A chart of its own; its size is the document's (or the session's look)
  // and grows in height when its panels would be too small.
  static bool Paint(const XMarkupNode& chart, const OmChartData& data, std::string& svg, XMarkupError& error);
  // A chart drawn into a box of another drawing, with the values it
  // carries inline.
  // `bWholeNumbers` labels the x axis in whole numbers (the values are
  // those of an integer field).
  static bool PaintInto(const XMarkupNode& chart, const XChartRect& box, bool bWholeNumbers, std::string& svg,
                        XMarkupError& error);
};
