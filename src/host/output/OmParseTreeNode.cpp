#include "host/output/OmParseTreeNode.h"

#include <algorithm>
#include <cctype>
#include <climits>

#include "host/output/OmMemoryRegion.h"

namespace {

bool IsDigit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// Reads the digits at `pos`; false when there are none or the number is 0
// or absurdly large. `end` is set past the digits.
bool ReadNumber(const std::string& text, std::size_t pos, int& number, std::size_t& end) {
  end = pos;
  long value = 0;
  while (end < text.size() && IsDigit(text[end])) {
    value = value * 10 + (text[end] - '0');
    if (value > INT_MAX / 10) return false;
    ++end;
  }
  if (end == pos || value < 1) return false;
  number = static_cast<int>(value);
  return true;
}

// Parses one text of a list, between `begin` and `end`: literals and
// sub-item markers "%k" or "^k".
OmParseTreeNode* ParseListText(const std::string& pattern, std::size_t begin, std::size_t end,
                               OmMemoryRegion& region) {
  OmParseTreeNode* sequence = OmParseTreeNode::MakeSequence(region);
  std::string literal;
  std::size_t i = begin;
  while (i < end) {
    char c = pattern[i];
    int number = 0;
    std::size_t after = 0;
    if ((c == '%' || c == '^') && ReadNumber(pattern.substr(0, end), i + 1, number, after)) {
      if (!literal.empty()) {
        sequence->AppendChild(OmParseTreeNode::MakeLiteral(literal, region), region);
        literal.clear();
      }
      sequence->AppendChild(
          region.Make<OmParseTreeNode>(OmParseTreeNode::SUBITEM, pattern.substr(i, after - i), number), region);
      i = after;
      continue;
    }
    literal += c;
    ++i;
  }
  if (!literal.empty()) sequence->AppendChild(OmParseTreeNode::MakeLiteral(literal, region), region);
  return sequence;
}

// Recognises "[first:rest:]n" at `open`. On success gives the positions of
// the two texts and the end of the marker.
bool MatchList(const std::string& pattern, std::size_t open, std::size_t& colon, std::size_t& close, int& number,
               std::size_t& end) {
  std::size_t i = open + 1;
  while (i < pattern.size() && pattern[i] != ':') {
    if (pattern[i] == '[' || pattern[i] == ']') return false;
    ++i;
  }
  if (i >= pattern.size()) return false;
  colon = i;
  std::size_t j = colon + 1;
  while (j + 1 < pattern.size() && !(pattern[j] == ':' && pattern[j + 1] == ']')) {
    if (pattern[j] == '[' || pattern[j] == ']') return false;
    ++j;
  }
  if (j + 1 >= pattern.size()) return false;
  close = j;
  return ReadNumber(pattern, close + 2, number, end);
}

int LargestSubItem(const OmParseTreeNode* sequence) {
  int largest = 0;
  if (sequence == nullptr) return largest;
  for (const OmParseTreeNode* child : sequence->GetChildren()) {
    if (child->GetKind() == OmParseTreeNode::SUBITEM) largest = std::max(largest, child->GetIndex());
  }
  return largest;
}

}  // namespace

OmParseTreeNode::OmParseTreeNode(Kind kind, const std::string& text, int index)
    : fKind(kind), fText(text), fIndex(index) {}

int OmParseTreeNode::GetElementSize() const {
  return std::max(1, std::max(LargestSubItem(fpFirst), LargestSubItem(fpRest)));
}

std::string OmParseTreeNode::AsString() const {
  if (fKind != SEQUENCE) return fText;
  std::string text;
  for (const OmParseTreeNode* child : fvChildren) text += child->AsString();
  return text;
}

OmParseTreeNode* OmParseTreeNode::MakeSequence(OmMemoryRegion& region) {
  return region.Make<OmParseTreeNode>(SEQUENCE, std::string(), 0);
}

OmParseTreeNode* OmParseTreeNode::MakeLiteral(const std::string& text, OmMemoryRegion& region) {
  return region.Make<OmParseTreeNode>(LITERAL, text, 0);
}

void OmParseTreeNode::AppendChild(OmParseTreeNode* child, OmMemoryRegion& region) {
  if (child == nullptr) return;
  if (child->fKind == LITERAL && !fvChildren.empty() && fvChildren.back()->fKind == LITERAL) {
    fvChildren.back()->fText += child->fText;
    Destroy(child, region);
    return;
  }
  fvChildren.push_back(child);
}

void OmParseTreeNode::Destroy(OmParseTreeNode* node, OmMemoryRegion& region) {
  if (node == nullptr) return;
  for (OmParseTreeNode* child : node->fvChildren) Destroy(child, region);
  Destroy(node->fpFirst, region);
  Destroy(node->fpRest, region);
  region.Destroy(node);
}

OmParseTreeNode* OmParseTreeNode::Parse(const std::string& pattern, OmMemoryRegion& region) {
  OmParseTreeNode* root = MakeSequence(region);
  std::string literal;
  auto flush = [&]() {
    if (literal.empty()) return;
    root->AppendChild(MakeLiteral(literal, region), region);
    literal.clear();
  };
  std::size_t i = 0;
  while (i < pattern.size()) {
    char c = pattern[i];
    int number = 0;
    std::size_t end = 0;
    if (c == '^' && ReadNumber(pattern, i + 1, number, end)) {
      flush();
      root->AppendChild(region.Make<OmParseTreeNode>(ARGUMENT, pattern.substr(i, end - i), number), region);
      i = end;
      continue;
    }
    std::size_t colon = 0;
    std::size_t close = 0;
    if (c == '[' && MatchList(pattern, i, colon, close, number, end)) {
      flush();
      OmParseTreeNode* list = region.Make<OmParseTreeNode>(LIST, pattern.substr(i, end - i), number);
      list->fpFirst = ParseListText(pattern, i + 1, colon, region);
      list->fpRest = ParseListText(pattern, colon + 1, close, region);
      root->AppendChild(list, region);
      i = end;
      continue;
    }
    literal += c;
    ++i;
  }
  flush();
  return root;
}
