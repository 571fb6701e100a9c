#include "host/data/ZORV_Dataset.h"

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "numeric/common/MCUtf8.h"

struct ZORV_Dataset::Column {
  ZORV_Variable fVariable;
  int fWords = 1;
  int fOffset = 0;  // in the row of CopyCase
  std::vector<OBS> fvCells;
};

namespace {

OBS MissingNumber() {
  OBS cell;
  cell.fNum = -DBL_MAX;
  return cell;
}

OBS BlankWord() {
  OBS cell;
  std::memset(cell.fStr, ' ', sizeof cell.fStr);
  return cell;
}

bool SameNameIgnoringCase(const char* a, std::size_t aLength, const char* b) {
  std::size_t bLength = std::strlen(b);
  if (aLength != bLength) return false;
  for (std::size_t i = 0; i < aLength; ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  }
  return true;
}

}  // namespace

ZORV_Dataset::ZORV_Dataset() = default;
ZORV_Dataset::~ZORV_Dataset() = default;

double ZORV_Dataset::SysMiss() { return -DBL_MAX; }

int ZORV_Dataset::ColumnCount() const { return static_cast<int>(fvpColumns.size()); }

const ZORV_Variable* ZORV_Dataset::GetVariable(int index) const {
  if (index < 0 || index >= ColumnCount()) return nullptr;
  return &fvpColumns[static_cast<std::size_t>(index)]->fVariable;
}

ZORV_Variable* ZORV_Dataset::GetVariable(int index) {
  if (index < 0 || index >= ColumnCount()) return nullptr;
  return &fvpColumns[static_cast<std::size_t>(index)]->fVariable;
}

int ZORV_Dataset::FindVarIndex(const char* name, int length) const {
  if (name == nullptr) return -1;
  std::size_t n = length > 0 ? std::min(static_cast<std::size_t>(length), std::strlen(name)) : std::strlen(name);
  for (int i = 0; i < ColumnCount(); ++i) {
    if (SameNameIgnoringCase(name, n, fvpColumns[static_cast<std::size_t>(i)]->fVariable.GetName())) return i;
  }
  return -1;
}

int ZORV_Dataset::AddVariable(const std::string& name, int type) {
  if (name.empty() || type < 0 || type > MAXSTRINGWIDTH) return -1;
  if (FindVarIndex(name.c_str(), 0) >= 0) return -1;
  auto column = std::make_unique<Column>();
  column->fVariable = ZORV_Variable(name, type);
  column->fWords = type == 0 ? 1 : ObsWordsForWidth(type);
  column->fOffset = fCaseWords;
  column->fvCells.assign(static_cast<std::size_t>(fCaseCount) * static_cast<std::size_t>(column->fWords),
                         type == 0 ? MissingNumber() : BlankWord());
  fCaseWords += column->fWords;
  fvpColumns.push_back(std::move(column));
  return ColumnCount() - 1;
}

bool ZORV_Dataset::MakeVariable(int type, unsigned int* index) {
  std::string name;
  do {
    name = "NEWVAR" + std::to_string(++fNewVarCounter);
  } while (FindVarIndex(name.c_str(), 0) >= 0);
  int column = AddVariable(name, type);
  if (column < 0) return false;
  if (index != nullptr) *index = static_cast<unsigned int>(column);
  return true;
}

int ZORV_Dataset::VarIndex(long code) const {
  return code >= 0 && code < ColumnCount() ? static_cast<int>(code) : -1;
}

int ZORV_Dataset::GetWeightVarIndex() const { return fWeightVar; }

bool ZORV_Dataset::IsNumericOrNone(int column) const {
  if (column >= ColumnCount() || column < -1) return false;
  return column < 0 || !GetVariable(column)->IsString();
}

bool ZORV_Dataset::SetWeightVar(int column) {
  if (!IsNumericOrNone(column)) return false;
  fWeightVar = column;
  Invalidate();
  return true;
}

bool ZORV_Dataset::SetFilterVar(int column) {
  if (!IsNumericOrNone(column)) return false;
  fFilterVar = column;
  Invalidate();
  return true;
}

