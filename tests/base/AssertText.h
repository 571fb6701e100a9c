#pragma once

#include <string>

namespace base_test {

// The pattern a death test expects of a failed check with that literal
// text: the text with every character a regular expression gives a meaning
// escaped.
inline std::string AssertText(const std::string& text) {
  std::string pattern = "assertion failed: ";
  for (char c : text) {
    if (std::string("\\()[]{}.*+?^$|").find(c) != std::string::npos) pattern += '\\';
    pattern += c;
  }
  return pattern;
}

}  // namespace base_test
