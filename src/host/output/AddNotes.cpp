#include "host/output/AddNotes.h"

#include "host/output/BpCellText.h"
#include "host/output/BpNotesTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpProcedureState.h"
#include "host/output/OmDocument.h"
#include "host/strings/FacSTDictionary.h"

void AddNotes(int group, const BpCellText& name, const BpCellText& value) {
  OmCell cell;
  if (BpProcedureState* procedure = BpProcedureState::Current()) {
    BpTextContext context = procedure->GetContext(false);
    value.FillCell(cell, context);
    procedure->GetNotes().Add(group, name.GetText(context), cell, context);
    return;
  }
  static BpNotesTable hostNotes;
  FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
  BpTextContext context(&dictionary, false);
  hostNotes.SetHeading(&BpProcedure::HostDocument().fRoot);
  value.FillCell(cell, context);
  hostNotes.Add(group, name.GetText(context), cell, context);
}
