#include "host/render/OmTableLayout.h"

#include <algorithm>
#include <set>
#include <utility>

struct OmTableLayout::EntryData {
  int fLevel = 0;
  int fLevels = 1;
  int fDim = 0;
  std::vector<int> fvPrefix;        // the categories of the outer dimensions
  const void* fpNode = nullptr;     // the node, or the dimension for its name
  const OmText* fpText = nullptr;
  bool fbHasChildren = false;
  bool fbDimensionName = false;

  bool SameKey(const EntryData& other) const {
    return fDim == other.fDim && fpNode == other.fpNode && fvPrefix == other.fvPrefix &&
           fLevel == other.fLevel && fLevels == other.fLevels;
  }
};

namespace {

std::vector<std::vector<int>> CartesianProduct(const std::vector<int>& counts) {
  std::vector<std::vector<int>> out(1);
  for (int count : counts) {
    std::vector<std::vector<int>> next;
    next.reserve(out.size() * static_cast<std::size_t>(std::max(count, 0)));
    for (const auto& prefix : out) {
      for (int i = 0; i < count; ++i) {
        next.push_back(prefix);
        next.back().push_back(i);
      }
    }
    out.swap(next);
  }
  return out;
}

void ReferenceTree(const OmDimensionNode& node, OmFootnoteMarkers& markers) {
  for (const OmDimensionNode& child : node.fvChildren) {
    markers.Reference(child.fLabel);
    ReferenceTree(child, markers);
  }
}

}  // namespace

OmTableLayout::OmTableLayout(const OmTable& table)
    : fpTable(&table), fMarkers(static_cast<int>(table.fvFootnotes.size())) {
  ClassifyDimensions();

  const std::size_t nDims = table.fvDimensions.size();
  std::vector<int> leafCounts(nDims, 0);
  auto countOf = [&](const std::vector<DimInfoData>& dims) {
    for (const DimInfoData& d : dims) leafCounts[static_cast<std::size_t>(d.fIndex)] = static_cast<int>(d.fvPaths.size());
  };
  countOf(fvRowDims);
  countOf(fvColumnDims);
  countOf(fvLayerDims);

  auto part = [](const std::vector<DimInfoData>& dims, const std::vector<int>& coords) {
    std::vector<int> out;
    out.reserve(dims.size());
    for (const DimInfoData& d : dims) out.push_back(coords[static_cast<std::size_t>(d.fIndex)]);
    return out;
  };

  std::set<std::vector<int>> rowSet, columnSet, layerSet;
  std::set<std::pair<std::vector<int>, std::vector<int>>> layerRowSet;
  for (const auto& entry : table.fCells) {
    const std::vector<int>& coords = entry.first;
    if (coords.size() != nDims) continue;
    bool valid = true;
    for (std::size_t i = 0; i < nDims && valid; ++i) valid = coords[i] >= 0 && coords[i] < leafCounts[i];
    if (!valid) continue;
    fbHasValidCells = true;
    std::vector<int> row = part(fvRowDims, coords);
    std::vector<int> layer = part(fvLayerDims, coords);
    rowSet.insert(row);
    columnSet.insert(part(fvColumnDims, coords));
    layerSet.insert(layer);
    layerRowSet.emplace(std::move(layer), std::move(row));
  }

  auto tuples = [&](const std::vector<DimInfoData>& dims, const std::set<std::vector<int>>& seen) {
    if (fbHasValidCells) return std::vector<std::vector<int>>(seen.begin(), seen.end());
    std::vector<int> counts;
    for (const DimInfoData& d : dims) counts.push_back(static_cast<int>(d.fvPaths.size()));
    return CartesianProduct(counts);
  };
  fvRows = tuples(fvRowDims, rowSet);
  fvColumns = tuples(fvColumnDims, columnSet);
  fvLayers = tuples(fvLayerDims, layerSet);

  for (const DimInfoData& d : fvColumnDims) fHeaderLevels += d.fDepth + (table.fvDimensions[static_cast<std::size_t>(d.fIndex)].fbShowName ? 1 : 0);
  for (const DimInfoData& d : fvRowDims) fStubLevels += d.fDepth;

  std::vector<int> allColumns(fvColumns.size());
  for (std::size_t i = 0; i < allColumns.size(); ++i) allColumns[i] = static_cast<int>(i);
  fvHeaderSpans = BuildSpans(fvColumnDims, fvColumns, allColumns, true);

  for (const auto& layer : fvLayers) {
    std::vector<int> rows;
    for (std::size_t r = 0; r < fvRows.size(); ++r) {
      if (!fbHasValidCells || layerRowSet.count(std::make_pair(layer, fvRows[r])) > 0) rows.push_back(static_cast<int>(r));
    }
    fvStubSpans.push_back(BuildSpans(fvRowDims, fvRows, rows, false));
    fvLayerRows.push_back(std::move(rows));
  }

  int level = 0;
  for (const DimInfoData& d : fvRowDims) {
    const OmDimension& dim = table.fvDimensions[static_cast<std::size_t>(d.fIndex)];
    if (dim.fbShowName && d.fDepth > 0) {
      SpanData span;
      span.fpText = &dim.fName;
      span.fLevel = level;
      span.fLevels = d.fDepth;
      span.fbDimensionName = true;
      fvStubHeaderSpans.push_back(span);
    }
    level += d.fDepth;
  }

  AssignMarkers();
}

