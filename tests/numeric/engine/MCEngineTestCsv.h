#pragma once

#include <string>
#include <vector>

// Test-only reader of the example CSV files: a header line of quoted names,
// then rows of numbers or quoted text. "NA" and empty cells are missing.
class MCEngineTestCsv {
 public:
  bool Read(const std::string& path);

  int GetNRows() const { return static_cast<int>(fvRows.size()); }
  int FindColumn(const std::string& name) const;
  // The cell's text without quotes.
  const std::string& GetText(int row, int col) const { return fvRows[static_cast<std::size_t>(row)][static_cast<std::size_t>(col)]; }
  // The cell as a number; NaN when it is missing or not a number.
  double GetNumber(int row, int col) const;
  // Whether every non-missing cell of the column is a number.
  bool IsNumeric(int col) const;

 private:
  std::vector<std::string> fvNames;
  std::vector<std::vector<std::string>> fvRows;
};
