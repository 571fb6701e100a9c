#include "host/viz/XMarkupWriter.h"

#include "numeric/common/MCMarkupText.h"

namespace {

void WriteNode(const XMarkupNode& node, std::string& out) {
  if (node.IsText()) {
    out += XMarkupWriter::Content(node.fText);
    return;
  }
  const bool empty = node.fvChildren.empty();
  out += XMarkupWriter::StartTag(node, empty);
  if (empty) return;
  for (const auto& child : node.fvChildren) WriteNode(*child, out);
  out += "</" + node.fName + ">";
}

}  // namespace

std::string XMarkupWriter::Write(const XMarkupNode& node) {
  std::string out;
  WriteNode(node, out);
  return out;
}

std::string XMarkupWriter::StartTag(const XMarkupNode& node, bool bEmpty) {
  std::string out = "<" + node.fName;
  for (const auto& attribute : node.fvAttributes)
    out += " " + attribute.first + "=\"" + AttributeValue(attribute.second) + "\"";
  out += bEmpty ? "/>" : ">";
  return out;
}

std::string XMarkupWriter::AttributeValue(const std::string& text) {
  return MCCommon_850::MCMarkupText::Escape(text, MCCommon_850::MCMarkupText::XML_ATTRIBUTE);
}

std::string XMarkupWriter::Content(const std::string& text) {
  return MCCommon_850::MCMarkupText::Escape(text, MCCommon_850::MCMarkupText::XML_CONTENT);
}
