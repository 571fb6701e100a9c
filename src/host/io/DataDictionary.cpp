#include "host/io/DataDictionary.h"

#include <cctype>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "host/data/ZORV_Dataset.h"
#include "host/io/DataFileError.h"
#include "host/io/NumberText.h"
#include "host/io/Utf8Text.h"

using nlohmann::json;

namespace {

std::string Lower(const std::string& s) {
  std::string out = s;
  for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

// A key as it appears in a JSON pointer.
std::string PointerPart(const std::string& key) {
  std::string out;
  for (char c : key) {
    if (c == '~')
      out += "~0";
    else if (c == '/')
      out += "~1";
    else
      out += c;
  }
  return out;
}

const char* TypeName(const json& value) {
  switch (value.type()) {
    case json::value_t::null: return "null";
    case json::value_t::boolean: return "a boolean";
    case json::value_t::string: return "a string";
    case json::value_t::array: return "an array";
    case json::value_t::object: return "an object";
    default: return "a number";
  }
}

class Walker {
 public:
  explicit Walker(const std::string& file) : fFile(file) {}

  [[noreturn]] void Fail(const std::string& path, const std::string& message) const {
    throw DataFileError(fFile, 0, 0, message + " (at " + (path.empty() ? "/" : path) + ")");
  }
  [[noreturn]] void FailVariable(const std::string& name, const std::string& path, const std::string& message) const {
    Fail(path, "variable \"" + name + "\": " + message);
  }

  void Expect(const json& value, json::value_t type, const char* what, const std::string& path) const {
    bool ok = value.type() == type ||
              (type == json::value_t::number_float && value.is_number());
    if (!ok) Fail(path, std::string("expected ") + what + ", found " + TypeName(value));
  }

  const std::string& File() const { return fFile; }

 private:
  std::string fFile;
};

double RangeEnd(const Walker& w, const json& value, const std::string& name, const std::string& path, bool low) {
  if (value.is_number()) return value.get<double>();
  if (value.is_string()) {
    std::string word = Lower(value.get<std::string>());
    if (word == "lowest") return -HUGE_VAL;
    if (word == "highest") return HUGE_VAL;
    double number = 0.0;
    if (NumberText::Parse(value.get<std::string>(), number)) return number;
  }
  w.FailVariable(name, path,
                 std::string("the ") + (low ? "low" : "high") +
                     " end of a missing range must be a number, \"lowest\" or \"highest\"");
}

DictionaryEntry ReadEntry(const Walker& w, const std::string& name, const json& description, const std::string& path) {
  DictionaryEntry entry;
  entry.fName = name;
  entry.fPath = path;
  if (!description.is_object())
    w.FailVariable(name, path, std::string("expected an object, found ") + TypeName(description));
  bool widthGiven = false;
  int width = 0;
  for (auto it = description.begin(); it != description.end(); ++it) {
    const std::string& key = it.key();
    const json& value = it.value();
    std::string at = path + "/" + PointerPart(key);
    if (key == "type") {
      if (!value.is_string()) w.FailVariable(name, at, std::string("\"type\" must be a string, found ") + TypeName(value));
      std::string word = Lower(value.get<std::string>());
      if (word == "numeric")
        entry.fType = DictionaryEntry::TYPE_NUMERIC;
      else if (word == "string")
        entry.fType = DictionaryEntry::TYPE_STRING_FROM_DATA;
      else
        w.FailVariable(name, at, "\"type\" must be \"numeric\" or \"string\", not \"" + value.get<std::string>() + "\"");
    } else if (key == "width") {
      if (!value.is_number_integer() || value.get<long long>() < 1 ||
          value.get<long long>() > ZORV_Dataset::MAXSTRINGWIDTH)
        w.FailVariable(name, at, "\"width\" must be a whole number from 1 to " +
                                     std::to_string(ZORV_Dataset::MAXSTRINGWIDTH));
      widthGiven = true;
      width = static_cast<int>(value.get<long long>());
    } else if (key == "label") {
      if (!value.is_string()) w.FailVariable(name, at, std::string("\"label\" must be a string, found ") + TypeName(value));
      entry.fbHasLabel = true;
      entry.fLabel = value.get<std::string>();
    } else if (key == "level") {
      if (!value.is_string()) w.FailVariable(name, at, std::string("\"level\" must be a string, found ") + TypeName(value));
      std::string word = Lower(value.get<std::string>());
      if (word == "nominal")
        entry.fLevel = 1;
      else if (word == "ordinal")
        entry.fLevel = 2;
      else if (word == "scale")
        entry.fLevel = 3;
      else
        w.FailVariable(name, at,
                       "\"level\" must be \"nominal\", \"ordinal\" or \"scale\", not \"" + value.get<std::string>() + "\"");
    } else if (key == "format" || key == "write_format") {
      if (!value.is_string())
        w.FailVariable(name, at, "\"" + key + "\" must be a string such as \"F8.2\", found " + TypeName(value));
      ZORV_Format format;
      if (!ZORV_Format::Parse(value.get<std::string>(), format))
        w.FailVariable(name, at, "\"" + value.get<std::string>() + "\" is not a format (such as F8.2, E10.3, COMMA9.1, A20)");
      if (key == "format") {
        entry.fbHasFormat = true;
        entry.fFormat = format;
      } else {
        entry.fbHasWriteFormat = true;
        entry.fWriteFormat = format;
      }
    } else if (key == "value_labels") {
      if (!value.is_object())
        w.FailVariable(name, at, std::string("\"value_labels\" must be an object of value: label, found ") + TypeName(value));
      for (auto label = value.begin(); label != value.end(); ++label) {
        if (!label.value().is_string())
          w.FailVariable(name, at + "/" + PointerPart(label.key()),
                         std::string("a value label must be a string, found ") + TypeName(label.value()));
        entry.fvValueLabels.emplace_back(label.key(), label.value().get<std::string>());
      }
    } else if (key == "missing") {
      if (!value.is_object())
        w.FailVariable(name, at, std::string("\"missing\" must be an object, found ") + TypeName(value));
      for (auto part = value.begin(); part != value.end(); ++part) {
        std::string partAt = at + "/" + PointerPart(part.key());
        if (part.key() == "values") {
          if (!part.value().is_array())
            w.FailVariable(name, partAt, std::string("\"values\" must be an array, found ") + TypeName(part.value()));
          std::size_t index = 0;
          for (const json& item : part.value()) {
            DictionaryEntry::Value v;
            if (item.is_number()) {
              v.fbNumber = true;
              v.fNumber = item.get<double>();
            } else if (item.is_string()) {
              v.fText = item.get<std::string>();
            } else {
              w.FailVariable(name, partAt + "/" + std::to_string(index),
                             std::string("a missing value must be a number or a string, found ") + TypeName(item));
            }
            entry.fvMissingValues.push_back(v);
            ++index;
          }
        } else if (part.key() == "range") {
          if (!part.value().is_array() || part.value().size() != 2)
            w.FailVariable(name, partAt, "\"range\" must be an array of two ends, [low, high]");
          entry.fbHasMissingRange = true;
          entry.fMissingLow = RangeEnd(w, part.value()[0], name, partAt + "/0", true);
          entry.fMissingHigh = RangeEnd(w, part.value()[1], name, partAt + "/1", false);
          if (entry.fMissingLow > entry.fMissingHigh)
            w.FailVariable(name, partAt, "the low end of the missing range is above the high end");
        } else {
          w.FailVariable(name, partAt, "unknown key \"" + part.key() + "\" in \"missing\" (known: values, range)");
        }
      }
    } else {
      w.FailVariable(name, at,
                     "unknown key \"" + key +
                         "\" (known: type, width, label, level, format, write_format, value_labels, missing)");
    }
  }
  if (widthGiven) {
    if (entry.fType == DictionaryEntry::TYPE_NUMERIC)
      w.FailVariable(name, path + "/width", "a numeric variable has no width");
    entry.fType = width;
  }
  return entry;
}

// Line and column of a 1-based byte position, for a syntax error.
void LineAndColumn(const std::string& text, std::size_t byte, long& line, long& column) {
  line = 1;
  std::size_t lineStart = 0;
  std::size_t end = std::min(byte == 0 ? 0 : byte - 1, text.size());
  for (std::size_t i = 0; i < end; ++i) {
    if (text[i] == '\n') {
      ++line;
      lineStart = i + 1;
    }
  }
  column = static_cast<long>(Utf8Text::CharCount(text.data() + lineStart, end - lineStart)) + 1;
}

}  // namespace

void DataDictionary::Load(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw DataFileError(path, 0, 0, "cannot open the dictionary file");
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throw DataFileError(path, 0, 0, "cannot read the dictionary file");
  LoadText(text.str(), path);
}

void DataDictionary::LoadText(const std::string& text, const std::string& fileName) {
  fFileName = fileName;
  fvEntries.clear();
  fCsvDelimiter = 0;
  fCsvDecimalPoint = 0;
  fvCsvMissingTexts.clear();

  std::size_t bad = 0;
  if (!Utf8Text::Validate(text.data(), text.size(), bad)) {
    long line = 0;
    long column = 0;
    LineAndColumn(text, bad + 1, line, column);
    throw DataFileError(fileName, line, column, "the dictionary is not valid UTF-8 text");
  }
  // The parser keeps the last of two equal keys silently; a dictionary that
  // says two things about one variable is refused instead.
  std::vector<std::set<std::string>> keysAtDepth;
  std::string duplicate;
  json::parser_callback_t watchKeys = [&](int, json::parse_event_t event, json& parsed) {
    if (event == json::parse_event_t::object_start) {
      keysAtDepth.emplace_back();
    } else if (event == json::parse_event_t::object_end) {
      if (!keysAtDepth.empty()) keysAtDepth.pop_back();
    } else if (event == json::parse_event_t::key && !keysAtDepth.empty() && parsed.is_string()) {
      if (!keysAtDepth.back().insert(parsed.get<std::string>()).second && duplicate.empty())
        duplicate = parsed.get<std::string>();
    }
    return true;
  };
  json root;
  try {
    root = json::parse(text, watchKeys);
  } catch (const json::parse_error& e) {
    long line = 0;
    long column = 0;
    LineAndColumn(text, e.byte, line, column);
    std::string what = e.what();
    // The library's message starts with its own error code; keep the rest.
    std::size_t detail = what.find("syntax error");
    throw DataFileError(fileName, line, column,
                        "not valid JSON: " + (detail == std::string::npos ? what : what.substr(detail)));
  } catch (const json::out_of_range& e) {
    // A number too large for a double; the library names it but not where.
    const std::string what = e.what();
    const std::size_t open = what.find("parsing '");
    const std::size_t close = open == std::string::npos ? open : what.find('\'', open + 9);
    const std::string number = close == std::string::npos ? std::string() : what.substr(open + 9, close - open - 9);
    long line = 0;
    long column = 0;
    const std::size_t at = number.empty() ? std::string::npos : text.find(number);
    if (at != std::string::npos) LineAndColumn(text, at + 1, line, column);
    throw DataFileError(fileName, line, column,
                        number.empty() ? std::string("a number is too large")
                                       : "the number " + number + " is too large");
  }

  Walker w(fileName);
  if (!duplicate.empty()) w.Fail("", "the key \"" + duplicate + "\" is given twice in one object");
  w.Expect(root, json::value_t::object, "an object with \"variables\"", "");
  for (auto it = root.begin(); it != root.end(); ++it) {
    const std::string at = "/" + PointerPart(it.key());
    if (it.key() == "variables") {
      w.Expect(it.value(), json::value_t::object, "an object of variable name: description", at);
      for (auto v = it.value().begin(); v != it.value().end(); ++v) {
        if (v.key().empty()) w.Fail(at, "a variable name is empty");
        if (Find(v.key()) != nullptr)
          w.FailVariable(v.key(), at + "/" + PointerPart(v.key()), "described twice (names ignore case)");
        fvEntries.push_back(ReadEntry(w, v.key(), v.value(), at + "/" + PointerPart(v.key())));
      }
    } else if (it.key() == "csv") {
      w.Expect(it.value(), json::value_t::object, "an object", at);
      for (auto o = it.value().begin(); o != it.value().end(); ++o) {
        const std::string oAt = at + "/" + PointerPart(o.key());
        const json& value = o.value();
        if (o.key() == "delimiter") {
          std::string d = value.is_string() ? value.get<std::string>() : std::string("?");
          if (d == ",")
            fCsvDelimiter = ',';
          else if (d == ";")
            fCsvDelimiter = ';';
          else if (d == "\t" || Lower(d) == "tab")
            fCsvDelimiter = '\t';
          else
            w.Fail(oAt, "\"delimiter\" must be \",\", \";\" or \"tab\"");
        } else if (o.key() == "decimal") {
          std::string d = value.is_string() ? value.get<std::string>() : std::string("?");
          if (d == "." || d == ",")
            fCsvDecimalPoint = d[0];
          else
            w.Fail(oAt, "\"decimal\" must be \".\" or \",\"");
        } else if (o.key() == "missing_text") {
          w.Expect(value, json::value_t::array, "an array of strings", oAt);
          for (const json& item : value) {
            w.Expect(item, json::value_t::string, "a string", oAt);
            fvCsvMissingTexts.push_back(item.get<std::string>());
          }
        } else {
          w.Fail(oAt, "unknown key \"" + o.key() + "\" in \"csv\" (known: delimiter, decimal, missing_text)");
        }
      }
      if (fCsvDelimiter == ',' && fCsvDecimalPoint == ',')
        w.Fail(at, "a comma cannot be both the delimiter and the decimal point");
    } else {
      w.Fail(at, "unknown key \"" + it.key() + "\" (known: variables, csv)");
    }
  }
}

const DictionaryEntry* DataDictionary::Find(const std::string& name) const {
  std::string lower = Lower(name);
  for (const DictionaryEntry& entry : fvEntries) {
    if (Lower(entry.fName) == lower) return &entry;
  }
  return nullptr;
}

void DataDictionary::CheckNames(const std::vector<std::string>& names, const std::string& dataFileName) const {
  for (const DictionaryEntry& entry : fvEntries) {
    bool found = false;
    for (const std::string& name : names) {
      if (Lower(name) == Lower(entry.fName)) found = true;
    }
    if (!found)
      Walker(fFileName).FailVariable(entry.fName, entry.fPath, "there is no such variable in " + dataFileName);
  }
}

void DataDictionary::Apply(ZORV_Dataset& dataset, bool typedSource, const std::string& dataFileName) const {
  Walker w(fFileName);
  for (const DictionaryEntry& entry : fvEntries) {
    int index = dataset.FindVarIndex(entry.fName.c_str(), 0);
    if (index < 0) w.FailVariable(entry.fName, entry.fPath, "there is no such variable in " + dataFileName);
    ZORV_Variable& variable = *dataset.GetVariable(index);
    const bool isString = variable.IsString();
    if (typedSource && entry.fType != DictionaryEntry::TYPE_NOT_GIVEN) {
      bool wantString = entry.fType != DictionaryEntry::TYPE_NUMERIC;
      if (wantString != isString || (entry.fType > 0 && entry.fType != variable.GetType()))
        w.FailVariable(entry.fName, entry.fPath + "/type",
                       "the type of a variable in " + dataFileName + " is fixed by the file and cannot be changed");
    }
    if (entry.fbHasLabel) variable.SetLabel(entry.fLabel);
    if (entry.fLevel != 0) variable.SetMeasurementLevel(entry.fLevel);

    auto checkFormat = [&](const ZORV_Format& format, const char* key) {
      if (format.IsString() != isString)
        w.FailVariable(entry.fName, entry.fPath + "/" + key,
                       "the format " + format.ToText() + " does not suit a " + (isString ? "string" : "numeric") +
                           " variable");
    };
    if (entry.fbHasFormat) {
      checkFormat(entry.fFormat, "format");
      variable.SetFormat(entry.fFormat);
      if (!entry.fbHasWriteFormat) variable.SetWriteFormat(entry.fFormat);
    }
    if (entry.fbHasWriteFormat) {
      checkFormat(entry.fWriteFormat, "write_format");
      variable.SetWriteFormat(entry.fWriteFormat);
    }

    for (const auto& label : entry.fvValueLabels) {
      if (isString) {
        variable.ValueLabels().Add(label.first, label.second);
      } else {
        double value = 0.0;
        if (!NumberText::Parse(label.first, value))
          w.FailVariable(entry.fName, entry.fPath + "/value_labels/" + PointerPart(label.first),
                         "\"" + label.first + "\" is not a number, and the variable is numeric");
        variable.ValueLabels().Add(value, label.second);
      }
    }
    if (!isString && !entry.fvValueLabels.empty() && entry.fLevel == 0)
      variable.SetMeasurementLevel(ZORV_Variable::NOMINAL);

    std::size_t index2 = 0;
    for (const DictionaryEntry::Value& v : entry.fvMissingValues) {
      std::string at = entry.fPath + "/missing/values/" + std::to_string(index2++);
      if (isString) {
        if (v.fbNumber)
          w.FailVariable(entry.fName, at, "a string variable needs its missing values as strings");
        variable.AddMissingString(v.fText);
      } else {
        double value = v.fNumber;
        if (!v.fbNumber && !NumberText::Parse(v.fText, value))
          w.FailVariable(entry.fName, at, "\"" + v.fText + "\" is not a number, and the variable is numeric");
        variable.AddMissingValue(value);
      }
    }
    if (entry.fbHasMissingRange) {
      if (isString)
        w.FailVariable(entry.fName, entry.fPath + "/missing/range", "a string variable cannot have a missing range");
      variable.SetMissingRange(entry.fMissingLow, entry.fMissingHigh);
    }
  }
}

namespace {

const char* LevelName(int level) {
  return level == ZORV_Variable::NOMINAL ? "nominal" : (level == ZORV_Variable::ORDINAL ? "ordinal" : "scale");
}

nlohmann::ordered_json RangeEndText(double end) {
  if (std::isinf(end)) return end < 0 ? "lowest" : "highest";
  return end;
}

nlohmann::ordered_json DescribeVariable(const ZORV_Variable& variable) {
  nlohmann::ordered_json entry;
  const bool isString = variable.IsString();
  entry["type"] = isString ? "string" : "numeric";
  if (isString) entry["width"] = variable.GetType();
  if (variable.GetLabel() != nullptr) entry["label"] = variable.GetLabel();
  entry["level"] = LevelName(variable.GetMeasurementLevel());
  entry["format"] = variable.GetFormat().ToText();
  entry["write_format"] = variable.GetWriteFormat().ToText();
  const ZORV_ValueLabelMap& labels = variable.GetValueLabels();
  if (!labels.Empty()) {
    nlohmann::ordered_json values = nlohmann::ordered_json::object();
    for (const auto& label : labels.NumericLabels()) values[NumberText::Shortest(label.first)] = label.second;
    for (const auto& label : labels.StringLabels()) values[label.first] = label.second;
    entry["value_labels"] = values;
  }
  nlohmann::ordered_json missing = nlohmann::ordered_json::object();
  nlohmann::ordered_json values = nlohmann::ordered_json::array();
  for (double value : variable.GetMissingValues()) values.push_back(value);
  for (const std::string& value : variable.GetMissingStrings()) values.push_back(value);
  if (!values.empty()) missing["values"] = values;
  if (variable.HasMissingRange()) {
    missing["range"] = {RangeEndText(variable.GetMissingRangeLow()), RangeEndText(variable.GetMissingRangeHigh())};
  }
  if (!missing.empty()) entry["missing"] = missing;
  return entry;
}

}  // namespace

std::string DataDictionary::Describe(const ZORV_Dataset& dataset) {
  nlohmann::ordered_json root;
  root["csv"] = {{"delimiter", ","}, {"decimal", "."}};
  nlohmann::ordered_json variables = nlohmann::ordered_json::object();
  for (int c = 0; c < dataset.ColumnCount(); ++c) {
    const ZORV_Variable& variable = *dataset.GetVariable(c);
    variables[variable.GetName()] = DescribeVariable(variable);
  }
  root["variables"] = variables;
  return root.dump(2) + "\n";
}
