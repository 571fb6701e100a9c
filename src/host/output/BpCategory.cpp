#include "host/output/BpCategory.h"

#include <cassert>

#include "host/output/BpNodeState.h"
#include "host/output/BpTableState.h"

BpCategory::BpCategory(BpNodeState* pState) : BpHandle(pState) {}

BpNodeState* BpCategory::State() const {
  assert(IsBound() && "the category handle is bound");
  return static_cast<BpNodeState*>(GetBody());
}

void BpCategory::Cell(const BpCellText& text) {
  BpNodeState* state = State();
  if (state == nullptr) return;
  state->GetTable()->SetCurrent(state->GetDimension(), state->GetId());
  state->GetTable()->WriteCell(text);
}

void BpCategory::CellNote(const BpAnnotation& annotation) {
  BpNodeState* state = State();
  if (state == nullptr) return;
  state->GetTable()->SetCurrent(state->GetDimension(), state->GetId());
  state->GetTable()->AddCellFootnote(annotation);
}

void BpCategory::Note(const BpAnnotation& annotation) {
  BpNodeState* state = State();
  if (state == nullptr) return;
  state->GetTable()->AddNodeFootnote(state->GetDimension(), state->GetId(), annotation);
}

int BpCategory::GetLeafIndex() const {
  if (!IsBound()) return -1;
  BpNodeState* state = static_cast<BpNodeState*>(GetBody());
  return state->GetTable()->LeafIndex(state->GetDimension(), state->GetId());
}
