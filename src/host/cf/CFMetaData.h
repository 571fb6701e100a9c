#pragma once

#include <string>
#include <vector>

#include "host/cf/CFField.h"

class ZORV_DataSource;

// The metadata dictionary of the data a plug-in reports on: its fields, in
// the order of the data source's columns.
class CFMetaData {
 public:
  CFMetaData() = default;
  // One field per column of the data source.
  explicit CFMetaData(const ZORV_DataSource& dataSource);

  int FieldCount() const { return static_cast<int>(fvFields.size()); }
  // Null when the index is out of range.
  const CFField* GetField(int index) const;
  CFField* GetField(int index);
  // The index of the field of that name, -1 when there is none. A field
  // whose name matches exactly wins; otherwise case is ignored, as the
  // host's variable names are.
  int GetFieldIndex(const std::string& name) const;

  // Appends a field and returns its index.
  int AddField(const CFField& field);
  void Clear() { fvFields.clear(); }

 private:
  std::vector<CFField> fvFields;
};
