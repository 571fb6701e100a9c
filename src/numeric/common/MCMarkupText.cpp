#include "numeric/common/MCMarkupText.h"

#include "numeric/common/MCUtf8.h"

namespace MCCommon_850 {

namespace {

// The markup for one ASCII character.
void AppendAscii(std::string& out, char c, MCMarkupText::Context context) {
  const bool html = context == MCMarkupText::HTML;
  const bool attribute = context == MCMarkupText::XML_ATTRIBUTE;
  switch (c) {
    case '&':
      out += "&amp;";
      return;
    case '<':
      out += "&lt;";
      return;
    case '>':
      out += "&gt;";
      return;
    case '"':
      out += html || attribute ? "&quot;" : "\"";
      return;
    case '\'':
      out += html ? "&#39;" : "'";
      return;
    case '\t':
      out += attribute ? "&#9;" : "\t";
      return;
    case '\n':
      out += attribute ? "&#10;" : "\n";
      return;
    case '\r':
      if (!html) out += "&#13;";
      return;
    default:
      break;
  }
  const unsigned char byte = static_cast<unsigned char>(c);
  const bool control = byte < 0x20 || (html && byte == 0x7F);
  out += control ? ' ' : c;
}

}  // namespace

std::string MCMarkupText::Escape(const std::string& text, Context context) {
  std::string out;
  out.reserve(text.size());
  std::size_t pos = 0;
  while (pos < text.size()) {
    char32_t code = 0;
    const int length = MCUtf8::SequenceLength(text, pos, &code);
    if (length == 0) {
      out += MCUtf8::kReplacement;
      ++pos;
      continue;
    }
    if (length == 1) {
      AppendAscii(out, text[pos], context);
    } else if (context != HTML && (code == 0xFFFE || code == 0xFFFF)) {
      out += MCUtf8::kReplacement;
    } else {
      out.append(text, pos, static_cast<std::size_t>(length));
    }
    pos += static_cast<std::size_t>(length);
  }
  return out;
}

}  // namespace MCCommon_850
