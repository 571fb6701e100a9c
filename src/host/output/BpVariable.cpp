#include "host/output/BpVariable.h"

#include "host/data/ZORV_Variable.h"

BpVariable::BpVariable(const ZORV_Variable& variable, Show show)
    : fName(variable.GetName()), fLabel(variable.GetLabel() ? variable.GetLabel() : ""), fShow(show) {}

std::string BpVariable::Compose(const std::string& name, const std::string& label, int display) {
  if (display <= 0 || label.empty()) return name;
  return display == 1 ? label : name + " " + label;
}

std::string BpVariable::GetText(const BpTextContext& context) const {
  switch (fShow) {
    case NAME:
      return fName;
    case LABEL:
      return Compose(fName, fLabel, 1);
    default:
      return Compose(fName, fLabel, context.GetVariableDisplay());
  }
}
