#include "host/viz/XMarkupError.h"

#include "host/viz/XMarkupNode.h"

XMarkupError XMarkupError::At(const XMarkupNode& node, const std::string& message) {
  XMarkupError error;
  error.fMessage = message;
  error.fLine = node.fLine;
  error.fColumn = node.fColumn;
  return error;
}

bool XMarkupError::Fail(const XMarkupNode& node, const std::string& message, XMarkupError& error) {
  error = At(node, message);
  return false;
}

std::string XMarkupError::ToText() const {
  if (fLine <= 0) return fMessage;
  return "line " + std::to_string(fLine) + ", column " + std::to_string(fColumn) + ": " + fMessage;
}
