#pragma once

#include <memory>
#include <vector>

#include "host/data/OBS.h"

class ACAProcDataSourceIter;
class ACAVarValidSpecs;
class BpProcedure;
class ProcedureDataSource;
class ZORV_Dataset;

// Between the host's data source and the numeric component: walks the
// cases split by split, drops the cases that are not valid for the record
// variables, codes the categories of categorical variables and counts what
// it delivered.
//
// Cases are read from a ZORV_Dataset; a data source of another kind has no
// cases to give, and the record iterator then fails (state 3).
//
// Everything learned about a split (its values, counts and categories, and
// the order of the categories) is kept for the whole run, so that a later
// pass over the same split delivers the same codes.
//
// Filter: when the variable list applies the host's filter, a case that the
// dataset's filter sets aside is passed over as if the file did not hold it:
// it is neither delivered nor counted, and a split of such cases only does
// not exist.
//
// Listwise deletion: a case is dropped when its frequency weight is not
// valid, or when a record variable registered as listwise has a missing
// value. A value is missing when it is system-missing (unless the variable
// keeps system-missing values) or user-missing (when the variable counts
// user-missing values as missing). A missing value of a variable that is not
// listwise is delivered as MCMV::Missing() in place of a value or a code.
class ACAInputAdapter {
 public:
  ACAInputAdapter(ACAVarValidSpecs* varSpecs, ProcedureDataSource& dataSource);
  virtual ~ACAInputAdapter();

  ACAInputAdapter(const ACAInputAdapter&) = delete;
  ACAInputAdapter& operator=(const ACAInputAdapter&) = delete;

  // Adopts the host's split file settings: the file is split when the data
  // source has split variables and the variable list asks for splits.
  // `keepSplitValues`: the current split's values are made the host's
  // current split, so that tables carry the split in their captions.
  // `requireSorted`: splits are the groups of equal split values after a
  // stable sort on them; without it each run of equal values in the file's
  // own order is a split of its own. `reportEmptySplits`: a split without a
  // valid case is still opened, so that the procedure can say so; without it
  // such splits are passed over. The procedure passes true for all three.
  // Forgets what earlier passes learned.
  void SetSplitFile(BpProcedure& procedure, bool keepSplitValues, bool requireSorted, bool reportEmptySplits);
  bool GetSplitFile() const { return fbSplitFile; }
  bool GetKeepSplitValues() const { return fbKeepSplitValues; }
  bool GetRequireSorted() const { return fbRequireSorted; }
  bool GetReportEmptySplits() const { return fbReportEmptySplits; }

  // Splits met so far in the current pass: the current split's index plus
  // one. After a pass has run out, the number of splits of the file.
  int GetSplitCount() const { return fSplitIndex + 1; }
  // The current split's index in the pass; -1 before the first split, the
  // last split's once the pass has run out. No split of a split file is
  // current then; the one split of an unsplit file stays current.
  int GetSplitIndex() const { return fSplitIndex; }
  // The current split's values, one per split variable; empty when unsplit
  // and when no split is current (before the first, after the last).
  const std::vector<OBS*>& GetSplitValues() const;
  // The valid records of the current split: those its record iterator
  // delivers. Known as soon as the split is opened.
  int GetNRecords() const;
  // Cases of the current split: valid ones, unweighted and weighted, and
  // dropped ones, unweighted and weighted. A case dropped for its weight
  // counts among the dropped cases with a weight of 0.
  int GetUnweightedCount() const;
  double GetWeightedCount() const;
  int GetDroppedCount() const;
  double GetWeightedDroppedCount() const;

  // Split movement without the record iterator, from what an earlier pass
  // learned (a split not met yet is learned from the data): to the next
  // split, or back to before the first one. Each lets go of the record
  // iterator's open split, as ClearDSIterator does, so that the iterator
  // never reads one split while the adapter stands on another.
  void ChangeSplitNoIter();
  void ResetSplitNoIter();
  // The record iterator lets go of its case: it has no record until its
  // next NewSplit, Rewind or NewPass.
  void ClearDSIterator();

