#pragma once

#include <string>
#include <vector>

// The session's look of charts: the size of a chart, its font and its
// colours, which a document takes where it says nothing of its own
// (XDocument::applyCTemplate, applyStyleTemplate), and the names of the
// colours the markup knows.
class XChartLook {
 public:
  static const int kWidth = 640;
  static const int kHeight = 420;
  static const int kFontSize = 12;
  // DejaVu Sans is the font whose widths XTextMetrics knows; the others are
  // no wider, so text measured for it fits in them too.
  static const char* const kFontFamily;
  static const char* const kBackground;
  static const char* const kInk;      // text, axes
  static const char* const kGridInk;  // grid lines, frames
  // Categorical colours, in the order categories take them.
  static const std::vector<std::string>& Palette();

  // "#rrggbb" for a colour written as #rgb, #rrggbb or a name the markup
  // knows (lower case); empty for anything else.
  static std::string ColorValue(const std::string& text);
};