bool ZORV_Dataset::PassesFilter(long row) const {
  if (fFilterVar < 0) {
    if (row < 0 || row >= fCaseCount)
      throw std::out_of_range("ZORV_Dataset: case " + std::to_string(row) + " does not exist");
    return true;
  }
  const double value = GetNum(row, fFilterVar);
  if (value == -DBL_MAX || value == 0.0) return false;
  return !fvpColumns[static_cast<std::size_t>(fFilterVar)]->fVariable.IsUserMissing(value);
}

int ZORV_Dataset::GetNSplitVars() const { return static_cast<int>(fvSplitVars.size()); }

int ZORV_Dataset::GetSplitVar(int i) const {
  if (i < 0 || i >= GetNSplitVars()) return -1;
  return fvSplitVars[static_cast<std::size_t>(i)];
}

bool ZORV_Dataset::SplitsInOneTable() const { return fbSplitsInOneTable; }

bool ZORV_Dataset::SplitsInSeparateTables() const { return !fbSplitsInOneTable; }

bool ZORV_Dataset::SetSplitVars(const std::vector<int>& columns) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] < 0 || columns[i] >= ColumnCount()) return false;
    if (std::find(columns.begin(), columns.begin() + static_cast<long>(i), columns[i]) !=
        columns.begin() + static_cast<long>(i))
      return false;
  }
  fvSplitVars = columns;
  Invalidate();
  return true;
}

void ZORV_Dataset::SetSplitsInOneTable(bool inOneTable) { fbSplitsInOneTable = inOneTable; }

long ZORV_Dataset::GetCaseCount() const { return fCaseCount; }

void ZORV_Dataset::AppendCases(long count) {
  if (count <= 0) return;
  for (auto& column : fvpColumns) {
    std::size_t add = static_cast<std::size_t>(count) * static_cast<std::size_t>(column->fWords);
    column->fvCells.insert(column->fvCells.end(), add,
                           column->fVariable.IsString() ? BlankWord() : MissingNumber());
  }
  fCaseCount += count;
  Invalidate();
}

void ZORV_Dataset::KeepCases(const std::vector<bool>& keep) {
  if (keep.size() != static_cast<std::size_t>(fCaseCount))
    throw std::invalid_argument("ZORV_Dataset::KeepCases: one flag per case is needed");
  const long kept = static_cast<long>(std::count(keep.begin(), keep.end(), true));
  for (auto& column : fvpColumns) {
    const std::size_t words = static_cast<std::size_t>(column->fWords);
    OBS* cells = column->fvCells.data();
    std::size_t to = 0;
    for (std::size_t row = 0; row < keep.size(); ++row) {
      if (!keep[row]) continue;
      if (to != row) std::memmove(cells + to * words, cells + row * words, words * sizeof(OBS));
      ++to;
    }
    column->fvCells.resize(to * words);
    column->fvCells.shrink_to_fit();
  }
  fCaseCount = kept;
  Invalidate();
}

void ZORV_Dataset::ReserveCases(long count) {
  if (count <= 0) return;
  for (auto& column : fvpColumns)
    column->fvCells.reserve(static_cast<std::size_t>(count) * static_cast<std::size_t>(column->fWords));
}

void ZORV_Dataset::CheckColumn(int column) const {
  if (column < 0 || column >= ColumnCount())
    throw std::out_of_range("ZORV_Dataset: column " + std::to_string(column) + " does not exist");
}

void ZORV_Dataset::CheckCell(long row, int column) const {
  CheckColumn(column);
  if (row < 0 || row >= fCaseCount)
    throw std::out_of_range("ZORV_Dataset: case " + std::to_string(row) + " does not exist");
}

const OBS* ZORV_Dataset::GetCell(long row, int column) const {
  CheckCell(row, column);
  const Column& c = *fvpColumns[static_cast<std::size_t>(column)];
  return c.fvCells.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(c.fWords);
}

OBS* ZORV_Dataset::GetCell(long row, int column) {
  CheckCell(row, column);
  Column& c = *fvpColumns[static_cast<std::size_t>(column)];
  return c.fvCells.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(c.fWords);
}

int ZORV_Dataset::GetColumnWords(int column) const {
  CheckColumn(column);
  return fvpColumns[static_cast<std::size_t>(column)]->fWords;
}

double ZORV_Dataset::GetNum(long row, int column) const { return GetCell(row, column)->fNum; }

