#include "host/adapter/ACAInputAdapter.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>

#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_Session.h"
#include "numeric/common/MCMV.h"

namespace {

const double kSysMiss = -DBL_MAX;  // the host's system-missing value

// Length of a blank padded string without its trailing blanks.
std::size_t TrimmedLength(const char* chars, std::size_t width) {
  while (width > 0 && chars[width - 1] == ' ') --width;
  return width;
}

// Strings by their bytes, trailing blanks ignored; numbers by value.
int CompareStrings(const char* a, const char* b, std::size_t width) {
  std::size_t aLength = TrimmedLength(a, width);
  std::size_t bLength = TrimmedLength(b, width);
  int c = std::memcmp(a, b, std::min(aLength, bLength));
  if (c != 0) return c < 0 ? -1 : 1;
  return aLength < bLength ? -1 : (bLength < aLength ? 1 : 0);
}

// The categories of one categorical record variable in one split. The
// values are stored once, ascending, and never move, so that a decoded
// value stays where it is; the codes are a permutation on top of them.
struct CategoryData {
  int fWidth = 0;  // 0 numeric, else the string width
  int fWords = 1;
  std::vector<OBS> fvWords;         // value of slot s at fvWords[s * fWords]
  std::vector<char> fvbUserMissing;  // per slot
  std::vector<int> fvCodeToSlot;
  std::vector<int> fvSlotToCode;

  int Size() const { return static_cast<int>(fvCodeToSlot.size()); }
  const OBS* Slot(int slot) const { return fvWords.data() + static_cast<std::size_t>(slot) * fWords; }

  int CompareToSlot(const OBS* value, int slot) const {
    if (fWidth > 0) return CompareStrings(value->fStr, Slot(slot)->fStr, static_cast<std::size_t>(fWidth));
    double x = value->fNum;
    double y = Slot(slot)->fNum;
    return x < y ? -1 : (y < x ? 1 : 0);
  }

  // The slot holding the value; -1 when there is none.
  int FindSlot(const OBS* value) const {
    if (fWidth == 0 && std::isnan(value->fNum)) return -1;
    int low = 0;
    int high = static_cast<int>(fvbUserMissing.size());
    while (low < high) {
      int middle = low + (high - low) / 2;
      int c = CompareToSlot(value, middle);
      if (c == 0) return middle;
      if (c < 0) high = middle;
      else low = middle + 1;
    }
    return -1;
  }

  void Order(bool ascending) {
    int n = Size();
    for (int s = 0; s < n; ++s) {
      int code = ascending ? s : n - 1 - s;
      fvSlotToCode[static_cast<std::size_t>(s)] = code;
      fvCodeToSlot[static_cast<std::size_t>(code)] = s;
    }
  }
};

}  // namespace

// A record variable as the adapter reads it from the dataset.
struct ACAInputAdapter::ReadVarData {
  int fColumn = -1;
  bool fbWeight = false;
  bool fbCategorical = false;
  bool fbSysmisValid = false;
  bool fbUserMissingExcluded = true;
  bool fbListwise = true;
  int fWidth = 0;  // 0 numeric, else the string width
  const ZORV_Variable* fpVariable = nullptr;
  bool fbHasUserMissing = false;
};

struct ACAInputAdapter::SplitData {
  long fSourceSplit = 0;
  long fBegin = 0;  // positions in the pass
  long fEnd = 0;
  std::vector<OBS> fvValueWords;
  std::vector<OBS*> fvpValues;
  int fNRecords = 0;
  double fWeightedCount = 0.0;
  int fDroppedCount = 0;
  double fWeightedDroppedCount = 0.0;
  std::vector<CategoryData> fvCategories;  // per record variable; empty when not categorical
};

ACAInputAdapter::ACAInputAdapter(ACAVarValidSpecs* varSpecs, ProcedureDataSource& dataSource)
    : fpVarSpecs(varSpecs), fpDataSource(&dataSource), fpDataset(dynamic_cast<ZORV_Dataset*>(&dataSource)) {
  if (fpVarSpecs != nullptr && fpVarSpecs->GetWeightRecIndex() >= 0) {
    fpVarSpecs->SetWeightHostIndex(fpVarSpecs->GetUseWeight() ? dataSource.GetWeightVarIndex() : -1);
  }
}

