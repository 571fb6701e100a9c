#pragma once

#include <stdexcept>
#include <string>

// A mistake in a command, found where it stands: the command does not run.
// The message is complete: "FILE:LINE:COLUMN: what is wrong", where what is
// wrong for a mistake of form reads "expected ..., found ...".
class AppCommandError : public std::runtime_error {
 public:
  AppCommandError(const std::string& origin, int line, int column, const std::string& text);

  const std::string& GetOrigin() const { return fOrigin; }
  int GetLine() const { return fLine; }
  int GetColumn() const { return fColumn; }
  // The message without the place.
  const std::string& GetText() const { return fText; }

 private:
  static std::string Compose(const std::string& origin, int line, int column, const std::string& text);

  std::string fOrigin;
  int fLine;
  int fColumn;
  std::string fText;
};
