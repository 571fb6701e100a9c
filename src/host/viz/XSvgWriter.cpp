#include "host/viz/XSvgWriter.h"

#include "host/viz/XNumber.h"
#include "numeric/common/MCMarkupText.h"

namespace {

// The drawing stands inside the HTML report, so its text is escaped as HTML.
std::string Escape(const std::string& text) {
  return MCCommon_850::MCMarkupText::Escape(text, MCCommon_850::MCMarkupText::HTML);
}

}  // namespace

std::string XSvgWriter::Num(double value) { return XNumber::Fixed(value, 2); }

void XSvgWriter::Indent() { fText.append(static_cast<std::size_t>(fDepth), ' '); }

void XSvgWriter::StartTag(const std::string& tag, const Attributes& attributes) {
  Indent();
  fText += "<" + tag;
  for (const auto& attribute : attributes)
    fText += " " + attribute.first + "=\"" + Escape(attribute.second) + "\"";
}

void XSvgWriter::Open(const std::string& tag, const Attributes& attributes) {
  StartTag(tag, attributes);
  fText += ">\n";
  ++fDepth;
}

void XSvgWriter::Close(const std::string& tag) {
  if (fDepth > 0) --fDepth;
  Indent();
  fText += "</" + tag + ">\n";
}

void XSvgWriter::Element(const std::string& tag, const Attributes& attributes, const std::string& tooltip) {
  StartTag(tag, attributes);
  if (tooltip.empty()) {
    fText += "/>\n";
    return;
  }
  fText += "><title>" + Escape(tooltip) + "</title></" + tag + ">\n";
}

void XSvgWriter::Text(double x, double y, const std::vector<std::string>& lines, double lineHeight,
                      const Attributes& attributes, const std::string& tooltip) {
  Attributes all = {{"x", Num(x)}, {"y", Num(y)}};
  all.insert(all.end(), attributes.begin(), attributes.end());
  StartTag("text", all);
  fText += ">";
  if (!tooltip.empty()) fText += "<title>" + Escape(tooltip) + "</title>";
  if (lines.size() == 1) {
    fText += Escape(lines[0]);
  } else {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      fText += "<tspan x=\"" + Num(x) + "\" y=\"" + Num(y + static_cast<double>(i) * lineHeight) + "\">" +
               Escape(lines[i]) + "</tspan>";
    }
  }
  fText += "</text>\n";
}
