#include "host/output/BpTableState.h"

#include <cassert>
#include <map>

#include "host/output/BpAnnotation.h"
#include "host/output/BpCellText.h"
#include "host/output/BpHeadingState.h"
#include "host/output/BpProcedureState.h"
#include "host/output/OmDocument.h"

namespace {

int CountLeaves(const OmDimensionNode& node) {
  if (node.IsCategory()) return 1;
  int count = 0;
  for (const OmDimensionNode& child : node.fvChildren) count += CountLeaves(child);
  return count;
}

// Sort rules of groups: 0 ascending by label, 1 descending, anything else
// in the order of creation.
std::size_t InsertPosition(const OmDimensionNode& parent, int sort, const std::string& label) {
  if (sort != 0 && sort != 1) return parent.fvChildren.size();
  for (std::size_t i = 0; i < parent.fvChildren.size(); ++i) {
    const std::string& other = parent.fvChildren[i].fLabel.fText;
    if (sort == 0 ? label < other : label > other) return i;
  }
  return parent.fvChildren.size();
}

}  // namespace

BpTableState::BpTableState(BpProcedureState* pProcedure, OmTable* pTable, bool bProcedureTable)
    : fProcedureRef(pProcedure), fpProcedure(pProcedure), fpTable(pTable), fbProcedureTable(bProcedureTable) {}

BpTextContext BpTableState::GetContext(bool bSecond) const {
  return fpProcedure ? fpProcedure->GetContext(bSecond) : BpTextContext(nullptr, bSecond);
}

int BpTableState::AddDimension(const BpCellText& name, int sort) {
  OmDimension dimension;
  dimension.fName.fText = name.GetText(GetContext(false));
  dimension.fRoot.fbIsGroup = true;
  fpTable->fvDimensions.push_back(dimension);
  Node root;
  root.fId = fNextId++;
  root.fSort = sort;
  fvRoots.push_back(root);
  fvCurrent.push_back(-1);
  return static_cast<int>(fvRoots.size()) - 1;
}

int BpTableState::GetRootId(int dimension) const {
  assert(dimension >= 0 && dimension < GetDimensionCount());
  return fvRoots[static_cast<std::size_t>(dimension)].fId;
}

void BpTableState::SetPosition(int dimension, int place, int order, bool bHideName, bool bHideLabels) {
  if (dimension < 0 || dimension >= GetDimensionCount()) return;
  OmDimension& target = fpTable->fvDimensions[static_cast<std::size_t>(dimension)];
  switch (place) {
    case 1:
      target.fPlace = OmDimension::COLUMN;
      break;
    case 2:
      target.fPlace = OmDimension::LAYER;
      break;
    default:
      target.fPlace = OmDimension::ROW;
      break;
  }
  target.fOrder = order;
  target.fbShowName = !bHideName;
  target.fbShowLabels = !bHideLabels;
}

bool BpTableState::FindPath(const Node& node, int id, std::vector<int>& path) const {
  if (node.fId == id) return true;
  for (std::size_t i = 0; i < node.fvChildren.size(); ++i) {
    path.push_back(static_cast<int>(i));
    if (FindPath(node.fvChildren[i], id, path)) return true;
    path.pop_back();
  }
  return false;
}

bool BpTableState::PathOf(int dimension, int id, std::vector<int>& path) const {
  path.clear();
  if (dimension < 0 || dimension >= GetDimensionCount()) return false;
  return FindPath(fvRoots[static_cast<std::size_t>(dimension)], id, path);
}

OmDimensionNode& BpTableState::DocumentNode(int dimension, const std::vector<int>& path) {
  OmDimensionNode* node = &fpTable->fvDimensions[static_cast<std::size_t>(dimension)].fRoot;
  for (int index : path) node = &node->fvChildren[static_cast<std::size_t>(index)];
  return *node;
}

BpTableState::Node& BpTableState::MirrorNode(int dimension, const std::vector<int>& path) {
  Node* node = &fvRoots[static_cast<std::size_t>(dimension)];
  for (int index : path) node = &node->fvChildren[static_cast<std::size_t>(index)];
  return *node;
}

int BpTableState::LeafIndexOfPath(int dimension, const std::vector<int>& path) const {
  const OmDimensionNode* node = &fpTable->fvDimensions[static_cast<std::size_t>(dimension)].fRoot;
  int index = 0;
  for (int step : path) {
    for (int sibling = 0; sibling < step; ++sibling) {
      index += CountLeaves(node->fvChildren[static_cast<std::size_t>(sibling)]);
    }
    node = &node->fvChildren[static_cast<std::size_t>(step)];
  }
  return node->IsCategory() ? index : -1;
}

int BpTableState::LeafCount(int dimension) const {
  return CountLeaves(fpTable->fvDimensions[static_cast<std::size_t>(dimension)].fRoot);
}

int BpTableState::LeafIndex(int dimension, int id) const {
  std::vector<int> path;
  if (!PathOf(dimension, id, path) || path.empty()) return -1;
  return LeafIndexOfPath(dimension, path);
}

