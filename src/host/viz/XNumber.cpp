#include "host/viz/XNumber.h"

#include <charconv>
#include <cmath>

namespace {

std::string Chars(double value, std::chars_format format, int precision, bool bPrecision) {
  char buffer[64];
  const std::to_chars_result result = bPrecision
                                          ? std::to_chars(buffer, buffer + sizeof buffer, value, format, precision)
                                          : std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace

bool XNumber::Parse(const std::string& text, double& value) {
  std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return false;
  std::size_t last = text.find_last_not_of(" \t");
  const char* begin = text.data() + first;
  const char* end = text.data() + last + 1;
  if (*begin == '+') ++begin;
  double parsed = 0.0;
  const std::from_chars_result result = std::from_chars(begin, end, parsed);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(parsed)) return false;
  value = parsed;
  return true;
}

bool XNumber::ParseLength(const std::string& text, double& value) {
  std::string digits = text;
  if (digits.size() > 2 && digits.compare(digits.size() - 2, 2, "px") == 0) digits.resize(digits.size() - 2);
  double parsed = 0.0;
  if (!Parse(digits, parsed) || parsed < 0) return false;
  value = parsed;
  return true;
}

std::string XNumber::Exact(double value) {
  if (!std::isfinite(value)) return std::isnan(value) ? "nan" : (value > 0 ? "inf" : "-inf");
  return Chars(value, std::chars_format::general, 0, false);
}

std::string XNumber::General(double value) {
  if (!std::isfinite(value)) return Exact(value);
  std::string text = Chars(value, std::chars_format::general, 6, true);
  // A negative zero is shown as zero.
  if (text == "-0") text = "0";
  return text;
}

std::string XNumber::Fixed(double value, int decimals) {
  if (!std::isfinite(value)) return "0";
  std::string text = Chars(value, std::chars_format::fixed, decimals, true);
  if (text.find('.') != std::string::npos) {
    while (!text.empty() && text.back() == '0') text.pop_back();
    if (!text.empty() && text.back() == '.') text.pop_back();
  }
  if (text == "-0") text = "0";
  return text;
}
