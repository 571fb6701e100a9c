#include "host/viz/XUtility.h"

// The host's local code page and output language encoding are both UTF-8, so
// every conversion is the one between UTF-8 and chart text.

ChartString XUtility::ChartStringFromLocalCodePage(const char* text) {
  return text != nullptr ? ChartString::fromUTF8(text) : ChartString();
}

ChartString XUtility::ChartStringFromLocalCodePage(const std::string& text) { return ChartString::fromUTF8(text); }

ChartString XUtility::ChartStringFromOLANG(const char* text) {
  return text != nullptr ? ChartString::fromUTF8(text) : ChartString();
}

ChartString XUtility::ChartStringFromOLANG(const std::string& text) { return ChartString::fromUTF8(text); }

ChartString XUtility::ChartStringFromUTF8(const std::string& text) { return ChartString::fromUTF8(text); }

std::string XUtility::LocalCodePageFromChartString(const ChartString& text) { return text.toUTF8(); }

std::string XUtility::OLANGFromChartString(const ChartString& text) { return text.toUTF8(); }

const char* XUtility::OutputLanguage() { return "en"; }
