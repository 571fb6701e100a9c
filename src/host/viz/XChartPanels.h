#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/viz/XChartLayer.h"

// The small multiples of a faceted chart: one panel per combination of the
// levels of the first and second facet variable that some row has. With
// one facet the panels wrap into rows; with two, the first facet's levels
// are columns and the second's rows. An empty value is a level of its own.
// A chart without faceting has one panel, and a mark whose source lacks the
// facet variables is drawn in every panel.
class XChartPanels {
 public:
  struct Panel {
    std::string fKey1;
    std::string fKey2;
    XChartValue fValue1;
    XChartValue fValue2;
    std::string fLabel1;  // the facet variable's prefix and the level's text
    std::string fLabel2;
    int fColumn = 0;
    int fRow = 0;
  };

  // `facets` is the number of facet variables the graph names (0 to 2);
  // `wrap` the columns of one facet's panels (0: as many as fit `columnsFit`).
  void Build(const std::vector<XChartLayer>& layers, int facets, int wrap, int columnsFit);

  int GetCount() const { return static_cast<int>(fvPanels.size()); }
  const Panel& Get(int index) const { return fvPanels[static_cast<std::size_t>(index)]; }
  int GetColumns() const { return fColumns; }
  int GetRows() const { return fRows; }
  bool IsFaceted() const { return fFacets > 0; }
  // The panel of a row of a layer; -1 when the layer is drawn in every panel.
  int PanelOf(const XChartLayer& layer, long row) const;
  // The level of a facet variable, by its name, in a panel: a number as its
  // shortest text, a text as it stands; empty when the name is no facet's.
  std::string LevelText(int panel, const std::string& name) const;
  void SetFacetNames(const std::vector<std::string>& names) { fvNames = names; }

 private:
  std::vector<Panel> fvPanels;
  std::map<std::pair<std::string, std::string>, int> fIndex;
  std::vector<std::string> fvNames;
  int fFacets = 0;
  int fColumns = 1;
  int fRows = 1;
};
