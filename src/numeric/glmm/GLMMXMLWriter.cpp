#include "numeric/glmm/GLMMXMLWriter.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ostream>

#include "numeric/common/MCMV.h"

namespace MCGLMM_850 {

namespace {

const char* const kMissingItem = "__MISSING__";

}  // namespace

GLMMXMLWriter::GLMMXMLWriter(std::ostream& os)
    : fpStream(&os), fbStartTagOpen(false), fbHasContent(false), fbHasText(false) {}

void GLMMXMLWriter::Declaration() { *fpStream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"; }

void GLMMXMLWriter::Indent() { *fpStream << '\n' << std::string(fvOpen.size() * 2, ' '); }

void GLMMXMLWriter::EndStartTag() {
  if (fbStartTagOpen) {
    *fpStream << '>';
    fbStartTagOpen = false;
  }
}

void GLMMXMLWriter::Open(const std::string& name) {
  EndStartTag();
  if (!fvOpen.empty()) Indent();
  *fpStream << '<' << name;
  fvOpen.push_back(name);
  fbStartTagOpen = true;
  fbHasContent = false;
  fbHasText = false;
}

void GLMMXMLWriter::Attribute(const std::string& name, const std::string& value) {
  if (!fbStartTagOpen) return;
  *fpStream << ' ' << name << "=\"" << Escape(value, true) << '"';
}

void GLMMXMLWriter::OpenNamed(const std::string& element, const std::string& name) {
  Open(element);
  Attribute("name", name);
}

void GLMMXMLWriter::NameValue(const std::string& element, const std::string& name, const std::string& value) {
  OpenNamed(element, name);
  Attribute("value", value);
  Close();
}

void GLMMXMLWriter::Text(const std::string& text) {
  if (fvOpen.empty()) return;
  EndStartTag();
  *fpStream << Escape(text, false);
  fbHasContent = true;
  fbHasText = true;
}

void GLMMXMLWriter::Close() {
  if (fvOpen.empty()) return;
  const std::string name = fvOpen.back();
  fvOpen.pop_back();
  if (fbStartTagOpen) {
    *fpStream << "/>";
    fbStartTagOpen = false;
  } else {
    if (!fbHasText) Indent();
    *fpStream << "</" << name << '>';
  }
  fbHasContent = true;
  fbHasText = false;
  if (fvOpen.empty()) *fpStream << '\n';
}

void GLMMXMLWriter::Array(const std::vector<std::string>& items, const std::string& type) {
  Open("Array");
  Attribute("n", static_cast<long>(items.size()));
  if (!type.empty()) Attribute("type", type);
  std::string content;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) content += ' ';
    content += ArrayItem(items[i]);
  }
  if (!content.empty()) Text(content);
  Close();
}

void GLMMXMLWriter::NumberArray(const std::vector<double>& values) {
  std::vector<std::string> items;
  items.reserve(values.size());
  for (double v : values) {
    const std::string text = NumberText(v);
    items.push_back(text.empty() ? std::string(kMissingItem) : text);
  }
  Array(items, "real");
}

void GLMMXMLWriter::Finish() {
  while (!fvOpen.empty()) Close();
}

std::string GLMMXMLWriter::NumberText(double value) {
  if (MCCommon_850::MCMV::IsMissing(value) || !std::isfinite(value)) return std::string();
  if (value == 0.0) return "0";
  char buffer[40];
  for (int precision = 15; precision <= 17; ++precision) {
    std::snprintf(buffer, sizeof buffer, "%.*g", precision, value);
    if (std::strtod(buffer, nullptr) == value) break;
  }
  return buffer;
}

std::string GLMMXMLWriter::CleanUTF8(const std::string& text) {
  static const char* const kReplacement = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(text.size());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c < 0x80) {
      const bool allowed = c >= 0x20 || c == '\t' || c == '\n' || c == '\r';
      out += allowed ? static_cast<char>(c) : ' ';
      ++i;
      continue;
    }
    std::size_t length = 0;
    unsigned long code = 0;
    if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
      code = c & 0x1Fu;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      code = c & 0x0Fu;
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      code = c & 0x07u;
    }
    bool valid = length > 0 && i + length <= n;
    for (std::size_t k = 1; valid && k < length; ++k) {
      const unsigned char cc = static_cast<unsigned char>(text[i + k]);
      if ((cc & 0xC0u) != 0x80u) {
        valid = false;
      } else {
        code = (code << 6) | (cc & 0x3Fu);
      }
    }
    // Overlong forms, surrogates, code points above U+10FFFF and the two
    // non-characters XML excludes.
    if (valid) {
      if ((length == 3 && code < 0x800) || (length == 4 && code < 0x10000) || code > 0x10FFFF ||
          (code >= 0xD800 && code <= 0xDFFF) || code == 0xFFFE || code == 0xFFFF) {
        valid = false;
      }
    }
    if (valid) {
      out.append(text, i, length);
      i += length;
    } else {
      out += kReplacement;
      ++i;
    }
  }
  return out;
}

std::string GLMMXMLWriter::Escape(const std::string& text, bool attribute) {
  const std::string clean = CleanUTF8(text);
  std::string out;
  out.reserve(clean.size());
  for (char c : clean) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += attribute ? "&quot;" : "\"";
        break;
      case '\t':
        out += attribute ? "&#9;" : "\t";
        break;
      case '\n':
        out += attribute ? "&#10;" : "\n";
        break;
      case '\r':
        out += "&#13;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string GLMMXMLWriter::ArrayItem(const std::string& item) {
  bool plain = !item.empty();
  for (char c : item) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '"' || c == '\\') plain = false;
  }
  if (plain) return item;
  std::string out = "\"";
  for (char c : item) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  out += '"';
  return out;
}

}  // namespace MCGLMM_850
