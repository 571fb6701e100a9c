#include "host/viz/XChartText.h"

#include <cctype>
#include <cstdlib>

#include "numeric/common/MCUtf8.h"

namespace {

// The length of a reference at text[i] ('&'), with its character in `out`;
// 0 when it is none.
std::size_t Reference(const std::string& text, std::size_t i, std::string& out) {
  const std::size_t semicolon = text.find(';', i);
  if (semicolon == std::string::npos || semicolon - i > 10) return 0;
  const std::string name = text.substr(i + 1, semicolon - i - 1);
  static const char* const kNames[][2] = {{"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"}};
  for (const auto& entry : kNames) {
    if (name == entry[0]) {
      out = entry[1];
      return semicolon - i + 1;
    }
  }
  if (name.size() < 2 || name[0] != '#') return 0;
  const bool hex = name[1] == 'x' || name[1] == 'X';
  const std::string digits = name.substr(hex ? 2 : 1);
  if (digits.empty()) return 0;
  for (char c : digits) {
    if (hex ? !std::isxdigit(static_cast<unsigned char>(c)) : !std::isdigit(static_cast<unsigned char>(c))) return 0;
  }
  out.clear();
  const unsigned long code = std::strtoul(digits.c_str(), nullptr, hex ? 16 : 10);
  MCCommon_850::MCUtf8::Append(out, code == 0 || code > 0x10FFFF ? 0xFFFD : static_cast<char32_t>(code));
  return semicolon - i + 1;
}

// The length of a line break tag at text[i] ('<'); 0 when it is none.
std::size_t LineBreak(const std::string& text, std::size_t i) {
  if (text.size() - i < 4) return 0;
  if (std::tolower(static_cast<unsigned char>(text[i + 1])) != 'b' ||
      std::tolower(static_cast<unsigned char>(text[i + 2])) != 'r')
    return 0;
  std::size_t j = i + 3;
  while (j < text.size() && text[j] == ' ') ++j;
  if (j < text.size() && text[j] == '/') ++j;
  if (j < text.size() && text[j] == '>') return j - i + 1;
  return 0;
}

void AppendText(const XMarkupNode& node, std::string& out) {
  for (const auto& child : node.fvChildren) {
    if (child->IsText()) {
      out += XChartText::Decode(child->fText);
    } else if (child->fName == "BR" || child->fName == "br") {
      out += '\n';
    }
  }
}

}  // namespace

std::string XChartText::Decode(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == '&') {
      std::string character;
      const std::size_t length = Reference(text, i, character);
      if (length > 0) {
        out += character;
        i += length;
        continue;
      }
    } else if (text[i] == '<') {
      const std::size_t length = LineBreak(text, i);
      if (length > 0) {
        out += '\n';
        i += length;
        continue;
      }
    }
    out += text[i++];
  }
  return out;
}

std::string XChartText::Of(const XMarkupNode* holder) {
  std::string out;
  if (holder == nullptr) return out;
  for (const XMarkupNode* text : holder->Children("text")) AppendText(*text, out);
  return out;
}

std::vector<std::string> XChartText::Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (true) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return lines;
}
