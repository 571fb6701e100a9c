#include "host/viz/XTextMetrics.h"

#include "host/render/OmUtf8.h"
#include "host/viz/XChartText.h"
#include "host/viz/XTextMetricsTable.h"
#include "numeric/common/MCUtf8.h"

namespace {

// The advance of one character in ems.
double Advance(unsigned code, bool bold) {
  const std::uint16_t* widths = bold ? XTextMetricsTable::kBold : XTextMetricsTable::kRegular;
  int offset = 0;
  for (int i = 0; i < XTextMetricsTable::kRangeCount; ++i) {
    const XTextMetricsTable::Range& range = XTextMetricsTable::kRanges[i];
    if (code >= range.fFirst && code <= range.fLast) {
      const std::uint16_t width = widths[offset + static_cast<int>(code - range.fFirst)];
      if (width > 0) return static_cast<double>(width) / XTextMetricsTable::kUnitsPerEm;
      break;
    }
    offset += static_cast<int>(range.fLast - range.fFirst + 1);
  }
  if (code >= 0x300 && code <= 0x36F) return 0.0;  // combining marks
  if (code >= 0x1100) return 1.0;                  // wide scripts and symbols
  return 0.7;
}

}  // namespace

double XTextMetrics::Width(const std::string& text, double fontSize, bool bBold) {
  double ems = 0.0;
  for (const std::string& character : OmUtf8::Characters(text)) ems += Advance(MCCommon_850::MCUtf8::CodePoint(character, 0), bBold);
  return ems * fontSize;
}

std::vector<std::string> XTextMetrics::Wrap(const std::string& text, double maxWidth, double fontSize, bool bBold) {
  std::vector<std::string> out;
  for (const std::string& paragraph : XChartText::Lines(text)) {
    std::string line;
    std::string word;
    auto flushWord = [&]() {
      if (word.empty()) return;
      const std::string joined = line.empty() ? word : line + " " + word;
      if (Width(joined, fontSize, bBold) <= maxWidth) {
        line = joined;
      } else {
        if (!line.empty()) out.push_back(line);
        line.clear();
        // A word wider than a line is broken between characters.
        for (const std::string& character : OmUtf8::Characters(word)) {
          if (!line.empty() && Width(line + character, fontSize, bBold) > maxWidth) {
            out.push_back(line);
            line.clear();
          }
          line += character;
        }
      }
      word.clear();
    };
    for (char c : paragraph) {
      if (c == ' ') {
        flushWord();
      } else {
        word += c;
      }
    }
    flushWord();
    out.push_back(line);
  }
  return out;
}

std::string XTextMetrics::Truncate(const std::string& text, double maxWidth, double fontSize, bool bBold) {
  if (Width(text, fontSize, bBold) <= maxWidth) return text;
  const std::string ellipsis = "\xE2\x80\xA6";
  std::string out;
  for (const std::string& character : OmUtf8::Characters(text)) {
    if (Width(out + character + ellipsis, fontSize, bBold) > maxWidth) break;
    out += character;
  }
  return out + ellipsis;
}
