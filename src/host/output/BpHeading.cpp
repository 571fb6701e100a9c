#include "host/output/BpHeading.h"

#include <cassert>

#include "host/data/ZORV_Session.h"
#include "host/output/BpComposite.h"
#include "host/output/BpHeadingState.h"
#include "host/output/BpTableState.h"
#include "host/output/OmDocument.h"

BpHeading::BpHeading(BpHeadingState* pState) : BpHandle(pState) {}

BpHeadingState* BpHeading::State() const {
  assert(IsBound() && "the heading handle is bound");
  return static_cast<BpHeadingState*>(GetBody());
}

BpHeading BpHeading::Heading(const BpCellText& text) {
  BpHeadingState* state = State();
  if (state == nullptr) return BpHeading();
  OmHeading& child = state->GetHeading()->AddHeading(text.GetText(state->GetContext(false)));
  return BpHeading(new BpHeadingState(state->GetProcedure(), &child));
}

BpPivotTable BpHeading::PivotTable(const BpCellText& title, const BpCellText& subType, bool procedureTable) {
  BpHeadingState* state = State();
  if (state == nullptr) return BpPivotTable();
  OmTable& table = state->GetHeading()->AddTable();
  table.fTitle.fText = title.GetText(state->GetContext(false));
  table.fSubType = subType.GetText(BpTextContext());
  BpPivotTable handle(new BpTableState(state->GetProcedure(), &table, procedureTable));
  if (procedureTable && !ZORV_Session::Current().GetCurrentSplit().empty()) {
    BpComposite split("Split File [%1 = %2:, ^1 = ^2:]1", true);
    split.SplitList();
    split.Finish();
    handle.Caption(split);
  }
  return handle;
}

OmHeading* BpHeading::GetOmHeading() const {
  return IsBound() ? static_cast<BpHeadingState*>(GetBody())->GetHeading() : nullptr;
}
