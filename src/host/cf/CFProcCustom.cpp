#include "host/cf/CFProcCustom.h"

CFProcCustom::CFProcCustom(BpProcedure* procedure, ProcedureDataSource* dataSource)
    : fpProcedure(procedure), fpDataSource(dataSource) {}

CFProcCustom::~CFProcCustom() = default;
