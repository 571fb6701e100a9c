#include "host/output/BpNodeState.h"

#include "host/output/BpTableState.h"

BpNodeState::BpNodeState(BpTableState* pTable, int dimension, int id)
    : fTableRef(pTable), fpTable(pTable), fDimension(dimension), fId(id) {}
