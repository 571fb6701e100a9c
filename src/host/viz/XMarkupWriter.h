#pragma once

#include <string>

#include "host/viz/XMarkupNode.h"

// Writes chart markup: a node tree back into text (white space as it was
// read), and single texts made safe for an attribute value or for element
// content.
class XMarkupWriter {
 public:
  static std::string Write(const XMarkupNode& node);
  // The start tag alone, with its attributes, for an element that keeps its
  // content.
  static std::string StartTag(const XMarkupNode& node, bool bEmpty);

  // Markup characters as references; line feeds and tabs kept as
  // references too, so that they survive attribute value normalization.
  static std::string AttributeValue(const std::string& text);
  // Markup characters as references; quotes need none in content.
  static std::string Content(const std::string& text);
};
