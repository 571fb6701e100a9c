#include "host/io/CsvTokenizer.h"

#include "host/io/DataFileError.h"
#include "host/io/Utf8Text.h"

CsvTokenizer::CsvTokenizer(const char* data, std::size_t size, char delimiter, const std::string& fileName)
    : fpData(data), fSize(size), fDelimiter(delimiter), fFileName(fileName) {}

void CsvTokenizer::Fail(long line, std::size_t lineStart, std::size_t offset, const std::string& message) const {
  throw DataFileError(fFileName, line, ColumnOf(lineStart, offset), message);
}

long CsvTokenizer::ColumnOf(std::size_t lineStart, std::size_t offset) const {
  if (offset < lineStart || offset > fSize) return 0;
  return static_cast<long>(Utf8Text::CharCount(fpData + lineStart, offset - lineStart)) + 1;
}

bool CsvTokenizer::AtLineBreak() const { return fPos < fSize && (fpData[fPos] == '\n' || fpData[fPos] == '\r'); }

void CsvTokenizer::SkipLineBreak() {
  if (fpData[fPos] == '\r' && fPos + 1 < fSize && fpData[fPos + 1] == '\n') ++fPos;
  ++fPos;
  ++fLine;
  fLineStart = fPos;
}

bool CsvTokenizer::NextRecord(std::vector<CsvField>& fields) {
  fields.clear();
  fvSpans.clear();
  fArena.clear();
  while (AtLineBreak()) SkipLineBreak();
  if (fPos >= fSize) return false;
  fRecordLine = fLine;

  while (true) {
    CsvField field;
    field.fLine = fLine;
    field.fOffset = fPos;
    field.fLineStart = fLineStart;
    Span span{false, fPos, 0};
    if (fPos < fSize && fpData[fPos] == '"') {
      field.fbQuoted = true;
      const long openLine = fLine;
      const std::size_t openLineStart = fLineStart;
      const std::size_t openOffset = fPos;
      ++fPos;
      std::size_t segment = fPos;
      span.fBegin = fPos;
      while (true) {
        if (fPos >= fSize)
          Fail(openLine, openLineStart, openOffset,
               "the quoted field that starts here is not closed before the end of the file");
        char c = fpData[fPos];
        if (c == '"') {
          if (fPos + 1 < fSize && fpData[fPos + 1] == '"') {
            if (!span.fbArena) {
              span.fbArena = true;
              span.fBegin = fArena.size();
            }
            fArena.append(fpData + segment, fPos + 1 - segment);  // keeps one quote
            fPos += 2;
            segment = fPos;
            continue;
          }
          if (span.fbArena) {
            fArena.append(fpData + segment, fPos - segment);
            span.fLength = fArena.size() - span.fBegin;
          } else {
            span.fLength = fPos - span.fBegin;
          }
          ++fPos;
          break;
        }
        if (c == '\n' || (c == '\r' && !(fPos + 1 < fSize && fpData[fPos + 1] == '\n'))) {
          ++fPos;
          ++fLine;
          fLineStart = fPos;
          continue;
        }
        ++fPos;
      }
      while (fPos < fSize && (fpData[fPos] == ' ' || fpData[fPos] == '\t') && fpData[fPos] != fDelimiter) ++fPos;
      if (fPos < fSize && fpData[fPos] != fDelimiter && !AtLineBreak())
        Fail(fLine, fLineStart, fPos, "unexpected text after the closing quote of a field");
    } else {
      while (fPos < fSize && fpData[fPos] != fDelimiter && !AtLineBreak()) {
        if (fpData[fPos] == '"')
          Fail(fLine, fLineStart, fPos, "a quote inside a field that does not start with a quote");
        ++fPos;
      }
      span.fLength = fPos - span.fBegin;
    }
    fields.push_back(field);
    fvSpans.push_back(span);
    if (fPos < fSize && fpData[fPos] == fDelimiter) {
      ++fPos;
      continue;
    }
    if (fPos < fSize) SkipLineBreak();
    break;
  }

  for (std::size_t i = 0; i < fields.size(); ++i) {
    const Span& s = fvSpans[i];
    fields[i].fText = s.fbArena ? std::string_view(fArena.data() + s.fBegin, s.fLength)
                                : std::string_view(fpData + s.fBegin, s.fLength);
  }
  return true;
}

char CsvTokenizer::DetectDelimiter(const char* data, std::size_t size) {
  long commas = 0;
  long semicolons = 0;
  long tabs = 0;
  bool quoted = false;
  std::size_t start = 0;
  while (start < size && (data[start] == '\n' || data[start] == '\r')) ++start;
  for (std::size_t i = start; i < size; ++i) {
    char c = data[i];
    if (c == '"') {
      quoted = !quoted;  // a doubled quote toggles twice
      continue;
    }
    if (quoted) continue;
    if (c == '\n' || c == '\r') break;
    if (c == ',') ++commas;
    if (c == ';') ++semicolons;
    if (c == '\t') ++tabs;
  }
  if (semicolons > commas && semicolons >= tabs) return ';';
  if (tabs > commas && tabs > semicolons) return '\t';
  return ',';
}
