#include "host/viz/XGraph.h"

XVariable* XGraph::addVariable(const ChartString& name, const ChartString& source) {
  fvVariables.push_back(std::make_unique<XVariable>(name, source));
  return fvVariables.back().get();
}

XVariable* XGraph::getVariable(const ChartString& name, int instance) {
  if (instance < 0) return nullptr;
  for (const auto& variable : fvVariables) {
    if (variable->getName() != name) continue;
    if (instance == 0) return variable.get();
    --instance;
  }
  return nullptr;
}

XVariable* XGraph::getVariableAt(int index) const {
  if (index < 0 || index >= getVariableCount()) return nullptr;
  return fvVariables[static_cast<std::size_t>(index)].get();
}
