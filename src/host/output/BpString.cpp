#include "host/output/BpString.h"

std::string BpString::GetText(const BpTextContext& context) const {
  std::string text = fbTranslate ? context.Translate(fText) : fText;
  if (!fbAllowBreaks) {
    for (char& c : text) {
      if (c == '\n' || c == '\r' || c == '\t') c = ' ';
    }
  }
  return text;
}
