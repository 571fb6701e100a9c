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
  bool fbHelp = false;
  bool fbVersion = false;

  // Reads argv. On a bad argument returns false and sets `error`.
  static bool Parse(int argc, const char* const* argv, AppOptions& out, std::string& error);
  static std::string Usage();
};
