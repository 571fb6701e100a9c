#pragma once

#include <string>

#include "host/output/OmChartData.h"
#include "host/viz/XMarkupError.h"

// A chart markup document and its data, drawn: read, checked against the
// markup's grammar, and painted as SVG. A document that cannot be read or
// does not follow the grammar gives no drawing and says why.
class XChartRenderer {
 public:
  static bool Render(const std::string& markup, const OmChartData& data, std::string& svg, XMarkupError& error);
};
