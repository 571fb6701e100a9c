#include "app/AppDictionaryCommands.h"

#include <cmath>
#include <string>
#include <utility>

#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"

namespace {

using Ends = std::function<bool(const AppCommandReader&)>;

std::string Trimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

// A value a numeric or string variable can take, as typed.
struct Value {
  double fNumber = 0.0;
  std::string fText;
};

Value ReadValue(AppCommandReader& reader, bool text, const std::string& expected) {
  Value value;
  const AppToken& at = reader.Peek();
  if (text ? at.fKind != AppToken::STRING : at.fKind != AppToken::NUMBER) reader.Fail(at, expected);
  value.fNumber = at.fNumber;
  value.fText = Trimmed(at.fText);
  reader.Next();
  return value;
}

bool Same(const Value& a, const Value& b, bool text) { return text ? a.fText == b.fText : a.fNumber == b.fNumber; }

// Refuses the string variables of a list; `expected` says what they should be.
void NoStrings(const AppCommandReader& reader, const ZORV_Dataset& data, std::size_t first,
               const std::vector<int>& columns, const std::string& expected) {
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (!data.GetVariable(columns[i])->IsString()) continue;
    const AppToken& at = reader.GetCommand().fvTokens[first + i];
    reader.FailAt(at, "expected " + expected + ", found the string variable '" + at.fText + "'");
  }
}

template <typename Setting>
using Groups = std::vector<std::pair<std::vector<int>, Setting>>;

// Reads "variable... setting [/ ...]" to the end of the command: the list
// ends where `ends` says, and `readSetting(first, columns)` reads the
// setting after it (first: the token of the list's first variable).
template <typename Setting, typename ReadSetting>
Groups<Setting> ReadGroups(AppCommandReader& reader, const ZORV_Dataset& data, const std::string& expected,
                           const Ends& ends, ReadSetting readSetting) {
  Groups<Setting> groups;
  do {
    const std::size_t first = reader.GetIndex();
    std::vector<int> columns = AppVariableReader::ReadList(reader, data, expected, ends);
    Setting setting = readSetting(first, columns);
    groups.emplace_back(std::move(columns), std::move(setting));
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("'/' or the end of the command");
  return groups;
}

// Gives every variable of every group its setting, and says how many there were.
template <typename Setting, typename Apply>
void ApplyGroups(ZORV_Dataset& data, const Groups<Setting>& groups, const std::string& what, Apply apply) {
  long variables = 0;
  for (const auto& group : groups) {
    for (int column : group.first) apply(*data.GetVariable(column), group.second);
    variables += static_cast<long>(group.first.size());
  }
  AppDataCommands::Say(what + " set for " + AppDataCommands::Count(variables, "variable", "variables") + ".");
}

using Labels = std::vector<std::pair<Value, std::string>>;

struct MissingValues {
  std::vector<Value> fvValues;
  bool fbRange = false;
  double fLow = 0.0;
  double fHigh = 0.0;
};

MissingValues ReadMissingValues(AppCommandReader& reader, bool text) {
  MissingValues missing;
  if (reader.AcceptKeyword("NONE")) return missing;
  const std::string expected = text ? "a text value or NONE (the variables are strings)"
                                    : "a number, a range (low THRU high) or NONE (the variables are numeric)";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), expected);
  while (!reader.AtSubcommandEnd()) {
    const AppToken& at = reader.Peek();
    const bool lowest = !text && reader.IsKeyword("LOWEST");
    if (!lowest) missing.fvValues.push_back(ReadValue(reader, text, expected));
    if (!lowest && (text || !reader.IsKeyword("THRU"))) continue;
    if (missing.fbRange) reader.FailAt(at, "expected one range of missing values at most, found a second");
    if (lowest) reader.Next();
    reader.ExpectKeyword("THRU", "THRU after LOWEST");
    missing.fbRange = true;
    missing.fLow = lowest ? -HUGE_VAL : missing.fvValues.back().fNumber;
    if (!lowest) missing.fvValues.pop_back();
    missing.fHigh = reader.AcceptKeyword("HIGHEST") ? HUGE_VAL : reader.ExpectNumber("a number or HIGHEST");
    if (missing.fHigh < missing.fLow) {
      reader.FailAt(at, "expected a range whose low end is not above its high end, found " + reader.Describe(at) +
                            " THRU a lower value");
    }
  }
  return missing;
}

}  // namespace

void AppDictionaryCommands::Label(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("LABEL", "LABEL");
  AppVariableReader::NeedData(reader, data);
  std::vector<std::pair<int, std::string>> labels;
  do {
    const AppToken& at = reader.Peek();
    const int column = AppVariableReader::Read(reader, *data, "a variable to label");
    for (const auto& earlier : labels) {
      if (earlier.first == column) reader.FailAt(at, "expected each variable once, found '" + at.fText + "' again");
    }
    labels.emplace_back(column, reader.ExpectString("the variable's label in quotes"));
  } while (!reader.AtEnd());
  for (const auto& label : labels) data->GetVariable(label.first)->SetLabel(label.second);
  AppDataCommands::Say("Labels set for " +
                       AppDataCommands::Count(static_cast<long>(labels.size()), "variable", "variables") + ".");
}

