#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/viz/XChartColumn.h"
#include "host/viz/XChartTable.h"
#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// One element of a chart's graph (<point>, <line>, <interval>, <area>,
// <edge> or <node>) with its references resolved: the source it draws, the
// variables of its positions, aesthetics, label and tooltip, its facet
// variables, and its settings.
class XChartLayer {
 public:
  enum Kind { POINT, LINE, INTERVAL, AREA, EDGE, NODE };

  // An aesthetic: the element that maps it and the variable it maps.
  struct Aesthetic {
    const XMarkupNode* fpNode = nullptr;
    const XChartColumn* fpColumn = nullptr;
    bool fbLegend = true;
    bool IsSet() const { return fpColumn != nullptr; }
  };

  // Whether an element name is one of the graph's marks.
  static bool IsMark(const std::string& name);
  // False, placed at the element, when a reference names no variable.
  bool Build(const XMarkupNode& element, const XMarkupNode& graph, const XChartTable& table,
             const std::vector<std::string>& facetNames, XMarkupError& error);

  Kind fKind = POINT;
  const XMarkupNode* fpNode = nullptr;
  std::string fSource;
  const XChartColumn* fpX = nullptr;
  const XChartColumn* fpY = nullptr;
  const XChartColumn* fpX2 = nullptr;
  const XChartColumn* fpY2 = nullptr;
  const XChartColumn* fpFrom = nullptr;
  const XChartColumn* fpTo = nullptr;
  const XChartColumn* fpKey = nullptr;
  Aesthetic fColor;
  Aesthetic fShape;
  Aesthetic fSize;
  Aesthetic fTransparency;
  Aesthetic fWidth;
  const XMarkupNode* fpLabel = nullptr;
  const XChartColumn* fpLabelText = nullptr;
  const XChartColumn* fpLabelX = nullptr;
  const XChartColumn* fpLabelY = nullptr;
  const XChartColumn* fpTooltip = nullptr;
  std::vector<std::pair<std::string, const XChartColumn*>> fvTooltipFields;  // field label, variable
  const XChartColumn* fvpFacets[2] = {nullptr, nullptr};
  std::string fSummarize;
  bool fbDodge = false;
  std::string fMark;
  const XMarkupNode* fpBin = nullptr;
  const XMarkupNode* fpDistribution = nullptr;
  const XMarkupNode* fpStyle = nullptr;

  // The tooltip of a row: the tooltip variable's text, then one line per
  // field, "label: value".
  std::string Tooltip(long row) const;
  std::string Label(long row) const;

 private:
  bool Resolve(const XMarkupNode& holder, const std::string& attribute, const XChartTable& table,
               const XChartColumn*& out, XMarkupError& error) const;
  bool ResolveAesthetic(const XMarkupNode* node, const XChartTable& table, bool fromGraph, Aesthetic& out,
                        XMarkupError& error) const;
};
