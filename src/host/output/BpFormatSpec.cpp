#include "host/output/BpFormatSpec.h"

#include <cfloat>
#include <cstdio>

#include "host/data/OBS.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/ToString.h"

namespace {

bool HoldsNumbers(const ZORV_Format& format) {
  return format.fWidth > 0 && format.fType >= ZORV_Format::COMMA && format.fType <= ZORV_Format::PCT;
}

bool AllZero(const std::string& text) {
  for (char c : text) {
    if (c >= '1' && c <= '9') return false;
    if (c == 'E' || c == 'e') break;
  }
  return true;
}

}  // namespace

double BpFormatSpec::Missing() { return -DBL_MAX; }

bool BpFormatSpec::IsMissing(double value) { return value == -DBL_MAX; }

std::string BpFormatSpec::Format(double value) const {
  if (IsMissing(value)) return std::string();
  OBS cell;
  cell.fNum = value;
  if (!HoldsNumbers(fFormat)) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.10g", value);
    return buffer;
  }
  ZORV_Format format = fFormat;
  if (format.fWidth > ZORV_Variable::MAXNUMFMTWID) format.fWidth = ZORV_Variable::MAXNUMFMTWID;
  std::string text = ToString(&cell, format);
  if (fbSmallAsExponent && value != 0.0 && format.fType != ZORV_Format::E && AllZero(text)) {
    ZORV_Format exponent(ZORV_Format::E, ZORV_Variable::MAXNUMFMTWID, format.fDecimals);
    text = ToString(&cell, exponent);
  }
  return text;
}

std::string BpFormatSpec::ToText() const { return fFormat.ToText() + (fbSmallAsExponent ? "/E" : ""); }
