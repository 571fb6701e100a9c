#pragma once

#include <string>
#include <vector>

// How wide a text is in the chart font, in pixels, and how to make it fit:
// wrapping at blanks and cutting with an ellipsis. Widths come from a table
// of the font's advance widths, so the same text always measures the same
// and drawings are identical from run to run; characters outside the table
// count as wide ones, so a measured text is never narrower than drawn.
class XTextMetrics {
 public:
  // Pixels of a line of text at a font size in pixels.
  static double Width(const std::string& text, double fontSize, bool bBold = false);
  // The text in lines no wider than `maxWidth`, broken at blanks and, for a
  // word wider than a line, inside the word. Line breaks in the text are kept.
  static std::vector<std::string> Wrap(const std::string& text, double maxWidth, double fontSize, bool bBold = false);
  // The line cut to `maxWidth` with "…" at its end when it is wider.
  static std::string Truncate(const std::string& text, double maxWidth, double fontSize, bool bBold = false);
  // The height of a line at a font size: the size and some leading.
  static double LineHeight(double fontSize) { return fontSize * 1.25; }
};