void AppDictionaryCommands::Values(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("VALUES", "VALUES");
  AppVariableReader::NeedData(reader, data);
  const Groups<Labels> groups = ReadGroups<Labels>(
      reader, *data, "a variable to give value labels", nullptr, [&](std::size_t first, const std::vector<int>& columns) {
        const bool text = AppVariableReader::OneType(reader, *data, first, columns);
        const std::string expected = text ? "a text value, '/' or the end of the command (the variables are strings)"
                                          : "a number, '/' or the end of the command (the variables are numeric)";
        Labels labels;
        while (!reader.AtSubcommandEnd()) {
          const AppToken& at = reader.Peek();
          Value value = ReadValue(reader, text, expected);
          for (const auto& earlier : labels) {
            if (Same(earlier.first, value, text))
              reader.FailAt(at, "expected each value once, found " + reader.Describe(at) + " again");
          }
          labels.emplace_back(value, reader.ExpectString("the value's label in quotes"));
        }
        return labels;
      });
  ApplyGroups(*data, groups, "Value labels", [](ZORV_Variable& variable, const Labels& labels) {
    variable.ValueLabels().Clear();
    for (const auto& label : labels) {
      if (variable.IsString())
        variable.ValueLabels().Add(label.first.fText, label.second);
      else
        variable.ValueLabels().Add(label.first.fNumber, label.second);
    }
  });
}

void AppDictionaryCommands::Missing(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("MISSING", "MISSING");
  AppVariableReader::NeedData(reader, data);
  const Groups<MissingValues> groups = ReadGroups<MissingValues>(
      reader, *data, "a variable to give missing values",
      [](const AppCommandReader& r) { return r.IsKeyword("NONE") || r.IsKeyword("LOWEST"); },
      [&](std::size_t first, const std::vector<int>& columns) {
        return ReadMissingValues(reader, AppVariableReader::OneType(reader, *data, first, columns));
      });
  ApplyGroups(*data, groups, "Missing values", [](ZORV_Variable& variable, const MissingValues& missing) {
    variable.ClearMissing();
    for (const Value& value : missing.fvValues) {
      if (variable.IsString())
        variable.AddMissingString(value.fText);
      else
        variable.AddMissingValue(value.fNumber);
    }
    if (missing.fbRange) variable.SetMissingRange(missing.fLow, missing.fHigh);
  });
}

void AppDictionaryCommands::Level(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("LEVEL", "LEVEL");
  AppVariableReader::NeedData(reader, data);
  const Groups<int> groups = ReadGroups<int>(
      reader, *data, "a variable to give a level",
      [](const AppCommandReader& r) { return r.IsKeyword("NOMINAL") || r.IsKeyword("ORDINAL") || r.IsKeyword("SCALE"); },
      [&](std::size_t first, const std::vector<int>& columns) {
        int level = 0;
        if (reader.IsKeyword("NOMINAL")) level = ZORV_Variable::NOMINAL;
        else if (reader.IsKeyword("ORDINAL")) level = ZORV_Variable::ORDINAL;
        else if (reader.IsKeyword("SCALE")) level = ZORV_Variable::SCALE;
        else reader.Fail(reader.Peek(), "a variable, NOMINAL, ORDINAL or SCALE");
        reader.Next();
        if (level == ZORV_Variable::SCALE) NoStrings(reader, *data, first, columns, "a numeric variable for SCALE");
        return level;
      });
  ApplyGroups(*data, groups, "Measurement levels",
              [](ZORV_Variable& variable, int level) { variable.SetMeasurementLevel(level); });
}

void AppDictionaryCommands::Format(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("FORMAT", "FORMAT");
  AppVariableReader::NeedData(reader, data);
  // The list ends at the format: the last word before '/' or the end.
  const Groups<ZORV_Format> groups = ReadGroups<ZORV_Format>(
      reader, *data, "a numeric variable",
      [](const AppCommandReader& r) { return r.Peek(1).fKind == AppToken::END || r.IsSymbol('/', 1); },
      [&](std::size_t first, const std::vector<int>& columns) {
        NoStrings(reader, *data, first, columns, "a numeric variable");
        const AppToken& at = reader.Peek();
        ZORV_Format format;
        if (at.fKind != AppToken::WORD || !ZORV_Format::Parse(at.fText, format) || format.IsString()) {
          reader.Fail(at, "a variable or a numeric format (F, E, COMMA, DOLLAR, DOT or PCT, such as F8.2)");
        }
        reader.Next();
        return format;
      });
  ApplyGroups(*data, groups, "Formats", [](ZORV_Variable& variable, const ZORV_Format& format) {
    variable.SetFormat(format);
    variable.SetWriteFormat(format);
  });
}
