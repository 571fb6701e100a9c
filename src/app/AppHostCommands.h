#pragma once

#include <memory>
#include <string>
#include <vector>

class AppCommandReader;
class ZORV_Dataset;

// The commands of the host itself: LOAD, SET, SPLIT, WEIGHT and DEBUG. Each reads
// its whole command before it changes anything, so a command with a mistake
// leaves the session as it was.
class AppHostCommands {
 public:
  // LOAD 'file' [DICTIONARY='file']: a new dataset, for the caller to make
  // the active one. Relative names are taken from `baseDir`. `summary` says
  // what was read; `files` gets the data file and its dictionary's name.
  // Only regular files are read: a folder, a pipe or a device is refused.
  static std::unique_ptr<ZORV_Dataset> Load(AppCommandReader& reader, const std::string& baseDir,
                                            std::string& summary, std::vector<std::string>& files);
  // SET VARIABLES=... VALUES=...: the display of names and labels.
  static void Set(AppCommandReader& reader);
  // SPLIT BY v... [LAYERED | SEPARATE], SPLIT OFF.
  static void Split(AppCommandReader& reader, ZORV_Dataset* data);
  // WEIGHT BY v, WEIGHT OFF.
  static void Weight(AppCommandReader& reader, ZORV_Dataset* data);
  // DEBUG switch... ON|OFF, DEBUG ALL ON|OFF: the procedure's debug
  // switches. `summary` names the switches that are on afterwards.
  static void Debug(AppCommandReader& reader, std::string& summary);
  // Every debug switch off, as at the start of a run.
  static void ResetDebugSwitches();

  // A file name of a command, taken from `baseDir` unless it is absolute.
  static std::string ResolvePath(const std::string& baseDir, const std::string& name);
  // What stands under `path` when it is there and is not a regular file ("a
  // folder", "a pipe", "a socket", "a device"); "" otherwise.
  static std::string NotRegularFile(const std::string& path);
};
