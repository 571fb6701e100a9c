#pragma once

#include <string>
#include <vector>

#include "host/output/OmCellText.h"
#include "host/output/OmMemoryRegion.h"

class OmParseTreeNode;

// A text made of a pattern and arguments (the pattern language is described
// in OmParseTreeNode.h). Arguments are added in order; a repeat list, opened
// with BeginRepeatList and closed with EndRepeatList, counts as one argument
// in the place where it opens, and its cells are its items. Lists may nest:
// a list inside a list is one item, written as its items joined by ", ".
//
// This is the one expansion engine of the output: every composite text of
// the procedure's tables and messages goes through it.
class OmComposite : public OmCellText {
 public:
  explicit OmComposite(const std::string& pattern, OmMemoryRegion& region = OmMemoryRegion::DefaultHeap());
  ~OmComposite() override;
  OmComposite(const OmComposite&) = delete;
  OmComposite& operator=(const OmComposite&) = delete;

  const std::string& GetPattern() const { return fPattern; }
  OmMemoryRegion& GetRegion() const { return *fpRegion; }

  // The next argument, or the next item of the open list. The cell is copied.
  void Add(const OmCellText& cell);
  void BeginRepeatList();
  // Closes the innermost open list; without one, nothing happens.
  void EndRepeatList();
  // Closes what is open. Arguments added afterwards still count.
  void End();
  bool IsEnded() const { return fbEnded; }

  // Expands the pattern with the arguments into a tree of literals, which
  // the composite keeps; `*ppResult` (when given) points to it until the
  // next Substitute or the composite's end. With `bKeepUnmatched` a marker
  // that finds no argument or sub-item stays in the text as written, else
  // it is dropped. True when every marker found its argument.
  bool Substitute(OmParseTreeNode** ppResult, bool bKeepUnmatched);

  // The expanded text. Before any Substitute, the expansion is made as by
  // Substitute(nullptr, true) without keeping the tree.
  std::string AsString() const;

  // The number of top-level arguments.
  int GetArgumentCount() const { return static_cast<int>(fvArguments.size()); }

  std::string GetText() const override { return AsString(); }
  OmCellText* Clone(OmMemoryRegion& region) const override;

 private:
  struct Argument {
    OmCellText* fpCell = nullptr;  // a plain argument; null for a list
    std::vector<Argument> fvItems;
  };

  void DestroyArguments(std::vector<Argument>& arguments);
  static void CopyArguments(const std::vector<Argument>& from, std::vector<Argument>& to, OmMemoryRegion& region);
  std::vector<Argument>& OpenList();
  static std::string ArgumentText(const Argument& argument);
  bool Expand(bool bKeepUnmatched, std::string* text, OmParseTreeNode* result) const;

  std::string fPattern;
  OmMemoryRegion* fpRegion;
  std::vector<Argument> fvArguments;
  int fOpenDepth = 0;
  bool fbEnded = false;
  OmParseTreeNode* fpResult = nullptr;
};
