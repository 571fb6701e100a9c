#include "host/data/ZORV_Variable.h"

#include <algorithm>

ZORV_Variable::ZORV_Variable(const std::string& name, int type) : fName(name), fType(type) {
  if (type > 0) {
    fPrintFormat = ZORV_Format(ZORV_Format::A, static_cast<std::uint16_t>(type), 0);
    fLevel = NOMINAL;
  }
  fWriteFormat = fPrintFormat;
}

void ZORV_Variable::GetFormatEx(int& type, int& width, int& decimals) const {
  type = fPrintFormat.fType;
  width = fPrintFormat.fWidth;
  decimals = fPrintFormat.fDecimals;
}

void ZORV_Variable::SetMissingRange(double low, double high) {
  fbHasMissingRange = true;
  fMissingLow = std::min(low, high);
  fMissingHigh = std::max(low, high);
}

bool ZORV_Variable::IsUserMissing(double value) const {
  if (std::find(fvMissingValues.begin(), fvMissingValues.end(), value) != fvMissingValues.end()) return true;
  return fbHasMissingRange && value >= fMissingLow && value <= fMissingHigh;
}

bool ZORV_Variable::IsUserMissing(const std::string& value) const {
  std::size_t end = value.find_last_not_of(' ');
  std::string trimmed = end == std::string::npos ? std::string() : value.substr(0, end + 1);
  return std::find(fvMissingStrings.begin(), fvMissingStrings.end(), trimmed) != fvMissingStrings.end();
}

void ZORV_Variable::ClearMissing() {
  fvMissingValues.clear();
  fvMissingStrings.clear();
  fbHasMissingRange = false;
  fMissingLow = 0.0;
  fMissingHigh = 0.0;
}
