#include "results/GNLMReaderSupport.h"

#include <climits>
#include <cmath>

#include "host/documents/SDOMXMLWrapper.h"

namespace GNLMReaderSupport {

std::vector<SDOMXMLWrapper*> Children(SDOMXMLWrapper* parent, const std::string& name) {
  return SDOMXMLWrapper::GetChildren(parent, name);
}

bool StructuredValues(SDOMXMLWrapper* parameter, std::vector<SDOMXMLWrapper*>& members) {
  SDOMXMLWrapper* list = nullptr;
  if (!SDOMXMLWrapper::GetFirstElement(parameter, "ListValue", &list)) return false;
  members = Children(list, "StructuredValue");
  return !members.empty();
}

std::string Attribute(const SDOMXMLWrapper* element, const std::string& name) {
  std::string value;
  if (element != nullptr) element->GetAttribute(name, value);
  return value;
}

int TruncateToInt(double value) {
  if (!(value > static_cast<double>(INT_MIN) - 1.0 && value < static_cast<double>(INT_MAX) + 1.0)) return INT_MIN;
  return static_cast<int>(value);
}

int MappedVariable(const GNLMOutputStats::VariableMapInfo& info, int fieldIndex) {
  if (fieldIndex < 0 || static_cast<std::size_t>(fieldIndex) >= info.fvFieldToVar.size()) return -1;
  const int var = info.fvFieldToVar[static_cast<std::size_t>(fieldIndex)];
  return var < static_cast<int>(info.fvNumCategories.size()) ? var : -1;
}

}  // namespace GNLMReaderSupport
