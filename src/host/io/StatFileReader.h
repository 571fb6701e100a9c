#pragma once

#include <string>

class ZORV_Dataset;

// Reads Stata (.dta) and SAS (.sas7bdat) data files into a dataset, with
// their variable labels, value labels (Stata; and SAS when a .sas7bcat
// catalog of the same name lies beside the data), formats and the SAS
// user-missing definitions.
//
// Numbers of every storage type become doubles; a value stored as a 4-byte
// float is read as the shortest decimal that names it, so 0.1 stays 0.1.
// System-missing and the lettered missing values (.a to .z) become the
// system-missing value. Fixed-point, comma and exponent formats carry over;
// general, date and unknown formats get a format inferred from the values,
// as for CSV. Strings keep their stored width. A numeric variable with value
// labels is nominal, other numbers scale, strings nominal, unless the file
// records a measurement level. Errors throw DataFileError.
class StatFileReader {
 public:
  enum Kind { DTA, SAS7BDAT };

  // The kind from the file name's extension (any case); false for others.
  static bool KindFromPath(const std::string& path, Kind& kind);

  // Fills an empty dataset; the kind comes from the extension.
  void Read(const std::string& path, ZORV_Dataset& dataset) const;
  void Read(const std::string& path, Kind kind, ZORV_Dataset& dataset) const;
};
