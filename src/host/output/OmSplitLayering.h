#pragma once

#include <string>
#include <vector>

struct OmDimension;
struct OmHeading;
struct OmTable;

// Shows the splits of a split file together: the tables a command made for
// its splits (those that remember their split, OmTable::fvSplit) become one
// table per kind, whose outermost row dimensions are the split variables
// with one category per split.
//
// Tables are of the same kind when they stand under headings of the same
// texts and have the same title and sub-type; the n-th table of a kind made
// for one split goes with the n-th of every other split. They merge, in the
// order they were made, into the place of the first one when their
// dimensions have the same names and places; a table whose dimensions differ
// from those of its kind starts a merged table of its own. Every dimension
// of the merged table is the union of the members' category trees, matched
// by label path in order of first appearance; captions, notes and footnotes
// of the same text are kept once. Headings left empty by the merge are
// removed. Tables made outside a split are left as they are.
class OmSplitLayering {
 public:
  // Merges the split tables anywhere under `heading` (usually a command's).
  // Running it again changes nothing.
  void Layer(OmHeading& heading);

  // Of the last Layer: how many tables were folded into another one.
  int GetFoldedCount() const { return fFoldedCount; }
  void SetFoldedCount(int count) { fFoldedCount = count; }
  // Of the last Layer: how many merged tables it made.
  int GetMergedCount() const { return fMergedCount; }
  void SetMergedCount(int count) { fMergedCount = count; }

  // Gives a table that remembers its split the split's row dimensions, when
  // it does not show them already. Public for the tests.
  static void AddSplitDimensions(OmTable& table);

 private:
  struct Member;

  void Collect(OmHeading& heading, std::vector<std::string>& path, std::vector<Member>& members) const;
  static std::vector<std::string> Signature(const OmTable& table);
  static void Merge(const std::vector<OmTable*>& tables);
  static bool Prune(OmHeading& heading, const std::vector<const OmTable*>& removed);

  int fFoldedCount = 0;
  int fMergedCount = 0;
};
