#include "host/viz/ZorvJVM.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "host/viz/XViZTemplate.h"

namespace {

// The environment of a thread: which thread, and under which start.
struct Environment {
  std::thread::id fThread;
  unsigned long fGeneration = 0;
};

thread_local Environment tEnvironment;

}  // namespace

ZorvJVM* ZorvJVM::GetInstance() {
  static ZorvJVM instance;
  return &instance;
}

bool ZorvJVM::StartJVM() {
  if (fbStarted) return true;
  const std::string folder = XViZTemplate::TemplateDirectory();
  struct stat info;
  fbStarted = ::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) && ::access(folder.c_str(), R_OK | X_OK) == 0;
  return fbStarted;
}

bool ZorvJVM::AttachCurrentThread(void** env) {
  if (env != nullptr) *env = nullptr;
  if (!fbStarted) return false;
  tEnvironment.fThread = std::this_thread::get_id();
  tEnvironment.fGeneration = fGeneration;
  if (env != nullptr) *env = &tEnvironment;
  return true;
}

void* ZorvJVM::GetEnv() const {
  if (!fbStarted || tEnvironment.fGeneration != fGeneration) return nullptr;
  return &tEnvironment;
}

void ZorvJVM::Reset() {
  fbStarted = false;
  ++fGeneration;
}
