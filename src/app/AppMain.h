#pragma once

#include <iosfwd>

struct AppOptions;

// The program: reads the command line, runs the command file and writes the
// reports. Returns the exit status: 0 when every command ran, 1 when a
// command had an error, 2 when the command line or the command file could
// not be used (or a report could not be written).
//
// `err` is the program's standard error: when that is a terminal, long
// steps show their progress there (AppProgressLine).
class AppMain {
 public:
  static int Run(int argc, const char* const* argv, std::ostream& out, std::ostream& err);
  // The same for options already read.
  static int Run(const AppOptions& options, std::ostream& out, std::ostream& err);
};
