#pragma once

// The host's cursor on the case being read in a pass over the active
// dataset. Through it a procedure writes values of the variables it created
// into the current case.
class ZORV_InputCaseIterator {
 public:
  virtual ~ZORV_InputCaseIterator() = default;

  // Writes a numeric value into the current case, in the column of that
  // index; a column outside the dataset is ignored.
  virtual void SetColumnValue(int column, double value) = 0;
};
