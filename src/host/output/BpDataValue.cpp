#include "host/output/BpDataValue.h"

#include <cstdio>

#include "host/data/ZORV_Variable.h"
#include "host/output/BpFormatSpec.h"
#include "host/output/BpVariable.h"
#include "host/output/ToString.h"

std::string BpDataValue::ValueText(const ZORV_Variable& variable, const OBS* value) {
  if (value == nullptr) return std::string();
  if (variable.IsString()) {
    std::string text(value->fStr, static_cast<std::size_t>(variable.GetType()));
    std::size_t end = text.find_last_not_of(' ');
    return end == std::string::npos ? std::string() : text.substr(0, end + 1);
  }
  if (BpFormatSpec::IsMissing(value->fNum)) return ".";
  std::string text = ToString(value, variable.GetFormat());
  if (text.empty() || variable.GetFormat().IsString()) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.10g", value->fNum);
    text = buffer;
  }
  return text;
}

BpDataValue::BpDataValue(const ZORV_Variable& variable, const OBS* value, Preference preference)
    : fValueText(ValueText(variable, value)), fPreference(preference) {
  if (value != nullptr) {
    const char* label = variable.GetValueLabels().GetLabel(value, variable.IsString() ? variable.GetType() : 0);
    if (label != nullptr) fValueLabel = label;
  }
}

std::string BpDataValue::GetText(const BpTextContext& context) const {
  switch (fPreference) {
    case VALUE:
      return fValueText;
    case LABEL:
      return BpVariable::Compose(fValueText, fValueLabel, 1);
    default:
      return BpVariable::Compose(fValueText, fValueLabel, context.GetValueDisplay());
  }
}
