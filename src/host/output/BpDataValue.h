#pragma once

#include <string>

#include "host/data/OBS.h"
#include "host/output/BpCellText.h"

class ZORV_Variable;

// A data value of a variable, by its value or its value label. The value's
// text (in the variable's format) and its label are taken when the text is
// made.
class BpDataValue : public BpCellText {
 public:
  enum Preference {
    VALUE = 0,   // the value
    LABEL = 1,   // the label, or the value when there is none
    AS_SET = 2,  // as the host's display setting says: value, label, or both
  };

  BpDataValue(const ZORV_Variable& variable, const OBS* value, Preference preference);
  BpDataValue(const ZORV_Variable& variable, const OBS* value, int preference)
      : BpDataValue(variable, value, static_cast<Preference>(preference)) {}

  const std::string& GetValueText() const { return fValueText; }
  const std::string& GetValueLabel() const { return fValueLabel; }
  Preference GetPreference() const { return fPreference; }
  void SetPreference(Preference preference) { fPreference = preference; }

  BpCellText* Replicate() const override { return new BpDataValue(*this); }
  using BpCellText::GetText;
  std::string GetText(const BpTextContext& context) const override;

  // The text of a value in the variable's own format ("." for the
  // system-missing value; a string without its trailing blanks).
  static std::string ValueText(const ZORV_Variable& variable, const OBS* value);

 private:
  std::string fValueText;
  std::string fValueLabel;
  Preference fPreference;
};
