#pragma once

#include <string>

#include "host/data/ZORV_Format.h"

// How a number is written in a cell: a display format, and whether a value
// that would round to zero in it is written in E notation instead (used for
// coefficients, which may be very small yet far from zero).
//
// A format that cannot hold a number (a string format, an unknown type or a
// width of 0) writes the number with up to ten significant digits. Cells
// are trimmed, so the width only limits the text.
class BpFormatSpec {
 public:
  BpFormatSpec() = default;
  BpFormatSpec(const ZORV_Format& format) : fFormat(format) {}
  BpFormatSpec(const ZORV_Format& format, bool smallAsExponent) : fFormat(format), fbSmallAsExponent(smallAsExponent) {}

  const ZORV_Format& GetFormat() const { return fFormat; }
  void SetFormat(const ZORV_Format& format) { fFormat = format; }
  bool GetSmallAsExponent() const { return fbSmallAsExponent; }
  void SetSmallAsExponent(bool smallAsExponent) { fbSmallAsExponent = smallAsExponent; }

  // The text of a value; the empty string for the system-missing value.
  std::string Format(double value) const;
  // A description such as "F40.3", or "F40.3/E" with small values in E.
  std::string ToText() const;

  // The system-missing value, the most negative finite double.
  static double Missing();
  static bool IsMissing(double value);

 private:
  ZORV_Format fFormat{ZORV_Format::F, 40, 3};
  bool fbSmallAsExponent = false;
};
