#include "host/io/StatFileReader.h"

#include <readstat.h>

#include <algorithm>
#include <charconv>
#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/io/ColumnProfile.h"
#include "host/io/DataFileError.h"
#include "host/io/NumberText.h"
#include "host/io/Utf8Text.h"

namespace {

std::string Upper(const std::string& s) {
  std::string out = s;
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

struct LabelValue {
  bool fbString = false;
  double fNumber = 0.0;
  std::string fText;
  std::string fLabel;
};

struct ReadContext {
  std::string fPath;
  StatFileReader::Kind fKind = StatFileReader::DTA;
  ZORV_Dataset* fpDataset = nullptr;
  long fRowCount = -1;
  bool fbCasesMade = false;
  std::vector<int> fvColumnOf;                 // readstat index -> column
  std::vector<std::string> fvLabelSetOf;       // per column
  std::vector<bool> fvInferFormat;             // per column
  std::vector<bool> fvLevelGiven;              // per column
  std::map<std::string, std::vector<LabelValue>> fLabelSets;
  std::string fError;        // first failure of a handler
  std::string fLibraryError; // the library's own words
};

// A format the file names, when it is one we keep; false to infer it.
bool MapFormat(const std::string& text, StatFileReader::Kind kind, ZORV_Format& format) {
  std::string s = Upper(text);
  if (s.empty()) return false;
  std::string name;
  std::size_t i = 0;
  if (kind == StatFileReader::DTA) {
    if (s[0] != '%') return false;
    i = 1;
    if (i < s.size() && s[i] == '-') ++i;
  }
  if (kind == StatFileReader::SAS7BDAT) {
    while (i < s.size() && std::isalpha(static_cast<unsigned char>(s[i]))) name += s[i++];
  }
  long width = 0;
  bool haveWidth = false;
  while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) {
    haveWidth = true;
    width = std::min(width * 10 + (s[i++] - '0'), 1000L);
  }
  long decimals = 0;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i])))
      decimals = std::min(decimals * 10 + (s[i++] - '0'), 1000L);
  }
  std::uint8_t type = 0;
  if (kind == StatFileReader::DTA) {
    std::string code = s.substr(i);
    if (code == "F")
      type = ZORV_Format::F;
    else if (code == "FC")
      type = ZORV_Format::COMMA;
    else if (code == "E")
      type = ZORV_Format::E;
    else
      return false;
  } else {
    if (i != s.size()) return false;
    if (name.empty() || name == "F")
      type = ZORV_Format::F;
    else if (name == "COMMA")
      type = ZORV_Format::COMMA;
    else if (name == "COMMAX")
      type = ZORV_Format::DOT;
    else if (name == "DOLLAR")
      type = ZORV_Format::DOLLAR;
    else if (name == "E")
      type = ZORV_Format::E;
    else if (name == "PERCENT")
      type = ZORV_Format::PCT;
    else
      return false;
  }
  if (!haveWidth || width < 1) return false;
  width = std::min(width, static_cast<long>(ColumnProfile::MAXNUMERICWIDTH));
  decimals = std::min(decimals, std::min(16L, width - 1));
  format = ZORV_Format(type, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(std::max(0L, decimals)));
  return true;
}

double ValueAsDouble(readstat_value_t value) {
  switch (readstat_value_type(value)) {
    case READSTAT_TYPE_INT8: return readstat_int8_value(value);
    case READSTAT_TYPE_INT16: return readstat_int16_value(value);
    case READSTAT_TYPE_INT32: return readstat_int32_value(value);
    case READSTAT_TYPE_FLOAT: {
      // The shortest decimal of the float, not its binary expansion.
      char buffer[64];
      auto result = std::to_chars(buffer, buffer + sizeof buffer, readstat_float_value(value));
      double d = 0.0;
      std::from_chars(buffer, result.ptr, d);
      return d;
    }
    case READSTAT_TYPE_DOUBLE: return readstat_double_value(value);
    default: return ZORV_Dataset::SysMiss();
  }
}

int OnMetadata(readstat_metadata_t* metadata, void* ctx) {
  auto* c = static_cast<ReadContext*>(ctx);
  c->fRowCount = readstat_get_row_count(metadata);
  return READSTAT_HANDLER_OK;
}

