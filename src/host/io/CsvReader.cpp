#include "host/io/CsvReader.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/io/ColumnProfile.h"
#include "host/io/CsvTokenizer.h"
#include "host/io/DataDictionary.h"
#include "host/io/DataFileError.h"
#include "host/io/NumberText.h"
#include "host/io/Utf8Text.h"

namespace {

std::string Lower(std::string_view s) {
  std::string out(s);
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// Every so many records the reader tells how far it is and looks whether
// the user asked to stop.
const long kRecordsBetweenReports = 8192;

// The file is read twice: to learn the columns, then to store the values.
void Report(const std::string& fileName, const CsvTokenizer& tokenizer, std::size_t size, int pass) {
  if (ZORV_StopFlag::IsRaised()) throw DataFileError(fileName, 0, 0, "reading was interrupted");
  if (size == 0) return;
  ZORV_Progress::Fraction((static_cast<double>(pass) * size + tokenizer.GetOffset()) / (2.0 * size));
}

struct ColumnPlan {
  std::string fName;
  int fForcedType = DictionaryEntry::TYPE_NOT_GIVEN;
  ColumnProfile fProfile;
  bool fbNumeric = true;
  int fColumn = -1;
};

}  // namespace

CsvReader::CsvReader() = default;

void CsvReader::SetDictionary(const DataDictionary* dictionary) { fpDictionary = dictionary; }

void CsvReader::Read(const std::string& path, ZORV_Dataset& dataset) const {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  if (!in) throw DataFileError(path, 0, 0, "cannot open the file");
  // One buffer of the file's size: the text is the only copy held.
  std::streamoff size = in.tellg();
  if (size < 0) throw DataFileError(path, 0, 0, "cannot read the file");
  std::string text(static_cast<std::size_t>(size), '\0');
  in.seekg(0);
  if (size > 0 && !in.read(&text[0], size)) throw DataFileError(path, 0, 0, "cannot read the file");
  ReadText(text, path, dataset);
}

void CsvReader::ReadText(const std::string& text, const std::string& fileName, ZORV_Dataset& dataset) const {
  if (dataset.ColumnCount() != 0 || dataset.GetCaseCount() != 0)
    throw std::logic_error("CsvReader::ReadText: the dataset is not empty");

  const char* data = text.data();
  std::size_t size = text.size();
  if (size >= 2 && ((static_cast<unsigned char>(data[0]) == 0xFF && static_cast<unsigned char>(data[1]) == 0xFE) ||
                    (static_cast<unsigned char>(data[0]) == 0xFE && static_cast<unsigned char>(data[1]) == 0xFF)))
    throw DataFileError(fileName, 1, 1, "the file is UTF-16 text; save it as UTF-8");
  // Every leading byte-order mark goes: a file saved twice by an editor that
  // adds one would otherwise hide the first column under an invisible name.
  while (size >= 3 && static_cast<unsigned char>(data[0]) == 0xEF && static_cast<unsigned char>(data[1]) == 0xBB &&
         static_cast<unsigned char>(data[2]) == 0xBF) {
    data += 3;
    size -= 3;
  }

  std::size_t bad = 0;
  if (!Utf8Text::Validate(data, size, bad)) {
    long line = 1;
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < bad; ++i) {
      if (data[i] == '\n' || (data[i] == '\r' && !(i + 1 < size && data[i + 1] == '\n'))) {
        ++line;
        lineStart = i + 1;
      }
    }
    long column = static_cast<long>(Utf8Text::CharCount(data + lineStart, bad - lineStart)) + 1;
    throw DataFileError(fileName, line, column,
                        data[bad] == '\0' ? "a NUL byte: this is not a text file"
                                          : "invalid UTF-8: the text must be UTF-8 encoded");
  }

  char delimiter = fDelimiter;
  char decimalPoint = fDecimalPoint == ',' ? ',' : '.';
  std::vector<std::string> missingTexts = fvMissingTexts;
  if (fpDictionary != nullptr) {
    if (fpDictionary->GetCsvDelimiter() != 0) delimiter = fpDictionary->GetCsvDelimiter();
    if (fpDictionary->GetCsvDecimalPoint() != 0) decimalPoint = fpDictionary->GetCsvDecimalPoint();
    for (const std::string& t : fpDictionary->GetCsvMissingTexts()) missingTexts.push_back(t);
  }
  if (delimiter == 0) delimiter = CsvTokenizer::DetectDelimiter(data, size);
  if (delimiter != ',' && delimiter != ';' && delimiter != '\t')
    throw std::invalid_argument("CsvReader: the delimiter must be a comma, a semicolon or a tab");
  if (delimiter == decimalPoint)
    throw DataFileError(fileName, 0, 0, "a comma cannot be both the delimiter and the decimal point");
  fUsedDelimiter = delimiter;

  CsvTokenizer header(data, size, delimiter, fileName);
  std::vector<CsvField> fields;
  if (!header.NextRecord(fields)) throw DataFileError(fileName, 0, 0, "the file is empty; a header row of names is needed");