ACAInputAdapter::~ACAInputAdapter() {
  WithdrawSplit();
  if (fpIterator != nullptr) {
    fpIterator->Fail();
    fpIterator->fpAdapter = nullptr;
  }
}

void ACAInputAdapter::SetSplitFile(BpProcedure&, bool keepSplitValues, bool requireSorted, bool reportEmptySplits) {
  fbKeepSplitValues = keepSplitValues;
  fbRequireSorted = requireSorted;
  fbReportEmptySplits = reportEmptySplits;
  bool useSplit = fpVarSpecs == nullptr || fpVarSpecs->GetUseSplit();
  fbSplitFile = useSplit && fpDataSource->GetNSplitVars() > 0;
  LetGoOfIterator();
  LeaveSplits();
  fvpSplits.clear();
  fbPrepared = false;
}

// ---- current split ----

const ACAInputAdapter::SplitData* ACAInputAdapter::CurrentSplit() const {
  if (fbPassOver || fSplitIndex < 0 || fSplitIndex >= static_cast<int>(fvpSplits.size())) return nullptr;
  return fvpSplits[static_cast<std::size_t>(fSplitIndex)].get();
}

ACAInputAdapter::SplitData* ACAInputAdapter::CurrentSplit() {
  if (fbPassOver || fSplitIndex < 0 || fSplitIndex >= static_cast<int>(fvpSplits.size())) return nullptr;
  return fvpSplits[static_cast<std::size_t>(fSplitIndex)].get();
}

bool ACAInputAdapter::GetCurrentSplitRange(long& begin, long& end) const {
  const SplitData* split = CurrentSplit();
  if (split == nullptr) return false;
  begin = split->fBegin;
  end = split->fEnd;
  return true;
}

const std::vector<OBS*>& ACAInputAdapter::GetSplitValues() const {
  static const std::vector<OBS*> none;
  const SplitData* split = CurrentSplit();
  return split ? split->fvpValues : none;
}

int ACAInputAdapter::GetNRecords() const {
  const SplitData* split = CurrentSplit();
  return split ? split->fNRecords : 0;
}

int ACAInputAdapter::GetUnweightedCount() const { return GetNRecords(); }

double ACAInputAdapter::GetWeightedCount() const {
  const SplitData* split = CurrentSplit();
  return split ? split->fWeightedCount : 0.0;
}

int ACAInputAdapter::GetDroppedCount() const {
  const SplitData* split = CurrentSplit();
  return split ? split->fDroppedCount : 0;
}

double ACAInputAdapter::GetWeightedDroppedCount() const {
  const SplitData* split = CurrentSplit();
  return split ? split->fWeightedDroppedCount : 0.0;
}

// ---- split movement ----

void ACAInputAdapter::LetGoOfIterator() {
  if (fpIterator != nullptr) fpIterator->LetGo();
}

void ACAInputAdapter::ChangeSplitNoIter() {
  LetGoOfIterator();
  if (!PrepareReading() || DataChanged()) return;
  OpenSplit(fSplitIndex + 1);
}

void ACAInputAdapter::ResetSplitNoIter() {
  LetGoOfIterator();
  LeaveSplits();
}

void ACAInputAdapter::ClearDSIterator() { LetGoOfIterator(); }

void ACAInputAdapter::LeaveSplits() {
  WithdrawSplit();
  fSplitIndex = -1;
  fbPassOver = false;
}

bool ACAInputAdapter::OpenSplit(int index) {
  if (index < 0 || !PrepareReading()) return false;
  while (static_cast<int>(fvpSplits.size()) <= index) {
    long next = fvpSplits.empty() ? 0 : fvpSplits.back()->fSourceSplit + 1;
    long nSourceSplits = static_cast<long>(fvSourceSplitStarts.size()) - 1;
    std::unique_ptr<SplitData> learned;
    for (; next < nSourceSplits && !learned; ++next) {
      learned = LearnSplit(next);
      // An unsplit file is one split, valid cases or not.
      if (fbSplitFile && !fbReportEmptySplits && learned->fNRecords == 0) learned.reset();
    }
    if (!learned) {
      // The pass has run out; the count of splits stays that of the pass.
      WithdrawSplit();
      fSplitIndex = static_cast<int>(fvpSplits.size()) - 1;
      // The one split of an unsplit file stays current.
      fbPassOver = fbSplitFile;
      return false;
    }
    fvpSplits.push_back(std::move(learned));
  }
  fSplitIndex = index;
  fbPassOver = false;
  PublishSplit();
  if (fbSplitFile) ZORV_Progress::Split(index + 1, static_cast<int>(fvSourceSplitStarts.size()) - 1);
  return true;
}