void OmTableLayout::ClassifyDimensions() {
  const auto& dims = fpTable->fvDimensions;
  for (std::size_t i = 0; i < dims.size(); ++i) {
    DimInfoData info;
    info.fIndex = static_cast<int>(i);
    for (const auto& path : dims[i].LeafPaths()) {
      std::vector<const OmDimensionNode*> visible;
      for (std::size_t k = 0; k < path.size() && dims[i].fbShowLabels; ++k) {
        if (k + 1 == path.size() || path[k]->fbShowLabel) visible.push_back(path[k]);
      }
      info.fDepth = std::max(info.fDepth, static_cast<int>(visible.size()));
      info.fvPaths.push_back(std::move(visible));
    }
    switch (dims[i].fPlace) {
      case OmDimension::COLUMN:
        fvColumnDims.push_back(std::move(info));
        break;
      case OmDimension::LAYER:
        fvLayerDims.push_back(std::move(info));
        break;
      default:
        fvRowDims.push_back(std::move(info));
        break;
    }
  }
  // Outermost first; among equals, the one made first.
  auto outerFirst = [&dims](const DimInfoData& a, const DimInfoData& b) {
    return dims[static_cast<std::size_t>(a.fIndex)].fOrder > dims[static_cast<std::size_t>(b.fIndex)].fOrder;
  };
  std::stable_sort(fvRowDims.begin(), fvRowDims.end(), outerFirst);
  std::stable_sort(fvColumnDims.begin(), fvColumnDims.end(), outerFirst);
  std::stable_sort(fvLayerDims.begin(), fvLayerDims.end(), outerFirst);
}

std::vector<OmTableLayout::SpanData> OmTableLayout::BuildSpans(const std::vector<DimInfoData>& dims,
                                                               const std::vector<std::vector<int>>& tuples,
                                                               const std::vector<int>& order,
                                                               bool header) const {
  int levels = 0;
  for (const DimInfoData& d : dims) {
    levels += d.fDepth + (header && fpTable->fvDimensions[static_cast<std::size_t>(d.fIndex)].fbShowName ? 1 : 0);
  }
  std::vector<SpanData> spans;
  std::vector<EntryData> keys;
  std::vector<int> open(static_cast<std::size_t>(levels), -1);

  for (std::size_t position = 0; position < order.size(); ++position) {
    const std::vector<int>& tuple = tuples[static_cast<std::size_t>(order[position])];
    std::vector<EntryData> entries;
    int offset = 0;
    for (std::size_t k = 0; k < dims.size(); ++k) {
      const OmDimension& dim = fpTable->fvDimensions[static_cast<std::size_t>(dims[k].fIndex)];
      const bool showName = header && dim.fbShowName;
      const int s = showName ? 1 : 0;
      const int band = dims[k].fDepth + s;
      std::vector<int> prefix(tuple.begin(), tuple.begin() + static_cast<std::ptrdiff_t>(k));
      if (showName) {
        EntryData e;
        e.fLevel = offset;
        e.fDim = static_cast<int>(k);
        e.fvPrefix = prefix;
        e.fpNode = &dim;
        e.fpText = &dim.fName;
        e.fbHasChildren = true;
        e.fbDimensionName = true;
        entries.push_back(e);
      }
      const auto& path = dims[k].fvPaths[static_cast<std::size_t>(tuple[k])];
      for (std::size_t i = 0; i < path.size(); ++i) {
        const bool last = i + 1 == path.size();
        EntryData e;
        e.fLevel = offset + s + static_cast<int>(i);
        e.fLevels = last ? band - s - static_cast<int>(i) : 1;
        e.fDim = static_cast<int>(k);
        e.fvPrefix = prefix;
        e.fpNode = path[i];
        e.fpText = (last && !path[i]->fbShowLabel) ? nullptr : &path[i]->fLabel;
        e.fbHasChildren = !last || k + 1 < dims.size();
        entries.push_back(e);
      }
      offset += band;
    }
    for (const EntryData& e : entries) {
      int& current = open[static_cast<std::size_t>(e.fLevel)];
      const int p = static_cast<int>(position);
      if (current >= 0 && keys[static_cast<std::size_t>(current)].SameKey(e) &&
          spans[static_cast<std::size_t>(current)].fFirst + spans[static_cast<std::size_t>(current)].fCount == p) {
        ++spans[static_cast<std::size_t>(current)].fCount;
        continue;
      }
      SpanData span;
      span.fpText = e.fpText;
      span.fFirst = p;
      span.fCount = 1;
      span.fLevel = e.fLevel;
      span.fLevels = e.fLevels;
      span.fbHasChildren = e.fbHasChildren;
      span.fbDimensionName = e.fbDimensionName;
      current = static_cast<int>(spans.size());
      spans.push_back(span);
      keys.push_back(e);
    }
  }
  std::stable_sort(spans.begin(), spans.end(), [](const SpanData& a, const SpanData& b) {
    return a.fLevel != b.fLevel ? a.fLevel < b.fLevel : a.fFirst < b.fFirst;
  });
  return spans;
}

