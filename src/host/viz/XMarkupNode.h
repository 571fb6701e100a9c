#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// One node of a chart markup document as read: an element with its
// attributes in the order written and its children, or a piece of text (an
// empty name). Each element remembers where it stood in the text it was
// read from, so that messages can name the line and column and the editor
// can splice text into it without rewriting the rest.
struct XMarkupNode {
  std::string fName;  // empty for a text node
  std::string fText;  // the text of a text node, entities resolved
  std::vector<std::pair<std::string, std::string>> fvAttributes;
  std::vector<std::unique_ptr<XMarkupNode>> fvChildren;
  XMarkupNode* fpParent = nullptr;

  long fLine = 0;                // 1-based, of the start tag
  long fColumn = 0;              // 1-based, in characters
  std::size_t fStart = 0;        // byte offset of the start tag's "<"
  std::size_t fStartTagEnd = 0;  // byte offset just behind the start tag
  std::size_t fEnd = 0;          // byte offset just behind the end tag
  bool fbEmptyTag = false;       // written as <name .../>

  bool IsText() const { return fName.empty(); }
  bool HasAttribute(const std::string& name) const;
  // Null when absent.
  const std::string* FindAttribute(const std::string& name) const;
  // The value, or `fallback` when absent.
  std::string Attribute(const std::string& name, const std::string& fallback = std::string()) const;
  // An attribute that is a number of pixels ("12" or "12px"), or
  // `fallback` when it is absent, not a number or negative.
  double Length(const std::string& name, double fallback) const;
  // The same of an element that may be absent (null).
  static double LengthOf(const XMarkupNode* node, const std::string& name, double fallback);
  // The text of the element's own text children, without its elements'.
  std::string OwnText() const;
  // Replaces the value, or adds the attribute at the end.
  void SetAttribute(const std::string& name, const std::string& value);

  // The child elements of that name, in order; all child elements for an
  // empty name.
  std::vector<const XMarkupNode*> Children(const std::string& name = std::string()) const;
  // The first child element of that name; null when there is none.
  const XMarkupNode* FirstChild(const std::string& name) const;
  XMarkupNode* FirstChild(const std::string& name);
  // The first element of that name at any depth below, in document order.
  const XMarkupNode* FindDescendant(const std::string& name) const;

  // A new child element or text at the end.
  XMarkupNode& AddElement(const std::string& name);
  void AddText(const std::string& text);
};