void ACAInputAdapter::PublishSplit() {
  WithdrawSplit();
  const SplitData* split = CurrentSplit();
  if (!fbSplitFile || !fbKeepSplitValues || split == nullptr || fpDataset == nullptr) return;
  std::vector<ZORV_Session::SplitValue> values;
  for (int i = 0; i < fpDataSource->GetNSplitVars() && i < static_cast<int>(split->fvpValues.size()); ++i) {
    int column = fpDataSource->GetSplitVar(i);
    ZORV_Session::SplitValue value;
    value.fpVariable = fpDataSource->GetVariable(column);
    int words = fpDataset->GetColumnWords(column);
    const OBS* cell = split->fvpValues[static_cast<std::size_t>(i)];
    value.fvValue.assign(cell, cell + words);
    values.push_back(value);
  }
  ZORV_Session::Current().SetCurrentSplit(values);
  fbSessionSplit = true;
}

void ACAInputAdapter::WithdrawSplit() {
  if (!fbSessionSplit) return;
  ZORV_Session::Current().ClearCurrentSplit();
  fbSessionSplit = false;
}

// ---- reading ----

bool ACAInputAdapter::PrepareReading() {
  if (fbPrepared) return fbReadable;
  fbPrepared = true;
  fbReadable = false;
  fvReadVars.clear();
  if (fpDataset == nullptr || fpVarSpecs == nullptr || fpVarSpecs->GetNRecordVars() == 0) return false;

  int weightColumn = fpVarSpecs->GetUseWeight() ? fpDataset->GetWeightVarIndex() : -1;
  fbApplyWeight = weightColumn >= 0;
  fbApplyFilter = fpVarSpecs->GetUseFilter() && fpDataset->GetFilterVarIndex() >= 0;
  for (int i = 0; i < fpVarSpecs->GetNRecordVars(); ++i) {
    const ACAVarValidSpecs::RecordVarData* spec = fpVarSpecs->GetRecordVar(i);
    ReadVarData var;
    var.fbWeight = spec->fbWeight;
    var.fbCategorical = spec->fbCategorical;
    var.fbSysmisValid = spec->fbSysmisValid;
    var.fbUserMissingExcluded = spec->fbUserMissingExcluded;
    var.fbListwise = spec->fbListwise;
    if (!var.fbWeight) {
      var.fColumn = spec->fHostIndex;
      var.fpVariable = fpDataset->GetVariable(var.fColumn);
      if (var.fpVariable == nullptr) return false;
      var.fWidth = var.fpVariable->GetType();
      // A string has no number to deliver.
      if (var.fWidth > 0 && !var.fbCategorical) return false;
      var.fbHasUserMissing = var.fWidth > 0 ? !var.fpVariable->GetMissingStrings().empty()
                                            : !var.fpVariable->GetMissingValues().empty() ||
                                                  var.fpVariable->HasMissingRange();
    }
    fvReadVars.push_back(var);
  }
  fSourceCases = fpDataset->GetCaseCount();
  BuildSourceSplits();
  fbReadable = true;
  return true;
}

bool ACAInputAdapter::DataChanged() const {
  return fbPrepared && fpDataset != nullptr && fpDataset->GetCaseCount() != fSourceCases;
}

void ACAInputAdapter::BuildSourceSplits() {
  fvSourceSplitStarts.clear();
  fvPassCases.clear();
  fbOrderedPositions = false;
  if (fbApplyFilter) {
    BuildFilteredSplits();
    return;
  }
  if (!fbSplitFile) {
    fvSourceSplitStarts = {0, fSourceCases};
    return;
  }
  if (fbRequireSorted) {
    fbOrderedPositions = true;
    long nSplits = fpDataset->GetSplitCount();
    for (long s = 0; s < nSplits; ++s) fvSourceSplitStarts.push_back(fpDataset->GetSplitBegin(s));
    fvSourceSplitStarts.push_back(fSourceCases);
    return;
  }
  // Runs of equal split values in the file's own order.
  for (long row = 0; row < fSourceCases; ++row) {
    if (row == 0 || !SameSplitValues(row - 1, row)) fvSourceSplitStarts.push_back(row);
  }
  fvSourceSplitStarts.push_back(fSourceCases);
}

