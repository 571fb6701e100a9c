#include "host/output/BpGroup.h"

#include <cassert>

#include "host/output/BpNodeState.h"
#include "host/output/BpTableState.h"

BpGroup::BpGroup(BpNodeState* pState) : BpHandle(pState) {}

BpNodeState* BpGroup::State() const {
  assert(IsBound() && "the group handle is bound");
  return static_cast<BpNodeState*>(GetBody());
}

BpGroup BpGroup::Group(const BpCellText& text, bool showLabel, Sort sort) {
  BpNodeState* state = State();
  if (state == nullptr) return BpGroup();
  BpTableState* table = state->GetTable();
  int id = table->AddNode(state->GetDimension(), state->GetId(), text, true, showLabel, sort, true);
  if (id < 0) return BpGroup();
  return BpGroup(new BpNodeState(table, state->GetDimension(), id));
}

BpCategory BpGroup::Category(const BpCellText& text) {
  BpNodeState* state = State();
  if (state == nullptr) return BpCategory();
  BpTableState* table = state->GetTable();
  int id = table->AddNode(state->GetDimension(), state->GetId(), text, false, true, AS_CREATED, true);
  if (id < 0) return BpCategory();
  return BpCategory(new BpNodeState(table, state->GetDimension(), id));
}
