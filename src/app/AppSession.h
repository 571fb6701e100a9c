#pragma once

#include <iosfwd>
#include <string>

#include "app/AppOptions.h"
#include "app/CommandText.h"
#include "host/output/OmDocument.h"

// One run of the program: reads a command file, runs its commands in order
// into one output document, and writes that document in the forms asked for.
class AppSession {
 public:
  explicit AppSession(const AppOptions& options) : fOptions(options) {}

  // Runs the commands of `text`; `origin` names the file in messages.
  void RunText(const std::string& text, const std::string& origin);
  // Reads and runs a command file ("-" is standard input). False when the
  // file cannot be read; the reason is in the document.
  bool RunFile(const std::string& path);

  // Terminal text to `terminal`, HTML and JSON into the output folder.
  // False when a report could not be written; `error` says why.
  bool WriteReports(std::ostream& terminal, std::string& error) const;

  // 0 when every command ran, 1 when any had an error.
  int ExitStatus() const { return fbAnyError ? 1 : 0; }
  const OmDocument& Document() const { return fDocument; }

 private:
  void RunCommand(const CommandText& command, const std::string& origin);
  void Error(OmHeading& where, const std::string& text);

  AppOptions fOptions;
  OmDocument fDocument;
  bool fbAnyError = false;
};
