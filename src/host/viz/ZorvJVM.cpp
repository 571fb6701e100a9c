#include "host/viz/ZorvJVM.h"

#include <stdexcept>

ZorvJVM* ZorvJVM::GetInstance() {
  static ZorvJVM instance;
  return &instance;
}

bool ZorvJVM::StartJVM() { throw std::logic_error("ZorvJVM::StartJVM: not implemented yet"); }

bool ZorvJVM::AttachCurrentThread(void**) {
  throw std::logic_error("ZorvJVM::AttachCurrentThread: not implemented yet");
}

void* ZorvJVM::GetEnv() const { throw std::logic_error("ZorvJVM::GetEnv: not implemented yet"); }
