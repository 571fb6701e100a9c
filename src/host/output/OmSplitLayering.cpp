#include "host/output/OmSplitLayering.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "host/output/OmDocument.h"

struct OmSplitLayering::Member {
  OmTable* fpTable = nullptr;
  std::string fKind;   // heading path, title and sub-type
  std::string fSplit;  // the split's value texts
};

namespace {

const char kSeparator = '\x1f';

int CountLeaves(const OmDimensionNode& node) {
  if (node.IsCategory()) return 1;
  int count = 0;
  for (const OmDimensionNode& child : node.fvChildren) count += CountLeaves(child);
  return count;
}

int LeafIndexOfPath(const OmDimensionNode& root, const std::vector<int>& path) {
  const OmDimensionNode* node = &root;
  int index = 0;
  for (int step : path) {
    for (int sibling = 0; sibling < step; ++sibling) {
      index += CountLeaves(node->fvChildren[static_cast<std::size_t>(sibling)]);
    }
    node = &node->fvChildren[static_cast<std::size_t>(step)];
  }
  return index;
}

// Footnote indices of one member in the merged table's list.
std::vector<int> FootnoteMap(const OmTable& member, std::vector<std::string>& merged) {
  std::vector<int> map;
  for (const std::string& text : member.fvFootnotes) {
    auto found = std::find(merged.begin(), merged.end(), text);
    if (found == merged.end()) {
      merged.push_back(text);
      map.push_back(static_cast<int>(merged.size()) - 1);
    } else {
      map.push_back(static_cast<int>(found - merged.begin()));
    }
  }
  return map;
}

void AddFootnotes(std::vector<int>& target, const std::vector<int>& source, const std::vector<int>& map) {
  for (int index : source) {
    if (index < 0 || index >= static_cast<int>(map.size())) continue;
    const int mapped = map[static_cast<std::size_t>(index)];
    if (std::find(target.begin(), target.end(), mapped) == target.end()) target.push_back(mapped);
  }
}

OmText Remapped(const OmText& text, const std::vector<int>& map) {
  OmText out;
  out.fText = text.fText;
  AddFootnotes(out.fvFootnotes, text.fvFootnotes, map);
  return out;
}

// Adds the texts not there yet; a text already there gains the footnotes.
void MergeTexts(std::vector<OmText>& target, const std::vector<OmText>& source, const std::vector<int>& map) {
  for (const OmText& text : source) {
    auto found = std::find_if(target.begin(), target.end(),
                              [&text](const OmText& existing) { return existing.fText == text.fText; });
    if (found == target.end()) {
      target.push_back(Remapped(text, map));
    } else {
      AddFootnotes(found->fvFootnotes, text.fvFootnotes, map);
    }
  }
}

// Merges the children of `source` into those of `target`. The n-th child of
// a label and kind matches the n-th child of the same label and kind; a
// child without a match is added behind the others. For every leaf of
// `source`, in order, the path of child positions in `target` is recorded;
// children are only ever appended, so recorded paths stay valid.
void MergeChildren(OmDimensionNode& target, const OmDimensionNode& source, const std::vector<int>& footnotes,
                   std::vector<int>& path, std::vector<std::vector<int>>& leafPaths) {
  std::map<std::pair<std::string, bool>, int> seen;
  for (const OmDimensionNode& child : source.fvChildren) {
    const bool bCategory = child.IsCategory();
    const int occurrence = seen[std::make_pair(child.fLabel.fText, bCategory)]++;
    int found = -1;
    int count = 0;
    for (std::size_t i = 0; i < target.fvChildren.size(); ++i) {
      const OmDimensionNode& candidate = target.fvChildren[i];
      if (candidate.fLabel.fText != child.fLabel.fText || candidate.IsCategory() != bCategory) continue;
      if (count++ == occurrence) {
        found = static_cast<int>(i);
        break;
      }
    }
    if (found < 0) {
      OmDimensionNode node;
      node.fLabel.fText = child.fLabel.fText;
      node.fbShowLabel = child.fbShowLabel;
      node.fbIsGroup = child.fbIsGroup;
      target.fvChildren.push_back(node);
      found = static_cast<int>(target.fvChildren.size()) - 1;
    }
    OmDimensionNode& into = target.fvChildren[static_cast<std::size_t>(found)];
    AddFootnotes(into.fLabel.fvFootnotes, child.fLabel.fvFootnotes, footnotes);
    path.push_back(found);
    if (bCategory) {
      leafPaths.push_back(path);
    } else {
      MergeChildren(into, child, footnotes, path, leafPaths);
    }
    path.pop_back();
  }
}

std::string SplitKey(const OmTable& table) {
  std::string key;
  for (const OmSplitLevel& level : table.fvSplit) {
    key += level.fVariable;
    key += kSeparator;
    key += level.fValue;
    key += kSeparator;
  }
  return key;
}

}  // namespace

