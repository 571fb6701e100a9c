#include "host/output/OmDocument.h"

namespace {

void CollectLeaves(const OmDimensionNode& node, std::vector<const OmDimensionNode*>& path,
                   std::vector<std::vector<const OmDimensionNode*>>& out) {
  for (const auto& child : node.fvChildren) {
    path.push_back(&child);
    if (child.IsCategory()) {
      out.push_back(path);
    } else {
      CollectLeaves(child, path, out);
    }
    path.pop_back();
  }
}

template <typename T>
T& Append(std::vector<OmItem>& items, OmItem::Kind kind, std::unique_ptr<T> OmItem::*member) {
  items.emplace_back();
  OmItem& item = items.back();
  item.fKind = kind;
  item.*member = std::make_unique<T>();
  return *(item.*member);
}

}  // namespace

std::vector<std::vector<const OmDimensionNode*>> OmDimension::LeafPaths() const {
  std::vector<std::vector<const OmDimensionNode*>> out;
  std::vector<const OmDimensionNode*> path;
  CollectLeaves(fRoot, path, out);
  return out;
}

const OmCell* OmTable::CellAt(const std::vector<int>& coords) const {
  auto it = fCells.find(coords);
  return it == fCells.end() ? nullptr : &it->second;
}

OmHeading& OmHeading::AddHeading(const std::string& text) {
  OmHeading& h = Append(fvItems, OmItem::HEADING, &OmItem::fpHeading);
  h.fText = text;
  return h;
}

OmTable& OmHeading::AddTable() { return Append(fvItems, OmItem::TABLE, &OmItem::fpTable); }

OmMessage& OmHeading::AddMessage(OmMessage::Level level, const std::string& text) {
  OmMessage& m = Append(fvItems, OmItem::MESSAGE, &OmItem::fpMessage);
  m.fLevel = level;
  m.fText = text;
  return m;
}

OmFrontEndText& OmHeading::AddText() { return Append(fvItems, OmItem::TEXT, &OmItem::fpText); }

OmChart& OmHeading::AddChart() { return Append(fvItems, OmItem::CHART, &OmItem::fpChart); }

const char* OmMessage::LevelWord(Level level) {
  switch (level) {
    case NOTE:
      return "Note";
    case ERROR:
      return "Error";
    case WARNING:
      break;
  }
  return "Warning";
}

const char* OmMessage::LevelName(Level level) {
  switch (level) {
    case NOTE:
      return "note";
    case ERROR:
      return "error";
    case WARNING:
      break;
  }
  return "warning";
}
