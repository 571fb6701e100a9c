#include "host/text/NumericText.h"

#include <cctype>
#include <charconv>
#include <cstring>
#include <limits>
#include <system_error>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

// The text between leading and trailing blanks.
void TrimRange(const char*& first, const char*& last) {
  while (first < last && IsBlank(*first)) ++first;
  while (last > first && IsBlank(last[-1])) --last;
}

template <typename T>
T Fail(bool* pOk) {
  if (pOk) *pOk = false;
  return T(0);
}

template <typename T>
T Succeed(T value, bool* pOk) {
  if (pOk) *pOk = true;
  return value;
}

// Numeral values, largest first, with the subtractive pairs among them.
struct RomanDigit {
  int value;
  const char* text;
};
const RomanDigit kRomanDigits[] = {{1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"},
                                   {90, "XC"},  {50, "L"},   {40, "XL"},  {10, "X"},   {9, "IX"},
                                   {5, "V"},    {4, "IV"},   {1, "I"}};

}  // namespace

int String2Integer(const char* text, bool* pOk) {
  if (text == nullptr) return Fail<int>(pOk);
  const char* first = text;
  const char* last = text + std::strlen(text);
  TrimRange(first, last);
  if (first < last && *first == '+') {
    ++first;
    // A sign must be followed by a digit, not by another sign.
    if (first == last || !std::isdigit(static_cast<unsigned char>(*first))) return Fail<int>(pOk);
  }
  if (first == last) return Fail<int>(pOk);
  int value = 0;
  auto result = std::from_chars(first, last, value, 10);
  if (result.ec != std::errc() || result.ptr != last) return Fail<int>(pOk);
  return Succeed(value, pOk);
}

int String2Integer(const std::string& text, bool* pOk) { return String2Integer(text.c_str(), pOk); }

double String2Double(const char* text, bool* pOk) {
  if (text == nullptr) return Fail<double>(pOk);
  const char* first = text;
  const char* last = text + std::strlen(text);
  TrimRange(first, last);
  if (first < last && *first == '+') {
    ++first;
    if (first == last || *first == '-' || *first == '+') return Fail<double>(pOk);
  }
  if (first == last) return Fail<double>(pOk);
  double value = 0.0;
  auto result = std::from_chars(first, last, value, std::chars_format::general);
  if (result.ec != std::errc() || result.ptr != last) return Fail<double>(pOk);
  return Succeed(value, pOk);
}

double String2Double(const std::string& text, bool* pOk) { return String2Double(text.c_str(), pOk); }

int Roman2Integer(const char* text, bool* pOk) {
  if (text == nullptr) return Fail<int>(pOk);
  const char* first = text;
  const char* last = text + std::strlen(text);
  TrimRange(first, last);
  std::string upper;
  for (const char* p = first; p < last; ++p) {
    upper += static_cast<char>(std::toupper(static_cast<unsigned char>(*p)));
  }
  if (upper.empty() || upper.size() > 15) return Fail<int>(pOk);

  // Read greedily, then accept the text only when it is the usual spelling
  // of the number read, which rules out "IIII", "VX", "IC" and the like.
  int value = 0;
  std::size_t pos = 0;
  for (const auto& digit : kRomanDigits) {
    std::size_t len = std::strlen(digit.text);
    while (upper.compare(pos, len, digit.text) == 0) {
      value += digit.value;
      pos += len;
    }
  }
  if (pos != upper.size() || value < 1 || value > 3999) return Fail<int>(pOk);
  std::string canonical;
  int rest = value;
  for (const auto& digit : kRomanDigits) {
    while (rest >= digit.value) {
      canonical += digit.text;
      rest -= digit.value;
    }
  }
  if (canonical != upper) return Fail<int>(pOk);
  return Succeed(value, pOk);
}

int Roman2Integer(const std::string& text, bool* pOk) { return Roman2Integer(text.c_str(), pOk); }

std::string Integer2String(int value) { return std::to_string(value); }

std::string Integer2String(long value) { return std::to_string(value); }
