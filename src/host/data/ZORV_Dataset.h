#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"

// The active dataset: a column store of cases with its dictionary, the split
// file and the frequency weight settings.
//
// Every column holds one run of 8-byte cells per case: one cell for a number,
// (width + 7) / 8 cells for a string, whose characters are blank padded to
// the last byte of its last cell. There is no object per cell, so the store
// costs about the data's own size.
//
// Splits: the cases are grouped by the values of the split variables after a
// stable sort on them; each run of equal values is a split. The store itself
// keeps the original order (new values are written back to the case they
// belong to); the split order is a permutation kept beside it and rebuilt
// when the split settings or a split variable's values change. The
// system-missing value sorts before every number, and strings sort by their
// bytes. Without split variables the file is one split of all cases.
//
// Weights: with a frequency weight variable, a case whose weight is
// system-missing, user-missing, zero or negative is dropped from every
// analysis; the dataset counts them per split.
//
// Filter: with a filter variable, a case whose filter value is missing or 0
// is set aside: it stays in the data, but a procedure that applies the
// host's filter reads as if it were not there, and it counts in no split.
class ZORV_Dataset : public ProcedureDataSource {
 public:
  ZORV_Dataset();
  ~ZORV_Dataset() override;
  ZORV_Dataset(const ZORV_Dataset&) = delete;
  ZORV_Dataset& operator=(const ZORV_Dataset&) = delete;

  // The system-missing value, -DBL_MAX.
  static double SysMiss();
  // Longest string variable, in bytes.
  enum { MAXSTRINGWIDTH = 32767 };

  // ---- dictionary ----
  int ColumnCount() const override;
  const ZORV_Variable* GetVariable(int index) const override;
  ZORV_Variable* GetVariable(int index) override;
  int FindVarIndex(const char* name, int length) const override;
  // A new column named "NEWVARn" (n making it unique), numeric for type 0 and
  // a string of that width otherwise; every case holds the missing value
  // (system-missing, or blanks). New numeric variables are scale.
  bool MakeVariable(int type, unsigned int* index) override;
  // A new column of the given name and type (0 numeric, else string width),
  // all missing. -1 when the name is empty, taken, or the type out of range.
  int AddVariable(const std::string& name, int type);

  // The parser's variable code is the 0-based position in the dictionary,
  // which is also the column index. -1 for a code outside the dictionary.
  int VarIndex(long code) const override;

  // ---- split file and weight settings ----
  int GetWeightVarIndex() const override;
  // A numeric column, or -1 for no weight; false (and no change) otherwise.
  bool SetWeightVar(int column);

  int GetNSplitVars() const override;
  int GetSplitVar(int i) const override;
  bool SplitsInOneTable() const override;
  bool SplitsInSeparateTables() const override;
  // A numeric column, or -1 for no filter; false (and no change) otherwise.
  bool SetFilterVar(int column);
  int GetFilterVarIndex() const { return fFilterVar; }
  // The case's filter value is neither system-missing, user-missing nor 0.
  // Every case passes while there is no filter.
  bool PassesFilter(long row) const;

  // The split variables in order of sorting; an empty list ends splitting.
  // False (and no change) for a bad or repeated column.
  bool SetSplitVars(const std::vector<int>& columns);
  // Layered (all splits in one table) or one table per split.
  void SetSplitsInOneTable(bool inOneTable);

  // ---- cases, in the original order ----
  long GetCaseCount() const;
  // Adds cases at the end, every cell missing.
  void AppendCases(long count);
  // Keeps the cases whose flag is set, in their order, and removes the
  // others; `keep` has one flag per case. Variables and settings stay.
  void KeepCases(const std::vector<bool>& keep);
  void ReserveCases(long count);

  // The first cell of a case's value of a column; strings run on over their
  // further cells. Valid until cases or columns are added.
  const OBS* GetCell(long row, int column) const;
  OBS* GetCell(long row, int column);
  // Words (8-byte cells) that one value of the column takes.
  int GetColumnWords(int column) const;

  double GetNum(long row, int column) const;
  // The string's characters, with trailing blanks removed when trimmed.
  std::string GetString(long row, int column, bool trimmed = true) const;
  // A NaN is stored as the system-missing value.
  void SetNum(long row, int column, double value);
  // Blank padded to the width; a longer text is cut at the width, never
  // inside a UTF-8 character. False when it was cut.
  bool SetString(long row, int column, const char* text, std::size_t length);
  bool SetString(long row, int column, const std::string& text) {
    return SetString(row, column, text.data(), text.size());
  }

  // Numbers only: the value is the system-missing value.
  bool IsSysMissing(long row, int column) const;
  // The value is one of the variable's user-missing values.
  bool IsUserMissing(long row, int column) const;
  bool IsMissing(long row, int column) const {
    return IsSysMissing(row, column) || IsUserMissing(row, column);
  }

  // A whole case as one row of cells: the columns one after another, each at
  // its offset and taking its words.
  int GetCaseWordCount() const;
  int GetCaseWordOffset(int column) const;
  void CopyCase(long row, OBS* out) const;

  // ---- splits ----
  // Number of splits; 1 for an unsplit file (also when it has no cases), 0
  // for a split file without cases.
  long GetSplitCount() const;
  // The split's cases are the positions [begin, end) of the split order.
  long GetSplitBegin(long split) const;
  long GetSplitEnd(long split) const;
  // The original case at a position of the split order.
  long GetOrderedCase(long position) const;
  // The split's value of each split variable, pointing into the store.
  void GetSplitValues(long split, std::vector<const OBS*>& values) const;

  // ---- weights ----
  // The case's frequency weight: 1 when the file is unweighted. False when
  // the case is dropped for its weight (missing, user-missing, zero or
  // negative); weight is then 0.
  bool GetCaseWeight(long row, double& weight) const;
  // Cases dropped for their weight, in the whole file and in one split;
  // cases the filter sets aside are not counted.
  long GetDroppedWeightCount() const;
  long GetSplitDroppedWeightCount(long split) const;

 private:
  struct Column;

  void CheckColumn(int column) const;
  // A numeric column, or -1: what the weight and the filter may be.
  bool IsNumericOrNone(int column) const;
  void CheckCell(long row, int column) const;
  // Columns whose values the split order or the counts depend on.
  bool IsSettingColumn(int column) const;
  void Invalidate() const { fbOrderValid = false; }
  void BuildOrder() const;
  int CompareSplitValues(long a, long b) const;

  std::vector<std::unique_ptr<Column>> fvpColumns;
  long fCaseCount = 0;
  int fCaseWords = 0;
  int fWeightVar = -1;
  int fFilterVar = -1;
  std::vector<int> fvSplitVars;
  bool fbSplitsInOneTable = true;
  unsigned int fNewVarCounter = 0;

  // The split order and the weight counts, rebuilt on demand.
  mutable bool fbOrderValid = false;
  mutable std::vector<long> fvOrder;
  mutable std::vector<long> fvSplitStarts;  // one more entry than splits
  mutable std::vector<long> fvSplitDropped;
  mutable long fDroppedTotal = 0;
};