  // The code of a value of a categorical record variable in the current
  // split. `notFound` reports a value the split does not have; with
  // `includeMissing` the categories of user-missing values are searched too.
  // Numbers compare by value, strings by their bytes with trailing blanks
  // ignored; a string value is read to the variable's width.
  int EncodeRecordCatValue(int recIndex, const OBS* value, bool& notFound, bool includeMissing) const;
  // The value of a category code, null for a code the variable does not
  // have; `type` receives the variable's type (0 numeric, else the width).
  // The value stays valid as long as the adapter.
  const OBS* DecodeCatValue(int recIndex, int code, int& type) const;
  // Number of categories of a record variable in the current split; 0 for a
  // variable that is not categorical.
  int GetRecordCatVarSize(int recIndex) const;
  // Orders the categories of the current split, and so their codes,
  // ascending or descending by value. Records delivered afterwards, also in
  // later passes, carry the new codes.
  void ReorderRecordCats(int recIndex, bool ascending);

  ACAVarValidSpecs* GetVarValidSpecs() const { return fpVarSpecs; }
  ProcedureDataSource& GetDataSource() const { return *fpDataSource; }
  // The data source as a case store; null when it is of another kind.
  ZORV_Dataset* GetDataset() const { return fpDataset; }

 private:
  friend class ACAProcDataSourceIter;
  struct ReadVarData;
  struct SplitData;

  // For the record iterator.
  // Fixes how cases are read: the record layout on the dataset's columns and
  // the splits of a pass. False when no valid record can come.
  bool PrepareReading();
  // The data changed shape (cases added or removed) since reading began.
  bool DataChanged() const;
  // Whether any case of the file is valid.
  bool HasValidCase() const;
  // Makes split `index` of the pass current, learning it the first time;
  // false, with the pass run out, when there is no such split.
  bool OpenSplit(int index);
  // Back to before the first split.
  void LeaveSplits();
  // The original case at a position of the pass.
  long CaseAt(long position) const;
  // Reads a case into a record in the layout of the variable list. False
  // when the case is dropped. Without a split only validity and the weight
  // are found, and the codes are not filled in.
  bool ReadCase(long row, const SplitData* split, double* record, double& weight) const;
  // Whether a value of a read variable counts as missing.
  bool ValueMissing(const ReadVarData& var, const OBS* cell) const;
  // The dataset columns that a pass reads: record variables, split
  // variables and the weight. Writes into them are refused.
  std::vector<bool> GetReadColumns() const;
  const SplitData* CurrentSplit() const;
  // The current split's cases: positions [begin, end) of the pass.
  bool GetCurrentSplitRange(long& begin, long& end) const;
  SplitData* CurrentSplit();
  std::unique_ptr<SplitData> LearnSplit(long sourceSplit) const;
  void BuildSourceSplits();
  // The same, when a filter sets cases aside.
  void BuildFilteredSplits();
  // Whether two cases have the same split values.
  bool SameSplitValues(long a, long b) const;
  void PublishSplit();
  void WithdrawSplit();
  void LetGoOfIterator();

  ACAVarValidSpecs* fpVarSpecs;
  ProcedureDataSource* fpDataSource;
  ZORV_Dataset* fpDataset;
  bool fbSplitFile = false;
  bool fbKeepSplitValues = false;
  bool fbRequireSorted = true;
  bool fbReportEmptySplits = true;

  ACAProcDataSourceIter* fpIterator = nullptr;  // the record iterator on this adapter; not owned

  bool fbPrepared = false;
  bool fbReadable = false;
  bool fbApplyWeight = false;
  bool fbApplyFilter = false;
  std::vector<ReadVarData> fvReadVars;
  long fSourceCases = 0;                 // cases of the dataset when reading began
  bool fbOrderedPositions = false;       // positions go through the dataset's split order
  std::vector<long> fvPassCases;          // with a filter: the cases of the pass, in order
  std::vector<long> fvSourceSplitStarts;  // one more entry than splits

  int fSplitIndex = -1;
  bool fbPassOver = false;  // the pass has run out: no split is current
  std::vector<std::unique_ptr<SplitData>> fvpSplits;  // learned, by index in the pass
  bool fbSessionSplit = false;  // this adapter made its split the host's current one
};