void ACAInputAdapter::BuildFilteredSplits() {
  fvSourceSplitStarts.push_back(0);
  auto take = [this](long row) {
    if (fpDataset->PassesFilter(row)) fvPassCases.push_back(row);
  };
  auto closeSplit = [this]() {
    if (static_cast<long>(fvPassCases.size()) > fvSourceSplitStarts.back())
      fvSourceSplitStarts.push_back(static_cast<long>(fvPassCases.size()));
  };
  if (fbSplitFile && fbRequireSorted) {
    for (long s = 0; s < fpDataset->GetSplitCount(); ++s) {
      for (long p = fpDataset->GetSplitBegin(s); p < fpDataset->GetSplitEnd(s); ++p) take(fpDataset->GetOrderedCase(p));
      closeSplit();
    }
  } else {
    for (long row = 0; row < fSourceCases; ++row) {
      if (fbSplitFile && !fvPassCases.empty() && fpDataset->PassesFilter(row) && !SameSplitValues(fvPassCases.back(), row))
        closeSplit();
      take(row);
    }
    closeSplit();
  }
  // An unsplit file is one split, even when the filter leaves nothing.
  if (!fbSplitFile && fvSourceSplitStarts.size() == 1) fvSourceSplitStarts.push_back(0);
}

bool ACAInputAdapter::SameSplitValues(long a, long b) const {
  for (int i = 0; i < fpDataset->GetNSplitVars(); ++i) {
    const int column = fpDataset->GetSplitVar(i);
    const OBS* x = fpDataset->GetCell(a, column);
    const OBS* y = fpDataset->GetCell(b, column);
    const int width = fpDataset->GetVariable(column)->GetType();
    const bool same = width > 0 ? std::memcmp(x->fStr, y->fStr, static_cast<std::size_t>(width)) == 0 : x->fNum == y->fNum;
    if (!same) return false;
  }
  return true;
}

long ACAInputAdapter::CaseAt(long position) const {
  if (fbApplyFilter) return fvPassCases[static_cast<std::size_t>(position)];
  return fbOrderedPositions ? fpDataset->GetOrderedCase(position) : position;
}

bool ACAInputAdapter::ValueMissing(const ReadVarData& var, const OBS* cell) const {
  if (var.fWidth > 0) {
    if (!var.fbUserMissingExcluded || !var.fbHasUserMissing) return false;
    std::size_t length = TrimmedLength(cell->fStr, static_cast<std::size_t>(var.fWidth));
    for (const std::string& missing : var.fpVariable->GetMissingStrings()) {
      if (missing.size() == length && std::memcmp(missing.data(), cell->fStr, length) == 0) return true;
    }
    return false;
  }
  double x = cell->fNum;
  if (x == kSysMiss || std::isnan(x)) return !var.fbSysmisValid;
  return var.fbUserMissingExcluded && var.fbHasUserMissing && var.fpVariable->IsUserMissing(x);
}

bool ACAInputAdapter::ReadCase(long row, const SplitData* split, double* record, double& weight) const {
  weight = 1.0;
  if (fbApplyWeight && !fpDataset->GetCaseWeight(row, weight)) return false;
  for (std::size_t i = 0; i < fvReadVars.size(); ++i) {
    const ReadVarData& var = fvReadVars[i];
    if (var.fbWeight) {
      record[i] = weight;
      continue;
    }
    const OBS* cell = fpDataset->GetCell(row, var.fColumn);
    if (ValueMissing(var, cell)) {
      if (var.fbListwise) return false;
      record[i] = MCCommon_850::MCMV::Missing();
    } else if (!var.fbCategorical) {
      record[i] = cell->fNum;
    } else if (split != nullptr) {
      const CategoryData& categories = split->fvCategories[i];
      int slot = categories.FindSlot(cell);
      record[i] = slot >= 0 ? categories.fvSlotToCode[static_cast<std::size_t>(slot)]
                            : MCCommon_850::MCMV::Missing();
    }
  }
  return true;
}

