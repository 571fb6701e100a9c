#include "app/AppCommandError.h"

AppCommandError::AppCommandError(const std::string& origin, int line, int column, const std::string& text)
    : std::runtime_error(Compose(origin, line, column, text)),
      fOrigin(origin),
      fLine(line),
      fColumn(column),
      fText(text) {}

std::string AppCommandError::Compose(const std::string& origin, int line, int column, const std::string& text) {
  std::string message = origin + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + text;
  if (!message.empty() && message.back() != '.' && message.back() != '?') message += '.';
  return message;
}
