#include "host/adapter/ACAInpAdaptMsg.h"

#include "host/output/BpError.h"
#include "host/output/BpString.h"

ACAInpAdaptMsg::ACAInpAdaptMsg(ProcedureDataSource& dataSource) : fpDataSource(&dataSource) {}

void ACAInpAdaptMsg::NoValidCases() const {
  BpError(BpString("There are no valid cases for this analysis.", false), BpErrorShowOutput, BpErrorLevelError);
}

void ACAInpAdaptMsg::NoValidCasesSplit() const {
  BpError(BpString("There are no valid cases in this split file group. The analysis of the group is skipped.",
                   false),
          BpErrorShowOutput, BpErrorLevelWarning);
}

void ACAInpAdaptMsg::NoValidCasesForSelect() const {
  BpError(BpString("The current selection of the active dataset has no variables, so no cases can be analyzed.",
                   false),
          BpErrorShowOutput, BpErrorLevelWarning);
}
