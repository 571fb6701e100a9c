// The CSV reader. The first byte chooses the delimiter (detected, comma,
// semicolon or tab), the decimal point and whether "NA" and "." are missing
// texts; the rest is the file. A file it cannot read is a DataFileError.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/io/CsvReader.h"
#include "host/io/DataFileError.h"

namespace {

const std::size_t kMaxInput = 16384;

void Configure(uint8_t choice, CsvReader& reader) {
  static const char kDelimiters[] = {0, ',', ';', '\t'};
  reader.SetDelimiter(kDelimiters[choice & 3]);
  reader.SetDecimalPoint((choice & 4) != 0 ? ',' : '.');
  if ((choice & 8) != 0) reader.SetMissingTexts({"NA", "."});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size == 0 || size > kMaxInput) return -1;
  CsvReader reader;
  Configure(bytes[0], reader);
  ZORV_Dataset data;
  try {
    reader.ReadText(std::string(reinterpret_cast<const char*>(bytes) + 1, size - 1), "fuzz.csv", data);
  } catch (const DataFileError&) {
    // The reader's answer to a file it cannot read.
  }
  return 0;
}
