#pragma once

#include <cstdint>

// Advance widths of the chart font's characters, in font units, for the
// ranges listed; generated (see scripts/font-widths).
struct XTextMetricsTable {
  struct Range {
    unsigned fFirst;
    unsigned fLast;
  };
  static const unsigned kUnitsPerEm;
  static const Range kRanges[];
  static const int kRangeCount;
  // The widths of every range, one after the other.
  static const std::uint16_t kRegular[];
  static const std::uint16_t kBold[];
};
