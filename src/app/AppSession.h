#pragma once

#include <iosfwd>
#include <memory>
#include <string>

#include "app/AppCommandText.h"
#include "app/AppDataContext.h"
#include "app/AppOptions.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"

class AppCommandReader;
class BpProcedure;
class ZORV_Dataset;

// One run of the program: reads a command file, runs its commands in order
// into one output document, and writes that document in the forms asked for.
//
// Each command gets a heading of its own, under which its text, its output
// and its messages go; while it runs, an output procedure over that heading
// is the current one, so messages (BpError) and text (BP_ToFront) land
// there. A command with a mistake says so there and does not run; the
// following commands still do. After an interrupt (the host's stop flag)
// the interrupted command shows only its text and that it was interrupted,
// and no further command starts.
class AppSession {
 public:
  explicit AppSession(const AppOptions& options);
  ~AppSession();
  AppSession(const AppSession&) = delete;
  AppSession& operator=(const AppSession&) = delete;

  // Runs the commands of `text`. `origin` names the file in messages;
  // relative file names in the commands are taken from `baseDir` ("" is the
  // working folder).
  void RunText(const std::string& text, const std::string& origin, const std::string& baseDir);
  // The largest command file read, in bytes.
  static constexpr std::size_t kMaxCommandFileBytes = 16u * 1024u * 1024u;

  // Reads and runs a command file ("-" is standard input). False when the
  // file cannot be read, is a folder or a device, or is larger than
  // kMaxCommandFileBytes; the reason is in the document.
  bool RunFile(const std::string& path);

  // Terminal text to `terminal`, HTML and JSON into the output folder.
  // False when a report could not be written; `error` says why.
  bool WriteReports(std::ostream& terminal, std::string& error) const;

  // The exit status after an interrupt, as a shell reports a program that
  // Ctrl-C ended.
  static constexpr int kInterruptedStatus = 130;
  // The message an interrupted command shows in place of its output.
  static constexpr const char* kInterruptedCommand = "The command was interrupted; its results are not shown.";

  // 0 when every command ran, 1 when any had an error, kInterruptedStatus
  // when an interrupt stopped the run.
  int ExitStatus() const { return fbStopped ? kInterruptedStatus : fbAnyError ? 1 : 0; }
  bool WasInterrupted() const { return fbStopped; }
  const OmDocument& GetDocument() const { return fDocument; }
  // The active dataset; null before the first LOAD.
  ZORV_Dataset* GetData() const { return fpData.get(); }
  // The parser's memory of the last GLMIXFIT command that was read.
  const ParserMemory& GetMemory() const { return fMemory; }

 private:
  void RunCommand(const AppCommandText& command, const std::string& origin, const std::string& baseDir);
  void Dispatch(AppCommandReader& reader, BpProcedure& procedure, const std::string& baseDir);
  void RunMixed(AppCommandReader& reader, BpProcedure& procedure, const std::string& baseDir);
  // Replaces the output of an interrupted command after its first `echoed`
  // items (the echo of its text) with the message that it was interrupted.
  void ShowInterrupted(OmHeading& heading, std::size_t echoed);

  AppOptions fOptions;
  OmDocument fDocument;
  std::unique_ptr<ZORV_Dataset> fpData;
  ParserMemory fMemory;
  AppDataContext fDataContext;  // what the data commands work on; its data are fpData's
  int fMixedCount = 0;
  bool fbAnyError = false;
  bool fbStopped = false;
};
