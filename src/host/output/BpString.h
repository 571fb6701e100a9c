#pragma once

#include <string>

#include "host/output/BpCellText.h"

// A text: a fixed text of the system, translated when it is written
// (`translate` true), or data such as a name or a label (false).
//
// The third flag, `allowBreaks`, is true unless given: the text may then
// hold line feeds and be wrapped by a renderer. False keeps it on one line:
// line feeds and tabs become blanks. File names are written so.
class BpString : public BpCellText {
 public:
  BpString(const std::string& text, bool translate) : fText(text), fbTranslate(translate) {}
  BpString(const std::string& text, bool translate, bool allowBreaks)
      : fText(text), fbTranslate(translate), fbAllowBreaks(allowBreaks) {}

  const std::string& GetString() const { return fText; }
  void SetString(const std::string& text) { fText = text; }
  bool GetTranslate() const { return fbTranslate; }
  void SetTranslate(bool translate) { fbTranslate = translate; }
  bool GetAllowBreaks() const { return fbAllowBreaks; }
  void SetAllowBreaks(bool allowBreaks) { fbAllowBreaks = allowBreaks; }

  BpCellText* Replicate() const override { return new BpString(*this); }
  using BpCellText::GetText;
  std::string GetText(const BpTextContext& context) const override;

 private:
  std::string fText;
  bool fbTranslate;
  bool fbAllowBreaks = true;
};
