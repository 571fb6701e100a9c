#include "app/AppProcedureHook.h"

namespace {

AppProcedureHook::Procedure gProcedure = nullptr;

}  // namespace

void AppProcedureHook::Set(Procedure procedure) { gProcedure = procedure; }

AppProcedureHook::Procedure AppProcedureHook::Get() { return gProcedure; }
