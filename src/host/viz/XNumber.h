#pragma once

#include <string>

// Numbers as the chart markup and its drawing write and read them,
// independent of the process locale.
class XNumber {
 public:
  // A whole text that is one decimal number ("2", "-0.5", "1e+06"), blanks
  // around it allowed. False for anything else, "inf" and "nan" included.
  static bool Parse(const std::string& text, double& value);
  // A number of pixels, "12" or "12px", not negative.
  static bool ParseLength(const std::string& text, double& value);
  // The shortest text that reads back as the same double.
  static std::string Exact(double value);
  // Six significant digits without trailing zeros (2, 5.33333, 1e+06).
  static std::string General(double value);
  // At most `decimals` decimals without trailing zeros, for coordinates.
  static std::string Fixed(double value, int decimals = 2);
};
