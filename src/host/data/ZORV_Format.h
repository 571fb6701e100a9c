#pragma once

#include <cstdint>
#include <string>

// A display or write format: four bytes holding the width (16 bits), the
// format type (8 bits) and the number of decimals (8 bits).
struct ZORV_Format {
  enum Type : std::uint8_t {
    A = 1,       // string
    AHEX = 2,    // string shown in hexadecimal
    COMMA = 3,   // number with thousands separated by commas
    DOLLAR = 4,  // COMMA with a leading dollar sign
    F = 5,       // plain fixed-point number
    E = 6,       // scientific notation
    DOT = 7,     // COMMA with the roles of point and comma swapped
    PCT = 8      // fixed-point number followed by a percent sign
  };

  std::uint16_t fWidth = 8;
  std::uint8_t fType = F;
  std::uint8_t fDecimals = 2;

  ZORV_Format() = default;
  ZORV_Format(std::uint8_t type, std::uint16_t width, std::uint8_t decimals)
      : fWidth(width), fType(type), fDecimals(decimals) {}

  bool IsString() const { return fType == A || fType == AHEX; }

  // The packed word: decimals in the low byte, the width in the next, the
  // type in the third.
  std::uint32_t Packed() const;
  static ZORV_Format FromPacked(std::uint32_t word);

  // "F8.2", "A10", "E10.3" ...; Parse returns false on a text it cannot read.
  std::string ToText() const;
  static bool Parse(const std::string& text, ZORV_Format& out);

  bool operator==(const ZORV_Format& o) const {
    return fWidth == o.fWidth && fType == o.fType && fDecimals == o.fDecimals;
  }
  bool operator!=(const ZORV_Format& o) const { return !(*this == o); }
};
