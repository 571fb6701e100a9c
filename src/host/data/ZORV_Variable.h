#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"
#include "host/data/ZORV_ValueLabelMap.h"

// The dictionary entry of one variable (column) of a dataset.
class ZORV_Variable {
 public:
  enum { MAXNUMFMTWID = 40 };
  enum MeasurementLevel { NOMINAL = 1, ORDINAL = 2, SCALE = 3 };

  ZORV_Variable() = default;
  // type 0 is numeric; a positive type is a string of that many bytes.
  ZORV_Variable(const std::string& name, int type);

  const char* GetName() const { return fName.c_str(); }
  // Null when the variable has no label.
  const char* GetLabel() const { return fLabel.empty() ? nullptr : fLabel.c_str(); }
  // The label when there is one, else the name.
  const char* GetPreferredLabel() const { return fLabel.empty() ? GetName() : GetLabel(); }
  int GetType() const { return fType; }
  bool IsString() const { return fType > 0; }
  const ZORV_Format& GetFormat() const { return fPrintFormat; }
  const ZORV_Format& GetWriteFormat() const { return fWriteFormat; }
  void GetFormatEx(int& type, int& width, int& decimals) const;
  int GetMeasurementLevel() const { return fLevel; }
  const ZORV_ValueLabelMap& GetValueLabels() const { return fValueLabels; }
  ZORV_ValueLabelMap& ValueLabels() { return fValueLabels; }

  void SetName(const std::string& name) { fName = name; }
  void SetLabel(const std::string& label) { fLabel = label; }
  void SetFormat(const ZORV_Format& format) { fPrintFormat = format; }
  void SetWriteFormat(const ZORV_Format& format) { fWriteFormat = format; }
  void SetMeasurementLevel(int level) { fLevel = level; }

  // User-missing values: up to three discrete values and an optional range
  // (numeric variables), or discrete strings.
  void AddMissingValue(double value) { fvMissingValues.push_back(value); }
  void AddMissingString(const std::string& value) { fvMissingStrings.push_back(value); }
  void SetMissingRange(double low, double high);
  // No user-missing values any more.
  void ClearMissing();
  const std::vector<double>& GetMissingValues() const { return fvMissingValues; }
  const std::vector<std::string>& GetMissingStrings() const { return fvMissingStrings; }
  bool HasMissingRange() const { return fbHasMissingRange; }
  double GetMissingRangeLow() const { return fMissingLow; }
  double GetMissingRangeHigh() const { return fMissingHigh; }
  bool IsUserMissing(double value) const;
  bool IsUserMissing(const std::string& value) const;

 private:
  std::string fName;
  std::string fLabel;
  int fType = 0;
  ZORV_Format fPrintFormat;
  ZORV_Format fWriteFormat;
  int fLevel = SCALE;
  ZORV_ValueLabelMap fValueLabels;
  std::vector<double> fvMissingValues;
  std::vector<std::string> fvMissingStrings;
  bool fbHasMissingRange = false;
  double fMissingLow = 0.0;
  double fMissingHigh = 0.0;
};
