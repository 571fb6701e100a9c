#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/viz/XChartLayer.h"
#include "host/viz/XChartMark.h"

// The scales of a chart's aesthetics: which colour and shape each category
// takes, and how numbers map to sizes, widths and opacity; and the legend
// they make.
class XChartAesthetics {
 public:
  struct LegendEntry {
    std::string fLabel;
    std::string fColor;
    std::string fShape;
    double fAlpha = 1.0;
    double fRadius = 0.0;
    double fWidth = 0.0;
  };
  struct LegendSection {
    enum Kind { COLOR, SHAPE, TRANSPARENCY, SIZE, WIDTH };
    Kind fKind = COLOR;
    std::string fTitle;
    std::vector<LegendEntry> fvEntries;
  };

  void Build(const std::vector<XChartLayer>& layers, const std::vector<std::string>& palette);

  // The layer's colour for a mark: its category's, or the layer's own.
  std::string Color(const XChartLayer& layer, const XChartMark& mark) const;
  // The colour of a layer without a colour aesthetic: its style's, or the
  // first of the palette.
  std::string BaseColor(const XChartLayer& layer) const;
  std::string Shape(const XChartLayer& layer, const XChartMark& mark) const;
  double Radius(const XChartLayer& layer, const XChartMark& mark, double base) const;
  double Alpha(const XChartLayer& layer, const XChartMark& mark) const;
  double StrokeWidth(const XChartLayer& layer, const XChartMark& mark, double base) const;
  // One section per mapped variable that shows in the legend, in the order
  // the layers first map them.
  const std::vector<LegendSection>& GetLegend() const { return fvLegend; }

 private:
  struct Categorical {
    std::map<std::string, std::string> fByKey;  // category key -> colour or shape
  };
  struct Numeric {
    double fLow = 0.0;
    double fHigh = 1.0;
    double fFrom = 0.0;
    double fTo = 1.0;
    bool fbLog = false;  // positions by the logarithm of the value
    double Map(double value) const;
  };

  // A colour or a shape per category.
  void AddCategorical(const XChartLayer::Aesthetic& aesthetic, LegendSection::Kind kind);
  void AddNumeric(const XChartLayer::Aesthetic& aesthetic, LegendSection::Kind kind, double from, double to,
                  const std::string& color);
  void AddLegend(const XChartLayer::Aesthetic& aesthetic, const LegendSection& section);

  std::vector<std::string> fvPalette;
  std::map<const XChartColumn*, Categorical> fColors;
  std::map<const XChartColumn*, Categorical> fShapes;
  std::map<const XChartColumn*, Numeric> fNumbers;
  std::vector<LegendSection> fvLegend;
  std::vector<const XChartColumn*> fvInLegend;
};
