#pragma once

#include <cstdint>
#include <string>

#include "host/data/ZORV_Format.h"

// The display format of a field in the metadata dictionary, or of a typed
// value in a result document: a format type (the codes of ZORV_Format), a
// width and a number of decimals. Records that hold a format by pointer copy
// it with Clone, so that a derived format survives the copy whole.
class CFFormat {
 public:
  CFFormat() = default;
  CFFormat(int type, int width, int decimals);
  explicit CFFormat(const ZORV_Format& format);
  virtual ~CFFormat() = default;

  // A new copy, owned by the caller.
  virtual CFFormat* Clone() const;

  int GetType() const { return fType; }
  void SetType(int type) { fType = type; }
  int GetWidth() const { return fWidth; }
  void SetWidth(int width) { fWidth = width; }
  int GetDecimals() const { return fDecimals; }
  void SetDecimals(int decimals) { fDecimals = decimals; }

  bool IsString() const { return fType == ZORV_Format::A || fType == ZORV_Format::AHEX; }
  // The same format as the host's four-byte form; width and decimals are
  // cut to what that form can hold.
  ZORV_Format ToZORVFormat() const;
  // "F8.2", "A10" ...
  std::string ToText() const { return ToZORVFormat().ToText(); }

  bool operator==(const CFFormat& o) const {
    return fType == o.fType && fWidth == o.fWidth && fDecimals == o.fDecimals;
  }
  bool operator!=(const CFFormat& o) const { return !(*this == o); }

 private:
  int fType = ZORV_Format::F;
  int fWidth = 8;
  int fDecimals = 2;
};
