#include "host/viz/XChartLook.h"

#include <cctype>
#include <map>

const char* const XChartLook::kFontFamily = "DejaVu Sans, Bitstream Vera Sans, Verdana, sans-serif";
const char* const XChartLook::kBackground = "#ffffff";
const char* const XChartLook::kInk = "#222222";
const char* const XChartLook::kGridInk = "#d9d9d9";

const std::vector<std::string>& XChartLook::Palette() {
  // Distinct in hue and lightness, and readable on white.
  static const std::vector<std::string> palette = {"#3b6fb6", "#d1603d", "#4f9a5b", "#8a5fb0", "#c89b2c",
                                                   "#3aa0a6", "#b5487d", "#6b6b6b", "#8c6d46", "#5a7f2e"};
  return palette;
}

std::string XChartLook::ColorValue(const std::string& text) {
  static const std::map<std::string, std::string> names = {
      {"black", "#000000"},  {"white", "#ffffff"}, {"gray", "#808080"}, {"grey", "#808080"},
      {"red", "#d1603d"},    {"green", "#4f9a5b"}, {"blue", "#3b6fb6"}, {"orange", "#e08a2c"},
      {"purple", "#8a5fb0"}, {"teal", "#3aa0a6"},  {"none", "none"}};
  auto named = names.find(text);
  if (named != names.end()) return named->second;
  if (text.size() != 4 && text.size() != 7) return std::string();
  if (text[0] != '#') return std::string();
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (!std::isxdigit(static_cast<unsigned char>(text[i]))) return std::string();
  }
  std::string out = "#";
  for (std::size_t i = 1; i < text.size(); ++i) {
    const char c = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
    out += c;
    if (text.size() == 4) out += c;
  }
  return out;
}
