#include "numeric/glmm/GLMMXMLWriter.h"

#include <charconv>
#include <cmath>
#include <ostream>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCMarkupText.h"

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
  // printf's %.*g, without its locale and format parsing: a model file
  // writes a cell for every pair of fixed parameters.
  char buffer[40];
  char* end = buffer;
  for (int precision = 15; precision <= 17; ++precision) {
    end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision).ptr;
    double back = 0.0;
    std::from_chars(buffer, end, back);
    if (back == value) break;
  }
  return std::string(buffer, end);
}

std::string GLMMXMLWriter::Escape(const std::string& text, bool attribute) {
  return MCCommon_850::MCMarkupText::Escape(
      text, attribute ? MCCommon_850::MCMarkupText::XML_ATTRIBUTE : MCCommon_850::MCMarkupText::XML_CONTENT);
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
