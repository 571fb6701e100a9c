#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "host/viz/XChartAesthetics.h"
#include "host/viz/XChartAxis.h"
#include "host/viz/XChartLayer.h"
#include "host/viz/XChartMark.h"
#include "host/viz/XChartRect.h"
#include "host/viz/XSvgWriter.h"

// Draws the marks of one layer in one panel: points, lines, bars and
// whiskers, areas, edges and nodes, each with its tooltip; and the labels
// of points and nodes.
class XChartMarkPainter {
 public:
  // Where a node stands, for the edges that end at it.
  struct NodePlace {
    double fX = 0.0;
    double fY = 0.0;
    double fRadius = 0.0;
  };
  using NodePlaces = std::map<std::string, NodePlace>;
  // Draws an embedded chart into a box; false when there is none to draw.
  using EmbeddedPainter = std::function<void(const XMarkupNode& embedded, const XChartRect& box, XSvgWriter& svg)>;

  XChartMarkPainter(const XChartAesthetics& aesthetics, const XChartAxis& x, const XChartAxis& y, double fontSize);

  // The places of the nodes of a panel: by data, or on a circle.
  void PlaceNodes(const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel, const XChartRect& rect,
                  NodePlaces& places) const;
  // The marks, clipped to the panel.
  void DrawMarks(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel,
                 const NodePlaces& places) const;
  // The labels and node boxes, which are not clipped.
  void DrawLabels(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel,
                  const XChartRect& rect, const NodePlaces& places, const EmbeddedPainter& embed) const;

  // A symbol of a shape (circle, square, triangle, diamond) around a point.
  static void DrawShape(XSvgWriter& svg, const std::string& shape, double x, double y, double radius,
                        XSvgWriter::Attributes attributes, const std::string& tooltip);
  // The size of a node's box, or its circle's diameter twice.
  static void NodeSize(const XChartLayer& layer, double& width, double& height);
  // The pixels a label of a point takes on each side of its anchor point.
  struct Extent {
    double fLeft = 0.0;
    double fRight = 0.0;
    double fUp = 0.0;
    double fDown = 0.0;
  };
  Extent LabelExtent(const XChartLayer& layer, const XChartMark& mark) const;
  // Where the label of a mark is anchored, in pixels.
  bool LabelAnchor(const XChartLayer& layer, const XChartMark& mark, double& x, double& y) const;

 private:
  bool InPanel(const XChartMark& mark, int panel) const { return mark.fPanel == -1 || mark.fPanel == panel; }
  double DodgeOffset(const XChartLayer& layer, const XChartMark& mark, const std::vector<std::string>& groups) const;
  std::vector<std::string> Groups(const std::vector<XChartMark>& marks) const;
  void DrawPoints(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel) const;
  void DrawLines(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel,
                 bool bArea) const;
  void DrawIntervals(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel) const;
  void DrawEdges(XSvgWriter& svg, const XChartLayer& layer, const std::vector<XChartMark>& marks, int panel,
                 const NodePlaces& places) const;

  const XChartAesthetics& fAesthetics;
  const XChartAxis& fX;
  const XChartAxis& fY;
  double fFontSize;
};
