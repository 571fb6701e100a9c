#pragma once

#include <cstddef>

#include "host/data/ZORV_Format.h"

// What a reader learns about one column from its values, to choose the
// variable's type, format and measurement level.
//
// Type: numeric when every non-empty value reads as a number.
// Numeric format: F, as wide as the widest value needs, with as many
// decimals as the value written with the most decimals, at most 10; when
// that is wider than 40 characters the decimals give way, and a column whose
// integer digits alone pass 40 gets E12.4. A column with no value gets F8.2.
// String format: A, as wide as the longest value in bytes (at least 1).
// Measurement level: strings nominal; numbers scale, except a column whose
// every value was quoted in the file, which its writer marked as text
// (codes such as "01"), nominal.
class ColumnProfile {
 public:
  enum { MAXDECIMALS = 10, MAXNUMERICWIDTH = 40 };

  // An empty value, missing in any type.
  void AddEmpty() { ++fEmpty; }
  // A value as written. decimalPoint is '.' or ','.
  void AddText(const char* text, std::size_t size, bool quoted, char decimalPoint);
  // A value of a typed source.
  void AddNumber(double value);

  bool IsNumeric() const { return fbNumeric; }
  long GetValueCount() const { return fValues; }
  long GetEmptyCount() const { return fEmpty; }
  bool AllQuoted() const { return fValues > 0 && fQuoted == fValues; }
  // Widest value in bytes.
  std::size_t GetMaxBytes() const { return fMaxBytes; }

  ZORV_Format NumericFormat() const;
  int StringWidth() const;
  int DefaultLevel() const;

 private:
  void AddDigits(double value, int intDigits, int decimals);

  long fValues = 0;
  long fEmpty = 0;
  long fQuoted = 0;
  bool fbNumeric = true;
  bool fbNegative = false;
  long fNumbers = 0;
  int fMaxIntDigits = 0;
  int fMaxDecimals = 0;
  std::size_t fMaxBytes = 0;
};
