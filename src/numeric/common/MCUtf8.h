#pragma once

#include <cstddef>
#include <string>

namespace MCCommon_850 {

// The one reading of UTF-8 for the whole program, the engine's documents and
// the host's readers and renderers alike. A character is well formed when it
// is the shortest encoding of a code point up to U+10FFFF that is not a
// surrogate; anything else is malformed, one byte at a time.
class MCUtf8 {
 public:
  // True for a byte that continues a character begun before it: text cut
  // just before it would cut that character in two.
  static bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

  // Length in bytes (1 to 4) of the well-formed character that starts at
  // data[pos], or 0 when the bytes there are not one or run past `size`. The
  // code point goes to `code` when it is given.
  static int SequenceLength(const char* data, std::size_t size, std::size_t pos, char32_t* code = nullptr);
  static int SequenceLength(const std::string& text, std::size_t pos, char32_t* code = nullptr) {
    return SequenceLength(text.data(), text.size(), pos, code);
  }

  // True when all bytes are well formed; otherwise false with the offset of
  // the first malformed byte. A NUL byte is a character like any other.
  static bool Validate(const char* data, std::size_t size, std::size_t& badOffset);

  // The text with every malformed byte replaced by U+FFFD.
  static std::string Sanitize(const char* data, std::size_t size);
  static std::string Sanitize(const std::string& text) { return Sanitize(text.data(), text.size()); }

  // The code point of the well-formed character at text[pos]; U+FFFD when
  // there is none.
  static char32_t CodePoint(const std::string& text, std::size_t pos);

  // Appends the encoding of a code point; one that is not a character (a
  // surrogate, or past U+10FFFF) as U+FFFD.
  static void Append(std::string& out, char32_t code);

  // U+FFFD, in UTF-8.
  static const char kReplacement[];
};

}  // namespace MCCommon_850
