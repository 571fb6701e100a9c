#include "app/AppHostCommands.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <vector>

#include "app/AppCommandReader.h"
#include "app/AppVariableReader.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/io/DataFileError.h"
#include "host/io/DataFileLoader.h"

namespace {

struct DebugSwitch {
  const char* fName;
  bool* fpValue;
};

// In the order the help and the messages list them.
const DebugSwitch kDebugSwitches[] = {
    {"display_settings", &display_settings},   {"display_metadata", &display_metadata},
    {"display_component", &display_component}, {"display_output", &display_output},
    {"write_text_data", &write_text_data},     {"aggreg_random", &aggreg_random},
};

const char* const kDebugSwitchList =
    "display_settings, display_metadata, display_component, display_output, write_text_data or aggreg_random";

}  // namespace

std::string AppHostCommands::NotRegularFile(const std::string& path) {
  std::error_code ec;
  const std::filesystem::file_status status = std::filesystem::status(path, ec);
  if (ec || !std::filesystem::exists(status) || std::filesystem::is_regular_file(status)) return std::string();
  if (std::filesystem::is_directory(status)) return "a folder";
  if (std::filesystem::is_fifo(status)) return "a pipe";
  if (std::filesystem::is_socket(status)) return "a socket";
  return "a device";
}

std::string AppHostCommands::ResolvePath(const std::string& baseDir, const std::string& name) {
  std::filesystem::path path(name);
  if (path.is_absolute() || baseDir.empty()) return path.lexically_normal().string();
  return (std::filesystem::path(baseDir) / path).lexically_normal().string();
}

std::unique_ptr<ZORV_Dataset> AppHostCommands::Load(AppCommandReader& reader, const std::string& baseDir,
                                                    std::string& summary, std::vector<std::string>& files) {
  reader.ExpectKeyword("LOAD", "LOAD");
  const AppToken& fileToken = reader.Peek();
  std::string file = reader.ExpectString("the data file's name in quotes");
  if (file.empty()) reader.Fail(fileToken, "the data file's name in quotes");
  std::string dictionary;
  bool haveDictionary = false;
  while (!reader.AtEnd()) {
    if (!reader.IsKeyword("DICTIONARY") || !reader.IsSymbol('=', 1) || haveDictionary) {
      reader.Fail(reader.Peek(), haveDictionary ? "the end of the command" : "DICTIONARY= or the end of the command");
    }
    reader.Next();
    reader.Next();
    const AppToken& dictionaryToken = reader.Peek();
    dictionary = reader.ExpectString("the dictionary file's name in quotes");
    if (dictionary.empty()) reader.Fail(dictionaryToken, "the dictionary file's name in quotes");
    haveDictionary = true;
  }

  std::string path = ResolvePath(baseDir, file);
  const std::string dictionaryPath = haveDictionary ? ResolvePath(baseDir, dictionary) : std::string();
  for (const std::string& read : {path, dictionaryPath}) {
    const std::string what = NotRegularFile(read);
    if (!read.empty() && !what.empty()) {
      reader.FailAt(fileToken, "the data cannot be loaded: " + read + " is " + what + ", not a file of data");
    }
  }
  files = {path, haveDictionary ? dictionaryPath : DataFileLoader::DictionaryPathFor(path)};
  std::unique_ptr<ZORV_Dataset> data(new ZORV_Dataset());
  try {
    if (haveDictionary) {
      DataFileLoader::Load(path, dictionaryPath, *data);
    } else {
      DataFileLoader::Load(path, *data);
    }
  } catch (const DataFileError& e) {
    reader.FailAt(fileToken, std::string("the data cannot be loaded: ") + e.what());
  } catch (const std::bad_alloc&) {
    reader.FailAt(fileToken, "the data cannot be loaded: " + path + " needs more memory than there is");
  } catch (const std::exception& e) {
    reader.FailAt(fileToken, "the data cannot be loaded from " + path + ": " + e.what());
  }
  long cases = data->GetCaseCount();
  int variables = data->ColumnCount();
  summary = std::to_string(cases) + (cases == 1 ? " case" : " cases") + " and " + std::to_string(variables) +
            (variables == 1 ? " variable" : " variables") + " read from " + path + ".";
  return data;
}

