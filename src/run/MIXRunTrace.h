#pragma once

#include <string>
#include <vector>

// A record of the steps MixDriver takes, in order, for checking the run
// sequence. Nothing is recorded unless a log has been set; the host never
// sets one.
class MIXRunTrace {
 public:
  // The log the steps go to; null stops recording. The log is not owned.
  static void SetLog(std::vector<std::string>* log);
  static std::vector<std::string>* GetLog();

  // Appends the step's name.
  static void Note(const char* step);
  // Appends "name=1" or "name=0".
  static void Note(const char* step, bool result);
};
