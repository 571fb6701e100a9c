#pragma once

#include <string>

// Converts text between a code page and UTF-8. The host's local code page
// is UTF-8; Latin-1 is the one other page it knows. Conversion never fails
// on content: a malformed byte sequence becomes U+FFFD on the way to UTF-8,
// and a character that Latin-1 cannot hold becomes '?'.
class ZORVMBConverter {
 public:
  enum CodePage { LOCAL = 0, UTF8 = 1, LATIN1 = 2 };
  enum Error { OK = 0, NO_CONVERTER = 1 };

  explicit ZORVMBConverter(CodePage page);

  CodePage GetCodePage() const { return fCodePage; }
  // The page that LOCAL stands for.
  static CodePage LocalCodePage() { return UTF8; }

  // Appends nothing on a null text; both clear `out` first.
  void ToUTF8(const char* text, std::string& out) const;
  void FromUTF8(const char* text, std::string& out) const;

 private:
  CodePage fCodePage;
};

// A new converter for the page (a ZORVMBConverter::CodePage value); null for
// a page the host does not know. Release it with ZORVMBConverterDelete_A.
ZORVMBConverter* ZORVMBConverterNew_A(int codePage);
void ZORVMBConverterDelete_A(ZORVMBConverter* converter);

// Text of the converter's page to UTF-8 and back. The result is an error
// code: ZORVMBConverter::OK, or NO_CONVERTER for a null converter, in which
// case `out` is left empty. A null text converts as empty text.
int ZORVMBGenericToU8(const ZORVMBConverter* converter, const char* text, std::string& out);
int ZORVMBU8ToGeneric(const ZORVMBConverter* converter, const char* text, std::string& out);

// Bytes of the local-code-page character that starts at `p`: 1 to 4. A byte
// that does not start a well-formed character counts as 1, and so does the
// terminating zero; a null pointer gives 0.
int ZORVMBmbclen_A(const char* p);
