#include "host/output/BP_ToFront.h"

#include <algorithm>
#include <cassert>

#include "host/output/BpProcedure.h"
#include "host/output/BpProcedureState.h"
#include "host/output/OmDocument.h"
#include "numeric/common/MCUtf8.h"

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

void BP_ToFrontText(const std::string& text) {
  BP_ToFront(1, BP_Character(""));
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t size = std::min(text.size() - at, static_cast<std::size_t>(kBP_ToFrontMaxLength));
    while (size > 1 && at + size < text.size() && MCCommon_850::MCUtf8::IsContinuation(text[at + size])) --size;
    BP_ToFront(0, BP_Character(text.substr(at, size)));
    at += size;
  }
}
