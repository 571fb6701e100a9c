#include "host/text/ZORVMBConverter.h"

#include <cstring>

#include "numeric/common/MCUtf8.h"

namespace {

using MCCommon_850::MCUtf8;

std::string Sanitized(const char* text) {
  return text == nullptr ? std::string() : MCUtf8::Sanitize(text, std::strlen(text));
}

}  // namespace

ZORVMBConverter::ZORVMBConverter(CodePage page) : fCodePage(page == LOCAL ? LocalCodePage() : page) {}

void ZORVMBConverter::ToUTF8(const char* text, std::string& out) const {
  out.clear();
  if (fCodePage != LATIN1) {
    out = Sanitized(text);
    return;
  }
  if (text == nullptr) return;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) MCUtf8::Append(out, *p);
}

void ZORVMBConverter::FromUTF8(const char* text, std::string& out) const {
  out.clear();
  if (fCodePage != LATIN1) {
    out = Sanitized(text);
    return;
  }
  if (text == nullptr) return;
  const std::size_t size = std::strlen(text);
  std::size_t pos = 0;
  while (pos < size) {
    char32_t code = 0;
    const int length = MCUtf8::SequenceLength(text, size, pos, &code);
    out += length > 0 && code <= 0xFF ? static_cast<char>(code) : '?';
    pos += static_cast<std::size_t>(length > 0 ? length : 1);
  }
}

ZORVMBConverter* ZORVMBConverterNew_A(int codePage) {
  switch (codePage) {
    case ZORVMBConverter::LOCAL:
    case ZORVMBConverter::UTF8:
    case ZORVMBConverter::LATIN1:
      return new ZORVMBConverter(static_cast<ZORVMBConverter::CodePage>(codePage));
    default:
      return nullptr;
  }
}

void ZORVMBConverterDelete_A(ZORVMBConverter* converter) { delete converter; }

int ZORVMBGenericToU8(const ZORVMBConverter* converter, const char* text, std::string& out) {
  out.clear();
  if (converter == nullptr) return ZORVMBConverter::NO_CONVERTER;
  converter->ToUTF8(text, out);
  return ZORVMBConverter::OK;
}

int ZORVMBU8ToGeneric(const ZORVMBConverter* converter, const char* text, std::string& out) {
  out.clear();
  if (converter == nullptr) return ZORVMBConverter::NO_CONVERTER;
  converter->FromUTF8(text, out);
  return ZORVMBConverter::OK;
}

int ZORVMBmbclen_A(const char* p) {
  if (p == nullptr) return 0;
  // A character has at most four bytes; the terminator ends it earlier.
  std::size_t size = 0;
  while (size < 4 && p[size] != '\0') ++size;
  const int length = MCUtf8::SequenceLength(p, size, 0);
  return length == 0 ? 1 : length;
}
