#pragma once

#include <string>
#include <vector>

class OmMemoryRegion;

// A node of a parsed text pattern.
//
// The pattern language: "^n" stands for argument n (from 1). A list
//   "[first:rest:]n"
// writes argument n, a list, element by element: `first` for the first
// element and `rest` for each later one. Inside the two texts "%k" and "^k"
// stand for sub-item k of the element (from 1); an element has as many
// sub-items as the largest k used in either text. When `first` is empty,
// `rest` serves for the first element too, so "[:^1:]1" joins the items.
// Anything that does not form a marker is literal text: a caret or percent
// sign without digits, a bracket without its closing ":]n". When expanded, a
// marker whose argument or sub-item is missing stays as written, except a
// list whose argument was never given: that is an empty list, and writes
// nothing, as a list with no elements does.
//
// Parsed, a pattern is a SEQUENCE of LITERAL, ARGUMENT and LIST nodes; a
// LIST holds its two texts as SEQUENCEs of LITERAL and SUBITEM nodes. After
// substitution a tree is a SEQUENCE of LITERAL nodes only.
class OmParseTreeNode {
 public:
  enum Kind { SEQUENCE, LITERAL, ARGUMENT, LIST, SUBITEM };

  OmParseTreeNode(Kind kind, const std::string& text, int index);
  OmParseTreeNode(const OmParseTreeNode&) = delete;
  OmParseTreeNode& operator=(const OmParseTreeNode&) = delete;

  Kind GetKind() const { return fKind; }
  // A literal's text; for a marker, its own text in the pattern.
  const std::string& GetText() const { return fText; }
  // The argument number of ARGUMENT and LIST, the sub-item of SUBITEM.
  int GetIndex() const { return fIndex; }
  // The parts of a SEQUENCE.
  const std::vector<OmParseTreeNode*>& GetChildren() const { return fvChildren; }
  // The two texts of a LIST, each a SEQUENCE.
  const OmParseTreeNode* GetFirstText() const { return fpFirst; }
  const OmParseTreeNode* GetRestText() const { return fpRest; }
  // The number of sub-items of one element of a LIST (at least 1).
  int GetElementSize() const;

  // The text of the tree: literals as they are, markers as written.
  std::string AsString() const;

  // Parses `pattern` into a tree made in `region`. Never fails: what is not
  // a marker is literal text.
  static OmParseTreeNode* Parse(const std::string& pattern, OmMemoryRegion& region);
  // A SEQUENCE node, to be filled with AppendChild.
  static OmParseTreeNode* MakeSequence(OmMemoryRegion& region);
  static OmParseTreeNode* MakeLiteral(const std::string& text, OmMemoryRegion& region);
  // Destroys a tree made by the functions above, children included.
  static void Destroy(OmParseTreeNode* node, OmMemoryRegion& region);

  // Adds a part to a SEQUENCE, which owns it from then on. A literal that
  // follows a literal is merged into it.
  void AppendChild(OmParseTreeNode* child, OmMemoryRegion& region);

 private:
  ~OmParseTreeNode() = default;
  friend class OmMemoryRegion;

  Kind fKind;
  std::string fText;
  int fIndex;
  std::vector<OmParseTreeNode*> fvChildren;
  OmParseTreeNode* fpFirst = nullptr;
  OmParseTreeNode* fpRest = nullptr;
};
