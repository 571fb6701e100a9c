#include "host/output/BpProcedureState.h"

#include <algorithm>
#include <vector>

#include "host/output/OmDocument.h"

namespace {

std::vector<BpProcedureState*>& LiveProcedures() {
  static std::vector<BpProcedureState*> live;
  return live;
}

}  // namespace

BpProcedureState::BpProcedureState(OmHeading* pHeading, const std::string& title, const std::string& stringTable,
                                   const std::string& directory)
    : BpHeadingState(pHeading),
      fTitle(title),
      fStringTable(stringTable),
      fDictionary(directory),
      fNotes(pHeading) {
  SetProcedure(this);
  fDictionary.SetProcedure(stringTable);
  LiveProcedures().push_back(this);
}

BpProcedureState::~BpProcedureState() {
  auto& live = LiveProcedures();
  live.erase(std::remove(live.begin(), live.end(), this), live.end());
}

BpProcedureState* BpProcedureState::Current() {
  auto& live = LiveProcedures();
  return live.empty() ? nullptr : live.back();
}
