#pragma once

#include <string>
#include <utility>
#include <vector>

#include "numeric/common/RecordIterator.h"
#include "numeric/xml/MCVarList.h"

// Test-only records written out in the test itself, one vector per record.
class GLMMTestRows : public MCCommon_850::RecordIterator {
 public:
  explicit GLMMTestRows(std::vector<std::vector<double>> rows) : fvvRows(std::move(rows)) {}

  bool HasRecord() const override { return fCurrent < fvvRows.size(); }
  void Next() override { ++fCurrent; }
  int GetState() const override { return 0; }
  void Rewind() override { fCurrent = 0; }
  const double* Current() const override { return fvvRows[fCurrent].data(); }

  // Variables at record indexes 0, 1, ...: the first is the target, the others
  // predictors; one with n > 0 categories is nominal with values 1..n
  // labelled "1".."n", the others continuous.
  static MCXML_850::MCVarList VarList(const std::vector<std::string>& names, const std::vector<int>& nCategories);

 private:
  std::vector<std::vector<double>> fvvRows;
  std::size_t fCurrent = 0;
};
