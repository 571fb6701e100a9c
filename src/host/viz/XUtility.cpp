#include "host/viz/XUtility.h"

ChartString XUtility::ChartStringFromLocalCodePage(const char* text) {
  return text != nullptr ? ChartString::fromUTF8(text) : ChartString();
}

ChartString XUtility::ChartStringFromLocalCodePage(const std::string& text) { return ChartString::fromUTF8(text); }

ChartString XUtility::ChartStringFromOLANG(const char* text) {
  return text != nullptr ? ChartString::fromUTF8(text) : ChartString();
}

ChartString XUtility::ChartStringFromOLANG(const std::string& text) { return ChartString::fromUTF8(text); }
