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
};
