#include "host/adapter/ACAInpAdaptMsg.h"

#include "host/output/BpError.h"
#include "host/output/BpString.h"

ACAInpAdaptMsg::ACAInpAdaptMsg(ProcedureDataSource& dataSource) : fpDataSource(&dataSource) {}

void ACAInpAdaptMsg::NoValidCases() const {
  BpError(BpString("No valid cases", true), BpErrorShowOutput, BpErrorLevelError);
}

void ACAInpAdaptMsg::NoValidCasesSplit() const {
  BpError(BpString("No valid cases in split", true), BpErrorShowOutput, BpErrorLevelWarning);
}

void ACAInpAdaptMsg::NoValidCasesForSelect() const {
  BpError(BpString("No variables selected", true), BpErrorShowOutput, BpErrorLevelWarning);
}
