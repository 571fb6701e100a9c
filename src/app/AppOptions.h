#pragma once

#include <string>

// What the command line asked for.
struct AppOptions {
  std::string fCommandFile;        // "-" reads standard input
  std::string fOutputDir = "glmixfit-output";
  bool fbText = true;              // terminal text
  bool fbHtml = false;             // report.html in the output folder
  bool fbJson = false;             // report.json in the output folder
  int fWidth = 80;                 // terminal text width
  bool fbQuiet = false;            // no status line on the terminal
  // How long a step runs before its status line appears, in seconds. Not
  // on the command line: tests shorten it.
  double fProgressDelay = 1.0;
  bool fbHelp = false;
  bool fbVersion = false;

  // Reads argv. On a bad argument returns false and sets `error`.
  static bool Parse(int argc, const char* const* argv, AppOptions& out, std::string& error);
  static std::string Usage();
};
