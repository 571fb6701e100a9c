#pragma once

#include "host/data/ZORV_DataSource.h"

// The data source handed to a procedure: the dataset, plus the command's
// split and weight settings and the host's fatal state.
class ProcedureDataSource : public ZORV_DataSource {
 public:
  // True once the host has turned fatal for the current command; every
  // message issued at level 3 does that. Cheap and sticky.
  bool FatalError() const;

  // A variable's column from a code the command parser produced; -1 if none.
  virtual int VarIndex(long code) const = 0;
  // The frequency weight variable's column, -1 when the data are unweighted.
  virtual int GetWeightVarIndex() const = 0;

  virtual int GetNSplitVars() const = 0;
  virtual int GetSplitVar(int i) const = 0;
  // True when the splits of a table are shown together in one table.
  virtual bool SplitsInOneTable() const = 0;
  // True when each split of a split file gets tables of its own, so that a
  // table need not know the categories of the other splits in advance.
  virtual bool SplitsInSeparateTables() const;
};
