#pragma once

#include <string>
#include <vector>

// The host's repository of the files that a command wrote for its user.
// A procedure hands each finished file over; after the command the host
// passes the files marked for delivery to the procedure's viewer, and
// reports any file that cannot be read back. Entries are kept in the order
// of their first hand-over; a file handed over again (each split of a split
// file rewrites the same document) keeps its place and takes the new kind
// and flag. The repository lives for the process and is cleared per command.
class BEPesRepos {
 public:
  // Kinds of file.
  enum Kind {
    KIND_XML = 6,   // an XML document: a model file or a statistics document
    KIND_JSON = 99  // a JSON document
  };

  struct FileData {
    std::string fName;
    int fKind = 0;
    bool fbDeliver = false;  // hand the file to the procedure's viewer
    bool fbReadable = false; // the last test found the file readable
  };

  // Forgets every entry: a new command begins.
  static void BEPesClear();
  // Tests every entry again and issues one error message for each file that
  // is missing or unreadable; returns how many there were.
  static int BEPesCheckError();

  // Enters (or refreshes) a file; true when it is readable now. A file
  // without a name is not entered.
  static bool Store(const char* name, int kind, int flag);
  // Tests every entry again and returns those that failed, without a message.
  static std::vector<FileData> FindUnreadable();

  static const std::vector<FileData>& GetFiles();
  // The readable files to deliver, of one kind, in order.
  static std::vector<std::string> GetDeliveries(int kind);

 private:
  static std::vector<FileData>& Files();
  static bool IsReadable(const std::string& name);
};

// Hands a written file to the repository, with its kind (a BEPesRepos::Kind)
// and a flag: 1 to deliver it to the procedure's viewer, 0 to keep it only.
// True when the file is there and readable.
bool TestAndStoreToPes(const char* name, int kind, int flag);
