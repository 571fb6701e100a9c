#include "host/output/ToString.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "host/data/ZORV_Variable.h"

namespace {

const int kMaxDecimals = 16;

std::string Printf(const char* format, int decimals, double value) {
  int size = std::snprintf(nullptr, 0, format, decimals, value);
  if (size <= 0) return std::string();
  std::vector<char> buffer(static_cast<std::size_t>(size) + 1);
  std::snprintf(buffer.data(), buffer.size(), format, decimals, value);
  return std::string(buffer.data(), static_cast<std::size_t>(size));
}

// Printf rounds an exact tie to even; a tie is rounded away from zero here,
// as readers of statistics expect (2.5 gives 3). Doubles print exactly, so
// 40 more digits show whether the value lies exactly half way.
std::string Rounded(const char* format, int decimals, double value) {
  std::string full = Printf(format, decimals + 40, value);
  std::size_t point = full.find_first_of(".,");
  if (point != std::string::npos) {
    std::size_t half = point + 1 + static_cast<std::size_t>(decimals);
    std::size_t end = full.find_first_of("eE", half);
    if (end == std::string::npos) end = full.size();
    if (half < end && full[half] == '5' && full.find_first_not_of('0', half + 1) >= end) {
      value = std::nextafter(value, value > 0 ? HUGE_VAL : -HUGE_VAL);
    }
  }
  return Printf(format, decimals, value);
}

// A minus sign before a text with no digit other than 0 goes.
void DropNegativeZero(std::string& text) {
  if (text.empty() || text[0] != '-') return;
  std::size_t end = text.find_first_of("eE");
  for (std::size_t i = 1; i < text.size() && i < end; ++i) {
    if (text[i] >= '1' && text[i] <= '9') return;
  }
  text.erase(0, 1);
}

// Groups the integer digits of a plain fixed-point text by three.
std::string Group(const std::string& plain, char separator) {
  std::size_t start = plain[0] == '-' ? 1 : 0;
  std::size_t point = plain.find('.');
  std::size_t end = point == std::string::npos ? plain.size() : point;
  std::string digits = plain.substr(start, end - start);
  std::string grouped;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) grouped += separator;
    grouped += digits[i];
  }
  return plain.substr(0, start) + grouped + plain.substr(end);
}

// Swaps points and commas, for the DOT format.
std::string SwapPointAndComma(std::string text) {
  for (char& c : text) {
    if (c == '.') {
      c = ',';
    } else if (c == ',') {
      c = '.';
    }
  }
  return text;
}

std::string Decorate(const std::string& number, int type) {
  if (type == ZORV_Format::DOLLAR) {
    return number[0] == '-' ? "-$" + number.substr(1) : "$" + number;
  }
  if (type == ZORV_Format::PCT) return number + "%";
  return number;
}

// Drops the zero before the decimal point of a number below one.
std::string WithoutLeadingZero(const std::string& text) {
  std::size_t start = text[0] == '-' ? 1 : 0;
  if (text.compare(start, 2, "0.") == 0 || text.compare(start, 2, "0,") == 0) {
    return text.substr(0, start) + text.substr(start + 1);
  }
  return text;
}

// E notation with as many decimals (up to `decimals`) as fit in `width`.
bool FitExponent(double value, int decimals, int width, std::string& out) {
  for (int d = decimals; d >= 0; --d) {
    std::string text = Rounded("%.*E", d, value);
    DropNegativeZero(text);
    if (static_cast<int>(text.size()) <= width) {
      out = text;
      return true;
    }
  }
  return false;
}

// The unpadded text of a number, or false when nothing fits.
bool FormatNumber(double value, int type, int width, int decimals, std::string& out) {
  if (type == ZORV_Format::E) return FitExponent(value, decimals, width, out);

  std::string plain = Rounded("%.*f", decimals, value);
  DropNegativeZero(plain);
  std::vector<std::string> candidates;
  if (type == ZORV_Format::COMMA || type == ZORV_Format::DOLLAR) {
    candidates.push_back(Decorate(Group(plain, ','), type));
  } else if (type == ZORV_Format::DOT) {
    candidates.push_back(SwapPointAndComma(Group(plain, ',')));
  }
  std::string ungrouped = type == ZORV_Format::DOT ? SwapPointAndComma(plain) : Decorate(plain, type);
  candidates.push_back(ungrouped);
  candidates.push_back(WithoutLeadingZero(ungrouped));
  for (const std::string& candidate : candidates) {
    if (static_cast<int>(candidate.size()) <= width) {
      out = candidate;
      return true;
    }
  }
  int room = type == ZORV_Format::DOLLAR || type == ZORV_Format::PCT ? width - 1 : width;
  std::string exponent;
  if (room > 0 && FitExponent(value, decimals, room, exponent)) {
    out = Decorate(exponent, type);
    return true;
  }
  return false;
}

bool IsKnownType(int type) { return type >= ZORV_Format::A && type <= ZORV_Format::PCT; }

}  // namespace

int ToString(const OBS* value, const ZORV_Format& format, char* out) {
  if (value == nullptr || out == nullptr) return 1;
  const int width = format.fWidth;
  const int type = format.fType;
  if (width == 0) return 2;
  if (!IsKnownType(type)) return 4;

  if (type == ZORV_Format::A) {
    std::memcpy(out, value->fStr, static_cast<std::size_t>(width));
    return 0;
  }
  if (type == ZORV_Format::AHEX) {
    static const char kHex[] = "0123456789ABCDEF";
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(value->fStr);
    for (int i = 0; i < width; ++i) {
      unsigned char byte = bytes[i / 2];
      out[i] = kHex[(i % 2 == 0) ? (byte >> 4) : (byte & 0x0F)];
    }
    return 0;
  }
  if (width > ZORV_Variable::MAXNUMFMTWID) return 3;

  const double number = value->fNum;
  const int decimals = format.fDecimals > kMaxDecimals ? kMaxDecimals : format.fDecimals;
  std::string text;
  if (number == -DBL_MAX) {
    text = ".";
  } else if (!std::isfinite(number) || !FormatNumber(number, type, width, decimals, text)) {
    text.assign(static_cast<std::size_t>(width), '*');
  }
  std::memset(out, ' ', static_cast<std::size_t>(width));
  std::memcpy(out + (width - static_cast<int>(text.size())), text.data(), text.size());
  return 0;
}

std::string ToString(const OBS* value, const ZORV_Format& format) {
  if (value == nullptr || format.fWidth == 0) return std::string();
  std::vector<char> buffer(static_cast<std::size_t>(format.fWidth) + 1, '\0');
  if (ToString(value, format, buffer.data()) != 0) return std::string();
  std::string text(buffer.data(), format.fWidth);
  std::size_t first = format.IsString() ? 0 : text.find_first_not_of(' ');
  std::size_t last = text.find_last_not_of(' ');
  if (first == std::string::npos || last == std::string::npos) return std::string();
  return text.substr(first, last - first + 1);
}
