#pragma once

#include <string>

// What is wrong with a chart markup document, and where: a 1-based line and
// column of the text, or 0 when the problem has no place in it.
struct XMarkupError {
  std::string fMessage;
  long fLine = 0;
  long fColumn = 0;

  // "line 3, column 7: <message>", or the message alone without a place.
  std::string ToText() const;
};
