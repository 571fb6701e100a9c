// The dictionary reader: the input is a dictionary file for the fixed
// dataset. A dictionary that reads is used as a data file's is: the CSV
// text is read with its types, widths and CSV settings, the rest is applied
// to the data, and the data's own dictionary is described from them.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/io/CsvReader.h"
#include "host/io/DataDictionary.h"
#include "host/io/DataFileError.h"

namespace {

const std::size_t kMaxInput = 16384;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  DataDictionary dictionary;
  try {
    dictionary.LoadText(std::string(reinterpret_cast<const char*>(bytes), size), "fuzz.dictionary.json");
    CsvReader reader;
    reader.SetDictionary(&dictionary);
    ZORV_Dataset data;
    reader.ReadText(fuzzdata::CsvText(), "fuzz.csv", data);
    dictionary.Apply(data, false, "fuzz.csv");
    DataDictionary::Describe(data);
  } catch (const DataFileError&) {
    // The reader's answer to a dictionary it cannot use.
  }
  return 0;
}
