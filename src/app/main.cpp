#include <iostream>

#include "app/AppInterrupt.h"
#include "app/AppMain.h"

int main(int argc, char** argv) {
  AppInterrupt::Install();
  return AppMain::Run(argc, argv, std::cout, std::cerr);
}
