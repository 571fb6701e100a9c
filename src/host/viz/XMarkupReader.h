#pragma once

#include <memory>
#include <string>

#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// Reads a chart markup document (UTF-8 XML) into a tree of XMarkupNode.
// Document type declarations, and so every entity but the five predefined
// ones and character references, are refused; elements nest at most
// kMaxDepth deep.
class XMarkupReader {
 public:
  static const int kMaxDepth = 200;

  // The root element, or null with the reason in `error`.
  static std::unique_ptr<XMarkupNode> Read(const std::string& text, XMarkupError& error);

  // The 1-based column, in characters, of a byte offset of `text`.
  static long ColumnOf(const std::string& text, std::size_t offset);
};
