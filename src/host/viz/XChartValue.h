#pragma once

#include <string>

// One cell of a chart's data as the drawing sees it: nothing, a number or a
// text.
struct XChartValue {
  enum Kind { EMPTY, NUMBER, TEXT };
  Kind fKind = EMPTY;
  double fNumber = 0.0;
  std::string fText;

  static XChartValue Number(double value);
  static XChartValue Text(const std::string& text);

  bool IsEmpty() const { return fKind == EMPTY; }
  // The number, or a text that reads as one.
  bool AsNumber(double& value) const;
  // Equal cells are one category: numbers by value, texts by their bytes
  // without trailing blanks; a number and a text never.
  std::string Key() const;
  // The order of values: numbers (and texts that read as numbers) by value,
  // before texts by their bytes.
  static bool Before(const XChartValue& a, const XChartValue& b);
};
