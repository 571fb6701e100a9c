#pragma once

#include "host/output/BpHandle.h"

class BpTableState;

// The body of a dimension, group or category handle: a node of a table's
// dimension, by its stable id. It keeps its table's body alive.
class BpNodeState : public BpHandle::Body {
 public:
  BpNodeState(BpTableState* pTable, int dimension, int id);

  BpTableState* GetTable() const { return fpTable; }
  int GetDimension() const { return fDimension; }
  int GetId() const { return fId; }

 private:
  BpHandle fTableRef;
  BpTableState* fpTable;
  int fDimension;
  int fId;
};
