#include "host/cf/CFMetaData.h"

#include <cctype>

#include "host/data/ZORV_DataSource.h"

namespace {

bool SameIgnoringCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

}  // namespace

CFMetaData::CFMetaData(const ZORV_DataSource& dataSource) {
  int n = dataSource.ColumnCount();
  for (int i = 0; i < n; ++i) {
    const ZORV_Variable* variable = dataSource.GetVariable(i);
    fvFields.push_back(variable != nullptr ? CFField(*variable) : CFField());
  }
}

const CFField* CFMetaData::GetField(int index) const {
  if (index < 0 || index >= FieldCount()) return nullptr;
  return &fvFields[static_cast<std::size_t>(index)];
}

CFField* CFMetaData::GetField(int index) {
  if (index < 0 || index >= FieldCount()) return nullptr;
  return &fvFields[static_cast<std::size_t>(index)];
}

int CFMetaData::GetFieldIndex(const std::string& name) const {
  if (name.empty()) return -1;
  for (std::size_t i = 0; i < fvFields.size(); ++i) {
    if (fvFields[i].GetName() == name) return static_cast<int>(i);
  }
  for (std::size_t i = 0; i < fvFields.size(); ++i) {
    if (SameIgnoringCase(fvFields[i].GetName(), name)) return static_cast<int>(i);
  }
  return -1;
}

int CFMetaData::AddField(const CFField& field) {
  fvFields.push_back(field);
  return FieldCount() - 1;
}