  std::vector<ColumnPlan> plans(fields.size());
  std::vector<std::string> names;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    std::string_view name = TrimBlanks(fields[i].fText);
    if (name.empty())
      throw DataFileError(fileName, fields[i].fLine, header.ColumnOf(fields[i]),
                          "column " + std::to_string(i + 1) + " of the header has no name");
    for (std::size_t j = 0; j < i; ++j) {
      if (Lower(plans[j].fName) == Lower(name))
        throw DataFileError(fileName, fields[i].fLine, header.ColumnOf(fields[i]),
                            "the name \"" + std::string(name) + "\" is used by columns " + std::to_string(j + 1) +
                                " and " + std::to_string(i + 1) + " (names ignore case)");
    }
    plans[i].fName = std::string(name);
    names.push_back(plans[i].fName);
    if (fpDictionary != nullptr) {
      if (const DictionaryEntry* entry = fpDictionary->Find(plans[i].fName)) plans[i].fForcedType = entry->fType;
    }
  }
  if (fpDictionary != nullptr) fpDictionary->CheckNames(names, fileName);

  auto isMissing = [&](const CsvField& field) {
    if (NumberText::IsBlank(field.fText.data(), field.fText.size())) return true;
    if (field.fbQuoted) return false;
    std::string_view t = TrimBlanks(field.fText);
    return std::find(missingTexts.begin(), missingTexts.end(), t) != missingTexts.end();
  };

  // First pass: check every record and learn each column's type and format.
  const std::size_t nColumns = plans.size();
  long nCases = 0;
  CsvTokenizer tokenizer(data, size, delimiter, fileName);
  tokenizer.NextRecord(fields);
  while (tokenizer.NextRecord(fields)) {
    if (nCases % kRecordsBetweenReports == 0) Report(fileName, tokenizer, size, 0);
    if (fields.size() != nColumns)
      throw DataFileError(fileName, tokenizer.GetRecordLine(), 0,
                          "this record has " + std::to_string(fields.size()) + " field" +
                              (fields.size() == 1 ? "" : "s") + ", but the header has " + std::to_string(nColumns));
    for (std::size_t c = 0; c < nColumns; ++c) {
      const CsvField& field = fields[c];
      ColumnPlan& plan = plans[c];
      if (isMissing(field)) {
        plan.fProfile.AddEmpty();
        continue;
      }
      if (field.fText.size() > static_cast<std::size_t>(ZORV_Dataset::MAXSTRINGWIDTH))
        throw DataFileError(fileName, field.fLine, tokenizer.ColumnOf(field),
                            "the value of \"" + plan.fName + "\" is longer than " +
                                std::to_string(ZORV_Dataset::MAXSTRINGWIDTH) + " bytes");
      plan.fProfile.AddText(field.fText.data(), field.fText.size(), field.fbQuoted, decimalPoint);
      if (plan.fForcedType == DictionaryEntry::TYPE_NUMERIC && !plan.fProfile.IsNumeric())
        throw DataFileError(fileName, field.fLine, tokenizer.ColumnOf(field),
                            "\"" + Utf8Text::Excerpt(field.fText.data(), field.fText.size()) +
                                "\" is not a number, and the dictionary makes \"" + plan.fName + "\" numeric");
      if (plan.fForcedType > 0 && field.fText.size() > static_cast<std::size_t>(plan.fForcedType))
        throw DataFileError(fileName, field.fLine, tokenizer.ColumnOf(field),
                            "the value of \"" + plan.fName + "\" is longer than the width " +
                                std::to_string(plan.fForcedType) + " that the dictionary gives");
    }
    ++nCases;
  }

  for (ColumnPlan& plan : plans) {
    if (plan.fForcedType == DictionaryEntry::TYPE_NUMERIC)
      plan.fbNumeric = true;
    else if (plan.fForcedType == DictionaryEntry::TYPE_NOT_GIVEN)
      plan.fbNumeric = plan.fProfile.IsNumeric();
    else
      plan.fbNumeric = false;
    int type = plan.fbNumeric ? 0 : (plan.fForcedType > 0 ? plan.fForcedType : plan.fProfile.StringWidth());
    plan.fColumn = dataset.AddVariable(plan.fName, type);
    if (plan.fColumn < 0) throw std::logic_error("CsvReader: a checked column could not be added");
    ZORV_Variable* variable = dataset.GetVariable(plan.fColumn);
    if (plan.fbNumeric) {
      variable->SetFormat(plan.fProfile.NumericFormat());
      variable->SetWriteFormat(plan.fProfile.NumericFormat());
      variable->SetMeasurementLevel(plan.fProfile.DefaultLevel());
    } else {
      variable->SetMeasurementLevel(ZORV_Variable::NOMINAL);
    }
  }

  // Second pass: store the values of the checked records.
  dataset.AppendCases(nCases);
  CsvTokenizer filler(data, size, delimiter, fileName);
  filler.NextRecord(fields);
  long row = 0;
  while (filler.NextRecord(fields)) {
    if (row % kRecordsBetweenReports == 0) Report(fileName, filler, size, 1);
    for (std::size_t c = 0; c < nColumns; ++c) {
      const CsvField& field = fields[c];
      if (isMissing(field)) continue;
      const ColumnPlan& plan = plans[c];
      if (plan.fbNumeric) {
        double value = 0.0;
        int intDigits = 0;
        int decimals = 0;
        NumberText::Parse(field.fText.data(), field.fText.size(), decimalPoint, value, intDigits, decimals);
        dataset.SetNum(row, plan.fColumn, value);
      } else {
        dataset.SetString(row, plan.fColumn, field.fText.data(), field.fText.size());
      }
    }
    ++row;
  }
}
