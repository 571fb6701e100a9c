#include "host/output/BpHeading.h"

#include <cassert>

#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpComposite.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpHeadingState.h"
#include "host/output/BpProcedureState.h"
#include "host/output/BpTableState.h"
#include "host/output/BpVariable.h"
#include "host/output/OmDocument.h"

namespace {

// True when the procedure's data source shows the splits of a split file
// together in one table.
bool SplitsShownTogether(const BpHeadingState* state) {
  if (state->GetProcedure() == nullptr) return false;
  const auto* source = dynamic_cast<const ProcedureDataSource*>(state->GetProcedure()->GetDataSource());
  return source != nullptr && source->GetNSplitVars() > 0 && source->SplitsInOneTable();
}

}  // namespace

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
    if (SplitsShownTogether(state)) {
      // The split goes into the rows when the splits' tables are merged.
      for (const ZORV_Session::SplitValue& split : ZORV_Session::Current().GetCurrentSplit()) {
        if (split.fpVariable == nullptr || split.fvValue.empty()) continue;
        OmSplitLevel level;
        level.fVariable = BpVariable(*split.fpVariable, BpVariable::AS_SET).GetText(state->GetContext(false));
        level.fValue =
            BpDataValue(*split.fpVariable, split.fvValue.data(), BpDataValue::LABEL).GetText(state->GetContext(false));
        table.fvSplit.push_back(level);
      }
      return handle;
    }
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
