#include "numeric/xml/IMCVariable.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCXML_850 {

using namespace MCMath_850::MCConst;

IMCVariable::IMCVariable()
    : fRecordIndex(-1), fRole(ROLE_NONE), fMeasureLevel(MEASURE_UNKNOWN), fStringWidth(0), fWeightRounding(0) {}

IMCVariable::IMCVariable(const std::string& name, MCVarRole role, MCMeasureLevel level) : IMCVariable() {
  fName = name;
  fRole = role;
  fMeasureLevel = level;
}

namespace {

const char kRecodedPrefix[] = "@#$ordinal@#$_";

}  // namespace

std::string IMCVariable::RecodedName(const std::string& fieldName) { return kRecodedPrefix + fieldName; }

bool IMCVariable::IsRecodedName(const std::string& name) { return name.rfind(kRecodedPrefix, 0) == 0; }

std::string IMCVariable::FieldName(const std::string& name) {
  return IsRecodedName(name) ? name.substr(sizeof kRecodedPrefix - 1) : name;
}

bool IMCVariable::IsCategorical() const {
  return fMeasureLevel == MEASURE_NOMINAL || fMeasureLevel == MEASURE_ORDINAL;
}

int IMCVariable::AddCategory(double value, const std::string& text) {
  fvCategoryValues.push_back(value);
  fvCategoryTexts.push_back(text);
  return GetNCategories() - 1;
}

void IMCVariable::ClearCategories() {
  fvCategoryValues.clear();
  fvCategoryTexts.clear();
}

int IMCVariable::FindCategory(double value) const {
  for (int i = 0; i < GetNCategories(); ++i) {
    if (fvCategoryValues[static_cast<std::size_t>(i)] == value) return i;
  }
  return -1;
}

int IMCVariable::FindCategory(const std::string& text) const {
  for (int i = 0; i < GetNCategories(); ++i) {
    if (fvCategoryTexts[static_cast<std::size_t>(i)] == text) return i;
  }
  return -1;
}

void IMCVariable::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void IMCVariable::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayS(os, "Variable:", fName);
  if (!fLabel.empty()) DisplayS(os, "Label:", fLabel);
  DisplayI(os, "Record index:", fRecordIndex);
  DisplayC(os, "Role:", fRole);
  DisplayC(os, "Measurement level:", fMeasureLevel);
  if (fStringWidth > 0) DisplayI(os, "String width:", fStringWidth);
  if (fRole == ROLE_FREQUENCY_WEIGHT) DisplayI(os, "Weight rounding:", fWeightRounding);
  DisplayI(os, "Categories:", GetNCategories());
  for (int i = 0; i < GetNCategories(); ++i) {
    DisplayS(os, "Category " + std::to_string(i) + ":", fvCategoryTexts[static_cast<std::size_t>(i)]);
  }
}

}  // namespace MCXML_850
