#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/math/MCConst.h"

namespace MCXML_850 {

// One variable of the engine's record: its name, its position in the record,
// its role and measurement level, and, for a categorical variable, its
// categories in code order (category code i is the i-th category): the
// numeric value (system-missing for a string variable) and the text.
class IMCVariable {
 public:
  IMCVariable();
  IMCVariable(const std::string& name, MCMath_850::MCConst::MCVarRole role,
              MCMath_850::MCConst::MCMeasureLevel level);

  const std::string& GetName() const { return fName; }
  void SetName(const std::string& name) { fName = name; }
  // The name of the data field the variable reads: its own name, or for a
  // repeated-measures copy of a field, the field's name.
  std::string GetFieldName() const { return FieldName(fName); }

  // A field that the record holds a second time, recoded as the categories
  // of a repeated measure, needs a name of its own in the variable list:
  // RecodedName gives it, and FieldName gives back the field's name (any
  // other name stands as it is).
  static std::string RecodedName(const std::string& fieldName);
  static std::string FieldName(const std::string& name);
  static bool IsRecodedName(const std::string& name);
  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(const std::string& label) { fLabel = label; }
  // Position in the record; -1 while unknown.
  int GetRecordIndex() const { return fRecordIndex; }
  void SetRecordIndex(int index) { fRecordIndex = index; }
  MCMath_850::MCConst::MCVarRole GetRole() const { return fRole; }
  void SetRole(MCMath_850::MCConst::MCVarRole role) { fRole = role; }
  MCMath_850::MCConst::MCMeasureLevel GetMeasurementLevel() const { return fMeasureLevel; }
  void SetMeasurementLevel(MCMath_850::MCConst::MCMeasureLevel level) { fMeasureLevel = level; }
  bool IsCategorical() const;
  // A string variable's width in bytes; 0 for a numeric variable.
  int GetStringWidth() const { return fStringWidth; }
  void SetStringWidth(int width) { fStringWidth = width; }
  // How frequency weights are rounded: 0 not at all, 1 to the nearest whole
  // number.
  int GetWeightRounding() const { return fWeightRounding; }
  void SetWeightRounding(int rounding) { fWeightRounding = rounding; }

  // Appends a category; returns its code.
  int AddCategory(double value, const std::string& text);
  void ClearCategories();
  int GetNCategories() const { return static_cast<int>(fvCategoryValues.size()); }
  const std::vector<double>& GetCategoryValues() const { return fvCategoryValues; }
  const std::vector<std::string>& GetCategoryTexts() const { return fvCategoryTexts; }
  // The code of the category with that value or text; -1 when there is none.
  int FindCategory(double value) const;
  int FindCategory(const std::string& text) const;

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::string fName;
  std::string fLabel;
  int fRecordIndex;
  MCMath_850::MCConst::MCVarRole fRole;
  MCMath_850::MCConst::MCMeasureLevel fMeasureLevel;
  int fStringWidth;
  int fWeightRounding;
  std::vector<double> fvCategoryValues;
  std::vector<std::string> fvCategoryTexts;
};

}  // namespace MCXML_850
