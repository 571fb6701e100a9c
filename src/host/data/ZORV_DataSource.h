#pragma once

#include "host/data/ZORV_Variable.h"

// The host's view of the active dataset: its columns and their dictionary.
class ZORV_DataSource {
 public:
  virtual ~ZORV_DataSource() = default;

  // Number of columns; 0 for an empty selection.
  virtual int ColumnCount() const = 0;
  virtual const ZORV_Variable* GetVariable(int index) const = 0;
  virtual ZORV_Variable* GetVariable(int index) = 0;
  // Case-insensitive look-up of the first `length` characters of `name`
  // (all of it when length <= 0); -1 when there is no such variable.
  virtual int FindVarIndex(const char* name, int length) const = 0;
  // Adds a new variable of the given type (0 numeric, else string width) and
  // returns its column index through `index`. False when it cannot be made.
  virtual bool MakeVariable(int type, unsigned int* index) = 0;
};
