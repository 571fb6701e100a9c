#pragma once

#include <fstream>
#include <string>

// A file name as the user gave it in a command. Relative names are taken
// from the folder of the command file being run (ZORV_Session's command
// folder), or from the working directory when there is none.
class ExtNameStr {
 public:
  // What Access reports.
  enum AccessResult {
    ACCESS_OK = 0,      // the file exists and allows the access asked for
    ACCESS_ABSENT = 1,  // there is no file of that name (or no name at all)
    ACCESS_DENIED = 2   // the file exists but refuses that access
  };
  // Access modes; they may be combined.
  enum AccessMode { MODE_EXISTS = 0, MODE_WRITE = 2, MODE_READ = 4 };

  ExtNameStr() = default;
  explicit ExtNameStr(const std::string& name) { SetGeneric(name); }

  // Takes the name, without its surrounding blanks.
  void SetGeneric(const std::string& name);
  void SetGeneric(const char* name);
  const std::string& GetGeneric() const { return fGeneric; }
  // The name as the file system takes it: relative names resolved against
  // the command file's folder.
  std::string GetPath() const;
  bool IsEmpty() const { return fGeneric.empty(); }

  // Opens the stream on the file (closing whatever it had open); true when
  // it is open.
  bool Open(std::ofstream& stream, std::ios_base::openmode mode) const;

  // Whether the file exists and allows the given access (AccessMode bits).
  int Access(int mode) const;

  // Deletes the file; true when it was deleted.
  bool remove() const;

 private:
  std::string fGeneric;
};
