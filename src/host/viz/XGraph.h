#pragma once

#include <memory>
#include <vector>

#include "host/viz/ChartString.h"
#include "host/viz/XVariable.h"

// The graph of a chart document: its variables. A name may occur in more
// than one data source; each occurrence is an instance of its own, numbered
// from 0 in document order.
class XGraph {
 public:
  XGraph() = default;
  XGraph(const XGraph&) = delete;
  XGraph& operator=(const XGraph&) = delete;

  // Adds a variable and returns it; the graph owns it.
  XVariable* addVariable(const ChartString& name, const ChartString& source);
  // The instance of the variable of that name; null when there is none.
  XVariable* getVariable(const ChartString& name, int instance);
  int getVariableCount() const { return static_cast<int>(fvVariables.size()); }
  // The variables in the order they were added; null out of range.
  XVariable* getVariableAt(int index) const;

 private:
  std::vector<std::unique_ptr<XVariable>> fvVariables;
};
