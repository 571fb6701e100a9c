#include "host/cf/CFField.h"

#include "host/data/ZORV_Variable.h"

CFField::CFField(const std::string& name, int type) : fName(name), fType(type) {}

CFField::CFField(const ZORV_Variable& variable)
    : fName(variable.GetName()),
      fType(variable.IsString() ? STRING_STORAGE : REAL_STORAGE),
      fMeasure(variable.GetMeasurementLevel()),
      fFormat(variable.GetFormat()) {
  if (variable.GetLabel() != nullptr) fLabel = variable.GetLabel();
}
