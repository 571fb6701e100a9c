#pragma once

#include <string>

#include "host/viz/ChartString.h"

// The three text encodings that meet in charts, and the conversions between
// them and chart text. Names, labels and data values are in the host's
// local code page; translated texts are in the output language's encoding;
// chart documents and their data are UTF-8. In this host all three are
// UTF-8: the conversions check that a text is, and replace each byte that
// is not part of a well-formed character with U+FFFD.
class XUtility {
 public:
  // A null text gives an empty string.
  static ChartString ChartStringFromLocalCodePage(const char* text);
  static ChartString ChartStringFromLocalCodePage(const std::string& text);
  static ChartString ChartStringFromOLANG(const char* text);
  static ChartString ChartStringFromOLANG(const std::string& text);
  static ChartString ChartStringFromUTF8(const std::string& text);
  static std::string LocalCodePageFromChartString(const ChartString& text);
  static std::string OLANGFromChartString(const ChartString& text);

  // The output language, as charts name it ("en").
  static const char* OutputLanguage();
};
