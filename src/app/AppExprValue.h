#pragma once

#include <cmath>
#include <limits>
#include <string>
#include <utility>

// One value of an expression for one case: a number or a text, as the
// expression's type says. A missing number is NaN; a text is missing when
// it was a user-missing value, or made from one.
struct AppExprValue {
  double fNumber = std::numeric_limits<double>::quiet_NaN();
  std::string fText;
  bool fbMissingText = false;

  static AppExprValue Number(double value) {
    AppExprValue out;
    out.fNumber = value;
    return out;
  }
  static AppExprValue MissingNumber() { return AppExprValue(); }
  static AppExprValue Text(std::string text) {
    AppExprValue out;
    out.fText = std::move(text);
    return out;
  }
  static AppExprValue MissingText() {
    AppExprValue out;
    out.fbMissingText = true;
    return out;
  }

  bool IsMissingNumber() const { return std::isnan(fNumber); }
};