std::string ZORV_Dataset::GetString(long row, int column, bool trimmed) const {
  const OBS* cell = GetCell(row, column);
  const ZORV_Variable& variable = fvpColumns[static_cast<std::size_t>(column)]->fVariable;
  if (!variable.IsString()) return std::string();
  std::size_t width = static_cast<std::size_t>(variable.GetType());
  const char* chars = cell->fStr;
  if (trimmed) {
    while (width > 0 && chars[width - 1] == ' ') --width;
  }
  return std::string(chars, width);
}

bool ZORV_Dataset::IsSettingColumn(int column) const {
  return column == fWeightVar || column == fFilterVar || std::find(fvSplitVars.begin(), fvSplitVars.end(), column) != fvSplitVars.end();
}

void ZORV_Dataset::SetNum(long row, int column, double value) {
  OBS* cell = GetCell(row, column);
  if (fvpColumns[static_cast<std::size_t>(column)]->fVariable.IsString())
    throw std::invalid_argument("ZORV_Dataset::SetNum: column " + std::to_string(column) + " holds strings");
  cell->fNum = std::isnan(value) ? -DBL_MAX : value;
  if (IsSettingColumn(column)) Invalidate();
}

bool ZORV_Dataset::SetString(long row, int column, const char* text, std::size_t length) {
  OBS* cell = GetCell(row, column);
  const Column& c = *fvpColumns[static_cast<std::size_t>(column)];
  if (!c.fVariable.IsString())
    throw std::invalid_argument("ZORV_Dataset::SetString: column " + std::to_string(column) + " is numeric");
  std::size_t width = static_cast<std::size_t>(c.fVariable.GetType());
  std::size_t n = text == nullptr ? 0 : length;
  bool fits = n <= width;
  if (!fits) {
    n = width;
    // Back up over continuation bytes so no character is cut in two.
    while (n > 0 && MCCommon_850::MCUtf8::IsContinuation(text[n])) --n;
  }
  char* chars = cell->fStr;
  if (n > 0) std::memcpy(chars, text, n);
  std::memset(chars + n, ' ', static_cast<std::size_t>(c.fWords) * sizeof(OBS) - n);
  if (IsSettingColumn(column)) Invalidate();
  return fits;
}

bool ZORV_Dataset::IsSysMissing(long row, int column) const {
  const OBS* cell = GetCell(row, column);
  if (fvpColumns[static_cast<std::size_t>(column)]->fVariable.IsString()) return false;
  return cell->fNum == -DBL_MAX;
}

bool ZORV_Dataset::IsUserMissing(long row, int column) const {
  CheckCell(row, column);
  const ZORV_Variable& variable = fvpColumns[static_cast<std::size_t>(column)]->fVariable;
  if (variable.IsString()) {
    if (variable.GetMissingStrings().empty()) return false;
    return variable.IsUserMissing(GetString(row, column, false));
  }
  double value = GetNum(row, column);
  if (value == -DBL_MAX) return false;
  return variable.IsUserMissing(value);
}

int ZORV_Dataset::GetCaseWordCount() const { return fCaseWords; }

int ZORV_Dataset::GetCaseWordOffset(int column) const {
  CheckColumn(column);
  return fvpColumns[static_cast<std::size_t>(column)]->fOffset;
}

void ZORV_Dataset::CopyCase(long row, OBS* out) const {
  for (int i = 0; i < ColumnCount(); ++i) {
    const Column& c = *fvpColumns[static_cast<std::size_t>(i)];
    std::memcpy(out + c.fOffset, GetCell(row, i), static_cast<std::size_t>(c.fWords) * sizeof(OBS));
  }
}

int ZORV_Dataset::CompareSplitValues(long a, long b) const {
  for (int column : fvSplitVars) {
    const Column& c = *fvpColumns[static_cast<std::size_t>(column)];
    const OBS* x = c.fvCells.data() + static_cast<std::size_t>(a) * static_cast<std::size_t>(c.fWords);
    const OBS* y = c.fvCells.data() + static_cast<std::size_t>(b) * static_cast<std::size_t>(c.fWords);
    if (c.fVariable.IsString()) {
      int r = std::memcmp(x->fStr, y->fStr, static_cast<std::size_t>(c.fVariable.GetType()));
      if (r != 0) return r < 0 ? -1 : 1;
    } else if (x->fNum != y->fNum) {
      return x->fNum < y->fNum ? -1 : 1;
    }
  }
  return 0;
}

