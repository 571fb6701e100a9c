#include "host/data/ZORV_Format.h"

#include <cctype>
#include <cstdlib>

namespace {

struct TypeName {
  std::uint8_t type;
  const char* name;
};

// Longest names first so that "DOLLAR" is not read as "DOT".
const TypeName kTypeNames[] = {
    {ZORV_Format::DOLLAR, "DOLLAR"}, {ZORV_Format::COMMA, "COMMA"}, {ZORV_Format::AHEX, "AHEX"},
    {ZORV_Format::DOT, "DOT"},       {ZORV_Format::PCT, "PCT"},     {ZORV_Format::A, "A"},
    {ZORV_Format::F, "F"},           {ZORV_Format::E, "E"},
};

}  // namespace

std::uint32_t ZORV_Format::Packed() const {
  return static_cast<std::uint32_t>(fDecimals) | (static_cast<std::uint32_t>(fWidth & 0xFF) << 8) |
         (static_cast<std::uint32_t>(fType) << 16);
}

ZORV_Format ZORV_Format::FromPacked(std::uint32_t word) {
  return ZORV_Format(static_cast<std::uint8_t>((word >> 16) & 0xFF),
                     static_cast<std::uint16_t>((word >> 8) & 0xFF),
                     static_cast<std::uint8_t>(word & 0xFF));
}

std::string ZORV_Format::ToText() const {
  std::string name = "?";
  for (const auto& t : kTypeNames) {
    if (t.type == fType) name = t.name;
  }
  std::string text = name + std::to_string(fWidth);
  if (!IsString()) text += "." + std::to_string(fDecimals);
  return text;
}

bool ZORV_Format::Parse(const std::string& text, ZORV_Format& out) {
  std::string upper;
  for (char c : text) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (const auto& t : kTypeNames) {
    std::string name = t.name;
    if (upper.compare(0, name.size(), name) != 0) continue;
    std::string rest = upper.substr(name.size());
    if (rest.empty() || !std::isdigit(static_cast<unsigned char>(rest[0]))) continue;
    char* end = nullptr;
    long width = std::strtol(rest.c_str(), &end, 10);
    long decimals = 0;
    if (*end == '.') {
      const char* d = end + 1;
      if (!std::isdigit(static_cast<unsigned char>(*d))) return false;
      decimals = std::strtol(d, &end, 10);
    }
    if (*end != '\0') return false;
    bool isString = t.type == A || t.type == AHEX;
    if (width < 1 || width > (isString ? 32767 : 40)) return false;
    if (decimals < 0 || decimals > 16 || (isString && decimals != 0) || decimals >= width) {
      if (!(isString && decimals == 0)) return false;
    }
    out = ZORV_Format(t.type, static_cast<std::uint16_t>(width), static_cast<std::uint8_t>(decimals));
    return true;
  }
  return false;
}
