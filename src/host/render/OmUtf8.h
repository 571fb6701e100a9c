#pragma once

#include <string>
#include <vector>

// Text measurement for the renderers. A character is one code point and takes
// one column; a byte that does not belong to a well-formed sequence counts as
// one character of its own, so that any input can be measured and cut.
class OmUtf8 {
 public:
  // Columns the text takes.
  static int Width(const std::string& text);

  // The text cut into characters, each as its bytes.
  static std::vector<std::string> Characters(const std::string& text);

  // The text with every malformed byte replaced by U+FFFD.
  static std::string Sanitize(const std::string& text);

  // Length in bytes of the well-formed sequence starting at text[pos], or 0
  // when the byte there does not start one.
  static int SequenceLength(const std::string& text, std::size_t pos);

  // The code point of the well-formed sequence at text[pos]; U+FFFD when
  // there is none.
  static char32_t CodePoint(const std::string& text, std::size_t pos);
  // Appends a code point; one that is not a character (a surrogate, or past
  // U+10FFFF) as U+FFFD.
  static void Append(std::string& out, char32_t code);
};
