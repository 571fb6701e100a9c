#pragma once

#include <string>

struct XMarkupNode;

// What is wrong with a chart markup document, and where: a 1-based line and
// column of the text, or 0 when the problem has no place in it.
struct XMarkupError {
  std::string fMessage;
  long fLine = 0;
  long fColumn = 0;

  // "line 3, column 7: <message>", or the message alone without a place.
  std::string ToText() const;
  // A problem placed at an element.
  static XMarkupError At(const XMarkupNode& node, const std::string& message);
  // Puts that problem into `error` and gives false, for checks that stop at
  // their first problem.
  static bool Fail(const XMarkupNode& node, const std::string& message, XMarkupError& error);
};
