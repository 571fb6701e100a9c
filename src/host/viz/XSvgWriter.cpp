#include "host/viz/XSvgWriter.h"

#include "host/render/OmHtmlRenderer.h"
#include "host/viz/XNumber.h"

std::string XSvgWriter::Num(double value) { return XNumber::Fixed(value, 2); }

void XSvgWriter::Indent() { fText.append(static_cast<std::size_t>(fDepth), ' '); }

void XSvgWriter::StartTag(const std::string& tag, const Attributes& attributes) {
  Indent();
  fText += "<" + tag;
  for (const auto& attribute : attributes)
    fText += " " + attribute.first + "=\"" + OmHtmlRenderer::Escape(attribute.second) + "\"";
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
  fText += "><title>" + OmHtmlRenderer::Escape(tooltip) + "</title></" + tag + ">\n";
}

void XSvgWriter::Text(double x, double y, const std::vector<std::string>& lines, double lineHeight,
                      const Attributes& attributes, const std::string& tooltip) {
  Attributes all = {{"x", Num(x)}, {"y", Num(y)}};
  all.insert(all.end(), attributes.begin(), attributes.end());
  StartTag("text", all);
  fText += ">";
  if (!tooltip.empty()) fText += "<title>" + OmHtmlRenderer::Escape(tooltip) + "</title>";
  if (lines.size() == 1) {
    fText += OmHtmlRenderer::Escape(lines[0]);
  } else {
    for (std::size_t i = 0; i < lines.size(); ++i) {
      fText += "<tspan x=\"" + Num(x) + "\" y=\"" + Num(y + static_cast<double>(i) * lineHeight) + "\">" +
               OmHtmlRenderer::Escape(lines[i]) + "</tspan>";
    }
  }
  fText += "</text>\n";
}
