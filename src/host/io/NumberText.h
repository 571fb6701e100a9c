#pragma once

#include <cstddef>
#include <string>

// Reading numbers written as text, independent of the locale.
class NumberText {
 public:
  // A decimal number: blanks around it, an optional sign, digits with at most
  // one decimal point (at least one digit), and an optional exponent (e or E,
  // optional sign, digits). No hexadecimal, infinities or NaN. Also gives
  // what the text needs to be shown in a fixed-point format: the digits
  // before the point (at least 1) and after it, as written (so "1.50" has 2
  // decimals). False for anything else, and for values beyond the range of
  // a double.
  static bool Parse(const char* text, std::size_t size, char decimalPoint, double& value, int& intDigits,
                    int& decimals);
  static bool Parse(const std::string& text, double& value) {
    int intDigits = 0;
    int decimals = 0;
    return Parse(text.data(), text.size(), '.', value, intDigits, decimals);
  }
  // The shortest text that reads back as the same double.
  static std::string Shortest(double value);
  // Only blanks (or nothing).
  static bool IsBlank(const char* text, std::size_t size);
};
