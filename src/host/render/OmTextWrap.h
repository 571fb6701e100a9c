#pragma once

#include <string>
#include <vector>

// Wrapping and padding of plain text measured in characters (see OmUtf8).
class OmTextWrap {
 public:
  // The text broken into lines of at most `width` characters. Line breaks in
  // the text are kept; runs of blanks between words become one; a word longer
  // than the width is cut. Blank text gives no lines.
  static std::vector<std::string> Wrap(const std::string& text, int width);

  // The widest word of the text, in characters.
  static int LongestWord(const std::string& text);

  // The widest line of the text as it stands, in characters.
  static int NaturalWidth(const std::string& text);

  static std::string PadRight(const std::string& text, int width);
  static std::string PadLeft(const std::string& text, int width);
  static std::string Centre(const std::string& text, int width);

  // The text without blanks at its end.
  static std::string TrimRight(const std::string& text);
};
