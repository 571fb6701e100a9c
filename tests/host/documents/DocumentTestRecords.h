#pragma once

#include <set>
#include <string>
#include <vector>

#include "numeric/common/RecordIterator.h"
#include "numeric/xml/MCVarList.h"

// Test records from an example CSV file: one variable per chosen column, in
// that order, the first the target; a factor is coded by its levels sorted
// ascending (numerically when every level is a number).
class DocumentTestRecords : public MCCommon_850::RecordIterator {
 public:
  bool Load(const std::string& path, const std::vector<std::string>& columns, const std::set<std::string>& factors);

  MCXML_850::MCVarList& GetVarList() { return fVarList; }
  const MCXML_850::MCVarList& GetVarList() const { return fVarList; }

  bool HasRecord() const override { return fCurrent < fvvRecords.size(); }
  void Next() override { ++fCurrent; }
  int GetState() const override { return HasRecord() ? 0 : 3; }
  void Rewind() override { fCurrent = 0; }
  const double* Current() const override { return HasRecord() ? fvvRecords[fCurrent].data() : nullptr; }

 private:
  MCXML_850::MCVarList fVarList;
  std::vector<std::vector<double>> fvvRecords;
  std::size_t fCurrent = 0;
};