void OmSplitLayering::AddSplitDimensions(OmTable& table) {
  if (table.fvSplit.empty() || table.fbSplitInRows) return;
  int outermost = 0;
  for (const OmDimension& dimension : table.fvDimensions) {
    if (dimension.fPlace == OmDimension::ROW) outermost = std::max(outermost, dimension.fOrder);
  }
  const std::size_t count = table.fvSplit.size();
  std::vector<OmDimension> splits;
  for (std::size_t i = 0; i < count; ++i) {
    OmDimension dimension;
    dimension.fName.fText = table.fvSplit[i].fVariable;
    dimension.fPlace = OmDimension::ROW;
    dimension.fbShowName = true;
    dimension.fOrder = outermost + static_cast<int>(count - i);
    dimension.fRoot.fbIsGroup = true;
    OmDimensionNode category;
    category.fLabel.fText = table.fvSplit[i].fValue;
    dimension.fRoot.fvChildren.push_back(category);
    splits.push_back(dimension);
  }
  table.fvDimensions.insert(table.fvDimensions.begin(), splits.begin(), splits.end());

  std::map<std::vector<int>, OmCell> cells;
  for (auto& entry : table.fCells) {
    std::vector<int> key(count, 0);
    key.insert(key.end(), entry.first.begin(), entry.first.end());
    cells.emplace(std::move(key), std::move(entry.second));
  }
  table.fCells.swap(cells);
  table.fbSplitInRows = true;
}

std::vector<std::string> OmSplitLayering::Signature(const OmTable& table) {
  std::vector<std::string> signature;
  for (const OmDimension& dimension : table.fvDimensions) {
    signature.push_back(dimension.fName.fText + kSeparator + std::to_string(static_cast<int>(dimension.fPlace)));
  }
  return signature;
}

void OmSplitLayering::Collect(OmHeading& heading, std::vector<std::string>& path,
                              std::vector<Member>& members) const {
  for (OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::HEADING && item.fpHeading) {
      path.push_back(item.fpHeading->fText);
      Collect(*item.fpHeading, path, members);
      path.pop_back();
    } else if (item.fKind == OmItem::TABLE && item.fpTable && !item.fpTable->fvSplit.empty()) {
      Member member;
      member.fpTable = item.fpTable.get();
      for (const std::string& text : path) member.fKind += text + kSeparator;
      member.fKind += kSeparator + item.fpTable->fTitle.fText + kSeparator + item.fpTable->fSubType;
      member.fSplit = SplitKey(*item.fpTable);
      members.push_back(member);
    }
  }
}

