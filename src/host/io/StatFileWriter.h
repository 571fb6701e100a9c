#pragma once

#include <string>

class ZORV_Dataset;

// Writes a dataset as a Stata (.dta) or SAS (.sas7bdat) file: names,
// variable labels, formats, the values, and (Stata only) the labels of
// whole-number values. Strings may be at most 2045 bytes wide in Stata
// files. User-missing definitions are not written; their values are. Errors
// throw DataFileError.
class StatFileWriter {
 public:
  enum Kind { DTA, SAS7BDAT };

  void Write(const ZORV_Dataset& dataset, const std::string& path, Kind kind) const;
};
