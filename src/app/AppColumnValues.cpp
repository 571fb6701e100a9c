#include "app/AppColumnValues.h"

#include <algorithm>
#include <cmath>

#include "host/data/ZORV_Dataset.h"

namespace {

int IntegerDigits(double magnitude) {
  int digits = 1;
  for (double limit = 10.0; magnitude >= limit && digits < 400; limit *= 10.0) ++digits;
  return digits;
}

}  // namespace

AppColumnValues::AppColumnValues(bool isString, long cases) : fbString(isString) {
  if (isString)
    fvTexts.assign(static_cast<std::size_t>(cases), std::string());
  else
    fvNumbers.assign(static_cast<std::size_t>(cases), std::nan(""));
}

long AppColumnValues::CountValid() const {
  if (fbString) return static_cast<long>(fvTexts.size());
  return static_cast<long>(std::count_if(fvNumbers.begin(), fvNumbers.end(), [](double x) { return !std::isnan(x); }));
}

long AppColumnValues::StoreInto(ZORV_Dataset& data, int column) const {
  long cut = 0;
  if (fbString) {
    for (std::size_t row = 0; row < fvTexts.size(); ++row) {
      if (!data.SetString(static_cast<long>(row), column, fvTexts[row])) ++cut;
    }
  } else {
    for (std::size_t row = 0; row < fvNumbers.size(); ++row) data.SetNum(static_cast<long>(row), column, fvNumbers[row]);
  }
  return cut;
}

int AppColumnValues::MakeVariable(ZORV_Dataset& data, const std::string& name, int decimals, int level) const {
  int width = 0;
  if (fbString) {
    std::size_t longest = 1;
    for (const std::string& text : fvTexts) longest = std::max(longest, text.size());
    width = static_cast<int>(std::min<std::size_t>(longest, ZORV_Dataset::MAXSTRINGWIDTH));
  }
  const int column = data.AddVariable(name, width);
  if (column < 0) return column;
  ZORV_Variable& variable = *data.GetVariable(column);
  const ZORV_Format format = fbString ? ZORV_Format(ZORV_Format::A, static_cast<std::uint16_t>(width), 0)
                                      : NumericFormat(fvNumbers, decimals);
  variable.SetFormat(format);
  variable.SetWriteFormat(format);
  variable.SetMeasurementLevel(level);
  StoreInto(data, column);
  return column;
}

ZORV_Format AppColumnValues::NumericFormat(const std::vector<double>& values, int decimals) {
  bool any = false;
  bool whole = true;
  bool negative = false;
  double largest = 0.0;
  for (double x : values) {
    if (std::isnan(x) || !std::isfinite(x)) continue;
    any = true;
    whole = whole && x == std::trunc(x);
    negative = negative || x < 0.0;
    largest = std::max(largest, std::fabs(x));
  }
  if (!any) return ZORV_Format(ZORV_Format::F, 8, 2);
  const int places = whole ? 0 : std::min(std::max(decimals, 2), 10);
  const int width = (negative ? 1 : 0) + IntegerDigits(largest) + (places > 0 ? 1 + places : 0);
  if (width > ZORV_Variable::MAXNUMFMTWID) return ZORV_Format(ZORV_Format::E, 12, 4);
  return ZORV_Format(ZORV_Format::F, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(places));
}
