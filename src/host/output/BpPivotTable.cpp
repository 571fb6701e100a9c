#include "host/output/BpPivotTable.h"

#include <cassert>

#include "host/output/BpNodeState.h"
#include "host/output/BpTableState.h"

BpPivotTable::BpPivotTable(BpTableState* pState) : BpHandle(pState) {}

BpTableState* BpPivotTable::State() const {
  assert(IsBound() && "the table handle is bound");
  return static_cast<BpTableState*>(GetBody());
}

BpDimension BpPivotTable::Dimension(const BpCellText& name, Sort sort) {
  BpTableState* state = State();
  if (state == nullptr) return BpDimension();
  int dimension = state->AddDimension(name, sort);
  return BpDimension(new BpNodeState(state, dimension, state->GetRootId(dimension)));
}

void BpPivotTable::Caption(const BpCellText& text) {
  if (BpTableState* state = State()) state->AddCaption(text);
}

void BpPivotTable::Note(const BpAnnotation& annotation) {
  if (BpTableState* state = State()) state->AddNote(annotation);
}

void BpPivotTable::MinDataColumnWidth(int width) {
  if (BpTableState* state = State()) state->SetMinDataColumnWidth(width);
}

OmTable* BpPivotTable::GetOmTable() const {
  return IsBound() ? static_cast<BpTableState*>(GetBody())->GetTable() : nullptr;
}

bool BpPivotTable::IsProcedureTable() const {
  return IsBound() && static_cast<BpTableState*>(GetBody())->IsProcedureTable();
}
