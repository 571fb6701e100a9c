#include "app/AppDictionaryCommands.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"

namespace {

std::string Trimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

void SayDone(const std::string& what, std::size_t variables) {
  AppDataCommands::Say(what + " set for " +
                       AppDataCommands::Count(static_cast<long>(variables), "variable", "variables") + ".");
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

}  // namespace

std::vector<int> AppDictionaryCommands::ReadGroup(AppCommandReader& reader, const ZORV_Dataset& data,
                                                  const char* what,
                                                  const std::function<bool(const AppCommandReader&)>& ends) {
  const std::size_t first = reader.GetIndex();
  std::vector<int> columns = AppVariableReader::ReadList(reader, data, std::string("a variable ") + what, ends);
  const bool text = data.GetVariable(columns[0])->IsString();
  for (std::size_t i = 1; i < columns.size(); ++i) {
    if (data.GetVariable(columns[i])->IsString() == text) continue;
    const AppToken& at = reader.GetCommand().fvTokens[first + i];
    reader.FailAt(at, std::string("expected a ") + (text ? "string" : "numeric") + " variable like the first of the list, found '" +
                          at.fText + "'");
  }
  return columns;
}

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
  SayDone("Labels", labels.size());
}

void AppDictionaryCommands::Values(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("VALUES", "VALUES");
  AppVariableReader::NeedData(reader, data);
  struct Group {
    std::vector<int> fvColumns;
    std::vector<std::pair<Value, std::string>> fvLabels;
  };
  std::vector<Group> groups;
  do {
    Group group;
    group.fvColumns = ReadGroup(reader, *data, "to give value labels");
    const bool text = data->GetVariable(group.fvColumns[0])->IsString();
    const std::string expected = text ? "a text value, '/' or the end of the command (the variables are strings)"
                                      : "a number, '/' or the end of the command (the variables are numeric)";
    while (!reader.AtSubcommandEnd()) {
      const AppToken& at = reader.Peek();
      Value value = ReadValue(reader, text, expected);
      for (const auto& earlier : group.fvLabels) {
        if (Same(earlier.first, value, text)) reader.FailAt(at, "expected each value once, found " + reader.Describe(at) + " again");
      }
      group.fvLabels.emplace_back(value, reader.ExpectString("the value's label in quotes"));
    }
    groups.push_back(group);
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("'/' or the end of the command");
  std::size_t variables = 0;
  for (const Group& group : groups) {
    for (int column : group.fvColumns) {
      ZORV_Variable& variable = *data->GetVariable(column);
      variable.ValueLabels().Clear();
      for (const auto& label : group.fvLabels) {
        if (variable.IsString())
          variable.ValueLabels().Add(label.first.fText, label.second);
        else
          variable.ValueLabels().Add(label.first.fNumber, label.second);
      }
      ++variables;
    }
  }
  SayDone("Value labels", variables);
}

void AppDictionaryCommands::Missing(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("MISSING", "MISSING");
  AppVariableReader::NeedData(reader, data);
  struct Group {
    std::vector<int> fvColumns;
    std::vector<Value> fvValues;
    bool fbRange = false;
    double fLow = 0.0;
    double fHigh = 0.0;
  };
  std::vector<Group> groups;
  do {
    Group group;
    group.fvColumns = ReadGroup(reader, *data, "to give missing values", [](const AppCommandReader& r) {
      return r.IsKeyword("NONE") || r.IsKeyword("LOWEST");
    });
    const bool text = data->GetVariable(group.fvColumns[0])->IsString();
    if (reader.AcceptKeyword("NONE")) {
      groups.push_back(group);
      continue;
    }
    const std::string expected = text ? "a text value or NONE (the variables are strings)"
                                      : "a number, a range (low THRU high) or NONE (the variables are numeric)";
    if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), expected);
    while (!reader.AtSubcommandEnd()) {
      const AppToken& at = reader.Peek();
      const bool lowest = !text && reader.IsKeyword("LOWEST");
      if (!lowest) group.fvValues.push_back(ReadValue(reader, text, expected));
      if (lowest || (!text && reader.IsKeyword("THRU"))) {
        if (group.fbRange) reader.FailAt(at, "expected one range of missing values at most, found a second");
        if (lowest) reader.Next();
        reader.ExpectKeyword("THRU", "THRU after LOWEST");
        group.fbRange = true;
        group.fLow = lowest ? -HUGE_VAL : group.fvValues.back().fNumber;
        if (!lowest) group.fvValues.pop_back();
        group.fHigh = reader.AcceptKeyword("HIGHEST") ? HUGE_VAL : reader.ExpectNumber("a number or HIGHEST");
        if (group.fHigh < group.fLow) {
          reader.FailAt(at, "expected a range whose low end is not above its high end, found " + reader.Describe(at) +
                                " THRU a lower value");
        }
      }
    }
    groups.push_back(group);
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("'/' or the end of the command");
  std::size_t variables = 0;
  for (const Group& group : groups) {
    for (int column : group.fvColumns) {
      ZORV_Variable& variable = *data->GetVariable(column);
      variable.ClearMissing();
      for (const Value& value : group.fvValues) {
        if (variable.IsString())
          variable.AddMissingString(value.fText);
        else
          variable.AddMissingValue(value.fNumber);
      }
      if (group.fbRange) variable.SetMissingRange(group.fLow, group.fHigh);
      ++variables;
    }
  }
  SayDone("Missing values", variables);
}