int OnVariable(int index, readstat_variable_t* variable, const char* valLabels, void* ctx) {
  auto* c = static_cast<ReadContext*>(ctx);
  try {
    const char* rawName = readstat_variable_get_name(variable);
    std::string name = rawName != nullptr ? rawName : "";
    std::size_t bad = 0;
    if (name.empty() || !Utf8Text::Validate(name.data(), name.size(), bad)) {
      c->fError = "variable " + std::to_string(index + 1) + " has no usable name";
      return READSTAT_HANDLER_ABORT;
    }
    int type = 0;
    if (readstat_variable_get_type_class(variable) == READSTAT_TYPE_CLASS_STRING) {
      std::size_t width = readstat_variable_get_storage_width(variable);
      // The library counts a terminator in the width of a Stata string.
      if (c->fKind == StatFileReader::DTA && width > 1) --width;
      if (width == 0 || readstat_variable_get_type(variable) == READSTAT_TYPE_STRING_REF)
        width = 2045;  // long strings store no width; this is the longest fixed one
      type = static_cast<int>(std::min<std::size_t>(width, ZORV_Dataset::MAXSTRINGWIDTH));
    }
    int column = c->fpDataset->AddVariable(name, type);
    if (column < 0) {
      c->fError = "the variable name \"" + name + "\" is used twice (names ignore case)";
      return READSTAT_HANDLER_ABORT;
    }
    if (index >= 0) {
      if (c->fvColumnOf.size() <= static_cast<std::size_t>(index)) c->fvColumnOf.resize(static_cast<std::size_t>(index) + 1, -1);
      c->fvColumnOf[static_cast<std::size_t>(index)] = column;
    }
    ZORV_Variable* v = c->fpDataset->GetVariable(column);
    const char* label = readstat_variable_get_label(variable);
    if (label != nullptr && label[0] != '\0') v->SetLabel(label);
    c->fvLabelSetOf.push_back(valLabels != nullptr ? valLabels : "");

    bool infer = false;
    if (type == 0) {
      ZORV_Format format;
      const char* formatText = readstat_variable_get_format(variable);
      if (MapFormat(formatText != nullptr ? formatText : "", c->fKind, format)) {
        v->SetFormat(format);
        v->SetWriteFormat(format);
      } else {
        infer = true;
      }
      int ranges = readstat_variable_get_missing_ranges_count(variable);
      for (int r = 0; r < ranges; ++r) {
        double lo = ValueAsDouble(readstat_variable_get_missing_range_lo(variable, r));
        double hi = ValueAsDouble(readstat_variable_get_missing_range_hi(variable, r));
        if (lo == hi)
          v->AddMissingValue(lo);
        else
          v->SetMissingRange(lo, hi);
      }
    }
    c->fvInferFormat.push_back(infer);
    bool levelGiven = true;
    switch (readstat_variable_get_measure(variable)) {
      case READSTAT_MEASURE_NOMINAL: v->SetMeasurementLevel(ZORV_Variable::NOMINAL); break;
      case READSTAT_MEASURE_ORDINAL: v->SetMeasurementLevel(ZORV_Variable::ORDINAL); break;
      case READSTAT_MEASURE_SCALE: v->SetMeasurementLevel(ZORV_Variable::SCALE); break;
      default: levelGiven = false; break;
    }
    c->fvLevelGiven.push_back(levelGiven);
  } catch (const std::exception& e) {
    c->fError = e.what();
    return READSTAT_HANDLER_ABORT;
  }
  return READSTAT_HANDLER_OK;
}

// Every so many cases the reader looks whether the user asked to stop.
const int kCasesBetweenStopChecks = 8192;

