#include "app/AppOptions.h"

#include <cstdlib>

namespace {

bool ReadWidth(const std::string& text, int& width) {
  if (text.empty()) return false;
  char* end = nullptr;
  long value = std::strtol(text.c_str(), &end, 10);
  if (*end != '\0' || value < 40 || value > 1000) return false;
  width = static_cast<int>(value);
  return true;
}

}  // namespace

bool AppOptions::Parse(int argc, const char* const* argv, AppOptions& out, std::string& error) {
  out = AppOptions();
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&](const std::string& name) -> const char* {
      if (i + 1 >= argc) {
        error = "option " + name + " needs a value";
        return nullptr;
      }
      return argv[++i];
    };
    if (arg == "-h" || arg == "--help") {
      out.fbHelp = true;
    } else if (arg == "--version") {
      out.fbVersion = true;
    } else if (arg == "-o" || arg == "--output-dir") {
      const char* v = value(arg);
      if (!v) return false;
      out.fOutputDir = v;
    } else if (arg == "--html") {
      out.fbHtml = true;
    } else if (arg == "--json") {
      out.fbJson = true;
    } else if (arg == "--no-text") {
      out.fbText = false;
    } else if (arg == "-q" || arg == "--quiet") {
      out.fbQuiet = true;
    } else if (arg == "-w" || arg == "--width") {
      const char* v = value(arg);
      if (!v) return false;
      if (!ReadWidth(v, out.fWidth)) {
        error = std::string("option ") + arg + ": '" + v + "' is not a width from 40 to 1000";
        return false;
      }
    } else if (arg.size() > 1 && arg[0] == '-') {
      error = "unknown option '" + arg + "'";
      return false;
    } else if (out.fCommandFile.empty()) {
      out.fCommandFile = arg;
    } else {
      error = "only one command file can be given (found '" + out.fCommandFile + "' and '" + arg + "')";
      return false;
    }
  }
  if (out.fCommandFile.empty() && !out.fbHelp && !out.fbVersion) {
    error = "no command file given";
    return false;
  }
  return true;
}

std::string AppOptions::Usage() {
  return "Usage: glmixfit [OPTIONS] FILE\n"
         "Runs the commands of FILE (- reads standard input) and reports the analysis.\n"
         "\n"
         "Options:\n"
         "  -o, --output-dir DIR  folder for the reports and the model documents\n"
         "                        (default glmixfit-output)\n"
         "      --html            write DIR/report.html, one self-contained page\n"
         "      --json            write DIR/report.json, the full output with raw values\n"
         "      --no-text         do not print the output to the terminal\n"
         "  -w, --width N         terminal text width, 40 to 1000 (default 80)\n"
         "  -q, --quiet           no status line on the terminal while long steps run\n"
         "  -h, --help            show this help\n"
         "      --version         show the version\n"
         "\n"
         "The exit status is 0 when every command ran, 1 when a command had an error,\n"
         "130 when Ctrl-C interrupted the run, and 2 when the command line or the\n"
         "command file could not be used.\n"
         "On a terminal, a step that runs longer than a second shows its progress in one\n"
         "status line on standard error, removed when the step is done.\n";
}
