#pragma once

#include <vector>

#include "host/data/ZORV_InputCaseIterator.h"

class ZORV_Dataset;

// The host's cursor on the case that a pass of the record iterator stands
// on. It writes into the dataset's own store, so a value lands in the case
// it belongs to whatever order the pass reads the cases in.
//
// Writes are taken only while writing is open (a pass started for writing)
// and a case is current, into numeric columns that the pass does not read:
// a write into a record, split or weight variable would change the data
// under the pass. Anything else is ignored.
class ACADatasetCaseIter : public ZORV_InputCaseIterator {
 public:
  // A null dataset takes no writes.
  explicit ACADatasetCaseIter(ZORV_Dataset* dataset);

  void SetColumnValue(int column, double value) override;

  // The original index of the current case; -1 for none.
  void SetCase(long row) { fCase = row; }
  long GetCase() const { return fCase; }
  // Opens writing with the columns it must leave alone (by column index;
  // columns beyond the list, made during the pass, are writable), or closes
  // it.
  void SetWriting(bool writing, const std::vector<bool>& readColumns);
  bool GetWriting() const { return fbWriting; }
  ZORV_Dataset* GetDataset() const { return fpDataset; }

 private:
  ZORV_Dataset* fpDataset;
  long fCase = -1;
  bool fbWriting = false;
  std::vector<bool> fvbReadColumns;
};
