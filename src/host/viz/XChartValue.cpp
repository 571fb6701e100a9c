#include "host/viz/XChartValue.h"

#include "host/viz/XNumber.h"

XChartValue XChartValue::Number(double value) {
  XChartValue out;
  out.fKind = NUMBER;
  out.fNumber = value;
  return out;
}

XChartValue XChartValue::Text(const std::string& text) {
  XChartValue out;
  out.fKind = TEXT;
  const std::size_t end = text.find_last_not_of(' ');
  out.fText = end == std::string::npos ? std::string() : text.substr(0, end + 1);
  return out;
}

bool XChartValue::AsNumber(double& value) const {
  if (fKind == NUMBER) {
    value = fNumber;
    return true;
  }
  return fKind == TEXT && XNumber::Parse(fText, value);
}

bool XChartValue::Before(const XChartValue& a, const XChartValue& b) {
  double x = 0.0;
  double y = 0.0;
  const bool an = a.AsNumber(x);
  const bool bn = b.AsNumber(y);
  if (an != bn) return an;
  if (an) return x < y;
  return a.fText < b.fText;
}

std::string XChartValue::Key() const {
  switch (fKind) {
    case NUMBER:
      return "n" + XNumber::Exact(fNumber == 0.0 ? 0.0 : fNumber);
    case TEXT:
      return "t" + fText;
    case EMPTY:
      break;
  }
  return std::string();
}
