#include "numeric/common/MCUtf8.h"

namespace MCCommon_850 {

const char MCUtf8::kReplacement[] = "\xEF\xBF\xBD";

namespace {

const char32_t kReplacementCode = 0xFFFD;

}  // namespace

int MCUtf8::SequenceLength(const char* data, std::size_t size, std::size_t pos, char32_t* code) {
  if (data == nullptr || pos >= size) return 0;
  const unsigned char lead = static_cast<unsigned char>(data[pos]);
  int length = 0;
  char32_t value = 0;
  char32_t smallest = 0;
  if (lead < 0x80) {
    length = 1;
    value = lead;
  } else if ((lead & 0xE0) == 0xC0) {
    length = 2;
    value = lead & 0x1F;
    smallest = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3;
    value = lead & 0x0F;
    smallest = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4;
    value = lead & 0x07;
    smallest = 0x10000;
  } else {
    return 0;
  }
  if (size - pos < static_cast<std::size_t>(length)) return 0;
  for (int k = 1; k < length; ++k) {
    const char next = data[pos + static_cast<std::size_t>(k)];
    if (!IsContinuation(next)) return 0;
    value = (value << 6) | (static_cast<unsigned char>(next) & 0x3F);
  }
  // Overlong forms, surrogates and values past the last code point are not
  // characters.
  if (value < smallest || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return 0;
  if (code != nullptr) *code = value;
  return length;
}

bool MCUtf8::Validate(const char* data, std::size_t size, std::size_t& badOffset) {
  std::size_t pos = 0;
  while (pos < size) {
    const int length = SequenceLength(data, size, pos);
    if (length == 0) {
      badOffset = pos;
      return false;
    }
    pos += static_cast<std::size_t>(length);
  }
  return true;
}

std::string MCUtf8::Sanitize(const char* data, std::size_t size) {
  std::string out;
  out.reserve(size);
  std::size_t pos = 0;
  while (pos < size) {
    const int length = SequenceLength(data, size, pos);
    if (length > 0) {
      out.append(data + pos, static_cast<std::size_t>(length));
      pos += static_cast<std::size_t>(length);
    } else {
      out += kReplacement;
      ++pos;
    }
  }
  return out;
}

char32_t MCUtf8::CodePoint(const std::string& text, std::size_t pos) {
  char32_t code = 0;
  return SequenceLength(text, pos, &code) > 0 ? code : kReplacementCode;
}

void MCUtf8::Append(std::string& out, char32_t code) {
  if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) code = kReplacementCode;
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

}  // namespace MCCommon_850
