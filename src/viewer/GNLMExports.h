#pragma once

class CFProcCustom;

extern "C" {
// Debug switch of the viewer side: with it, the model viewer's output
// begins with a dump of the result model it read. Zero at load; the
// procedure never sets it, only the host (or a test) can.
extern bool display_result_model;

// The plug-in factory the host calls after a run: a new GNLMProcCustom,
// which the caller owns and destroys through the base.
CFProcCustom* GetCFProcCustom();

// The module's load entry of the host's platform convention; it does
// nothing and returns 1.
int DllMain(void* module, unsigned long reason, void* reserved);
}
