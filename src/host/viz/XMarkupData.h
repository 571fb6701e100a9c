#pragma once

#include <string>

#include "host/output/OmChartData.h"
#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// A chart's data as chart markup: a <data> element with a <source> per
// source (its name and row count) and a <variable> per variable holding
// its values inline, <n row="i"> for a number and <t row="i"> for a text.
// This is the form in which data travel with a chart embedded in another.
class XMarkupData {
 public:
  static std::string Write(const OmChartData& data);
  // False, with the reason, for a text that is not such a <data> element.
  static bool Read(const std::string& text, OmChartData& data, XMarkupError& error);
  // Writes the values of `data` into the declarations of a chart's <data>
  // element, so that the chart carries them: values of variables the chart
  // does not declare are left out.
  static void Inline(XMarkupNode& chart, const OmChartData& data);
};