int OnValue(int obsIndex, readstat_variable_t* variable, readstat_value_t value, void* ctx) {
  auto* c = static_cast<ReadContext*>(ctx);
  try {
    ZORV_Dataset& ds = *c->fpDataset;
    if (!c->fbCasesMade) {
      c->fbCasesMade = true;
      if (c->fRowCount > 0) ds.AppendCases(c->fRowCount);
    }
    if (obsIndex < 0) return READSTAT_HANDLER_OK;
    if (obsIndex % kCasesBetweenStopChecks == 0 && ZORV_StopFlag::IsRaised()) {
      c->fError = "reading was interrupted";
      return READSTAT_HANDLER_ABORT;
    }
    if (obsIndex >= ds.GetCaseCount()) ds.AppendCases(obsIndex + 1 - ds.GetCaseCount());
    int index = readstat_variable_get_index(variable);
    if (index < 0 || static_cast<std::size_t>(index) >= c->fvColumnOf.size() || c->fvColumnOf[static_cast<std::size_t>(index)] < 0)
      return READSTAT_HANDLER_OK;
    int column = c->fvColumnOf[static_cast<std::size_t>(index)];
    if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING) {
      const char* text = readstat_string_value(value);
      if (text == nullptr) return READSTAT_HANDLER_OK;
      std::size_t n = std::strlen(text);
      std::size_t bad = 0;
      if (!Utf8Text::Validate(text, n, bad)) {
        c->fError = "case " + std::to_string(obsIndex + 1) + ", variable \"" + ds.GetVariable(column)->GetName() +
                    "\": the text is not valid UTF-8";
        return READSTAT_HANDLER_ABORT;
      }
      if (!ds.SetString(obsIndex, column, text, n)) {
        c->fError = "case " + std::to_string(obsIndex + 1) + ", variable \"" + ds.GetVariable(column)->GetName() +
                    "\": the text is longer than " + std::to_string(ds.GetVariable(column)->GetType()) + " bytes";
        return READSTAT_HANDLER_ABORT;
      }
      return READSTAT_HANDLER_OK;
    }
    if (readstat_value_is_system_missing(value) || readstat_value_is_tagged_missing(value)) return READSTAT_HANDLER_OK;
    ds.SetNum(obsIndex, column, ValueAsDouble(value));
  } catch (const std::exception& e) {
    c->fError = e.what();
    return READSTAT_HANDLER_ABORT;
  }
  return READSTAT_HANDLER_OK;
}

int OnValueLabel(const char* valLabels, readstat_value_t value, const char* label, void* ctx) {
  auto* c = static_cast<ReadContext*>(ctx);
  try {
    if (valLabels == nullptr || label == nullptr) return READSTAT_HANDLER_OK;
    if (readstat_value_is_tagged_missing(value) || readstat_value_is_system_missing(value)) return READSTAT_HANDLER_OK;
    LabelValue entry;
    entry.fLabel = label;
    if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING) {
      entry.fbString = true;
      const char* text = readstat_string_value(value);
      entry.fText = text != nullptr ? text : "";
    } else {
      entry.fNumber = ValueAsDouble(value);
    }
    c->fLabelSets[valLabels].push_back(std::move(entry));
  } catch (const std::exception& e) {
    c->fError = e.what();
    return READSTAT_HANDLER_ABORT;
  }
  return READSTAT_HANDLER_OK;
}

void OnError(const char* message, void* ctx) {
  auto* c = static_cast<ReadContext*>(ctx);
  if (message != nullptr && c->fLibraryError.empty()) {
    c->fLibraryError = message;
    while (!c->fLibraryError.empty() && std::isspace(static_cast<unsigned char>(c->fLibraryError.back())))
      c->fLibraryError.pop_back();
  }
}

class Parser {
 public:
  Parser() : fpParser(readstat_parser_init()) {}
  ~Parser() { readstat_parser_free(fpParser); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  readstat_parser_t* Get() const { return fpParser; }

 private:
  readstat_parser_t* fpParser;
};

}  // namespace

bool StatFileReader::KindFromPath(const std::string& path, Kind& kind) {
  std::size_t dot = path.find_last_of('.');
  std::size_t slash = path.find_last_of("/\\");
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return false;
  std::string ext = Upper(path.substr(dot + 1));
  if (ext == "DTA") {
    kind = DTA;
    return true;
  }
  if (ext == "SAS7BDAT") {
    kind = SAS7BDAT;
    return true;
  }
  return false;
}

void StatFileReader::Read(const std::string& path, ZORV_Dataset& dataset) const {
  Kind kind = DTA;
  if (!KindFromPath(path, kind)) throw DataFileError(path, 0, 0, "not a .dta or .sas7bdat file");
  Read(path, kind, dataset);
}

