#include "host/viz/XChartPanels.h"

#include <algorithm>
#include <set>

#include "host/viz/XNumber.h"

namespace {

struct Level {
  std::string fKey;
  XChartValue fValue;
  std::string fLabel;
};

// The levels of one facet over all layers, in the order of the first layer
// that has the facet, the empty level last.
std::vector<Level> LevelsOf(const std::vector<XChartLayer>& layers, int facet) {
  std::vector<Level> levels;
  std::set<std::string> seen;
  bool empty = false;
  for (const XChartLayer& layer : layers) {
    const XChartColumn* column = layer.fvpFacets[facet];
    if (column == nullptr) continue;
    empty = empty || column->HasEmpty();
    for (const XChartValue& value : column->Categories()) {
      if (!seen.insert(value.Key()).second) continue;
      std::string label = column->Display(value);
      if (!column->GetPrefix().empty()) label = column->GetPrefix() + label;
      levels.push_back({value.Key(), value, label});
    }
  }
  if (empty) levels.push_back({std::string(), XChartValue(), std::string()});
  return levels;
}

}  // namespace

void XChartPanels::Build(const std::vector<XChartLayer>& layers, int facets, int wrap, int columnsFit) {
  fvPanels.clear();
  fIndex.clear();
  fFacets = std::clamp(facets, 0, 2);
  bool any = false;
  for (const XChartLayer& layer : layers) any = any || layer.fvpFacets[0] != nullptr || layer.fvpFacets[1] != nullptr;
  if (fFacets == 0 || !any) {
    fFacets = 0;
    fvPanels.push_back(Panel());
    fIndex[{std::string(), std::string()}] = 0;
    fColumns = fRows = 1;
    return;
  }
  const std::vector<Level> first = LevelsOf(layers, 0);
  const std::vector<Level> second = fFacets > 1 ? LevelsOf(layers, 1) : std::vector<Level>();
  // The combinations the rows have.
  std::set<std::pair<std::string, std::string>> present;
  for (const XChartLayer& layer : layers) {
    if (layer.fvpFacets[0] == nullptr && layer.fvpFacets[1] == nullptr) continue;
    const long rows = std::max(layer.fvpFacets[0] ? layer.fvpFacets[0]->GetRowCount() : 0,
                               layer.fvpFacets[1] ? layer.fvpFacets[1]->GetRowCount() : 0);
    for (long row = 0; row < rows; ++row) {
      present.insert({layer.fvpFacets[0] ? layer.fvpFacets[0]->At(row).Key() : std::string(),
                      fFacets > 1 && layer.fvpFacets[1] ? layer.fvpFacets[1]->At(row).Key() : std::string()});
    }
  }
  const std::vector<Level> none = {Level()};
  const std::vector<Level>& a = first.empty() ? none : first;
  const std::vector<Level>& b = second.empty() ? none : second;
  const bool grid = fFacets > 1 && !second.empty();
  fColumns = grid ? static_cast<int>(a.size())
                  : std::max(1, wrap > 0 ? wrap : std::min(columnsFit, static_cast<int>(a.size())));
  for (std::size_t j = 0; j < b.size(); ++j) {
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (!present.count({a[i].fKey, b[j].fKey})) continue;
      Panel panel;
      panel.fKey1 = a[i].fKey;
      panel.fKey2 = b[j].fKey;
      panel.fValue1 = a[i].fValue;
      panel.fValue2 = b[j].fValue;
      panel.fLabel1 = a[i].fLabel;
      panel.fLabel2 = b[j].fLabel;
      const int index = static_cast<int>(fvPanels.size());
      panel.fColumn = grid ? static_cast<int>(i) : index % fColumns;
      panel.fRow = grid ? static_cast<int>(j) : index / fColumns;
      fIndex[{panel.fKey1, panel.fKey2}] = index;
      fvPanels.push_back(panel);
    }
  }
  if (fvPanels.empty()) {
    fvPanels.push_back(Panel());
    fIndex[{std::string(), std::string()}] = 0;
  }
  fRows = 1;
  for (const Panel& panel : fvPanels) fRows = std::max(fRows, panel.fRow + 1);
  if (!grid) fColumns = std::min(fColumns, GetCount());
}

int XChartPanels::PanelOf(const XChartLayer& layer, long row) const {
  if (fFacets == 0 || (layer.fvpFacets[0] == nullptr && layer.fvpFacets[1] == nullptr)) return -1;
  const std::string key1 = layer.fvpFacets[0] ? layer.fvpFacets[0]->At(row).Key() : std::string();
  const std::string key2 = fFacets > 1 && layer.fvpFacets[1] ? layer.fvpFacets[1]->At(row).Key() : std::string();
  auto found = fIndex.find({key1, key2});
  return found == fIndex.end() ? -2 : found->second;
}

std::string XChartPanels::LevelText(int panel, const std::string& name) const {
  if (panel < 0 || panel >= GetCount()) return std::string();
  for (std::size_t k = 0; k < fvNames.size() && k < 2; ++k) {
    if (fvNames[k] != name) continue;
    const XChartValue& value = k == 0 ? Get(panel).fValue1 : Get(panel).fValue2;
    if (value.fKind == XChartValue::NUMBER) return XNumber::Exact(value.fNumber);
    return value.fText;
  }
  return std::string();
}
