#include "app/AppInterrupt.h"

#include <signal.h>

#include "host/data/ZORV_StopFlag.h"

namespace {

// Only the lock-free atomic store of the stop flag: nothing else is safe
// inside a signal handler.
void OnInterrupt(int) { ZORV_StopFlag::Raise(); }

}  // namespace

void AppInterrupt::Install() {
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  // SA_RESETHAND gives the default back before the handler runs, so that a
  // second Ctrl-C ends the program at once. Without SA_RESTART a read that
  // waits on a terminal or a pipe returns, and the reader sees the flag.
  action.sa_flags = SA_RESETHAND;
  sigaction(SIGINT, &action, nullptr);
}
