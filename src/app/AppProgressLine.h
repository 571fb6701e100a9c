#pragma once

#include <chrono>
#include <iosfwd>
#include <string>

#include "host/data/ZORV_Progress.h"

// The status line of a long step on a terminal: one line on standard error,
// written over in place as the step goes on, and removed when it ends. It
// appears once a step has run for the delay, is drawn again at most ten
// times a second, and is cut to the terminal's width. It never reaches the
// reports.
class AppProgressLine : public ZORV_Progress::Observer {
 public:
  AppProgressLine(std::ostream& out, double delaySeconds, int width);
  ~AppProgressLine() override;

  void Update(const ZORV_Progress::State& state) override;
  void Finish() override;

  // The line for a state: "glmixfit: Mixed Model, split 2 of 4, iteration
  // 7, -2LL 1743.628 (0:03)".
  static std::string Describe(const ZORV_Progress::State& state, double elapsedSeconds);
  // Whether a status line belongs on the file: it is a terminal, and the
  // user did not ask for quiet.
  static bool Wanted(int fileDescriptor, bool quiet);
  // The terminal's width in characters; 80 when it cannot be told.
  static int TerminalWidth(int fileDescriptor);

 private:
  using Clock = std::chrono::steady_clock;

  std::ostream& fOut;
  double fDelay;
  int fWidth;
  bool fbActive = false;  // a step is running
  bool fbShown = false;   // its line is on the terminal
  Clock::time_point fStart;
  Clock::time_point fLastDraw;
};
