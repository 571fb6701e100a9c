#include "host/io/CsvWriter.h"

#include <string>

#include "host/data/ZORV_Dataset.h"
#include "host/io/NumberText.h"

namespace {

// Cases written between two questions to the caller.
const long kBlock = 65536;

}  // namespace

std::string CsvWriter::Quote(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

bool CsvWriter::Write(const ZORV_Dataset& dataset, std::ostream& out, const std::function<bool(long)>& keepGoing) {
  const int columns = dataset.ColumnCount();
  for (int c = 0; c < columns; ++c) {
    const std::string name = dataset.GetVariable(c)->GetName();
    const bool plain = name.find_first_of(",;\t\"\r\n ") == std::string::npos;
    out << (c > 0 ? "," : "") << (plain ? name : Quote(name));
  }
  out << '\n';
  std::string line;
  for (long row = 0; row < dataset.GetCaseCount(); ++row) {
    if (row % kBlock == 0 && keepGoing && !keepGoing(row)) return false;
    line.clear();
    for (int c = 0; c < columns; ++c) {
      if (c > 0) line += ',';
      if (dataset.GetVariable(c)->IsString()) {
        const std::string text = dataset.GetString(row, c);
        if (!text.empty()) line += Quote(text);
      } else if (!dataset.IsSysMissing(row, c)) {
        line += NumberText::Shortest(dataset.GetNum(row, c));
      }
    }
    // A line of one empty field would read as an empty line, which is skipped.
    if (line.empty()) line = "\"\"";
    line += '\n';
    out << line;
  }
  return static_cast<bool>(out);
}
