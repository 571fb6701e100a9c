#pragma once

#include <cstddef>
#include <string_view>

// One field of a CSV record: its text with the quotes removed and doubled
// quotes made single, whether it was quoted, and where it starts.
struct CsvField {
  std::string_view fText;
  bool fbQuoted = false;
  long fLine = 0;             // 1-based line of the field's first byte
  std::size_t fOffset = 0;    // byte offset of the field in the data
  std::size_t fLineStart = 0; // byte offset where that line starts
};
