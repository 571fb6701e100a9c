#include "app/AppInterrupt.h"

#include <csignal>

#include "host/data/ZORV_StopFlag.h"

namespace {

void OnInterrupt(int) {
  ZORV_StopFlag::Raise();
  std::signal(SIGINT, SIG_DFL);
}

}  // namespace

void AppInterrupt::Install() { std::signal(SIGINT, OnInterrupt); }
