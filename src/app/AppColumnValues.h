#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"

class ZORV_Dataset;

// New values for one variable, one per case, computed in full before any is
// stored: numbers (NaN for missing) or texts.
class AppColumnValues {
 public:
  explicit AppColumnValues(bool isString, long cases);

  bool IsString() const { return fbString; }
  void SetNumber(long row, double value) { fvNumbers[static_cast<std::size_t>(row)] = value; }
  void SetText(long row, std::string text) { fvTexts[static_cast<std::size_t>(row)] = std::move(text); }
  double GetNumber(long row) const { return fvNumbers[static_cast<std::size_t>(row)]; }
  const std::string& GetText(long row) const { return fvTexts[static_cast<std::size_t>(row)]; }
  // Cases whose value is not missing.
  long CountValid() const;

  // Stores the values in a column of the same type. Texts longer than the
  // variable are cut; the result is how many were.
  long StoreInto(ZORV_Dataset& data, int column) const;
  // Makes a variable for the values, stores them, and returns its column. A
  // numeric one gets a format that shows them (see NumericFormat) and a
  // string one is as wide as the longest text (at least 1 byte).
  int MakeVariable(ZORV_Dataset& data, const std::string& name, int decimals, int level) const;

  // F as wide as the widest value needs: no decimals when every value is a
  // whole number, else `decimals` but at least 2 and at most 10; E12.4 when
  // that is wider than 40; F8.2 when no value is there.
  static ZORV_Format NumericFormat(const std::vector<double>& values, int decimals);

 private:
  bool fbString;
  std::vector<double> fvNumbers;
  std::vector<std::string> fvTexts;
};
