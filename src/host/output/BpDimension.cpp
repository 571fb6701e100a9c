#include "host/output/BpDimension.h"

#include "host/output/BpNodeState.h"
#include "host/output/BpTableState.h"

BpDimension::BpDimension(BpNodeState* pState) : BpGroup(pState) {}

void BpDimension::Position(Place place, int order, bool hideName, bool hideLabels) {
  BpNodeState* state = State();
  if (state == nullptr) return;
  state->GetTable()->SetPosition(state->GetDimension(), place, order, hideName, hideLabels);
}

int BpDimension::GetIndex() const {
  return IsBound() ? static_cast<BpNodeState*>(GetBody())->GetDimension() : -1;
}