void StatFileReader::Read(const std::string& path, Kind kind, ZORV_Dataset& dataset) const {
  if (dataset.ColumnCount() != 0 || dataset.GetCaseCount() != 0)
    throw std::logic_error("StatFileReader::Read: the dataset is not empty");
  {
    std::ifstream probe(path, std::ios::binary | std::ios::ate);
    if (!probe) throw DataFileError(path, 0, 0, "cannot open the file");
    if (probe.tellg() == std::streampos(0)) throw DataFileError(path, 0, 0, "the file is empty");
  }
  ReadContext context;
  context.fPath = path;
  context.fKind = kind;
  context.fpDataset = &dataset;

  Parser parser;
  if (parser.Get() == nullptr) throw DataFileError(path, 0, 0, "out of memory");
  readstat_set_metadata_handler(parser.Get(), OnMetadata);
  readstat_set_variable_handler(parser.Get(), OnVariable);
  readstat_set_value_handler(parser.Get(), OnValue);
  readstat_set_value_label_handler(parser.Get(), OnValueLabel);
  readstat_set_error_handler(parser.Get(), OnError);

  readstat_error_t error = kind == DTA ? readstat_parse_dta(parser.Get(), path.c_str(), &context)
                                       : readstat_parse_sas7bdat(parser.Get(), path.c_str(), &context);
  if (!context.fError.empty()) throw DataFileError(path, 0, 0, context.fError);
  if (error == READSTAT_ERROR_READ) {
    throw DataFileError(path, 0, 0,
                        std::string("the file ends too early: it is cut short or is not a ") +
                            (kind == DTA ? ".dta" : ".sas7bdat") + " file");
  }
  if (error != READSTAT_OK) {
    std::string message = readstat_error_message(error);
    if (!context.fLibraryError.empty()) message += " (" + context.fLibraryError + ")";
    throw DataFileError(path, 0, 0, "cannot read the file: " + message);
  }
  if (!context.fbCasesMade && context.fRowCount > 0) dataset.AppendCases(context.fRowCount);

  if (kind == SAS7BDAT) {
    std::string catalog = path.substr(0, path.size() - std::string(".sas7bdat").size()) + ".sas7bcat";
    std::ifstream probe(catalog, std::ios::binary);
    if (probe) {
      probe.close();
      Parser catalogParser;
      readstat_set_value_label_handler(catalogParser.Get(), OnValueLabel);
      readstat_set_error_handler(catalogParser.Get(), OnError);
      error = readstat_parse_sas7bcat(catalogParser.Get(), catalog.c_str(), &context);
      if (!context.fError.empty()) throw DataFileError(catalog, 0, 0, context.fError);
      if (error != READSTAT_OK)
        throw DataFileError(catalog, 0, 0, std::string("cannot read the format catalog: ") + readstat_error_message(error));
    }
  }

  for (int column = 0; column < dataset.ColumnCount(); ++column) {
    ZORV_Variable& variable = *dataset.GetVariable(column);
    const std::size_t c = static_cast<std::size_t>(column);
    const std::string& setName = c < context.fvLabelSetOf.size() ? context.fvLabelSetOf[c] : std::string();
    auto set = context.fLabelSets.find(setName);
    if (!setName.empty() && set == context.fLabelSets.end()) {
      // SAS names the catalog entry by the format, which may carry a '$'.
      set = context.fLabelSets.find(Upper(setName));
    }
    bool labelled = false;
    if (!setName.empty() && set != context.fLabelSets.end()) {
      for (const LabelValue& lv : set->second) {
        if (variable.IsString() && lv.fbString) variable.ValueLabels().Add(lv.fText, lv.fLabel);
        if (!variable.IsString() && !lv.fbString) variable.ValueLabels().Add(lv.fNumber, lv.fLabel);
        labelled = true;
      }
    }
    bool levelGiven = c < context.fvLevelGiven.size() && context.fvLevelGiven[c];
    if (variable.IsString()) {
      if (!levelGiven) variable.SetMeasurementLevel(ZORV_Variable::NOMINAL);
      continue;
    }
    if (!levelGiven) variable.SetMeasurementLevel(labelled ? ZORV_Variable::NOMINAL : ZORV_Variable::SCALE);
    if (c < context.fvInferFormat.size() && context.fvInferFormat[c]) {
      ColumnProfile profile;
      for (long row = 0; row < dataset.GetCaseCount(); ++row) {
        double value = dataset.GetNum(row, column);
        if (value == ZORV_Dataset::SysMiss())
          profile.AddEmpty();
        else
          profile.AddNumber(value);
      }
      variable.SetFormat(profile.NumericFormat());
      variable.SetWriteFormat(profile.NumericFormat());
    }
  }
}