int BpTableState::AddNode(int dimension, int parentId, const BpCellText& label, bool bGroup, bool bShowLabel,
                          int sort, bool bReuse) {
  std::vector<int> parentPath;
  bool bFound = PathOf(dimension, parentId, parentPath);
  assert(bFound && "the parent group belongs to this table");
  if (!bFound) return -1;
  OmDimensionNode& parent = DocumentNode(dimension, parentPath);
  assert(!parent.IsCategory() && "categories have no children");
  if (parent.IsCategory()) return -1;

  const std::string text = label.GetText(GetContext(false));
  if (bReuse) {
    for (std::size_t i = 0; i < parent.fvChildren.size(); ++i) {
      const OmDimensionNode& child = parent.fvChildren[i];
      if (child.fbIsGroup == bGroup && child.fLabel.fText == text) {
        int id = MirrorNode(dimension, parentPath).fvChildren[i].fId;
        if (!bGroup) SetCurrent(dimension, id);
        return id;
      }
    }
  }

  Node& mirrorParent = MirrorNode(dimension, parentPath);
  std::size_t position = InsertPosition(parent, mirrorParent.fSort, text);
  OmDimensionNode node;
  node.fLabel.fText = text;
  node.fbIsGroup = bGroup;
  node.fbShowLabel = bShowLabel;
  parent.fvChildren.insert(parent.fvChildren.begin() + static_cast<std::ptrdiff_t>(position), node);
  Node mirror;
  mirror.fId = fNextId++;
  mirror.fSort = sort;
  mirrorParent.fvChildren.insert(mirrorParent.fvChildren.begin() + static_cast<std::ptrdiff_t>(position), mirror);

  if (!bGroup) {
    std::vector<int> path = parentPath;
    path.push_back(static_cast<int>(position));
    int leaf = LeafIndexOfPath(dimension, path);
    if (leaf >= 0 && leaf < LeafCount(dimension) - 1) {
      // Cells at or behind the new leaf move one place on.
      std::map<std::vector<int>, OmCell> moved;
      for (auto& entry : fpTable->fCells) {
        std::vector<int> key = entry.first;
        if (static_cast<int>(key.size()) > dimension && key[static_cast<std::size_t>(dimension)] >= leaf) {
          ++key[static_cast<std::size_t>(dimension)];
        }
        moved.emplace(key, entry.second);
      }
      fpTable->fCells.swap(moved);
    }
    SetCurrent(dimension, mirror.fId);
  }
  return mirror.fId;
}

void BpTableState::SetCurrent(int dimension, int id) {
  if (dimension < 0 || dimension >= GetDimensionCount()) return;
  fvCurrent[static_cast<std::size_t>(dimension)] = id;
}

int BpTableState::GetCurrent(int dimension) const {
  if (dimension < 0 || dimension >= GetDimensionCount()) return -1;
  return fvCurrent[static_cast<std::size_t>(dimension)];
}

bool BpTableState::CurrentCoordinates(std::vector<int>& coordinates) const {
  coordinates.clear();
  for (int dimension = 0; dimension < GetDimensionCount(); ++dimension) {
    int leaf = LeafIndex(dimension, fvCurrent[static_cast<std::size_t>(dimension)]);
    if (leaf < 0) return false;
    coordinates.push_back(leaf);
  }
  return !coordinates.empty();
}

void BpTableState::WriteCell(const BpCellText& text) {
  std::vector<int> coordinates;
  bool bPlaced = CurrentCoordinates(coordinates);
  assert(bPlaced && "a cell needs a current category on every dimension of its table");
  if (!bPlaced) return;
  text.FillCell(fpTable->fCells[coordinates], GetContext(false));
}

int BpTableState::FootnoteIndex(const std::string& text) {
  std::vector<std::string>& footnotes = fpTable->fvFootnotes;
  for (std::size_t i = 0; i < footnotes.size(); ++i) {
    if (footnotes[i] == text) return static_cast<int>(i);
  }
  footnotes.push_back(text);
  return static_cast<int>(footnotes.size()) - 1;
}

namespace {

void AddFootnoteIndex(std::vector<int>& footnotes, int index) {
  for (int existing : footnotes) {
    if (existing == index) return;
  }
  footnotes.push_back(index);
}

}  // namespace

void BpTableState::AddCellFootnote(const BpAnnotation& annotation) {
  std::vector<int> coordinates;
  bool bPlaced = CurrentCoordinates(coordinates);
  assert(bPlaced && "a cell note needs a current category on every dimension of its table");
  if (!bPlaced) return;
  int index = FootnoteIndex(annotation.Render(GetContext(true)));
  AddFootnoteIndex(fpTable->fCells[coordinates].fContent.fvFootnotes, index);
}

void BpTableState::AddNodeFootnote(int dimension, int id, const BpAnnotation& annotation) {
  std::vector<int> path;
  if (!PathOf(dimension, id, path)) return;
  int index = FootnoteIndex(annotation.Render(GetContext(true)));
  AddFootnoteIndex(DocumentNode(dimension, path).fLabel.fvFootnotes, index);
}

void BpTableState::AddCaption(const BpCellText& text) {
  OmText caption;
  caption.fText = text.GetText(GetContext(true));
  fpTable->fvCaptions.push_back(caption);
}

void BpTableState::AddNote(const BpAnnotation& annotation) {
  OmText note;
  note.fText = annotation.Render(GetContext(true));
  fpTable->fvNotes.push_back(note);
}

void BpTableState::SetMinDataColumnWidth(int width) { fpTable->fMinDataColumnWidth = width; }
