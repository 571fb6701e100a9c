#pragma once

#include <string>
#include <vector>

#include "host/data/OBS.h"

class ZORV_Variable;

// A category or field value as a result document gives it: its text, and,
// once loaded against a variable, the same value in that variable's coding
// (a number, or the blank-padded characters of a string).
class CFStatVariableValue {
 public:
  CFStatVariableValue() = default;
  explicit CFStatVariableValue(const std::string& text);

  // Sets the text and forgets a loaded value.
  void SetStringValue(const std::string& text);
  const std::string& GetStringValue() const { return fStringValue; }

  // Codes the text for the variable. A numeric variable takes a decimal
  // number, blanks around it allowed; a string variable takes the text,
  // trailing blanks aside, if it fits the variable's width, or cut to the
  // width when bTruncate is set. False, and nothing loaded, otherwise.
  bool LoadObsValue(const ZORV_Variable& variable, bool bTruncate = false);
  // SetStringValue, then LoadObsValue.
  bool SetCompleteValue(const std::string& text, const ZORV_Variable& variable, bool bTruncate = false);

  // The coded value; null until a load has succeeded. A string value spans
  // GetObsCount() cells.
  const OBS* GetObsValue() const { return fbLoaded ? fvObsValue.data() : nullptr; }
  int GetObsCount() const { return fbLoaded ? static_cast<int>(fvObsValue.size()) : 0; }
  bool IsLoaded() const { return fbLoaded; }
  // The width of the string variable it was loaded for; 0 for a number.
  int GetWidth() const { return fWidth; }

 private:
  std::string fStringValue;
  std::vector<OBS> fvObsValue;
  int fWidth = 0;
  bool fbLoaded = false;
};
