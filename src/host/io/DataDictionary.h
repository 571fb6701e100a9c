#pragma once

#include <string>
#include <vector>

#include "host/io/DictionaryEntry.h"

class ZORV_Dataset;

// A dictionary file: JSON that sets the labels, value labels, missing values,
// measurement levels, formats and types of a data file's variables, and how
// a CSV file is to be read. The schema is in docs/dictionary.md. Errors throw
// DataFileError naming the dictionary file, the variable and where in the
// JSON text (line and column for a syntax error, a JSON pointer otherwise).
class DataDictionary {
 public:
  DataDictionary() = default;

  // Reads and checks a dictionary file, or JSON text under a name.
  void Load(const std::string& path);
  void LoadText(const std::string& text, const std::string& fileName);

  const std::string& GetFileName() const { return fFileName; }
  const std::vector<DictionaryEntry>& GetEntries() const { return fvEntries; }
  // The entry of a variable, matched without regard to case; null if none.
  const DictionaryEntry* Find(const std::string& name) const;

  // CSV reading: the delimiter and the decimal point (0 when the dictionary
  // does not say), and texts that stand for a missing value when they are a
  // whole unquoted field.
  char GetCsvDelimiter() const { return fCsvDelimiter; }
  char GetCsvDecimalPoint() const { return fCsvDecimalPoint; }
  const std::vector<std::string>& GetCsvMissingTexts() const { return fvCsvMissingTexts; }

  // Fails on the first entry whose variable is not among the names.
  void CheckNames(const std::vector<std::string>& names, const std::string& dataFileName) const;

  // Sets labels, value labels, missing values, levels and formats on the
  // dataset's variables. Types are the readers' business: a reader of a
  // typed file passes typedSource, and a type that differs from the file's
  // is then an error.
  void Apply(ZORV_Dataset& dataset, bool typedSource, const std::string& dataFileName) const;

  // The dictionary of a dataset written as CSV (CsvWriter), as JSON text:
  // everything that Load and Apply read back, for every variable in the
  // order of the columns, and the CSV settings it was written with.
  static std::string Describe(const ZORV_Dataset& dataset);

 private:
  std::string fFileName;
  std::vector<DictionaryEntry> fvEntries;
  char fCsvDelimiter = 0;
  char fCsvDecimalPoint = 0;
  std::vector<std::string> fvCsvMissingTexts;
};
