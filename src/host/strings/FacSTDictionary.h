#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

class FacSTDirectory;

// The translation of fixed texts. A dictionary is opened on a directory of
// string tables; a key is looked up in the procedure's table, then in the
// global table ("Global" unless another is chosen), then in the directory's
// other tables in the order of their names: the two faces of a procedure
// share one output procedure, so a text of either is found whichever table
// the output procedure names.
//
// A key found nowhere translates to itself. It is recorded in a process-wide
// list of missing keys, which tests read.
class FacSTDictionary {
 public:
  // The name of the table that holds texts shared by every procedure.
  static const char* const kGlobalTable;

  explicit FacSTDictionary(const std::string& directory);
  // The string tables of the session: "strings" in its resource directory.
  static std::string SessionDirectory();
  ~FacSTDictionary();
  FacSTDictionary(const FacSTDictionary&);
  FacSTDictionary& operator=(const FacSTDictionary&);

  // Chooses the procedure's table by its name, e.g. "Mixed".
  void SetProcedure(const std::string& name);
  const std::string& GetProcedure() const { return fProcedure; }
  // Chooses the global table: by the name of a table, or by a directory,
  // whose "Global" table is then used.
  void SetGlobalStringTable(const std::string& tableOrDirectory);

  // The text of `key`. When the key is found nowhere, `missing` is raised
  // by one and the key itself is returned.
  std::string LookUp(const std::string& key, unsigned long& missing) const;
  std::string LookUp(const std::string& key) const;
  // Whether some table of the dictionary holds the key.
  bool Contains(const std::string& key) const;

  const std::string& GetDirectory() const;
  // Problems met while reading the directories' files.
  std::vector<std::string> GetProblems() const;

  // Keys looked up and not found, since the start or the last clear.
  static const std::set<std::string>& GetMissingKeys();
  static void ClearMissingKeys();

 private:
  const std::string* Find(const std::string& key) const;

  std::shared_ptr<const FacSTDirectory> fpDirectory;
  std::shared_ptr<const FacSTDirectory> fpGlobalDirectory;
  std::string fProcedure;
  std::string fGlobal;
};
