#include "host/render/OmTextWrap.h"

#include <algorithm>

#include "host/render/OmUtf8.h"

namespace {

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> out;
  std::string current;
  for (char c : text) {
    if (c == '\n') {
      out.push_back(current);
      current.clear();
    } else if (c != '\r') {
      current += c;
    }
  }
  out.push_back(current);
  return out;
}

std::vector<std::string> SplitWords(const std::string& line) {
  std::vector<std::string> out;
  std::string current;
  for (char c : line) {
    if (c == ' ' || c == '\t') {
      if (!current.empty()) out.push_back(current);
      current.clear();
    } else {
      current += c;
    }
  }
  if (!current.empty()) out.push_back(current);
  return out;
}

std::string Spaces(int n) { return std::string(static_cast<std::size_t>(std::max(n, 0)), ' '); }

}  // namespace

std::vector<std::string> OmTextWrap::Wrap(const std::string& text, int width) {
  width = std::max(width, 1);
  std::vector<std::string> out;
  for (const std::string& paragraph : SplitLines(text)) {
    std::string line;
    int lineWidth = 0;
    bool any = false;
    for (const std::string& word : SplitWords(paragraph)) {
      any = true;
      const int w = OmUtf8::Width(word);
      if (lineWidth > 0 && lineWidth + 1 + w <= width) {
        line += ' ';
        line += word;
        lineWidth += 1 + w;
        continue;
      }
      if (lineWidth > 0) {
        out.push_back(line);
        line.clear();
        lineWidth = 0;
      }
      if (w <= width) {
        line = word;
        lineWidth = w;
        continue;
      }
      for (const std::string& ch : OmUtf8::Characters(word)) {
        if (lineWidth == width) {
          out.push_back(line);
          line.clear();
          lineWidth = 0;
        }
        line += ch;
        ++lineWidth;
      }
    }
    if (!any) {
      out.emplace_back();
    } else {
      out.push_back(line);
    }
  }
  while (!out.empty() && out.back().empty()) out.pop_back();
  return out;
}

int OmTextWrap::LongestWord(const std::string& text) {
  int longest = 0;
  for (const std::string& line : SplitLines(text)) {
    for (const std::string& word : SplitWords(line)) longest = std::max(longest, OmUtf8::Width(word));
  }
  return longest;
}

int OmTextWrap::NaturalWidth(const std::string& text) {
  int widest = 0;
  for (const std::string& line : SplitLines(text)) widest = std::max(widest, OmUtf8::Width(line));
  return widest;
}

std::string OmTextWrap::PadRight(const std::string& text, int width) {
  return text + Spaces(width - OmUtf8::Width(text));
}

std::string OmTextWrap::PadLeft(const std::string& text, int width) {
  return Spaces(width - OmUtf8::Width(text)) + text;
}

std::string OmTextWrap::Centre(const std::string& text, int width) {
  const int free = width - OmUtf8::Width(text);
  if (free <= 0) return text;
  const int left = free / 2;
  return Spaces(left) + text + Spaces(free - left);
}

std::string OmTextWrap::TrimRight(const std::string& text) {
  std::size_t end = text.size();
  while (end > 0 && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  return text.substr(0, end);
}
