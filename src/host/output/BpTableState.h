#pragma once

#include <string>
#include <vector>

#include "host/output/BpHandle.h"
#include "host/output/BpTextContext.h"

class BpAnnotation;
class BpCellText;
class BpProcedureState;
struct OmDimensionNode;
struct OmTable;

// The body of a table handle. It writes the table into the output document
// and keeps what the document does not: stable identities of the groups and
// categories, the sort rule of each group, and the current category of each
// dimension. Making or finding a category makes it the current one of its
// dimension; a cell goes to the crossing of the current categories.
//
// Cells are keyed by leaf positions, so a category that comes before
// existing ones (in a sorted group) moves the cells behind it.
class BpTableState : public BpHandle::Body {
 public:
  BpTableState(BpProcedureState* pProcedure, OmTable* pTable, bool bProcedureTable);

  OmTable* GetTable() const { return fpTable; }
  bool IsProcedureTable() const { return fbProcedureTable; }
  BpTextContext GetContext(bool bSecond) const;

  int GetDimensionCount() const { return static_cast<int>(fvRoots.size()); }
  // Adds a dimension; returns its index. Its root group has the id returned
  // by GetRootId.
  int AddDimension(const BpCellText& name, int sort);
  int GetRootId(int dimension) const;
  void SetPosition(int dimension, int place, int order, bool bHideName, bool bHideLabels);

  // A group or category under the node `parentId`. With `bReuse` a child of
  // the same kind and the same text is returned instead of a new one. A
  // category becomes the current one of its dimension. Returns the node's id.
  int AddNode(int dimension, int parentId, const BpCellText& label, bool bGroup, bool bShowLabel, int sort,
              bool bReuse);
  void SetCurrent(int dimension, int id);
  int GetCurrent(int dimension) const;

  // The cell at the crossing of the current categories.
  void WriteCell(const BpCellText& text);
  void AddCellFootnote(const BpAnnotation& annotation);
  void AddNodeFootnote(int dimension, int id, const BpAnnotation& annotation);
  void AddCaption(const BpCellText& text);
  void AddNote(const BpAnnotation& annotation);
  void SetMinDataColumnWidth(int width);

  // The position of a category among the leaves of its dimension; -1 for a
  // group or an unknown id.
  int LeafIndex(int dimension, int id) const;

 private:
  struct Node {
    int fId = 0;
    int fSort = 2;
    std::vector<Node> fvChildren;
  };

  bool FindPath(const Node& node, int id, std::vector<int>& path) const;
  bool PathOf(int dimension, int id, std::vector<int>& path) const;
  OmDimensionNode& DocumentNode(int dimension, const std::vector<int>& path);
  Node& MirrorNode(int dimension, const std::vector<int>& path);
  int LeafIndexOfPath(int dimension, const std::vector<int>& path) const;
  int LeafCount(int dimension) const;
  bool CurrentCoordinates(std::vector<int>& coordinates) const;
  int FootnoteIndex(const std::string& text);

  BpHandle fProcedureRef;
  BpProcedureState* fpProcedure;
  OmTable* fpTable;
  bool fbProcedureTable;
  std::vector<Node> fvRoots;
  std::vector<int> fvCurrent;
  int fNextId = 0;
};
