#include "app/AppVariableReader.h"

#include <algorithm>

#include "app/AppCommandReader.h"
#include "host/data/ZORV_Dataset.h"

void AppVariableReader::NeedData(AppCommandReader& reader, const ZORV_Dataset* data) {
  if (data != nullptr) return;
  const AppToken& command = reader.GetCommand().fvTokens.front();
  reader.FailAt(command, "expected data to work on, found none: LOAD a data file before " +
                             AppCommandReader::Upper(command.fText));
}

int AppVariableReader::Read(AppCommandReader& reader, const ZORV_Dataset& data, const std::string& expected) {
  const AppToken& token = reader.Peek();
  if (token.fKind != AppToken::WORD) reader.Fail(token, expected);
  int column = data.FindVarIndex(token.fText.c_str(), 0);
  if (column < 0) {
    reader.FailAt(token, "expected " + expected + ", found '" + token.fText + "' (the data have no variable of that name)");
  }
  reader.Next();
  return column;
}

std::vector<int> AppVariableReader::ReadList(AppCommandReader& reader, const ZORV_Dataset& data,
                                             const std::string& expected,
                                             const std::function<bool(const AppCommandReader&)>& ends) {
  std::vector<int> columns;
  do {
    const AppToken& at = reader.Peek();
    const int column = Read(reader, data, expected);
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
      reader.FailAt(at, "expected each variable once, found '" + at.fText + "' again");
    }
    columns.push_back(column);
  } while (reader.IsWord() && !(ends && ends(reader)));
  return columns;
}

bool AppVariableReader::OneType(const AppCommandReader& reader, const ZORV_Dataset& data, std::size_t first,
                                const std::vector<int>& columns) {
  const bool text = data.GetVariable(columns[0])->IsString();
  for (std::size_t i = 1; i < columns.size(); ++i) {
    if (data.GetVariable(columns[i])->IsString() == text) continue;
    const AppToken& at = reader.GetCommand().fvTokens[first + i];
    reader.FailAt(at, std::string("expected a ") + (text ? "string" : "numeric") +
                          " variable like the first of the list, found '" + at.fText + "'");
  }
  return text;
}
