#pragma once

#include <functional>
#include <ostream>

class ZORV_Dataset;

// Writes a dataset as CSV text that CsvReader reads back to the same values:
// a header of the names, then one record per case, comma delimited, lines
// ending in LF. Numbers are written in the shortest form that reads back as
// the same double, and the system-missing value as an empty field. Texts
// stand in double quotes (a quote doubled) without their trailing blanks;
// an empty text is an empty field, which reads back as blanks.
class CsvWriter {
 public:
  // `keepGoing` is asked before each block of cases with the number of
  // cases written; false abandons the writing, and Write returns false.
  static bool Write(const ZORV_Dataset& dataset, std::ostream& out,
                    const std::function<bool(long written)>& keepGoing = nullptr);
  // A field as written: quoted when it must be.
  static std::string Quote(const std::string& text);
};