void AppHostCommands::Set(AppCommandReader& reader) {
  reader.ExpectKeyword("SET", "SET");
  // Variables and values, in tables and in captions.
  ZORV_Session& session = ZORV_Session::Current();
  long captionVariables = 0, captionValues = 0, tableVariables = 0, tableValues = 0;
  session.GetDisplayOptions(&captionVariables, &captionValues, &tableVariables, &tableValues);
  const std::string allowed = "VARIABLES=, VALUES=, TABLEVARIABLES=, TABLEVALUES=, CAPTIONVARIABLES= or CAPTIONVALUES=";
  std::vector<std::string> seen;
  if (reader.AtEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtEnd()) {
    const AppToken& at = reader.Peek();
    if (!reader.IsSetting()) reader.Fail(at, allowed);
    std::string name = AppCommandReader::Upper(at.fText);
    bool known = name == "VARIABLES" || name == "VALUES" || name == "TABLEVARIABLES" || name == "TABLEVALUES" ||
                 name == "CAPTIONVARIABLES" || name == "CAPTIONVALUES";
    if (!known) reader.Fail(at, allowed);
    if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
      reader.FailAt(at, "expected each setting once, found " + name + "= again");
    }
    seen.push_back(name);
    reader.Next();
    reader.Next();
    const AppToken& valueToken = reader.Peek();
    long value = 0;
    if (reader.IsKeyword("NAMES")) value = ZORV_Session::NAMES;
    else if (reader.IsKeyword("LABELS")) value = ZORV_Session::LABELS;
    else if (reader.IsKeyword("BOTH")) value = ZORV_Session::BOTH;
    else reader.Fail(valueToken, "NAMES, LABELS or BOTH");
    reader.Next();
    bool variables = name.find("VARIABLES") != std::string::npos;
    bool tables = name.compare(0, 7, "CAPTION") != 0;
    bool captions = name.compare(0, 5, "TABLE") != 0;
    if (variables) {
      if (tables) tableVariables = value;
      if (captions) captionVariables = value;
    } else {
      if (tables) tableValues = value;
      if (captions) captionValues = value;
    }
  }
  session.SetVariableDisplay(static_cast<ZORV_Session::Display>(tableVariables),
                             static_cast<ZORV_Session::Display>(captionVariables));
  session.SetValueDisplay(static_cast<ZORV_Session::Display>(tableValues),
                          static_cast<ZORV_Session::Display>(captionValues));
}

void AppHostCommands::Split(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("SPLIT", "SPLIT");
  if (reader.AcceptKeyword("OFF")) {
    reader.ExpectEnd("the end of the command");
    if (data != nullptr) data->SetSplitVars(std::vector<int>());
    return;
  }
  reader.ExpectKeyword("BY", "BY or OFF");
  AppVariableReader::NeedData(reader, data);
  std::vector<int> columns;
  bool layered = true;
  while (!reader.AtEnd()) {
    // LAYERED or SEPARATE as the last word says how the splits are shown.
    if ((reader.IsKeyword("LAYERED") || reader.IsKeyword("SEPARATE")) && reader.Peek(1).fKind == AppToken::END &&
        !columns.empty()) {
      layered = reader.IsKeyword("LAYERED");
      reader.Next();
      break;
    }
    const AppToken& at = reader.Peek();
    int column = AppVariableReader::Read(reader, *data, columns.empty() ? "a split variable" : "a split variable, LAYERED, SEPARATE or the end of the command");
    if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
      reader.FailAt(at, "expected each split variable once, found '" + at.fText + "' again");
    }
    if (column == data->GetWeightVarIndex()) {
      reader.FailAt(at, "expected a split variable, found the weight variable '" + at.fText + "'");
    }
    columns.push_back(column);
  }
  if (columns.empty()) reader.Fail(reader.Peek(), "a split variable");
  if (!data->SetSplitVars(columns)) {
    reader.FailAt(reader.GetCommand().fvTokens.front(), "the split variables cannot be used");
  }
  data->SetSplitsInOneTable(layered);
}

