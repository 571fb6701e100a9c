#pragma once

#include <map>
#include <string>

#include "host/data/OBS.h"

// The value labels of one variable: numeric values or string values, each
// with its label. Look-ups return null when a value has no label.
class ZORV_ValueLabelMap {
 public:
  void Add(double value, const std::string& label) { fNumeric[value] = label; }
  void Add(const std::string& value, const std::string& label) { fString[Trimmed(value)] = label; }

  const char* GetLabel(double value) const;
  const char* GetLabel(const char* value) const;
  const char* GetLabel(const std::string& value) const { return GetLabel(value.c_str()); }
  // A cell of the owning variable: numeric when width is 0, else a string of that width.
  const char* GetLabel(const OBS* value, int width = 0) const;

  void Clear() {
    fNumeric.clear();
    fString.clear();
  }

  bool Empty() const { return fNumeric.empty() && fString.empty(); }
  std::size_t Size() const { return fNumeric.size() + fString.size(); }
  const std::map<double, std::string>& NumericLabels() const { return fNumeric; }
  const std::map<std::string, std::string>& StringLabels() const { return fString; }

 private:
  static std::string Trimmed(const std::string& s);

  std::map<double, std::string> fNumeric;
  std::map<std::string, std::string> fString;
};
