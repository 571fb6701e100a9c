#include "host/io/NumberText.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsBlankChar(char c) { return c == ' ' || c == '\t'; }

}  // namespace

bool NumberText::IsBlank(const char* text, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    if (!IsBlankChar(text[i])) return false;
  }
  return true;
}

bool NumberText::Parse(const char* text, std::size_t size, char decimalPoint, double& value, int& intDigits,
                       int& decimals) {
  std::size_t b = 0;
  std::size_t e = size;
  while (b < e && IsBlankChar(text[b])) ++b;
  while (e > b && IsBlankChar(text[e - 1])) --e;
  if (b == e) return false;

  // Copy into a plain ASCII form that from_chars reads: no '+', '.' as point.
  char buffer[128];
  std::size_t n = 0;
  std::size_t i = b;
  if (text[i] == '+' || text[i] == '-') {
    if (text[i] == '-') buffer[n++] = '-';
    ++i;
  }
  int significantInt = 0;
  bool seenNonZero = false;
  int digits = 0;
  int fraction = 0;
  while (i < e && IsDigit(text[i])) {
    if (text[i] != '0') seenNonZero = true;
    if (seenNonZero) ++significantInt;
    ++digits;
    if (n >= sizeof buffer - 16) return false;
    buffer[n++] = text[i++];
  }
  if (i < e && text[i] == decimalPoint) {
    buffer[n++] = '.';
    ++i;
    while (i < e && IsDigit(text[i])) {
      ++fraction;
      ++digits;
      if (n >= sizeof buffer - 16) return false;
      buffer[n++] = text[i++];
    }
  }
  if (digits == 0) return false;
  long exponent = 0;
  if (i < e && (text[i] == 'e' || text[i] == 'E')) {
    buffer[n++] = 'e';
    ++i;
    bool negative = false;
    if (i < e && (text[i] == '+' || text[i] == '-')) {
      negative = text[i] == '-';
      if (negative) buffer[n++] = '-';
      ++i;
    }
    int expDigits = 0;
    while (i < e && IsDigit(text[i])) {
      if (exponent < 100000) exponent = exponent * 10 + (text[i] - '0');
      if (n >= sizeof buffer - 2) return false;
      buffer[n++] = text[i++];
      ++expDigits;
    }
    if (expDigits == 0) return false;
    if (negative) exponent = -exponent;
  }
  if (i != e) return false;

  double parsed = 0.0;
  auto result = std::from_chars(buffer, buffer + n, parsed);
  if (result.ec != std::errc() || result.ptr != buffer + n) return false;
  value = parsed;
  long whole = static_cast<long>(significantInt) + exponent;
  long frac = static_cast<long>(fraction) - exponent;
  intDigits = static_cast<int>(std::clamp(whole, 1L, 100000L));
  decimals = static_cast<int>(std::clamp(frac, 0L, 100000L));
  return true;
}

std::string NumberText::Shortest(double value) {
  char buffer[64];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}