void OmSplitLayering::Merge(const std::vector<OmTable*>& tables) {
  const OmTable& first = *tables.front();
  OmTable merged;
  merged.fSubType = first.fSubType;
  merged.fTitle.fText = first.fTitle.fText;
  for (const OmDimension& dimension : first.fvDimensions) {
    OmDimension copy;
    copy.fName.fText = dimension.fName.fText;
    copy.fPlace = dimension.fPlace;
    copy.fbShowName = dimension.fbShowName;
    copy.fOrder = dimension.fOrder;
    copy.fbShowLabels = dimension.fbShowLabels;
    copy.fRoot.fLabel.fText = dimension.fRoot.fLabel.fText;
    copy.fRoot.fbShowLabel = dimension.fRoot.fbShowLabel;
    copy.fRoot.fbIsGroup = true;
    merged.fvDimensions.push_back(copy);
  }
  const std::size_t dimensions = merged.fvDimensions.size();

  // Trees first: a leaf's final position is known only once all members
  // have added their categories.
  std::vector<std::vector<int>> footnoteMaps;
  std::vector<std::vector<std::vector<std::vector<int>>>> leafPaths(tables.size());
  for (std::size_t m = 0; m < tables.size(); ++m) {
    const OmTable& table = *tables[m];
    footnoteMaps.push_back(FootnoteMap(table, merged.fvFootnotes));
    const std::vector<int>& footnotes = footnoteMaps.back();
    AddFootnotes(merged.fTitle.fvFootnotes, table.fTitle.fvFootnotes, footnotes);
    leafPaths[m].resize(dimensions);
    for (std::size_t d = 0; d < dimensions && d < table.fvDimensions.size(); ++d) {
      OmDimension& target = merged.fvDimensions[d];
      AddFootnotes(target.fName.fvFootnotes, table.fvDimensions[d].fName.fvFootnotes, footnotes);
      std::vector<int> path;
      MergeChildren(target.fRoot, table.fvDimensions[d].fRoot, footnotes, path, leafPaths[m][d]);
    }
  }

  for (std::size_t m = 0; m < tables.size(); ++m) {
    const OmTable& table = *tables[m];
    const std::vector<int>& footnotes = footnoteMaps[m];
    std::vector<std::vector<int>> leafMap(dimensions);
    for (std::size_t d = 0; d < dimensions; ++d) {
      for (const std::vector<int>& path : leafPaths[m][d]) {
        leafMap[d].push_back(LeafIndexOfPath(merged.fvDimensions[d].fRoot, path));
      }
    }
    for (const auto& entry : table.fCells) {
      if (entry.first.size() != dimensions) continue;
      std::vector<int> coordinates;
      for (std::size_t d = 0; d < dimensions; ++d) {
        const int leaf = entry.first[d];
        if (leaf < 0 || leaf >= static_cast<int>(leafMap[d].size())) break;
        coordinates.push_back(leafMap[d][static_cast<std::size_t>(leaf)]);
      }
      if (coordinates.size() != dimensions) continue;
      OmCell cell = entry.second;
      cell.fContent = Remapped(entry.second.fContent, footnotes);
      // The first split to fill a cell keeps it.
      merged.fCells.emplace(std::move(coordinates), std::move(cell));
    }
    MergeTexts(merged.fvCaptions, table.fvCaptions, footnotes);
    MergeTexts(merged.fvNotes, table.fvNotes, footnotes);
    merged.fMinDataColumnWidth = std::max(merged.fMinDataColumnWidth, table.fMinDataColumnWidth);
  }

  *tables.front() = std::move(merged);
}

bool OmSplitLayering::Prune(OmHeading& heading, const std::vector<const OmTable*>& removed) {
  bool bChanged = false;
  std::vector<OmItem> kept;
  for (OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::TABLE && item.fpTable &&
        std::find(removed.begin(), removed.end(), item.fpTable.get()) != removed.end()) {
      bChanged = true;
      continue;
    }
    if (item.fKind == OmItem::HEADING && item.fpHeading && Prune(*item.fpHeading, removed)) {
      bChanged = true;
      // Only a heading that the merge emptied goes; one made empty stays.
      if (item.fpHeading->fvItems.empty()) continue;
    }
    kept.push_back(std::move(item));
  }
  heading.fvItems.swap(kept);
  return bChanged;
}

void OmSplitLayering::Layer(OmHeading& heading) {
  fFoldedCount = 0;
  fMergedCount = 0;
  std::vector<Member> members;
  std::vector<std::string> path;
  Collect(heading, path, members);
  if (members.empty()) return;

  struct Group {
    std::string fKind;
    int fOccurrence = 0;
    std::vector<std::string> fSignature;
    std::vector<OmTable*> fvTables;
  };
  std::vector<Group> groups;
  std::map<std::pair<std::string, std::string>, int> occurrences;
  for (const Member& member : members) {
    AddSplitDimensions(*member.fpTable);
    const int occurrence = occurrences[std::make_pair(member.fKind, member.fSplit)]++;
    const std::vector<std::string> signature = Signature(*member.fpTable);
    auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
      return group.fKind == member.fKind && group.fOccurrence == occurrence && group.fSignature == signature;
    });
    if (found == groups.end()) {
      groups.push_back(Group{member.fKind, occurrence, signature, {}});
      found = groups.end() - 1;
    }
    found->fvTables.push_back(member.fpTable);
  }

  std::vector<const OmTable*> removed;
  for (const Group& group : groups) {
    Merge(group.fvTables);
    removed.insert(removed.end(), group.fvTables.begin() + 1, group.fvTables.end());
  }
  fMergedCount = static_cast<int>(groups.size());
  fFoldedCount = static_cast<int>(removed.size());
  if (!removed.empty()) Prune(heading, removed);
}
