#include <iostream>

#include "app/AppInterrupt.h"
#include "app/AppMain.h"
#include "app/AppProcedureHook.h"
#include "run/MixDriver.h"

int main(int argc, char** argv) {
  AppInterrupt::Install();
  AppProcedureHook::Set(MixDriver);
  return AppMain::Run(argc, argv, std::cout, std::cerr);
}
