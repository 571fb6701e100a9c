#include "host/viz/ChartString.h"

#include "numeric/common/MCUtf8.h"

namespace {

void AppendUTF16(std::u16string& out, char32_t code) {
  if (code < 0x10000) {
    out += static_cast<char16_t>(code);
  } else {
    code -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (code >> 10));
    out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
  }
}

}  // namespace

ChartString ChartString::fromUTF8(const std::string& text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    char32_t code = 0xFFFD;  // what a malformed byte stands for
    const int length = MCCommon_850::MCUtf8::SequenceLength(text, i, &code);
    AppendUTF16(out, code);
    i += length > 0 ? static_cast<std::size_t>(length) : 1;
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
      MCCommon_850::MCUtf8::Append(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
    } else {
      // An unpaired surrogate becomes U+FFFD there.
      MCCommon_850::MCUtf8::Append(out, unit);
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