bool ACAInputAdapter::HasValidCase() const {
  if (!fbReadable) return false;
  std::vector<double> record(fvReadVars.size());
  double weight = 0.0;
  for (long row = 0; row < fSourceCases; ++row) {
    if (fbApplyFilter && !fpDataset->PassesFilter(row)) continue;
    if (ReadCase(row, nullptr, record.data(), weight)) return true;
  }
  return false;
}

std::unique_ptr<ACAInputAdapter::SplitData> ACAInputAdapter::LearnSplit(long sourceSplit) const {
  auto split = std::make_unique<SplitData>();
  split->fSourceSplit = sourceSplit;
  split->fBegin = fvSourceSplitStarts[static_cast<std::size_t>(sourceSplit)];
  split->fEnd = fvSourceSplitStarts[static_cast<std::size_t>(sourceSplit) + 1];

  if (fbSplitFile && split->fBegin < split->fEnd) {
    long first = CaseAt(split->fBegin);
    std::vector<std::size_t> offsets;
    for (int i = 0; i < fpDataset->GetNSplitVars(); ++i) {
      int column = fpDataset->GetSplitVar(i);
      const OBS* cell = fpDataset->GetCell(first, column);
      offsets.push_back(split->fvValueWords.size());
      split->fvValueWords.insert(split->fvValueWords.end(), cell, cell + fpDataset->GetColumnWords(column));
    }
    for (std::size_t offset : offsets) split->fvpValues.push_back(split->fvValueWords.data() + offset);
  }

  // Count the cases, and gather the values of the categorical variables of
  // the valid ones: numbers as they are, strings as pointers into the store.
  std::size_t nVars = fvReadVars.size();
  std::vector<std::vector<double>> numbers(nVars);
  std::vector<std::vector<const char*>> strings(nVars);
  std::vector<double> record(nVars);
  for (long position = split->fBegin; position < split->fEnd; ++position) {
    long row = CaseAt(position);
    double weight = 0.0;
    if (!ReadCase(row, nullptr, record.data(), weight)) {
      ++split->fDroppedCount;
      split->fWeightedDroppedCount += weight;
      continue;
    }
    ++split->fNRecords;
    split->fWeightedCount += weight;
    for (std::size_t i = 0; i < nVars; ++i) {
      const ReadVarData& var = fvReadVars[i];
      if (!var.fbCategorical || var.fbWeight) continue;
      const OBS* cell = fpDataset->GetCell(row, var.fColumn);
      if (ValueMissing(var, cell)) continue;
      if (var.fWidth > 0) strings[i].push_back(cell->fStr);
      else numbers[i].push_back(cell->fNum);
    }
  }

  split->fvCategories.resize(nVars);
  for (std::size_t i = 0; i < nVars; ++i) {
    const ReadVarData& var = fvReadVars[i];
    if (!var.fbCategorical || var.fbWeight) continue;
    CategoryData& categories = split->fvCategories[i];
    categories.fWidth = var.fWidth;
    categories.fWords = var.fWidth > 0 ? ObsWordsForWidth(var.fWidth) : 1;
    if (var.fWidth > 0) {
      std::size_t width = static_cast<std::size_t>(var.fWidth);
      std::vector<const char*>& values = strings[i];
      std::sort(values.begin(), values.end(),
                [width](const char* a, const char* b) { return CompareStrings(a, b, width) < 0; });
      values.erase(std::unique(values.begin(), values.end(),
                               [width](const char* a, const char* b) { return CompareStrings(a, b, width) == 0; }),
                   values.end());
      std::size_t bytes = static_cast<std::size_t>(categories.fWords) * sizeof(OBS);
      categories.fvWords.resize(values.size() * static_cast<std::size_t>(categories.fWords));
      for (std::size_t s = 0; s < values.size(); ++s) {
        char* slot = categories.fvWords[s * static_cast<std::size_t>(categories.fWords)].fStr;
        std::memset(slot, ' ', bytes);
        std::memcpy(slot, values[s], TrimmedLength(values[s], width));
      }
    } else {
      std::vector<double>& values = numbers[i];
      std::sort(values.begin(), values.end());
      values.erase(std::unique(values.begin(), values.end()), values.end());
      categories.fvWords.resize(values.size());
      for (std::size_t s = 0; s < values.size(); ++s) categories.fvWords[s].fNum = values[s];
    }
    int n = static_cast<int>(categories.fvWords.size()) / categories.fWords;
    categories.fvbUserMissing.assign(static_cast<std::size_t>(n), 0);
    if (var.fbHasUserMissing) {
      ReadVarData asMissing = var;
      asMissing.fbUserMissingExcluded = true;
      asMissing.fbSysmisValid = true;
      for (int s = 0; s < n; ++s)
        categories.fvbUserMissing[static_cast<std::size_t>(s)] = ValueMissing(asMissing, categories.Slot(s));
    }
    categories.fvCodeToSlot.resize(static_cast<std::size_t>(n));
    categories.fvSlotToCode.resize(static_cast<std::size_t>(n));
    categories.Order(true);
  }
  return split;
}

