#include "host/strings/ParserMessage.h"

#include "host/output/OmComposite.h"
#include "host/output/OmStringCell.h"
#include "host/strings/FacSTDictionary.h"

std::string ParserMessage::GetTranslatedText(const char* key, const char* a1, const char* a2, const char* a3,
                                             const char* a4, const char* a5) const {
  if (key == nullptr) return std::string();
  FacSTDictionary dictionary(FacSTDictionary::SessionDirectory());
  dictionary.SetProcedure(fProcedureTitle);
  OmComposite composite(dictionary.LookUp(key));
  // Arguments count up to the last one given, so that a null in the middle
  // leaves its own marker and not the next argument's in its place.
  const char* arguments[] = {a1, a2, a3, a4, a5};
  int count = 0;
  for (int i = 0; i < 5; ++i) {
    if (arguments[i] != nullptr) count = i + 1;
  }
  for (int i = 0; i < count; ++i) {
    if (arguments[i] != nullptr) {
      composite.Add(OmStringCell(arguments[i]));
    } else {
      composite.Add(OmComposite("^" + std::to_string(i + 1)));
    }
  }
  composite.End();
  return composite.AsString();
}
