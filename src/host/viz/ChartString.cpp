#include "host/viz/ChartString.h"

namespace {

const char16_t kReplacement = 0xFFFD;

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

void AppendUTF16(std::u16string& out, char32_t code) {
  if (code < 0x10000) {
    out += static_cast<char16_t>(code);
  } else {
    code -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (code >> 10));
    out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
  }
}

void AppendUTF8(std::string& out, char32_t code) {
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

}  // namespace

ChartString ChartString::fromUTF8(const std::string& text) {
  std::u16string out;
  out.reserve(text.size());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    unsigned char lead = static_cast<unsigned char>(text[i]);
    std::size_t extra = 0;
    char32_t code = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
      out += static_cast<char16_t>(lead);
      ++i;
      continue;
    } else if ((lead & 0xE0) == 0xC0) {
      extra = 1;
      code = lead & 0x1F;
      minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
      extra = 2;
      code = lead & 0x0F;
      minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
      extra = 3;
      code = lead & 0x07;
      minimum = 0x10000;
    } else {
      out += kReplacement;
      ++i;
      continue;
    }
    bool valid = i + extra < n;
    for (std::size_t k = 1; valid && k <= extra; ++k) {
      unsigned char c = static_cast<unsigned char>(text[i + k]);
      if (!IsContinuation(c)) {
        valid = false;
      } else {
        code = (code << 6) | (c & 0x3F);
      }
    }
    valid = valid && code >= minimum && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF);
    if (!valid) {
      out += kReplacement;
      ++i;
      continue;
    }
    AppendUTF16(out, code);
    i += extra + 1;
  }
  return ChartString(out);
}

std::string ChartString::toUTF8() const {
  std::string out;
  out.reserve(fText.size());
  const std::size_t n = fText.size();
  for (std::size_t i = 0; i < n; ++i) {
    char32_t unit = fText[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < n && fText[i + 1] >= 0xDC00 && fText[i + 1] <= 0xDFFF) {
      char32_t low = fText[++i];
      AppendUTF8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      AppendUTF8(out, kReplacement);
    } else {
      AppendUTF8(out, unit);
    }
  }
  return out;
}

bool ChartString::replaceSubstring(const ChartString& from, const ChartString& to, bool bAll) {
  if (from.empty()) return false;
  bool replaced = false;
  std::size_t position = 0;
  while ((position = fText.find(from.fText, position)) != std::u16string::npos) {
    fText.replace(position, from.fText.size(), to.fText);
    position += to.fText.size();
    replaced = true;
    if (!bAll) break;
  }
  return replaced;
}
