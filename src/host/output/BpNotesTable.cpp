#include "host/output/BpNotesTable.h"

std::string BpNotesTable::GroupName(int group) {
  switch (group) {
    case 0:
      return "Input";
    case 1:
      return "Output";
    case 2:
      return "Files Saved";
    case 3:
      return "Syntax";
    case 4:
      return "Missing Value Handling";
    case 5:
      return "Resources";
    default:
      return "Other";
  }
}

void BpNotesTable::Add(int group, const std::string& name, const OmCell& value, const BpTextContext& context) {
  if (fpHeading == nullptr) return;
  fRows[group].emplace_back(name, value);
  Rebuild(context);
}

void BpNotesTable::Rebuild(const BpTextContext& context) {
  if (fpTable == nullptr) fpTable = &fpHeading->AddTable();
  OmTable& table = *fpTable;
  table.fTitle.fText = context.Translate("Notes");
  table.fSubType = "Notes";
  table.fvDimensions.clear();
  table.fCells.clear();
  table.fvDimensions.emplace_back();
  OmDimension& rows = table.fvDimensions.back();
  rows.fName.fText = context.Translate("Contents");
  rows.fPlace = OmDimension::ROW;
  rows.fbShowName = false;
  rows.fRoot.fbIsGroup = true;

  // Groups with the same name (any number past the named ones) share one.
  std::map<std::string, std::size_t> groupOf;
  int leaf = 0;
  std::vector<std::pair<std::size_t, const std::pair<std::string, OmCell>*>> order;
  for (const auto& entry : fRows) {
    std::string groupName = context.Translate(GroupName(entry.first));
    auto found = groupOf.find(groupName);
    if (found == groupOf.end()) {
      OmDimensionNode node;
      node.fLabel.fText = groupName;
      node.fbIsGroup = true;
      rows.fRoot.fvChildren.push_back(node);
      found = groupOf.emplace(groupName, rows.fRoot.fvChildren.size() - 1).first;
    }
    for (const auto& row : entry.second) order.emplace_back(found->second, &row);
  }
  // Rows are numbered by their place in the finished tree.
  std::vector<std::vector<const std::pair<std::string, OmCell>*>> perGroup(rows.fRoot.fvChildren.size());
  for (const auto& item : order) perGroup[item.first].push_back(item.second);
  for (std::size_t g = 0; g < perGroup.size(); ++g) {
    for (const auto* row : perGroup[g]) {
      OmDimensionNode category;
      category.fLabel.fText = row->first;
      rows.fRoot.fvChildren[g].fvChildren.push_back(category);
      table.fCells[{leaf}] = row->second;
      ++leaf;
    }
  }
}
