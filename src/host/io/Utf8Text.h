#pragma once

#include <cstddef>
#include <string>

// Checks and measures UTF-8 text.
class Utf8Text {
 public:
  // True when the bytes are well-formed UTF-8 without NUL bytes; otherwise
  // false with the offset of the first bad byte.
  static bool Validate(const char* data, std::size_t size, std::size_t& badOffset);
  // Characters (code points) in well-formed text.
  static std::size_t CharCount(const char* data, std::size_t size);
  // The bytes as a readable excerpt for messages: at most `limit` characters,
  // with "..." when cut.
  static std::string Excerpt(const char* data, std::size_t size, std::size_t limit = 40);
};
