#pragma once

#include <vector>

#include "host/viz/XChartLayer.h"
#include "host/viz/XChartMark.h"
#include "host/viz/XChartPanels.h"
#include "host/viz/XChartStatistics.h"

// Turns a layer's rows into its marks: one per row, or per group of rows
// when the layer summarizes, or the bins of a histogram, or the points of a
// fitted distribution's curve.
class XChartMarks {
 public:
  // `bins` are the bins of the graph's histogram, which a distribution's
  // curve is scaled to (empty: the curve is a density).
  static std::vector<XChartMark> Build(const XChartLayer& layer, const XChartPanels& panels,
                                       const std::vector<XChartStatistics::Bin>& bins);
  // The bins of a layer with a <binStatistic>, all panels together.
  static std::vector<XChartStatistics::Bin> BinsOf(const XChartLayer& layer);
};
