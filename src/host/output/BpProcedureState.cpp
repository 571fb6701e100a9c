#include "host/output/BpProcedureState.h"

#include "host/output/OmDocument.h"

BpProcedureState::BpProcedureState(OmHeading* pHeading, const std::string& title, const std::string& stringTable,
                                   const std::string& directory)
    : BpHeadingState(pHeading),
      fTitle(title),
      fStringTable(stringTable),
      fDictionary(directory),
      fNotes(pHeading) {
  SetProcedure(this);
  fDictionary.SetProcedure(stringTable);
}

BpProcedureState::~BpProcedureState() = default;

BpProcedureState* BpProcedureState::Current() {
  // The live headings hold the live procedures, in the order made.
  const std::vector<BpHeadingState*>& live = BpHeadingState::Live();
  for (auto it = live.rbegin(); it != live.rend(); ++it) {
    if (auto* procedure = dynamic_cast<BpProcedureState*>(*it)) return procedure;
  }
  return nullptr;
}
