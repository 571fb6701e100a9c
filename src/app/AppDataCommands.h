#pragma once

#include <string>

class AppCommandReader;
struct AppDataContext;

// The commands that prepare the data for the analyses: COMPUTE, RECODE,
// SELECT IF, FILTER, the dictionary commands LABEL, VALUES, MISSING, LEVEL
// and FORMAT, and WRITE. Each reads and checks its whole command before it
// changes anything, and computes its new values before it stores them, so a
// command with a mistake, or one interrupted, leaves the data as they were.
class AppDataCommands {
 public:
  // The heading of a data command's output; null when `name` (upper case)
  // names none.
  static const char* Title(const std::string& name);
  // Runs the command the reader stands on.
  static void Run(AppCommandReader& reader, AppDataContext& context);
  // The names, for the message that expects a command.
  static std::string Names();

  // What a command did, as a line of its output.
  static void Say(const std::string& text);
  // A warning in the command's output.
  static void Warn(const std::string& text);
  // Fails, at the command's first word, when the user has asked the run to
  // stop. Long loops ask every so many cases.
  static void StopIfInterrupted(const AppCommandReader& reader);
  // The warning about values that could not be computed, when there were
  // any; `consequence` goes on from their being missing.
  static void WarnFailures(long failures, const std::string& consequence = std::string());
  // The warning about texts cut to the width of the variable they went into.
  static void WarnCut(long cut, const std::string& name, int width);
  // "1 case", "2 cases".
  static std::string Count(long n, const std::string& singular, const std::string& plural);
};
