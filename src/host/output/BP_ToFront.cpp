#include "host/output/BP_ToFront.h"

#include <cassert>

#include "host/output/BpProcedure.h"
#include "host/output/BpProcedureState.h"
#include "host/output/OmDocument.h"

void BP_ToFront(const long& newLine, const BP_Character& text) {
  assert(static_cast<long>(text.size()) <= kBP_ToFrontMaxLength && "front-end text comes in pieces of 4096");
  BpProcedureState* procedure = BpProcedureState::Current();
  OmHeading& heading = procedure ? *procedure->GetHeading() : BpProcedure::HostDocument().fRoot;
  OmFrontEndText* item = nullptr;
  if (!heading.fvItems.empty() && heading.fvItems.back().fKind == OmItem::TEXT) item = heading.fvItems.back().fpText.get();
  if (item == nullptr) item = &heading.AddText();
  if (newLine != 0 || item->fvLines.empty()) {
    item->fvLines.push_back(text.GetString());
  } else {
    item->fvLines.back() += text.GetString();
  }
}
