#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/output/BpTextContext.h"
#include "host/output/OmDocument.h"

// The notes table of a procedure: rows of a name and a value, in named row
// groups. The group numbers the procedures use are 0 (input), 2 (files
// saved) and 4 (missing value handling); 1, 3 and 5 name output, syntax and
// resources, and any other number the group "Other". Groups stand in the
// order of their numbers, rows in the order they came. The table (title and
// sub-type "Notes") is made under its heading at the first row.
class BpNotesTable {
 public:
  BpNotesTable() = default;
  explicit BpNotesTable(OmHeading* pHeading) : fpHeading(pHeading) {}

  OmHeading* GetHeading() const { return fpHeading; }
  void SetHeading(OmHeading* pHeading) { fpHeading = pHeading; }
  // Null until the first row.
  OmTable* GetTable() const { return fpTable; }

  void Add(int group, const std::string& name, const OmCell& value, const BpTextContext& context);

  // The fixed text naming a group.
  static std::string GroupName(int group);

 private:
  void Rebuild(const BpTextContext& context);

  OmHeading* fpHeading = nullptr;
  OmTable* fpTable = nullptr;
  std::map<int, std::vector<std::pair<std::string, OmCell>>> fRows;
};
