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
};
