#include "run/MIXRunTrace.h"

namespace {

std::vector<std::string>* gpLog = nullptr;

}  // namespace

void MIXRunTrace::SetLog(std::vector<std::string>* log) { gpLog = log; }

std::vector<std::string>* MIXRunTrace::GetLog() { return gpLog; }

void MIXRunTrace::Note(const char* step) {
  if (gpLog != nullptr) gpLog->push_back(step);
}

void MIXRunTrace::Note(const char* step, bool result) {
  if (gpLog != nullptr) gpLog->push_back(std::string(step) + (result ? "=1" : "=0"));
}
