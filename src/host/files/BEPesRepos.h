#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Session.h"

// The host's repository of the files that a command wrote for its user.
// A procedure hands each finished file over; the repository keeps, with
// the name, kind and flag, a snapshot of the file's content at that moment.
// Each hand-over is an entry of its own, in order: on a split file every
// split rewrites the same document, and each split's version still reaches
// the procedure's viewer. After the command the host reports any file that
// can no longer be read. The repository is cleared per command.
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
    bool fbDeliver = false;   // hand the file to the procedure's viewer
    bool fbReadable = false;  // the file could be read when it was handed over
    std::string fContent;     // the file's content when it was handed over
    // The split that was current at the hand-over (none on an unsplit
    // file), so that the viewer can show each split's documents under the
    // split's title.
    std::vector<ZORV_Session::SplitValue> fvSplit;
  };

  // The largest file read back, in bytes.
  static constexpr unsigned long long kMaxReadBytes = 1ULL << 30;

  // Forgets every entry: a new command begins.
  static void BEPesClear();
  // Issues one error message for each file that could not be written, then
  // tests every file named in the repository again and issues one for each
  // that is missing or unreadable now; returns how many messages.
  static int BEPesCheckError();
  // Remembers a document that could not be written, with the reason, for
  // the check at the end of the command.
  static void NoteFailedWrite(const std::string& name, const std::string& reason);

  // Enters one hand-over of a file, with a snapshot of its content; true
  // when the file is readable. A file without a name is not entered.
  static bool Store(const char* name, int kind, int flag);
  // The names that cannot be read now, each once, in order of first entry;
  // no message.
  static std::vector<std::string> FindUnreadable();

  static const std::vector<FileData>& GetFiles();
  // The readable hand-overs to deliver, of one kind, in order.
  static std::vector<const FileData*> GetDeliveries(int kind);

 private:
  struct FailedWrite {
    std::string fName;
    std::string fReason;
  };
  static std::vector<FileData>& Files();
  static std::vector<FailedWrite>& FailedWrites();
  static bool Read(const std::string& name, std::string* content);
};

// Hands a written file to the repository, with its kind (a BEPesRepos::Kind)
// and a flag: 1 to deliver it to the procedure's viewer, 0 to keep it only.
// True when the file is there, regular, not larger than
// BEPesRepos::kMaxReadBytes and readable.
bool TestAndStoreToPes(const char* name, int kind, int flag);
