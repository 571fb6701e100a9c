#pragma once

#include <string>

class ZORV_Dataset;

// Loads a data file into a dataset by its extension: .dta and .sas7bdat
// through StatFileReader, anything else as CSV. A dictionary file beside the
// data, named after it with the extension replaced by ".dictionary.json"
// (data/sleep.csv -> data/sleep.dictionary.json), is read first when it
// exists and applied to the result. Errors throw DataFileError.
class DataFileLoader {
 public:
  // Fills an empty dataset; on an error it may hold part of the file.
  static void Load(const std::string& path, ZORV_Dataset& dataset);
  // The same with a dictionary file named by the caller ("" for none).
  static void Load(const std::string& path, const std::string& dictionaryPath, ZORV_Dataset& dataset);
  // Where the dictionary of a data file is looked for.
  static std::string DictionaryPathFor(const std::string& path);
};
