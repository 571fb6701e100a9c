#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/strings/FacSTTable.h"

// All string tables of one directory: every "*.strings" file in it, read in
// the order of their names. Directories are read once per process and kept;
// Get hands out the kept copy.
class FacSTDirectory {
 public:
  // The tables of `directory`, read on first use.
  static std::shared_ptr<const FacSTDirectory> Get(const std::string& directory);
  // Forgets every kept directory, so that the next Get reads the files again.
  static void ClearCache();

  explicit FacSTDirectory(const std::string& directory);

  const std::string& GetDirectory() const { return fDirectory; }
  // Null when the directory has no table of that name.
  const FacSTTable* GetTable(const std::string& name) const;
  const std::map<std::string, FacSTTable>& GetTables() const { return fTables; }
  // Unreadable files and malformed lines, one "file:line: what" each.
  const std::vector<std::string>& GetProblems() const { return fvProblems; }

 private:
  std::string fDirectory;
  std::map<std::string, FacSTTable> fTables;
  std::vector<std::string> fvProblems;
};
