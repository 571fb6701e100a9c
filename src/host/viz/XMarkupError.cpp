#include "host/viz/XMarkupError.h"

std::string XMarkupError::ToText() const {
  if (fLine <= 0) return fMessage;
  return "line " + std::to_string(fLine) + ", column " + std::to_string(fColumn) + ": " + fMessage;
}
