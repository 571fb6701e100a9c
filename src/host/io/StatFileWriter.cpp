#include "host/io/StatFileWriter.h"

#include <readstat.h>

#include <cmath>
#include <ostream>
#include <string>
#include <vector>

#include "host/data/ZORV_Dataset.h"
#include "host/files/AtomicFileWriter.h"
#include "host/io/DataFileError.h"

namespace {

ssize_t WriteBytes(const void* data, size_t length, void* ctx) {
  std::ostream& out = *static_cast<std::ostream*>(ctx);
  out.write(static_cast<const char*>(data), static_cast<std::streamsize>(length));
  return out ? static_cast<ssize_t>(length) : -1;
}

std::string FormatText(const ZORV_Format& format, StatFileWriter::Kind kind) {
  const std::string w = std::to_string(format.fWidth);
  const std::string d = std::to_string(format.fDecimals);
  if (kind == StatFileWriter::DTA) {
    if (format.IsString()) return "%" + w + "s";
    switch (format.fType) {
      case ZORV_Format::COMMA: return "%" + w + "." + d + "fc";
      case ZORV_Format::E: return "%" + w + "." + d + "e";
      default: return "%" + w + "." + d + "f";
    }
  }
  if (format.IsString()) return "$" + w + ".";
  switch (format.fType) {
    case ZORV_Format::COMMA: return "COMMA" + w + "." + d;
    case ZORV_Format::DOT: return "COMMAX" + w + "." + d;
    case ZORV_Format::DOLLAR: return "DOLLAR" + w + "." + d;
    case ZORV_Format::E: return "E" + w + ".";
    case ZORV_Format::PCT: return "PERCENT" + w + "." + d;
    default: return w + "." + d;
  }
}

class Writer {
 public:
  Writer() : fpWriter(readstat_writer_init()) {}
  ~Writer() { readstat_writer_free(fpWriter); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  readstat_writer_t* Get() const { return fpWriter; }

 private:
  readstat_writer_t* fpWriter;
};

}  // namespace

void StatFileWriter::Write(const ZORV_Dataset& dataset, const std::string& path, Kind kind) const {
  AtomicFileWriter file(path);
  if (!file.IsOpen()) throw DataFileError(path, 0, 0, "cannot create the file: " + file.GetReason());
  Writer writer;
  auto check = [&](readstat_error_t error) {
    if (error != READSTAT_OK) throw DataFileError(path, 0, 0, std::string("cannot write the file: ") + readstat_error_message(error));
  };
  check(readstat_set_data_writer(writer.Get(), WriteBytes));

  std::vector<readstat_variable_t*> variables;
  for (int column = 0; column < dataset.ColumnCount(); ++column) {
    const ZORV_Variable& v = *dataset.GetVariable(column);
    if (v.IsString() && kind == DTA && v.GetType() > 2045)
      throw DataFileError(path, 0, 0, std::string("variable \"") + v.GetName() + "\" is wider than 2045 bytes");
    readstat_variable_t* rv =
        readstat_add_variable(writer.Get(), v.GetName(), v.IsString() ? READSTAT_TYPE_STRING : READSTAT_TYPE_DOUBLE,
                              v.IsString() ? static_cast<size_t>(v.GetType()) : 0);
    if (v.GetLabel() != nullptr) readstat_variable_set_label(rv, v.GetLabel());
    readstat_variable_set_format(rv, FormatText(v.GetFormat(), kind).c_str());
    if (kind == DTA && !v.IsString() && !v.GetValueLabels().NumericLabels().empty()) {
      std::string setName = std::string("lbl") + std::to_string(column);
      readstat_label_set_t* set = readstat_add_label_set(writer.Get(), READSTAT_TYPE_INT32, setName.c_str());
      for (const auto& label : v.GetValueLabels().NumericLabels()) {
        double whole = std::floor(label.first);
        if (whole == label.first && std::fabs(whole) < 2147483647.0)
          readstat_label_int32_value(set, static_cast<int32_t>(whole), label.second.c_str());
      }
      readstat_variable_set_label_set(rv, set);
    }
    variables.push_back(rv);
  }

  long rows = dataset.GetCaseCount();
  check(kind == DTA ? readstat_begin_writing_dta(writer.Get(), &file.Stream(), rows)
                    : readstat_begin_writing_sas7bdat(writer.Get(), &file.Stream(), rows));
  for (long row = 0; row < rows; ++row) {
    check(readstat_begin_row(writer.Get()));
    for (int column = 0; column < dataset.ColumnCount(); ++column) {
      readstat_variable_t* rv = variables[static_cast<std::size_t>(column)];
      if (dataset.GetVariable(column)->IsString()) {
        check(readstat_insert_string_value(writer.Get(), rv, dataset.GetString(row, column).c_str()));
      } else if (dataset.IsSysMissing(row, column)) {
        check(readstat_insert_missing_value(writer.Get(), rv));
      } else {
        check(readstat_insert_double_value(writer.Get(), rv, dataset.GetNum(row, column)));
      }
    }
    check(readstat_end_row(writer.Get()));
  }
  check(readstat_end_writing(writer.Get()));
  if (!file.Commit()) throw DataFileError(path, 0, 0, "cannot write the file: " + file.GetReason());
}
