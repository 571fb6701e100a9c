#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/io/CsvField.h"

// Splits CSV text into records and fields: fields separated by one delimiter
// character, records by LF, CRLF or CR; a field in double quotes may hold
// delimiters, line breaks and doubled quotes. Blanks between a closing quote
// and the next delimiter are allowed. Empty lines are skipped. Errors throw
// DataFileError naming the file, line and column.
class CsvTokenizer {
 public:
  // The data must outlive the tokenizer. Offsets and columns count from the
  // start of data.
  CsvTokenizer(const char* data, std::size_t size, char delimiter, const std::string& fileName);

  // The next record's fields; false when the data are exhausted. The fields'
  // texts stay valid until the next call.
  bool NextRecord(std::vector<CsvField>& fields);
  // Bytes read so far.
  std::size_t GetOffset() const { return fPos; }
  // The line on which the last record started.
  long GetRecordLine() const { return fRecordLine; }
  // 1-based column, in characters, of a byte offset on a line.
  long ColumnOf(std::size_t lineStart, std::size_t offset) const;
  // A field's column.
  long ColumnOf(const CsvField& field) const { return ColumnOf(field.fLineStart, field.fOffset); }

  // The delimiter of the first record: comma, semicolon or tab, whichever
  // occurs most often outside quotes; comma on a tie or when none occurs.
  static char DetectDelimiter(const char* data, std::size_t size);

 private:
  [[noreturn]] void Fail(long line, std::size_t lineStart, std::size_t offset, const std::string& message) const;
  // Consumes a line break at fPos, if any.
  bool AtLineBreak() const;
  void SkipLineBreak();

  const char* fpData;
  std::size_t fSize;
  char fDelimiter;
  std::string fFileName;
  std::size_t fPos = 0;
  long fLine = 1;
  std::size_t fLineStart = 0;
  long fRecordLine = 0;
  std::string fArena;  // unescaped texts of fields that had doubled quotes

  struct Span {
    bool fbArena;
    std::size_t fBegin;
    std::size_t fLength;
  };
  std::vector<Span> fvSpans;
};
