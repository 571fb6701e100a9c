#include "host/io/DataFileError.h"

DataFileError::DataFileError(const std::string& file, long line, long column, const std::string& message)
    : std::runtime_error(Compose(file, line, column, message)),
      fFile(file),
      fLine(line),
      fColumn(column),
      fMessage(message) {}

std::string DataFileError::Compose(const std::string& file, long line, long column, const std::string& message) {
  std::string text = file;
  if (line > 0) text += ", line " + std::to_string(line);
  if (column > 0) text += ", column " + std::to_string(column);
  return text + ": " + message;
}
