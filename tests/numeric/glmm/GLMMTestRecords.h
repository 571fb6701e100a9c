#pragma once

#include <set>
#include <string>
#include <vector>

#include "numeric/common/RecordIterator.h"
#include "numeric/xml/MCVarList.h"

// Test-only records from an example CSV file: one variable per chosen
// column, in that order, a factor coded by its levels sorted ascending
// (numerically when every level is a number). Cells that are missing hold
// the system-missing value.
class GLMMTestRecords : public MCCommon_850::RecordIterator {
 public:
  bool Load(const std::string& path, const std::vector<std::string>& columns, const std::set<std::string>& factors);

  // Appends a continuous variable holding factor times variable source.
  void AddScaledVariable(const std::string& name, int source, double factor);
  // Appends a variable holding the given values, one per record.
  void AddVariable(const std::string& name, const std::vector<double>& values);
  // Makes variable var the frequency weight, rounded to whole numbers as the
  // procedure's variable lists ask.
  void SetFrequencyWeight(int var);
  // The records, record r written out copies[r] times in place, without a
  // frequency weight.
  GLMMTestRecords Repeated(const std::vector<int>& copies) const;

  const MCXML_850::MCVarList& GetVarList() const { return fVarList; }
  int GetNRecords() const { return static_cast<int>(fvvRecords.size()); }

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