void ZORV_Dataset::BuildOrder() const {
  if (fbOrderValid) return;
  fvOrder.resize(static_cast<std::size_t>(fCaseCount));
  for (long i = 0; i < fCaseCount; ++i) fvOrder[static_cast<std::size_t>(i)] = i;
  fvSplitStarts.clear();
  if (fvSplitVars.empty()) {
    fvSplitStarts.push_back(0);
    fvSplitStarts.push_back(fCaseCount);
  } else {
    std::stable_sort(fvOrder.begin(), fvOrder.end(),
                     [this](long a, long b) { return CompareSplitValues(a, b) < 0; });
    for (long p = 0; p < fCaseCount; ++p) {
      if (p == 0 || CompareSplitValues(fvOrder[static_cast<std::size_t>(p - 1)], fvOrder[static_cast<std::size_t>(p)]) != 0)
        fvSplitStarts.push_back(p);
    }
    fvSplitStarts.push_back(fCaseCount);
  }
  std::size_t nSplits = fvSplitStarts.size() - 1;
  fvSplitDropped.assign(nSplits, 0);
  fDroppedTotal = 0;
  if (fWeightVar >= 0) {
    for (std::size_t s = 0; s < nSplits; ++s) {
      for (long p = fvSplitStarts[s]; p < fvSplitStarts[s + 1]; ++p) {
        const long row = fvOrder[static_cast<std::size_t>(p)];
        double weight = 0.0;
        if (PassesFilter(row) && !GetCaseWeight(row, weight)) ++fvSplitDropped[s];
      }
      fDroppedTotal += fvSplitDropped[s];
    }
  }
  fbOrderValid = true;
}

long ZORV_Dataset::GetSplitCount() const {
  BuildOrder();
  return static_cast<long>(fvSplitStarts.size()) - 1;
}

long ZORV_Dataset::GetSplitBegin(long split) const {
  if (split < 0 || split >= GetSplitCount())
    throw std::out_of_range("ZORV_Dataset: split " + std::to_string(split) + " does not exist");
  return fvSplitStarts[static_cast<std::size_t>(split)];
}

long ZORV_Dataset::GetSplitEnd(long split) const {
  if (split < 0 || split >= GetSplitCount())
    throw std::out_of_range("ZORV_Dataset: split " + std::to_string(split) + " does not exist");
  return fvSplitStarts[static_cast<std::size_t>(split) + 1];
}

long ZORV_Dataset::GetOrderedCase(long position) const {
  BuildOrder();
  if (position < 0 || position >= fCaseCount)
    throw std::out_of_range("ZORV_Dataset: position " + std::to_string(position) + " does not exist");
  return fvOrder[static_cast<std::size_t>(position)];
}

void ZORV_Dataset::GetSplitValues(long split, std::vector<const OBS*>& values) const {
  values.clear();
  long begin = GetSplitBegin(split);
  if (begin >= GetSplitEnd(split)) return;
  long row = fvOrder[static_cast<std::size_t>(begin)];
  for (int column : fvSplitVars) values.push_back(GetCell(row, column));
}

bool ZORV_Dataset::GetCaseWeight(long row, double& weight) const {
  if (fWeightVar < 0) {
    if (row < 0 || row >= fCaseCount)
      throw std::out_of_range("ZORV_Dataset: case " + std::to_string(row) + " does not exist");
    weight = 1.0;
    return true;
  }
  double value = GetNum(row, fWeightVar);
  const ZORV_Variable& variable = fvpColumns[static_cast<std::size_t>(fWeightVar)]->fVariable;
  if (value == -DBL_MAX || !(value > 0.0) || variable.IsUserMissing(value)) {
    weight = 0.0;
    return false;
  }
  weight = value;
  return true;
}

long ZORV_Dataset::GetDroppedWeightCount() const {
  BuildOrder();
  return fDroppedTotal;
}

long ZORV_Dataset::GetSplitDroppedWeightCount(long split) const {
  if (split < 0 || split >= GetSplitCount())
    throw std::out_of_range("ZORV_Dataset: split " + std::to_string(split) + " does not exist");
  return fvSplitDropped[static_cast<std::size_t>(split)];
}
