#include "charts/GNLMChartText.h"

#include <algorithm>
#include <locale>
#include <sstream>

#include "host/data/OBS.h"
#include "host/data/ZORV_Variable.h"
#include "host/output/ToString.h"
#include "host/text/ZORVMBConverter.h"
#include "host/viz/XUtility.h"
#include "numeric/common/MCMarkupText.h"

namespace GNLMChartText {

namespace {

// What a line end or line-drawing code becomes in chart text; null for
// every other byte. The markup characters are the markup escaper's.
const char* Escaped(unsigned char byte) {
  switch (byte) {
    case 10:
    case 12:
    case 13:
      return "<BR/>";
    case 14:
      return "&#9472;";
    case 15:
      return "&#9474;";
    case 16:
      return "&#9532;";
    case 17:
      return "&#9492;";
    case 18:
      return "&#9484;";
    case 19:
      return "&#9496;";
    case 20:
      return "&#9488;";
    case 21:
      return "&#9500;";
    case 22:
      return "&#9508;";
    case 23:
      return "&#9516;";
    case 24:
      return "&#9524;";
    default:
      return nullptr;
  }
}

bool IsMarkup(unsigned char byte) { return byte == '"' || byte == '&' || byte == '<' || byte == '>'; }

}  // namespace

void escapeChartText(std::string& text) {
  std::string out;
  out.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    const std::size_t length =
        std::min(static_cast<std::size_t>(ZORVMBmbclen_A(text.c_str() + i)), text.size() - i);
    if (length > 1) {
      out.append(text, i, length);
      i += length;
      continue;
    }
    const unsigned char byte = static_cast<unsigned char>(text[i]);
    const char* escaped = Escaped(byte);
    if (escaped != nullptr) {
      out += escaped;
    } else if (IsMarkup(byte)) {
      out += MCCommon_850::MCMarkupText::Escape(std::string(1, text[i]), MCCommon_850::MCMarkupText::XML_ATTRIBUTE);
    } else {
      out += text[i];
    }
    ++i;
    // A carriage return and the line feed behind it are one line break.
    if (byte == 13 && i < text.size() && text[i] == '\n') ++i;
  }
  text.swap(out);
}

ChartString variableCaption(const ZORV_Variable& variable) {
  std::string caption = variable.GetPreferredLabel();
  escapeChartText(caption);
  return XUtility::ChartStringFromLocalCodePage(caption);
}

double parseNumber(const std::string& text, bool& ok) {
  std::istringstream in(text);
  in.imbue(std::locale::classic());
  double value = 0.0;
  in >> value;
  ok = !in.fail() && in.peek() == std::char_traits<char>::eof();
  return value;
}

std::string formatNumber(double value) {
  std::ostringstream out;
  out.imbue(std::locale::classic());
  out << value;
  return out.str();
}

std::string formatValue(double value, const ZORV_Format& format) {
  OBS cell;
  cell.fNum = value;
  return ToString(&cell, format);
}

std::size_t replaceFirst(std::string& text, const std::string& from, const std::string& to, std::size_t start) {
  const std::size_t at = text.find(from, start);
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return at;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  if (from.empty()) return;
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

bool eraseThrough(std::string& text, const std::string& open, const std::string& close, std::size_t start) {
  const std::size_t first = text.find(open, start);
  if (first == std::string::npos) return false;
  const std::size_t last = text.find(close, first);
  if (last == std::string::npos) return false;
  text.erase(first, last + close.size() - first);
  return true;
}

void removeEscapes(std::string& text) {
  if (text.find("\\:") == std::string::npos) return;
  std::string out;
  for (char c : text) {
    if (c != '\\') out += c;
  }
  text.swap(out);
}

}  // namespace GNLMChartText
