#include "host/output/BpHeadingState.h"

#include <algorithm>
#include <vector>

#include "host/output/BpProcedureState.h"

namespace {

std::vector<BpHeadingState*>& LiveHeadings() {
  static std::vector<BpHeadingState*> live;
  return live;
}

}  // namespace

BpHeadingState::BpHeadingState(BpProcedureState* pProcedure, OmHeading* pHeading)
    : fpProcedure(pProcedure), fProcedureRef(pProcedure), fpHeading(pHeading) {
  LiveHeadings().push_back(this);
}

BpHeadingState::BpHeadingState(OmHeading* pHeading) : fpHeading(pHeading) { LiveHeadings().push_back(this); }

BpHeadingState::~BpHeadingState() {
  auto& live = LiveHeadings();
  live.erase(std::remove(live.begin(), live.end(), this), live.end());
}

BpHeadingState* BpHeadingState::Innermost() {
  auto& live = LiveHeadings();
  return live.empty() ? nullptr : live.back();
}

const std::vector<BpHeadingState*>& BpHeadingState::Live() { return LiveHeadings(); }

BpTextContext BpHeadingState::GetContext(bool bSecond) const {
  return BpTextContext(fpProcedure ? &fpProcedure->GetDictionary() : nullptr, bSecond);
}
