#include "viewer/GNLMExports.h"

#include "viewer/GNLMProcCustom.h"

extern "C" {

bool display_result_model = false;

CFProcCustom* GetCFProcCustom() { return new GNLMProcCustom(); }

int DllMain(void*, unsigned long, void*) { return 1; }
}
