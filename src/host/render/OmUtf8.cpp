#include "host/render/OmUtf8.h"

namespace {

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

}  // namespace

int OmUtf8::SequenceLength(const std::string& text, std::size_t pos) {
  const std::size_t n = text.size();
  if (pos >= n) return 0;
  const unsigned char c = static_cast<unsigned char>(text[pos]);
  if (c < 0x80) return 1;
  int len = 0;
  unsigned int minCode = 0;
  unsigned int code = 0;
  if ((c & 0xE0) == 0xC0) {
    len = 2;
    minCode = 0x80;
    code = c & 0x1F;
  } else if ((c & 0xF0) == 0xE0) {
    len = 3;
    minCode = 0x800;
    code = c & 0x0F;
  } else if ((c & 0xF8) == 0xF0) {
    len = 4;
    minCode = 0x10000;
    code = c & 0x07;
  } else {
    return 0;
  }
  if (pos + static_cast<std::size_t>(len) > n) return 0;
  for (int i = 1; i < len; ++i) {
    const unsigned char d = static_cast<unsigned char>(text[pos + static_cast<std::size_t>(i)]);
    if (!IsContinuation(d)) return 0;
    code = (code << 6) | (d & 0x3F);
  }
  // Overlong forms, surrogates and values past the last code point are not
  // characters.
  if (code < minCode || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return len;
}

int OmUtf8::Width(const std::string& text) {
  int width = 0;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const int len = SequenceLength(text, pos);
    pos += static_cast<std::size_t>(len > 0 ? len : 1);
    ++width;
  }
  return width;
}

std::vector<std::string> OmUtf8::Characters(const std::string& text) {
  std::vector<std::string> out;
  std::size_t pos = 0;
  while (pos < text.size()) {
    const int len = SequenceLength(text, pos);
    const std::size_t step = static_cast<std::size_t>(len > 0 ? len : 1);
    out.push_back(text.substr(pos, step));
    pos += step;
  }
  return out;
}

std::string OmUtf8::Sanitize(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  std::size_t pos = 0;
  while (pos < text.size()) {
    const int len = SequenceLength(text, pos);
    if (len > 0) {
      out.append(text, pos, static_cast<std::size_t>(len));
      pos += static_cast<std::size_t>(len);
    } else {
      out += "\xEF\xBF\xBD";
      ++pos;
    }
  }
  return out;
}

char32_t OmUtf8::CodePoint(const std::string& text, std::size_t pos) {
  const int length = SequenceLength(text, pos);
  if (length == 0) return 0xFFFD;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data() + pos);
  if (length == 1) return bytes[0];
  char32_t code = bytes[0] & (0x7F >> length);
  for (int i = 1; i < length; ++i) code = (code << 6) | (bytes[i] & 0x3F);
  return code;
}

void OmUtf8::Append(std::string& out, char32_t code) {
  if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = 0xFFFD;
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}
