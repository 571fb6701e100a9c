#pragma once

#include <memory>
#include <vector>

#include "numeric/common/RecordIterator.h"

class ACADatasetCaseIter;
class ACAInputAdapter;
class ZORV_InputCaseIterator;

// Reads the host's data source, split by split, and delivers each valid
// case as a record in the layout of the adapter's variable list: category
// codes for categorical variables, values for the others, the case weight
// at the weight's position. Its states are those of ACAIterState:
// - 1 right after construction when no case of the file is valid;
// - 3 when no valid record can come: the data source holds no cases to
//   read, the record layout is empty or names a column that is not there, a
//   string is to be read as a number, or cases were added or removed while
//   reading; it stays so;
// - 2 when the open split, or the pass, is used up; 0 otherwise.
//
// A pass walks the splits from the first: each NewSplit opens the next one
// and skips what was left of the one before.
class ACAProcDataSourceIter : public MCCommon_850::RecordIterator {
 public:
  // Opens the first pass and looks for a valid case. With `splitByIter` the
  // iterator itself moves from split to split, and Rewind goes back to the
  // start of the pass; without it the adapter moves (ChangeSplitNoIter) and
  // Rewind starts reading the split the adapter stands on.
  ACAProcDataSourceIter(ACAInputAdapter& adapter, bool splitByIter);
  ~ACAProcDataSourceIter() override;

  ACAProcDataSourceIter(const ACAProcDataSourceIter&) = delete;
  ACAProcDataSourceIter& operator=(const ACAProcDataSourceIter&) = delete;

  bool HasRecord() const override;
  void Next() override;
  int GetState() const override { return fState; }
  void Rewind() override;
  // Non-null while HasRecord is true; valid until the next move.
  const double* Current() const override;

  // Opens the next split of the pass; false when the file is used up. An
  // unsplit file gives true once per pass.
  bool NewSplit();
  // The host's cursor on the current case, for writing new values; never
  // null. It takes writes only in a pass started for writing.
  ZORV_InputCaseIterator* GetProcDS() const;
  // Starts a new pass over the data, before its first split; `writing` when
  // new values will be written into the cases.
  void NewPass(bool writing);
  // Marks the current pass as the last one: once it has run out, Rewind
  // starts nothing and the cursor takes no more writes; only NewPass opens
  // the data again.
  void SetLastPass() { fbLastPass = true; }

  ACAInputAdapter& GetAdapter() const { return *fpAdapter; }
  bool GetSplitByIter() const { return fbSplitByIter; }
  bool GetWriting() const { return fbWriting; }
  bool GetLastPass() const { return fbLastPass; }

 private:
  friend class ACAInputAdapter;

  // Drops the open split: no record until the next NewSplit, Rewind or
  // NewPass.
  void LetGo();
  // Opens the adapter's current split at its first valid case.
  void OpenCurrentSplit();
  // From the current position forward to a valid case, whose record it builds.
  void SeekValid();
  void Fail();
  void EndPass();

  ACAInputAdapter* fpAdapter;  // null once the adapter is gone
  bool fbSplitByIter;
  int fState;
  bool fbOpen = false;  // a split is open for reading
  long fPosition = 0;   // in the pass; the current record's case while one is there
  long fEnd = 0;
  std::vector<double> fvRecord;
  bool fbWriting = false;
  bool fbLastPass = false;
  bool fbPassDone = false;
  std::unique_ptr<ACADatasetCaseIter> fpCursor;
};
