#pragma once

#include <string>

#include "host/cf/CFFormat.h"

class ZORV_Variable;

// One field of the metadata dictionary: a variable as the result documents
// and the charts see it.
class CFField {
 public:
  // How the field's values are stored. The codes go to the chart editor as
  // they stand; a code above TIMESTAMP_STORAGE is read there as a timestamp.
  enum Storage {
    UNKNOWN_STORAGE = 0,
    INTEGER_STORAGE = 1,
    REAL_STORAGE = 2,
    STRING_STORAGE = 3,
    DATE_STORAGE = 4,
    TIME_STORAGE = 5,
    TIMESTAMP_STORAGE = 6
  };
  // The codes of ZORV_Variable.
  enum Measure { UNKNOWN_MEASURE = 0, NOMINAL = 1, ORDINAL = 2, SCALE = 3 };

  CFField() = default;
  CFField(const std::string& name, int type);
  // A numeric variable becomes a real field, a string variable a string
  // field; name, label, measurement level and display format are copied.
  explicit CFField(const ZORV_Variable& variable);

  const std::string& GetName() const { return fName; }
  void SetName(const std::string& name) { fName = name; }
  // Empty when the field has no label.
  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(const std::string& label) { fLabel = label; }
  int GetType() const { return fType; }
  void SetType(int type) { fType = type; }
  int GetMeasure() const { return fMeasure; }
  void SetMeasure(int measure) { fMeasure = measure; }
  const CFFormat& GetFormat() const { return fFormat; }
  void SetFormat(const CFFormat& format) { fFormat = format; }

 private:
  std::string fName;
  std::string fLabel;
  int fType = UNKNOWN_STORAGE;
  int fMeasure = UNKNOWN_MEASURE;
  CFFormat fFormat;
};