void AppHostCommands::Weight(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("WEIGHT", "WEIGHT");
  if (reader.AcceptKeyword("OFF")) {
    reader.ExpectEnd("the end of the command");
    if (data != nullptr) data->SetWeightVar(-1);
    return;
  }
  reader.ExpectKeyword("BY", "BY or OFF");
  AppVariableReader::NeedData(reader, data);
  const AppToken& at = reader.Peek();
  int column = AppVariableReader::Read(reader, *data, "a numeric weight variable");
  reader.ExpectEnd("the end of the command (one weight variable)");
  const ZORV_Variable* variable = data->GetVariable(column);
  if (variable == nullptr || variable->GetType() != 0) {
    reader.FailAt(at, "expected a numeric weight variable, found the string variable '" + at.fText + "'");
  }
  for (int i = 0; i < data->GetNSplitVars(); ++i) {
    if (data->GetSplitVar(i) == column) {
      reader.FailAt(at, "expected a weight variable, found the split variable '" + at.fText + "'");
    }
  }
  if (!data->SetWeightVar(column)) reader.FailAt(at, "the weight variable cannot be used");
}

void AppHostCommands::ResetDebugSwitches() {
  for (const DebugSwitch& item : kDebugSwitches) *item.fpValue = false;
}

void AppHostCommands::Debug(AppCommandReader& reader, std::string& summary) {
  reader.ExpectKeyword("DEBUG", "DEBUG");
  const std::string expectFirst = std::string("a debug switch (") + kDebugSwitchList + ") or ALL";
  const std::string expectMore = std::string("a debug switch (") + kDebugSwitchList + "), ON or OFF";
  std::vector<const DebugSwitch*> chosen;
  bool all = false;
  bool on = false;
  while (true) {
    const AppToken& at = reader.Peek();
    if (!chosen.empty() || all) {
      if (reader.IsKeyword("ON") || reader.IsKeyword("OFF")) {
        on = reader.IsKeyword("ON");
        reader.Next();
        reader.ExpectEnd("the end of the command");
        break;
      }
      if (all) reader.Fail(at, "ON or OFF");
    }
    if (chosen.empty() && reader.IsKeyword("ALL")) {
      all = true;
      reader.Next();
      continue;
    }
    const std::string& expected = chosen.empty() ? expectFirst : expectMore;
    if (at.fKind != AppToken::WORD) reader.Fail(at, expected);
    const DebugSwitch* found = nullptr;
    const std::string name = AppCommandReader::Upper(at.fText);
    for (const DebugSwitch& item : kDebugSwitches) {
      if (AppCommandReader::Upper(item.fName) == name) found = &item;
    }
    if (found == nullptr) {
      reader.FailAt(at, "expected " + expected + ", found '" + at.fText + "'");
    }
    if (std::find(chosen.begin(), chosen.end(), found) != chosen.end()) {
      reader.FailAt(at, "expected each debug switch once, found '" + at.fText + "' again");
    }
    chosen.push_back(found);
    reader.Next();
  }
  if (all) {
    for (const DebugSwitch& item : kDebugSwitches) chosen.push_back(&item);
  }
  for (const DebugSwitch* item : chosen) *item->fpValue = on;

  std::string names;
  for (const DebugSwitch& item : kDebugSwitches) {
    if (!*item.fpValue) continue;
    names += (names.empty() ? "" : ", ") + std::string(item.fName);
  }
  summary = names.empty() ? std::string("All debug switches are off.") : "Debug switches on: " + names + ".";
}