std::vector<bool> ACAInputAdapter::GetReadColumns() const {
  std::vector<bool> columns(static_cast<std::size_t>(std::max(fpDataSource->ColumnCount(), 0)), false);
  auto mark = [&columns](int column) {
    if (column >= 0 && column < static_cast<int>(columns.size())) columns[static_cast<std::size_t>(column)] = true;
  };
  if (fpVarSpecs != nullptr) {
    for (int i = 0; i < fpVarSpecs->GetNRecordVars(); ++i) mark(fpVarSpecs->GetZORVVarIndex(i));
  }
  for (int i = 0; i < fpDataSource->GetNSplitVars(); ++i) mark(fpDataSource->GetSplitVar(i));
  mark(fpDataSource->GetWeightVarIndex());
  if (fpDataset != nullptr) mark(fpDataset->GetFilterVarIndex());
  return columns;
}

// ---- categories ----

namespace {

const CategoryData* CategoriesOf(const std::vector<CategoryData>& all, int recIndex) {
  if (recIndex < 0 || recIndex >= static_cast<int>(all.size())) return nullptr;
  return &all[static_cast<std::size_t>(recIndex)];
}

}  // namespace

int ACAInputAdapter::EncodeRecordCatValue(int recIndex, const OBS* value, bool& notFound,
                                          bool includeMissing) const {
  notFound = true;
  const SplitData* split = CurrentSplit();
  if (split == nullptr || value == nullptr || fpVarSpecs == nullptr || !fpVarSpecs->GetRecordCatVar(recIndex))
    return -1;
  const CategoryData* categories = CategoriesOf(split->fvCategories, recIndex);
  if (categories == nullptr) return -1;
  int slot = categories->FindSlot(value);
  if (slot < 0) return -1;
  if (categories->fvbUserMissing[static_cast<std::size_t>(slot)] && !includeMissing) return -1;
  notFound = false;
  return categories->fvSlotToCode[static_cast<std::size_t>(slot)];
}

const OBS* ACAInputAdapter::DecodeCatValue(int recIndex, int code, int& type) const {
  const SplitData* split = CurrentSplit();
  if (fpVarSpecs == nullptr || !fpVarSpecs->GetRecordCatVar(recIndex)) return nullptr;
  int hostIndex = fpVarSpecs->GetZORVVarIndex(recIndex);
  const ZORV_Variable* variable = fpDataSource->GetVariable(hostIndex);
  type = variable ? variable->GetType() : 0;
  if (split == nullptr) return nullptr;
  const CategoryData* categories = CategoriesOf(split->fvCategories, recIndex);
  if (categories == nullptr || code < 0 || code >= categories->Size()) return nullptr;
  return categories->Slot(categories->fvCodeToSlot[static_cast<std::size_t>(code)]);
}

int ACAInputAdapter::GetRecordCatVarSize(int recIndex) const {
  const SplitData* split = CurrentSplit();
  if (split == nullptr || fpVarSpecs == nullptr || !fpVarSpecs->GetRecordCatVar(recIndex)) return 0;
  const CategoryData* categories = CategoriesOf(split->fvCategories, recIndex);
  return categories ? categories->Size() : 0;
}

void ACAInputAdapter::ReorderRecordCats(int recIndex, bool ascending) {
  SplitData* split = CurrentSplit();
  if (split == nullptr || fpVarSpecs == nullptr || !fpVarSpecs->GetRecordCatVar(recIndex)) return;
  if (recIndex >= static_cast<int>(split->fvCategories.size())) return;
  split->fvCategories[static_cast<std::size_t>(recIndex)].Order(ascending);
}
