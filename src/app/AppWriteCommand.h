#pragma once

#include <string>

class AppCommandReader;
struct AppDataContext;
struct AppToken;

// WRITE ['file'] [DICTIONARY='file']: the active data, computed and saved
// variables included, as a CSV file and its dictionary, which LOAD reads
// back as they were. Without a name the file is data-N.csv in the output
// folder, N counting such commands of the run; the dictionary is named after
// the file (name.dictionary.json) unless DICTIONARY= names it. Both are
// written under temporary names and renamed into place once complete, and
// never over the command file or a file the run has loaded.
class AppWriteCommand {
 public:
  static void Run(AppCommandReader& reader, AppDataContext& context);

 private:
  // Fails unless `path` may be written: not a file the run reads, not a
  // folder or another kind of file that is not a regular one.
  static void CheckTarget(const AppCommandReader& reader, const AppToken& at, const std::string& path,
                          const AppDataContext& context);
};
