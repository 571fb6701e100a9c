#pragma once

#include <vector>

#include "host/output/OmDocument.h"
#include "host/render/OmFootnoteMarkers.h"

// The geometry of a pivot table as every renderer shows it.
//
// Row dimensions give the columns of the stub and column dimensions the rows
// of the header, the outermost (highest order) first; layer dimensions give
// one block per combination of their categories. A group whose label is
// hidden takes no place: its children move up; a dimension whose labels are
// hidden takes none at all. A combination of categories
// that holds no cell is left out, unless the table has no cell at all, in
// which case its whole structure is shown.
class OmTableLayout {
 public:
  // A label placed on the header grid (columns along, header rows across) or
  // on the stub grid (rows along, stub columns across).
  struct SpanData {
    const OmText* fpText = nullptr;  // null: an empty place
    int fFirst = 0;                  // first column (header) or row (stub)
    int fCount = 1;                  // columns or rows covered
    int fLevel = 0;                  // first header row or stub column
    int fLevels = 1;                 // header rows or stub columns covered
    bool fbHasChildren = false;      // something in the header sits below it
    bool fbDimensionName = false;
  };

  // What names one layer dimension's category above a block.
  struct LayerPartData {
    const OmText* fpName = nullptr;  // the dimension's name, when shown
    std::vector<const OmText*> fvPath;
  };

  explicit OmTableLayout(const OmTable& table);

  const OmTable& GetTable() const { return *fpTable; }

  int GetLayerCount() const { return static_cast<int>(fvLayers.size()); }
  int GetRowCount() const { return static_cast<int>(fvRows.size()); }
  int GetColumnCount() const { return static_cast<int>(fvColumns.size()); }
  bool HasLayerDimensions() const { return !fvLayerDims.empty(); }

  int GetHeaderLevels() const { return fHeaderLevels; }
  int GetStubLevels() const { return fStubLevels; }

  // The column header, sorted by level, then by column.
  const std::vector<SpanData>& GetHeaderSpans() const { return fvHeaderSpans; }
  // The names of the row dimensions shown above the stub; only fLevel and
  // fLevels are meaningful.
  const std::vector<SpanData>& GetStubHeaderSpans() const { return fvStubHeaderSpans; }

  // The rows shown in one layer's block, as indices of the table's rows.
  const std::vector<int>& GetLayerRows(int layer) const;
  // The stub of one layer's block; fFirst and fCount count in GetLayerRows.
  const std::vector<SpanData>& GetStubSpans(int layer) const;
  std::vector<LayerPartData> GetLayerLabel(int layer) const;

  // The cell at a crossing, null when there is none.
  const OmCell* CellAt(int layer, int row, int column) const;
  // The coordinates of a crossing, in the order of the table's dimensions.
  std::vector<int> Coordinates(int layer, int row, int column) const;

  const OmFootnoteMarkers& GetMarkers() const { return fMarkers; }

 private:
  struct DimInfoData {
    int fIndex = 0;  // in the table's dimensions
    std::vector<std::vector<const OmDimensionNode*>> fvPaths;  // visible nodes per leaf
    int fDepth = 0;
  };
  struct EntryData;

  void ClassifyDimensions();
  std::vector<SpanData> BuildSpans(const std::vector<DimInfoData>& dims,
                                   const std::vector<std::vector<int>>& tuples,
                                   const std::vector<int>& order, bool header) const;
  void AssignMarkers();

  const OmTable* fpTable;
  std::vector<DimInfoData> fvRowDims;
  std::vector<DimInfoData> fvColumnDims;
  std::vector<DimInfoData> fvLayerDims;
  std::vector<std::vector<int>> fvRows;     // leaf index per row dimension
  std::vector<std::vector<int>> fvColumns;  // leaf index per column dimension
  std::vector<std::vector<int>> fvLayers;   // leaf index per layer dimension
  std::vector<std::vector<int>> fvLayerRows;
  std::vector<std::vector<SpanData>> fvStubSpans;
  std::vector<SpanData> fvHeaderSpans;
  std::vector<SpanData> fvStubHeaderSpans;
  int fHeaderLevels = 0;
  int fStubLevels = 0;
  bool fbHasValidCells = false;
  OmFootnoteMarkers fMarkers;
};