void AppDictionaryCommands::Level(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("LEVEL", "LEVEL");
  AppVariableReader::NeedData(reader, data);
  std::vector<std::pair<std::vector<int>, int>> groups;
  do {
    const std::size_t first = reader.GetIndex();
    std::vector<int> columns =
        AppVariableReader::ReadList(reader, *data, "a variable to give a level", [](const AppCommandReader& r) {
          return r.IsKeyword("NOMINAL") || r.IsKeyword("ORDINAL") || r.IsKeyword("SCALE");
        });
    const AppToken& at = reader.Peek();
    int level = 0;
    if (reader.IsKeyword("NOMINAL")) level = ZORV_Variable::NOMINAL;
    else if (reader.IsKeyword("ORDINAL")) level = ZORV_Variable::ORDINAL;
    else if (reader.IsKeyword("SCALE")) level = ZORV_Variable::SCALE;
    else reader.Fail(at, "a variable, NOMINAL, ORDINAL or SCALE");
    reader.Next();
    for (std::size_t i = 0; i < columns.size() && level == ZORV_Variable::SCALE; ++i) {
      if (!data->GetVariable(columns[i])->IsString()) continue;
      const AppToken& name = reader.GetCommand().fvTokens[first + i];
      reader.FailAt(name, "expected a numeric variable for SCALE, found the string variable '" + name.fText + "'");
    }
    groups.emplace_back(columns, level);
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("'/' or the end of the command");
  std::size_t variables = 0;
  for (const auto& group : groups) {
    for (int column : group.first) data->GetVariable(column)->SetMeasurementLevel(group.second);
    variables += group.first.size();
  }
  SayDone("Measurement levels", variables);
}

void AppDictionaryCommands::Format(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("FORMAT", "FORMAT");
  AppVariableReader::NeedData(reader, data);
  std::vector<std::pair<std::vector<int>, ZORV_Format>> groups;
  do {
    const std::size_t first = reader.GetIndex();
    // The list ends at the format: the last word before '/' or the end.
    std::vector<int> columns =
        AppVariableReader::ReadList(reader, *data, "a numeric variable", [](const AppCommandReader& r) {
          return r.Peek(1).fKind == AppToken::END || r.IsSymbol('/', 1);
        });
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (!data->GetVariable(columns[i])->IsString()) continue;
      const AppToken& name = reader.GetCommand().fvTokens[first + i];
      reader.FailAt(name, "expected a numeric variable, found the string variable '" + name.fText + "'");
    }
    const AppToken& at = reader.Peek();
    ZORV_Format format;
    if (at.fKind != AppToken::WORD || !ZORV_Format::Parse(at.fText, format) || format.IsString()) {
      reader.Fail(at, "a variable or a numeric format (F, E, COMMA, DOLLAR, DOT or PCT, such as F8.2)");
    }
    reader.Next();
    groups.emplace_back(columns, format);
  } while (reader.AcceptSymbol('/'));
  reader.ExpectEnd("'/' or the end of the command");
  std::size_t variables = 0;
  for (const auto& group : groups) {
    for (int column : group.first) {
      data->GetVariable(column)->SetFormat(group.second);
      data->GetVariable(column)->SetWriteFormat(group.second);
    }
    variables += group.first.size();
  }
  SayDone("Formats", variables);
}
