#include "host/text/ZORVMBConverter.h"

namespace {

const char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

bool IsContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

// Length of the well-formed UTF-8 character at p, or 0 when the bytes there
// are not one. Overlong forms, surrogates and values above U+10FFFF are
// malformed.
int WellFormedLength(const unsigned char* p) {
  unsigned char c = p[0];
  if (c < 0x80) return 1;
  if (c >= 0xC2 && c <= 0xDF) return IsContinuation(p[1]) ? 2 : 0;
  if (c >= 0xE0 && c <= 0xEF) {
    unsigned char lo = (c == 0xE0) ? 0xA0 : 0x80;
    unsigned char hi = (c == 0xED) ? 0x9F : 0xBF;
    if (p[1] < lo || p[1] > hi) return 0;
    return IsContinuation(p[2]) ? 3 : 0;
  }
  if (c >= 0xF0 && c <= 0xF4) {
    unsigned char lo = (c == 0xF0) ? 0x90 : 0x80;
    unsigned char hi = (c == 0xF4) ? 0x8F : 0xBF;
    if (p[1] < lo || p[1] > hi) return 0;
    return (IsContinuation(p[2]) && IsContinuation(p[3])) ? 4 : 0;
  }
  return 0;
}

unsigned long DecodeUTF8(const unsigned char* p, int len) {
  switch (len) {
    case 1:
      return p[0];
    case 2:
      return ((p[0] & 0x1Ful) << 6) | (p[1] & 0x3Ful);
    case 3:
      return ((p[0] & 0x0Ful) << 12) | ((p[1] & 0x3Ful) << 6) | (p[2] & 0x3Ful);
    default:
      return ((p[0] & 0x07ul) << 18) | ((p[1] & 0x3Ful) << 12) | ((p[2] & 0x3Ful) << 6) | (p[3] & 0x3Ful);
  }
}

void AppendLatin1AsUTF8(unsigned char c, std::string& out) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

}  // namespace

ZORVMBConverter::ZORVMBConverter(CodePage page) : fCodePage(page == LOCAL ? LocalCodePage() : page) {}

void ZORVMBConverter::CleanUTF8(const char* text, std::string& out) {
  out.clear();
  if (text == nullptr) return;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  while (*p != 0) {
    int len = WellFormedLength(p);
    if (len == 0) {
      out += kReplacement;
      ++p;
    } else {
      out.append(reinterpret_cast<const char*>(p), static_cast<std::size_t>(len));
      p += len;
    }
  }
}

void ZORVMBConverter::ToUTF8(const char* text, std::string& out) const {
  if (fCodePage != LATIN1) {
    CleanUTF8(text, out);
    return;
  }
  out.clear();
  if (text == nullptr) return;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    AppendLatin1AsUTF8(*p, out);
  }
}

void ZORVMBConverter::FromUTF8(const char* text, std::string& out) const {
  if (fCodePage != LATIN1) {
    CleanUTF8(text, out);
    return;
  }
  out.clear();
  if (text == nullptr) return;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  while (*p != 0) {
    int len = WellFormedLength(p);
    if (len == 0) {
      out += '?';
      ++p;
      continue;
    }
    unsigned long code = DecodeUTF8(p, len);
    out += code <= 0xFF ? static_cast<char>(code) : '?';
    p += len;
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
  int len = WellFormedLength(reinterpret_cast<const unsigned char*>(p));
  return len == 0 ? 1 : len;
}
