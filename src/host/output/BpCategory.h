#pragma once

#include "host/output/BpHandle.h"

class BpAnnotation;
class BpCellText;
class BpNodeState;

// A category of a dimension: a position on it. Cell writes at the crossing
// of this category and the current categories of the table's other
// dimensions (the last ones made or found there).
class BpCategory : public BpHandle {
 public:
  BpCategory() = default;
  explicit BpCategory(BpNodeState* pState);

  void Cell(const BpCellText& text);
  // A footnote on the cell at the same crossing.
  void CellNote(const BpAnnotation& annotation);
  // A footnote on the category's label.
  void Note(const BpAnnotation& annotation);

  // The category's position among the leaves of its dimension; -1 unbound.
  int GetLeafIndex() const;

 private:
  BpNodeState* State() const;
};
