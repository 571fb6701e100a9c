#pragma once

#include <string>
#include <vector>

class DataDictionary;
class ZORV_Dataset;

// Reads a CSV file into a dataset: a header row of unique, non-empty names,
// then one record per case, all with as many fields as the header. Text is
// UTF-8, with or without a byte order mark. Comma, semicolon or tab
// delimited: given, or detected from the header line.
//
// Each column's type, format and measurement level come from its values
// (see ColumnProfile) unless a dictionary fixes the type or the width. An
// empty field (or blanks only) is missing, and so is a whole unquoted field
// equal to one of the missing texts. Errors throw DataFileError with the file,
// line and column; the dataset may then hold part of the file, so read into
// a fresh one.
class CsvReader {
 public:
  CsvReader();

  // ',', ';', '\t', or 0 to detect (the default).
  void SetDelimiter(char delimiter) { fDelimiter = delimiter; }
  char GetDelimiter() const { return fDelimiter; }
  // '.' (the default) or ','.
  void SetDecimalPoint(char point) { fDecimalPoint = point; }
  char GetDecimalPoint() const { return fDecimalPoint; }
  void SetMissingTexts(const std::vector<std::string>& texts) { fvMissingTexts = texts; }
  const std::vector<std::string>& GetMissingTexts() const { return fvMissingTexts; }
  // Types and widths of the dictionary's variables, and its CSV settings,
  // override the reader's. Not owned; may be null.
  void SetDictionary(const DataDictionary* dictionary);
  const DataDictionary* GetDictionary() const { return fpDictionary; }

  // Fills an empty dataset from the file, or from text under a file name.
  void Read(const std::string& path, ZORV_Dataset& dataset) const;
  void ReadText(const std::string& text, const std::string& fileName, ZORV_Dataset& dataset) const;

  // The delimiter the last read used.
  char GetUsedDelimiter() const { return fUsedDelimiter; }

 private:
  char fDelimiter = 0;
  char fDecimalPoint = '.';
  std::vector<std::string> fvMissingTexts;
  const DataDictionary* fpDictionary = nullptr;
  mutable char fUsedDelimiter = ',';
};
