#include "host/output/BpHeadingState.h"

#include "host/output/BpProcedureState.h"

BpHeadingState::BpHeadingState(BpProcedureState* pProcedure, OmHeading* pHeading)
    : fpProcedure(pProcedure), fProcedureRef(pProcedure), fpHeading(pHeading) {}

BpHeadingState::BpHeadingState(OmHeading* pHeading) : fpHeading(pHeading) {}

BpTextContext BpHeadingState::GetContext(bool bSecond) const {
  return BpTextContext(fpProcedure ? &fpProcedure->GetDictionary() : nullptr, bSecond);
}
