#include "host/output/BpError.h"

#include "host/data/ZORV_Session.h"
#include "host/output/BpCellText.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpProcedureState.h"
#include "host/output/OmDocument.h"
#include "host/strings/FacSTDictionary.h"

void BpError(const BpCellText& text, BpErrorShow show, BpErrorLevel level) {
  BpError(text, static_cast<int>(show), static_cast<int>(level));
}

void BpError(const BpCellText& text, int show, int level) {
  OmMessage::Level messageLevel = level <= 1 ? OmMessage::NOTE : level == 2 ? OmMessage::WARNING : OmMessage::ERROR;
  if (show != BpErrorShowNone) {
    if (BpProcedureState* procedure = BpProcedureState::Current()) {
      procedure->GetHeading()->AddMessage(messageLevel, text.GetText(procedure->GetContext(true)));
    } else {
      FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
      BpProcedure::HostDocument().fRoot.AddMessage(messageLevel, text.GetText(BpTextContext(&dictionary, true)));
    }
  }
  if (messageLevel == OmMessage::ERROR) ZORV_Session::Current().SetFatal();
}
