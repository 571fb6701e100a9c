#pragma once

#include <string>

#include "host/viz/ChartString.h"

// Conversions of the host's texts into chart text. Names, labels and data
// values are in the host's local code page; translated texts are in the
// output language's encoding. Both are UTF-8 in this host.
class XUtility {
 public:
  // A null text gives an empty string.
  static ChartString ChartStringFromLocalCodePage(const char* text);
  static ChartString ChartStringFromLocalCodePage(const std::string& text);
  static ChartString ChartStringFromOLANG(const char* text);
  static ChartString ChartStringFromOLANG(const std::string& text);
};
