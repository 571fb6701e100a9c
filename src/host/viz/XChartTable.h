#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "host/output/OmChartData.h"
#include "host/viz/XChartColumn.h"
#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// The variables a chart declares, with their values: the chart's data
// (what the chart code wrote into its VarDataProcessor) joined with the
// values the markup carries inline. Data of a variable the markup does not
// declare are not used.
class XChartTable {
 public:
  // Rows a chart draws at most; a source beyond that is refused rather than
  // drawn into a picture nobody can read or a page that never loads.
  static const long kMaxRows = 1000000;

  // False, with the element at fault, for an inline number that is not one.
  bool Build(const XMarkupNode& chart, const OmChartData& data, XMarkupError& error);

  long GetRowCount(const std::string& source) const;
  // The variable a reference names: among the variables of `source` (all
  // when it is empty), the first whose role is the reference, else the
  // first whose name is. Null when none is.
  const XChartColumn* Resolve(const std::string& reference, const std::string& source) const;

 private:
  std::deque<XChartColumn> fvColumns;
  std::map<std::string, long> fRowCounts;
};
