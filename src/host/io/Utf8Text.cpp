#include "host/io/Utf8Text.h"

bool Utf8Text::Validate(const char* data, std::size_t size, std::size_t& badOffset) {
  const unsigned char* s = reinterpret_cast<const unsigned char*>(data);
  std::size_t i = 0;
  while (i < size) {
    unsigned char c = s[i];
    if (c >= 0x01 && c < 0x80) {
      ++i;
      continue;
    }
    std::size_t need = 0;
    unsigned int min = 0;
    unsigned int cp = 0;
    if (c >= 0xC2 && c <= 0xDF) {
      need = 1;
      min = 0x80;
      cp = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      need = 2;
      min = 0x800;
      cp = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      need = 3;
      min = 0x10000;
      cp = c & 0x07;
    } else {
      badOffset = i;  // NUL, a stray continuation byte, or a byte never used
      return false;
    }
    for (std::size_t k = 1; k <= need; ++k) {
      if (i + k >= size || (s[i + k] & 0xC0) != 0x80) {
        badOffset = i;
        return false;
      }
      cp = (cp << 6) | (s[i + k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      badOffset = i;
      return false;
    }
    i += need + 1;
  }
  return true;
}

std::size_t Utf8Text::CharCount(const char* data, std::size_t size) {
  std::size_t n = 0;
  for (std::size_t i = 0; i < size; ++i) {
    if ((static_cast<unsigned char>(data[i]) & 0xC0) != 0x80) ++n;
  }
  return n;
}

std::string Utf8Text::Excerpt(const char* data, std::size_t size, std::size_t limit) {
  std::size_t chars = 0;
  std::size_t i = 0;
  while (i < size) {
    if ((static_cast<unsigned char>(data[i]) & 0xC0) != 0x80) {
      if (chars == limit) return std::string(data, i) + "...";
      ++chars;
    }
    ++i;
  }
  return std::string(data, size);
}
