#include "host/cf/CFFormat.h"

#include <algorithm>

CFFormat::CFFormat(int type, int width, int decimals) : fType(type), fWidth(width), fDecimals(decimals) {}

CFFormat::CFFormat(const ZORV_Format& format)
    : fType(format.fType), fWidth(format.fWidth), fDecimals(format.fDecimals) {}

CFFormat* CFFormat::Clone() const { return new CFFormat(*this); }

ZORV_Format CFFormat::ToZORVFormat() const {
  int type = std::clamp(fType, 0, 255);
  int width = std::clamp(fWidth, 0, 65535);
  int decimals = std::clamp(fDecimals, 0, 255);
  return ZORV_Format(static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(width),
                     static_cast<std::uint8_t>(decimals));
}
