#pragma once

#include <stdexcept>
#include <string>

// A data or dictionary file that cannot be read: the file, where in it (line
// and column, 1-based, 0 when not known) and what is wrong. what() gives the
// whole message, e.g. `data.csv, line 12, column 7: the quoted field is not
// closed before the end of the file`.
class DataFileError : public std::runtime_error {
 public:
  DataFileError(const std::string& file, long line, long column, const std::string& message);

  const std::string& GetFile() const { return fFile; }
  long GetLine() const { return fLine; }
  long GetColumn() const { return fColumn; }
  const std::string& GetMessage() const { return fMessage; }

 private:
  static std::string Compose(const std::string& file, long line, long column, const std::string& message);

  std::string fFile;
  long fLine;
  long fColumn;
  std::string fMessage;
};