void OmTableLayout::AssignMarkers() {
  const OmTable& table = *fpTable;
  fMarkers.Reference(table.fTitle);
  for (const OmDimension& dim : table.fvDimensions) {
    fMarkers.Reference(dim.fName);
    ReferenceTree(dim.fRoot, fMarkers);
  }
  for (int l = 0; l < GetLayerCount(); ++l) {
    for (int r : fvLayerRows[static_cast<std::size_t>(l)]) {
      for (int c = 0; c < GetColumnCount(); ++c) {
        if (const OmCell* cell = CellAt(l, r, c)) fMarkers.Reference(cell->fContent);
      }
    }
  }
  for (const OmText& caption : table.fvCaptions) fMarkers.Reference(caption);
  for (const OmText& note : table.fvNotes) fMarkers.Reference(note);
  fMarkers.Complete();
}

const std::vector<int>& OmTableLayout::GetLayerRows(int layer) const {
  static const std::vector<int> kNone;
  if (layer < 0 || layer >= GetLayerCount()) return kNone;
  return fvLayerRows[static_cast<std::size_t>(layer)];
}

const std::vector<OmTableLayout::SpanData>& OmTableLayout::GetStubSpans(int layer) const {
  static const std::vector<SpanData> kNone;
  if (layer < 0 || layer >= GetLayerCount()) return kNone;
  return fvStubSpans[static_cast<std::size_t>(layer)];
}

std::vector<OmTableLayout::LayerPartData> OmTableLayout::GetLayerLabel(int layer) const {
  std::vector<LayerPartData> out;
  if (layer < 0 || layer >= GetLayerCount()) return out;
  for (std::size_t k = 0; k < fvLayerDims.size(); ++k) {
    const OmDimension& dim = fpTable->fvDimensions[static_cast<std::size_t>(fvLayerDims[k].fIndex)];
    LayerPartData partData;
    if (dim.fbShowName) partData.fpName = &dim.fName;
    const auto& path = fvLayerDims[k].fvPaths[static_cast<std::size_t>(fvLayers[static_cast<std::size_t>(layer)][k])];
    for (const OmDimensionNode* node : path) {
      if (node->fbShowLabel) partData.fvPath.push_back(&node->fLabel);
    }
    out.push_back(std::move(partData));
  }
  return out;
}

std::vector<int> OmTableLayout::Coordinates(int layer, int row, int column) const {
  std::vector<int> coords(fpTable->fvDimensions.size(), 0);
  auto place = [&](const std::vector<DimInfoData>& dims, const std::vector<std::vector<int>>& tuples, int index) {
    if (index < 0 || index >= static_cast<int>(tuples.size())) return;
    const std::vector<int>& tuple = tuples[static_cast<std::size_t>(index)];
    for (std::size_t k = 0; k < dims.size() && k < tuple.size(); ++k) coords[static_cast<std::size_t>(dims[k].fIndex)] = tuple[k];
  };
  place(fvLayerDims, fvLayers, layer);
  place(fvRowDims, fvRows, row);
  place(fvColumnDims, fvColumns, column);
  return coords;
}

const OmCell* OmTableLayout::CellAt(int layer, int row, int column) const {
  if (layer < 0 || layer >= GetLayerCount() || row < 0 || row >= GetRowCount() || column < 0 ||
      column >= GetColumnCount()) {
    return nullptr;
  }
  return fpTable->CellAt(Coordinates(layer, row, column));
}
